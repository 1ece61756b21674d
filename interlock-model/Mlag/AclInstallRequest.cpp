#include "interlock-model/Mlag/AclInstallRequest.h"

namespace Mlag {

const Vex::Type & AclInstallRequest::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Mlag::AclInstallRequest" };
   return type;
}

const Vex::Type & AclInstallRequest::fwkType() const noexcept {
   return staticFwkType();
}

void AclInstallRequest::installRequestIs( Nodo::IntfId lag, std::uint32_t token ) {
   if ( installRequest_.put( lag, token ) ) {
      notify( Attribute::installRequest, lag );
   }
}

void AclInstallRequest::installRequestDel( Nodo::IntfId lag ) {
   if ( installRequest_.erase( lag ) ) {
      notify( Attribute::installRequest, lag );
   }
}

} // namespace Mlag
