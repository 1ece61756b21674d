#include "interlock-model/Hardware/Lag/InitialMember.h"

namespace Hardware::Lag {

const Vex::Type & InitialMember::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Hardware::Lag::InitialMember" };
   return type;
}

const Vex::Type & InitialMember::fwkType() const noexcept {
   return staticFwkType();
}

void InitialMember::memberIs( Nodo::IntfId port, PortProgType type ) {
   if ( member_.put( port, type ) ) {
      notify( Attribute::member, port );
   }
}

void InitialMember::memberDel( Nodo::IntfId port ) {
   if ( member_.erase( port ) ) {
      notify( Attribute::member, port );
   }
}

} // namespace Hardware::Lag
