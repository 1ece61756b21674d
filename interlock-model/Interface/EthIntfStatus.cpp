#include "interlock-model/Interface/EthIntfStatus.h"

namespace Interface {

const Vex::Type & EthIntfStatus::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Interface::EthIntfStatus" };
   return type;
}

const Vex::Type & EthIntfStatus::fwkType() const noexcept {
   return staticFwkType();
}

void EthIntfStatus::linkStatusIs( LinkStatus status ) {
   if ( linkStatus_ != status ) {
      linkStatus_ = status;
      notify( Attribute::linkStatus );
   }
}

} // namespace Interface
