// The link state of each LAG: which comes next (LinkStateTable.h), and what it starts and stops.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfPeerInterlockSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"
#include "platform/Vex/Assert.h"
#include "platform/Vex/Clock.h"

namespace Velo {

using EgressAcl::duplog;

void MlagEgressAclIntfPeerInterlockSm::linkStateIs( Nodo::IntfId lag, LinkState state ) {
   if ( !linkState_.put( lag, state ) ) {
      return;
   }
   try {
      handleLinkState( lag );
   } catch ( ... ) {
      // No memory for the deadline of a request. Without one the LAG might ask for good, and no
      // later event would set one; without a state the next event begins again.
      linkState_.erase( lag );
      throw;
   }
}

void MlagEgressAclIntfPeerInterlockSm::linkStateDel( Nodo::IntfId lag ) {
   if ( linkState_.erase( lag ) ) {
      handleLinkState( lag );
   }
}

void MlagEgressAclIntfPeerInterlockSm::linkStateDelAll() {
   for ( const Nodo::IntfId lag : linkState_.keys() ) {
      linkStateDel( lag );
   }
}

LinkEvent MlagEgressAclIntfPeerInterlockSm::observe( Nodo::IntfId lag ) const {
   if ( !lagActive( lag ) ) {
      return LinkEvent::inactive;
   }
   return matched( lag ) ? LinkEvent::matched : LinkEvent::notMatched;
}

void MlagEgressAclIntfPeerInterlockSm::updateLinkState( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "updateLinkState", " lag : ", lag );
   VEX_ASSERT( mlagStatus()->intfStatusHas( lag ) );
   const LinkState from = linkState( lag );
   const NextLinkState next = nextLinkState( from, observe( lag ) );
   if ( !next ) {
      return;
   }
   switch ( *next ) {
   case LinkState::linkDown:
      duplog( Vex::at< 3 >(), "Transitioning link state from ", from, " to linkDown" );
      break;
   case LinkState::linkRequesting:
      duplog( Vex::at< 3 >(), "Transitioning link state from ", from, " to linkRequesting" );
      break;
   case LinkState::linkUp:
      duplog( Vex::at< 3 >(), "Transitioning link state from ", from, " to linkUp" );
      break;
   case LinkState::linkFail:
      duplog( Vex::at< 4 >(), "Syslog: Lag ", lag,
              " is linkUp, but has not gotten a response from the peer yet" );
      break;
   }
   linkStateIs( lag, *next );
}

void MlagEgressAclIntfPeerInterlockSm::handleLinkState( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handleLinkState", " lag : ", lag );
   if ( linkState( lag ) == LinkState::linkRequesting ) {
      if ( !timer_.has( lag ) ) {
         const Vex::Seconds now = Vex::now();
         duplog( Vex::at< 3 >(), "Starting timeout for lag ", lag, " at time ", now );
         timerIs( lag, now + delay );
      }
      return;
   }
   duplog( Vex::at< 3 >(), "Stopping timeout for lag ", lag );
   timerDel( lag );
}

} // namespace Velo
