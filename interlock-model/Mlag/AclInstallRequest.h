#pragma once

// What this switch asks of its MLAG peer: for each LAG the token of the one outstanding request
// that the peer install its egress ACL.
//
// Ownership, threading and re-entrancy: platform/Vex/Entity.h, platform/Vex/KeyedCollection.h.

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Type.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Mlag {

enum class AclInstallRequestAttribute : std::uint8_t { installRequest };

class VEX_EXPORT AclInstallRequest final
    : public Vex::Entity< AclInstallRequestAttribute, Nodo::IntfId > {
 public:
   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   const Vex::KeyMap< Nodo::IntfId, std::uint32_t > & installRequest() const noexcept {
      return installRequest_;
   }
   /// The LAG's token; 0, which is no token, where there is none.
   std::uint32_t installRequest( Nodo::IntfId lag ) const noexcept {
      return installRequest_.get( lag );
   }

   /// Inserts or overwrites; notifies `installRequest` with the LAG unless it holds that token.
   void installRequestIs( Nodo::IntfId lag, std::uint32_t token );
   /// Removes the entry; notifies `installRequest` with the LAG unless it had none.
   void installRequestDel( Nodo::IntfId lag );

 private:
   ~AclInstallRequest() override = default;

   Vex::KeyMap< Nodo::IntfId, std::uint32_t > installRequest_;
};

} // namespace Mlag

template <>
struct Vex::EnumNames< Mlag::AclInstallRequestAttribute > {
   static constexpr std::string_view type = "Mlag::AclInstallRequest::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "installRequest" } };
};
