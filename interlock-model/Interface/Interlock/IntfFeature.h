#pragma once

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Export.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>

namespace Interface::Interlock {

/// The key of an interlock entry: a port, and the LAG that it is to join. Always in this order.
struct IntfFeature {
   Nodo::IntfId member;
   Nodo::IntfId lag;

   /// Both handles in one number, as collections keep them.
   constexpr std::uint64_t packed() const noexcept {
      return member.packed() | std::uint64_t{ lag.packed() } << 32U;
   }
   static constexpr IntfFeature unpacked( std::uint64_t packed ) noexcept {
      return { Nodo::IntfId::unpacked( static_cast< std::uint32_t >( packed ) ),
               Nodo::IntfId::unpacked( static_cast< std::uint32_t >( packed >> 32U ) ) };
   }

   constexpr std::size_t hash( std::uint32_t seed = 0 ) const noexcept {
      // Each half by an odd constant of its own, so that (a, b) and (b, a) differ; the upper half
      // of the product is the well-mixed one.
      const std::uint64_t mixed =
         ( member.value() + seed ) * 0x9E3779B97F4A7C15ULL + lag.value() * 0xC2B2AE3D27D4EB4FULL;
      return static_cast< std::size_t >( mixed * 0xFF51AFD7ED558CCDULL >> 32U );
   }

   friend constexpr bool operator==( const IntfFeature &, const IntfFeature & ) noexcept = default;
};

/// "(Ethernet1, PortChannel10)".
VEX_EXPORT std::ostream & operator<<( std::ostream & out, const IntfFeature & feature );

} // namespace Interface::Interlock
