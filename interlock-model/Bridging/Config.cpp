#include "interlock-model/Bridging/Config.h"

#include "platform/Vex/NullArgumentError.h"

#include <utility>

namespace Bridging {

const Vex::Type & Config::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Bridging::Config" };
   return type;
}

const Vex::Type & Config::fwkType() const noexcept {
   return staticFwkType();
}

void Config::switchIntfConfigIs( Vex::Ptr< SwitchIntfConfig > entity ) {
   if ( !entity ) {
      throw Vex::NullArgumentError( "switchIntfConfigIs" );
   }
   const Nodo::IntfId intf = entity->key();
   if ( switchIntfConfig_.put( intf, std::move( entity ) ) ) {
      notify( Attribute::switchIntfConfig, intf );
   }
}

void Config::switchIntfConfigDel( Nodo::IntfId intf ) {
   // The entity goes when its watchers have heard of it.
   if ( const auto removed = switchIntfConfig_.take( intf ) ) {
      notify( Attribute::switchIntfConfig, intf );
   }
}

} // namespace Bridging
