#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"

namespace Interface::Interlock {

const Vex::Type & IntfFeatureStatus::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Interface::Interlock::IntfFeatureStatus" };
   return type;
}

const Vex::Type & IntfFeatureStatus::fwkType() const noexcept {
   return staticFwkType();
}

void IntfFeatureStatus::intfIs( IntfFeature feature ) {
   if ( intf_.insert( feature ) ) {
      notify( Attribute::intf, feature );
   }
}

void IntfFeatureStatus::intfDel( IntfFeature feature ) {
   if ( intf_.erase( feature ) ) {
      notify( Attribute::intf, feature );
   }
}

} // namespace Interface::Interlock
