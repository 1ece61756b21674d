#pragma once

#include "platform/Vex/Export.h"

#include <compare>
#include <cstddef>
#include <cstdint>

namespace Bridging {

/// A VLAN identifier, 1 to 4094; default-constructed, 0: none.
class VlanId {
 public:
   constexpr VlanId() noexcept = default;
   /// Anything but 1 to 4094 is a std::out_of_range.
   VEX_EXPORT explicit VlanId( std::uint16_t value );

   constexpr std::uint16_t value() const noexcept { return value_; }
   constexpr std::size_t hash() const noexcept { return value_; }

   /// As collections keep it.
   constexpr std::uint32_t packed() const noexcept { return value_; }
   static constexpr VlanId unpacked( std::uint32_t packed ) noexcept {
      VlanId id;
      id.value_ = static_cast< std::uint16_t >( packed );
      return id;
   }

   friend constexpr auto operator<=>( VlanId, VlanId ) noexcept = default;

 private:
   std::uint16_t value_ = 0;
};

/// The key of a translation mapping: the VLAN that is translated.
using VlanXlateKey = VlanId;

} // namespace Bridging
