// The exchange with the MLAG peer: requests out, responses in.
//
// Within one life of the interlock a token identifies one request; 0 is none. A LAG has at most one
// request outstanding, and a new one after that was revoked carries a new token, so that the answer
// to an old one matches nothing.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfPeerInterlockSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"

namespace Velo {

using EgressAcl::duplog;

void MlagEgressAclIntfPeerInterlockSm::VexAclResponseFromPeer::onAttribute(
   Attribute attribute, const Nodo::IntfId & lag ) {
   const auto sm = forwarding();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::installResponse:
      sm->handlePeerResponse( lag );
      break;
   }
}

// Whoever hears of a request that is written or withdrawn may change any input, and a handler then
// decides this LAG anew, or may retire this state machine. What follows such a write looks again.
void MlagEgressAclIntfPeerInterlockSm::handlePeerInterlockLag( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handlePeerInterlockLag", " lag : ", lag );
   if ( retired() ) {
      return;
   }
   if ( !lagActive( lag ) ) {
      duplog( Vex::at< 3 >(), "lag is not active" );
      duplog( Vex::at< 3 >(), "Revoking install request for lag (no longer active)" );
      aclRequestToPeer_->installRequestDel( lag );
      if ( retired() ) {
         return;
      }
      if ( isMlagIntf( lag ) ) {
         updateLinkState( lag );
      } else {
         linkStateDel( lag );
      }
      return;
   }
   if ( !isMlagIntf( lag ) ) {
      duplog( Vex::at< 3 >(), "Revoking install request for lag (no longer mlag intf)" );
      aclRequestToPeer_->installRequestDel( lag );
      if ( !retired() && !isMlagIntf( lag ) ) {
         linkStateDel( lag );
      }
      return;
   }
   if ( !aclRequestToPeer_->installRequest().has( lag ) ) {
      const std::uint32_t token = watermarkInc( 1 );
      duplog( Vex::at< 2 >(), "Sending install request to peer with value ", token );
      aclRequestToPeer_->installRequestIs( lag, token );
      if ( retired() || !isMlagIntf( lag ) ) {
         return;
      }
   }
   updateLinkState( lag );
}

void MlagEgressAclIntfPeerInterlockSm::handlePeerResponse( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handlePeerResponse", " lag: ", lag );
   if ( retired() ) {
      return;
   }
   if ( matched( lag ) ) {
      handleLag( lag );
      return;
   }
   if ( const auto next = nextLinkState( linkState( lag ), LinkEvent::responseLost ) ) {
      linkStateIs( lag, *next );
      duplog( Vex::at< 4 >(), "Syslog: Lag ", lag,
              " is linkUp, but has not gotten a response from the peer yet" );
      handleLag( lag );
   }
}

bool MlagEgressAclIntfPeerInterlockSm::matched( Nodo::IntfId lag ) const {
   const std::uint32_t request = aclRequestToPeer_->installRequest( lag );
   return request != 0 && aclResponseFromPeer()->installResponse( lag ) == request;
}

void MlagEgressAclIntfPeerInterlockSm::resumeWatermark() {
   watermarkIs( 1 );
   const auto responses = aclResponseFromPeer();
   for ( const auto response : responses->installResponse().entries() ) {
      if ( response.value > watermark_ ) {
         watermarkIs( response.value );
      }
   }
}

} // namespace Velo
