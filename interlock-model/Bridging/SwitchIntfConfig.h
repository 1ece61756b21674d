#pragma once

// The switching configuration of one interface, as far as VLAN translation goes: which VLANs are
// translated on the way in and on the way out, and to what.
//
// Ownership, threading and re-entrancy: platform/Vex/Entity.h, platform/Vex/KeyedCollection.h.

#include "interlock-model/Bridging/VlanXlateKey.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Type.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Bridging {

enum class SwitchIntfConfigAttribute : std::uint8_t { ingressVlanXlate, egressVlanXlate };

class VEX_EXPORT SwitchIntfConfig final
    : public Vex::Entity< SwitchIntfConfigAttribute, VlanXlateKey > {
 public:
   using Mappings = Vex::KeyMap< VlanXlateKey, VlanId >; // to the new VLAN

   explicit SwitchIntfConfig( Nodo::IntfId intf ) noexcept : key_( intf ) {}

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   /// The interface.
   Nodo::IntfId key() const noexcept { return key_; }

   const Mappings & ingressVlanXlate() const noexcept { return ingressVlanXlate_; }
   const Mappings & egressVlanXlate() const noexcept { return egressVlanXlate_; }

   /// Insert or overwrite a mapping; notify with its key unless it is the same already.
   void ingressVlanXlateIs( VlanXlateKey key, VlanId newVlan );
   void egressVlanXlateIs( VlanXlateKey key, VlanId newVlan );
   /// Remove a mapping; notify with its key unless it was absent.
   void ingressVlanXlateDel( VlanXlateKey key );
   void egressVlanXlateDel( VlanXlateKey key );

 private:
   ~SwitchIntfConfig() override = default;

   Nodo::IntfId key_;
   Mappings ingressVlanXlate_;
   Mappings egressVlanXlate_;
};

} // namespace Bridging

template <>
struct Vex::EnumNames< Bridging::SwitchIntfConfigAttribute > {
   static constexpr std::string_view type = "Bridging::SwitchIntfConfig::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "ingressVlanXlate" },
                                        EnumEntry{ 1, "egressVlanXlate" } };
};
