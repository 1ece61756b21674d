#include "bench/baseline/floor/Peer.h"

#include <utility>

namespace Bench::Floor {

template < class RingType >
Peer< RingType >::Peer( PairSet & input, Members & members, MlagInputs & mlag, Output & output )
    : input_( input ), members_( members ), mlag_( mlag ), output_( output ),
      lags_( members.lags() ) {
   ring_( Site::handleInitialized );
   for ( std::size_t at = 0; at < members_.lags(); ++at ) {
      handleLag( Intf::lag( at ) );
   }
}

template < class RingType >
void Peer< RingType >::inputIs( const Pair & pair ) {
   const Event event( ring_ );
   if ( input_.insert( pair ) ) {
      ring_( Site::handleIntfFeature, pair.member, pair.lag );
      handleMember( pair );
   }
}

template < class RingType >
void Peer< RingType >::inputDel( const Pair & pair ) {
   const Event event( ring_ );
   if ( input_.erase( pair ) ) {
      ring_( Site::handleIntfFeature, pair.member, pair.lag );
      handleMember( pair );
   }
}

template < class RingType >
void Peer< RingType >::memberIs( const Pair & pair ) {
   const Event event( ring_ );
   if ( members_.insert( pair ) ) {
      handleMember( pair );
   }
}

template < class RingType >
void Peer< RingType >::memberDel( const Pair & pair ) {
   const Event event( ring_ );
   if ( members_.erase( pair ) ) {
      handleMember( pair );
   }
}

template < class RingType >
void Peer< RingType >::mlagIntfIs( Intf lag, std::uint8_t local, std::uint8_t peer ) {
   const Event event( ring_ );
   const std::size_t at = lag.index();
   if ( mlag_.localState[ at ] == local && mlag_.peerState[ at ] == peer && isMlagIntf( lag ) ) {
      return;
   }
   mlag_.known[ at ] = 1;
   mlag_.localState[ at ] = local;
   mlag_.peerState[ at ] = peer;
   ring_( Site::handleMlagIntfStatus, lag );
   handleLag( lag );
}

template < class RingType >
void Peer< RingType >::responseIs( Intf lag, std::uint32_t token ) {
   const Event event( ring_ );
   Lag & entry = lags_[ lag.index() ];
   if ( entry.response == token ) {
      return;
   }
   entry.response = token;
   ring_( Site::handlePeerResponse, lag );
   if ( matched( entry ) ) {
      handleLag( lag );
   } else if ( entry.state == LinkState::linkUp ) {
      linkStateIs( lag, LinkState::linkFail );
      ring_( Site::responseLost, lag );
      handleLag( lag );
   }
}

template < class RingType >
void Peer< RingType >::runDue( double now ) {
   while ( !deadlines_.empty() && deadlines_.front().first <= now ) {
      const auto [ deadline, lag ] = deadlines_.front();
      deadlines_.pop_front();
      if ( lags_[ lag.index() ].deadline != deadline ) {
         continue; // it was answered
      }
      const Event event( ring_ );
      ring_( Site::handleTimeout, lag );
      linkStateIs( lag, LinkState::linkFail );
      ring_( Site::timeoutOccurred, lag );
      handleLag( lag );
   }
}

template < class RingType >
void Peer< RingType >::handleMember( const Pair & pair ) {
   ring_( Site::handleMember, pair.member, pair.lag );
   handlePeerInterlockLag( pair.lag );
   if ( !members_.has( pair ) ) {
      ring_( Site::memberNotActive );
      output_.del( pair );
      return;
   }
   if ( !isMlagIntf( pair.lag ) ) {
      ring_( Site::notMlagIntf );
      output_.is( pair );
      return;
   }
   const LinkState state = lags_[ pair.lag.index() ].state;
   if ( state == LinkState::linkDown || state == LinkState::linkRequesting ) {
      ring_( state == LinkState::linkDown ? Site::lagDown : Site::notReady );
      output_.del( pair );
      return;
   }
   if ( state == LinkState::linkUp ) {
      ring_( Site::shouldInstall, pair.lag );
      if ( mlag_.peerState[ pair.lag.index() ] == 2 && !input_.has( pair ) ) {
         ring_( Site::aclMissing );
         output_.del( pair );
         return;
      }
   }
   ring_( Site::satisfied );
   output_.is( pair );
}

template < class RingType >
void Peer< RingType >::handlePeerInterlockLag( Intf intf ) {
   ring_( Site::handlePeerInterlockLag, intf );
   Lag & lag = lags_[ intf.index() ];
   const bool active = !members_.of( intf ).empty();
   if ( !active || !isMlagIntf( intf ) ) {
      if ( !active ) {
         ring_( Site::lagNotActive );
      }
      ring_( Site::revoking );
      lag.request = 0;
      if ( isMlagIntf( intf ) ) {
         updateLinkState( intf );
      } else {
         linkStateIs( intf, LinkState::linkDown );
      }
      return;
   }
   if ( lag.request == 0 ) {
      ++watermark_;
      ring_( Site::sendingRequest, std::uint64_t{ watermark_ } );
      lag.request = watermark_;
   }
   updateLinkState( intf );
}

template < class RingType >
void Peer< RingType >::updateLinkState( Intf intf ) {
   ring_( Site::updateLinkState, intf );
   const Lag & lag = lags_[ intf.index() ];
   LinkState next = LinkState::linkRequesting;
   if ( members_.of( intf ).empty() ) {
      next = LinkState::linkDown;
   } else if ( matched( lag ) ) {
      next = LinkState::linkUp;
   } else if ( lag.state == LinkState::linkFail ) {
      return;
   } else if ( lag.state == LinkState::linkUp ) {
      next = LinkState::linkFail;
   }
   ring_( Site::transition, static_cast< std::uint64_t >( lag.state ) );
   linkStateIs( intf, next );
}

template < class RingType >
void Peer< RingType >::linkStateIs( Intf intf, LinkState state ) {
   Lag & lag = lags_[ intf.index() ];
   if ( std::exchange( lag.state, state ) == state ) {
      return;
   }
   ring_( Site::handleLinkState, intf );
   if ( state != LinkState::linkRequesting ) {
      ring_( Site::stoppingTimeout, intf );
      if ( lag.deadline != 0 ) {
         ring_( Site::handleTimer, intf );
         lag.deadline = 0;
      }
   } else if ( lag.deadline == 0 ) {
      const double now = Vex::now().value();
      ring_( Site::startingTimeout, intf, std::bit_cast< std::uint64_t >( now ) );
      lag.deadline = now + 0.1;
      ring_( Site::handleTimer, intf );
      deadlines_.emplace_back( lag.deadline, intf );
   }
}

template < class RingType >
void Peer< RingType >::handleLag( Intf intf ) {
   ring_( Site::handleLag, intf );
   if ( members_.of( intf ).empty() ) {
      handleLagInactive( intf );
      return;
   }
   for ( const Intf member : members_.of( intf ) ) {
      handleMember( { member, intf } );
   }
}

template < class RingType >
void Peer< RingType >::handleLagInactive( Intf intf ) {
   ring_( Site::handleLagInactive, intf );
   handlePeerInterlockLag( intf );
   output_.admitted().forEach( [ this, intf ]( const Pair & pair ) {
      if ( pair.lag == intf ) {
         handleMember( pair );
      }
   } );
}

template class Peer< Ring >;
template class Peer< NoRing >;

} // namespace Bench::Floor
