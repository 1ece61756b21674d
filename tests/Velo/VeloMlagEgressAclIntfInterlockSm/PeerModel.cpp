// How the model starts, stops and switches over.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerModel.h"

namespace Velo {

void PeerModel::start( bool asPeer ) {
   running = true;
   peerMode = asPeer;
   if ( peerMode ) {
      watermark = 1;
      for ( const Lag & lag : lags ) {
         watermark = std::max( watermark, lag.response.value_or( 0 ) );
      }
   } else {
      decideLeftOver();
   }
   decideAll();
   if ( peerMode ) {
      decideLeftOver();
      for ( std::size_t at = 0; at < lagCount; ++at ) {
         if ( lags[ at ].request && !isActive( lags[ at ] ) ) {
            decideLag( at );
         }
      }
   }
}

void PeerModel::decideLeftOver() {
   for ( std::size_t at = 0; at < lagCount; ++at ) {
      const Lag & lag = lags[ at ];
      if ( peerMode && !isActive( lag ) ) {
         if ( lag.admitted != 0 ) {
            decideLag( at );
         }
      } else {
         decideEach( at,
                     peerMode ? static_cast< Mask >( lag.admitted & ~lag.members ) : lag.admitted );
      }
   }
}

void PeerModel::stop() {
   running = false;
   for ( Lag & lag : lags ) {
      lag.state.reset();
   }
   deadlines.clear();
}

void PeerModel::modeIs( bool asPeer ) {
   if ( running && asPeer != peerMode ) {
      stop();
      if ( !asPeer ) {
         for ( Lag & lag : lags ) {
            lag.request.reset();
         }
      }
      start( asPeer );
   }
}

} // namespace Velo
