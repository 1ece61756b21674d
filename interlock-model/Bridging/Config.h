#pragma once

// The bridging configuration: each interface's SwitchIntfConfig.
//
// Ownership, threading and re-entrancy: platform/Vex/Entity.h, platform/Vex/KeyedCollection.h. The
// configuration holds its SwitchIntfConfigs; whoever has a read-only view of it gets read-only
// views of them.

#include "interlock-model/Bridging/SwitchIntfConfig.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Type.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Bridging {

enum class ConfigAttribute : std::uint8_t { switchIntfConfig };

class VEX_EXPORT Config final : public Vex::Entity< ConfigAttribute, Nodo::IntfId > {
 public:
   using SwitchIntfConfigs = Vex::KeyMap< Nodo::IntfId, Vex::Ptr< SwitchIntfConfig > >;

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   const SwitchIntfConfigs & switchIntfConfig() const noexcept { return switchIntfConfig_; }
   /// The interface's SwitchIntfConfig, or null.
   Vex::Ptr< const SwitchIntfConfig > switchIntfConfig( Nodo::IntfId intf ) const {
      return switchIntfConfig_.get( intf );
   }
   Vex::Ptr< SwitchIntfConfig > switchIntfConfig( Nodo::IntfId intf ) {
      return switchIntfConfig_.get( intf );
   }
   /// The same for a look in passing; valid until the next change of the configuration.
   const SwitchIntfConfig * switchIntfConfigFind( Nodo::IntfId intf ) const noexcept {
      const auto * const found = switchIntfConfig_.find( intf );
      return found != nullptr ? found->get() : nullptr;
   }

   /// Puts `entity` under its own interface, in place of what was there; notifies
   /// `switchIntfConfig` with the interface unless it was this very entity. A null argument is the
   /// null-argument error.
   void switchIntfConfigIs( Vex::Ptr< SwitchIntfConfig > entity );
   /// Removes the interface's SwitchIntfConfig; notifies `switchIntfConfig` with the interface
   /// unless it had none.
   void switchIntfConfigDel( Nodo::IntfId intf );

 private:
   ~Config() override = default;

   SwitchIntfConfigs switchIntfConfig_;
};

} // namespace Bridging

template <>
struct Vex::EnumNames< Bridging::ConfigAttribute > {
   static constexpr std::string_view type = "Bridging::Config::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "switchIntfConfig" } };
};
