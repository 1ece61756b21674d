#include "interlock-model/Bridging/SwitchIntfConfig.h"

namespace Bridging {

const Vex::Type & SwitchIntfConfig::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Bridging::SwitchIntfConfig" };
   return type;
}

const Vex::Type & SwitchIntfConfig::fwkType() const noexcept {
   return staticFwkType();
}

void SwitchIntfConfig::ingressVlanXlateIs( VlanXlateKey key, VlanId newVlan ) {
   if ( ingressVlanXlate_.put( key, newVlan ) ) {
      notify( Attribute::ingressVlanXlate, key );
   }
}

void SwitchIntfConfig::egressVlanXlateIs( VlanXlateKey key, VlanId newVlan ) {
   if ( egressVlanXlate_.put( key, newVlan ) ) {
      notify( Attribute::egressVlanXlate, key );
   }
}

void SwitchIntfConfig::ingressVlanXlateDel( VlanXlateKey key ) {
   if ( ingressVlanXlate_.erase( key ) ) {
      notify( Attribute::ingressVlanXlate, key );
   }
}

void SwitchIntfConfig::egressVlanXlateDel( VlanXlateKey key ) {
   if ( egressVlanXlate_.erase( key ) ) {
      notify( Attribute::egressVlanXlate, key );
   }
}

} // namespace Bridging
