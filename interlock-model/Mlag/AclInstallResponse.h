#pragma once

// What the MLAG peer has answered: for each LAG the token of the last request on which it acted.
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

enum class AclInstallResponseAttribute : std::uint8_t { installResponse };

class VEX_EXPORT AclInstallResponse final
    : public Vex::Entity< AclInstallResponseAttribute, Nodo::IntfId > {
 public:
   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   const Vex::KeyMap< Nodo::IntfId, std::uint32_t > & installResponse() const noexcept {
      return installResponse_;
   }
   /// The LAG's token; 0, which is no token, where there is none.
   std::uint32_t installResponse( Nodo::IntfId lag ) const noexcept {
      return installResponse_.get( lag );
   }

   /// Inserts or overwrites; notifies `installResponse` with the LAG unless it holds that token.
   void installResponseIs( Nodo::IntfId lag, std::uint32_t token );
   /// Removes the entry; notifies `installResponse` with the LAG unless it had none.
   void installResponseDel( Nodo::IntfId lag );

 private:
   ~AclInstallResponse() override = default;

   Vex::KeyMap< Nodo::IntfId, std::uint32_t > installResponse_;
};

} // namespace Mlag

template <>
struct Vex::EnumNames< Mlag::AclInstallResponseAttribute > {
   static constexpr std::string_view type = "Mlag::AclInstallResponse::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "installResponse" } };
};
