#include "interlock-model/Mlag/AclInstallResponse.h"

namespace Mlag {

const Vex::Type & AclInstallResponse::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Mlag::AclInstallResponse" };
   return type;
}

const Vex::Type & AclInstallResponse::fwkType() const noexcept {
   return staticFwkType();
}

void AclInstallResponse::installResponseIs( Nodo::IntfId lag, std::uint32_t token ) {
   if ( installResponse_.put( lag, token ) ) {
      notify( Attribute::installResponse, lag );
   }
}

void AclInstallResponse::installResponseDel( Nodo::IntfId lag ) {
   if ( installResponse_.erase( lag ) ) {
      notify( Attribute::installResponse, lag );
   }
}

} // namespace Mlag
