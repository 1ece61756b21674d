#include "interlock-model/Mlag/Status.h"

#include <utility>

namespace Mlag {

const Vex::Type & Status::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Mlag::Status" };
   return type;
}

const Vex::Type & Status::fwkType() const noexcept {
   return staticFwkType();
}

void Status::mlagStateIs( State state ) {
   if ( mlagState_ != state ) {
      mlagState_ = state;
      notify( Attribute::mlagState );
   }
}

void Status::peerLinkIs( PeerLink peerLink ) {
   if ( peerLink_ != peerLink ) {
      std::swap( peerLink_, peerLink ); // the old one goes when its watchers have heard of it
      notify( Attribute::peerLink );
   }
}

void Status::intfStatusIs( Nodo::IntfId intf, IntfStatus status ) {
   if ( intfStatus_.put( intf, std::move( status ) ) ) {
      notify( Attribute::intfStatus, intf );
   }
}

void Status::intfStatusDel( Nodo::IntfId intf ) {
   if ( intfStatus_.erase( intf ) ) {
      notify( Attribute::intfStatus, intf );
   }
}

void Status::peerInterlockIs( bool peerInterlock ) {
   if ( peerInterlock_ != peerInterlock ) {
      peerInterlock_ = peerInterlock;
      notify( Attribute::peerInterlock );
   }
}

} // namespace Mlag
