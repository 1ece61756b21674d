#include "bench/baseline/floor/Basic.h"

namespace Bench::Floor {

template < class RingType >
Basic< RingType >::Basic( PairSet & input, Members & members, MlagInputs & mlag, Output & output )
    : input_( input ), members_( members ), mlag_( mlag ), output_( output ) {
   ring_( Site::handleInitialized );
   output_.admitted().forEach( [ this ]( const Pair & pair ) { handleMember( pair ); } );
   handleAllLags();
}

template < class RingType >
void Basic< RingType >::inputIs( const Pair & pair ) {
   const Event event( ring_ );
   if ( input_.insert( pair ) ) {
      handleIntfFeature( pair );
   }
}

template < class RingType >
void Basic< RingType >::inputDel( const Pair & pair ) {
   const Event event( ring_ );
   if ( input_.erase( pair ) ) {
      handleIntfFeature( pair );
   }
}

template < class RingType >
void Basic< RingType >::memberIs( const Pair & pair ) {
   const Event event( ring_ );
   if ( members_.insert( pair ) ) {
      handleMember( pair );
   }
}

template < class RingType >
void Basic< RingType >::memberDel( const Pair & pair ) {
   const Event event( ring_ );
   if ( members_.erase( pair ) ) {
      handleMember( pair );
   }
}

template < class RingType >
void Basic< RingType >::mlagStateIs( std::uint8_t state ) {
   const Event event( ring_ );
   if ( mlag_.state != state ) {
      mlag_.state = state;
      ring_( Site::handleMlagState );
      handleAllLags();
   }
}

template < class RingType >
void Basic< RingType >::handleIntfFeature( const Pair & pair ) {
   ring_( Site::handleIntfFeature, pair.member, pair.lag );
   handleMember( pair );
}

template < class RingType >
bool Basic< RingType >::shouldInstallEgressAcl( Intf lag ) const {
   return ( mlag_.state == 3 || mlag_.state == 4 ) && mlag_.peerLinkExists &&
          mlag_.linkStatus == 2 && mlag_.known[ lag.index() ] != 0 &&
          mlag_.peerState[ lag.index() ] == 2;
}

template < class RingType >
void Basic< RingType >::handleMember( const Pair & pair ) {
   ring_( Site::handleMember, pair.member, pair.lag );
   if ( !members_.has( pair ) ) {
      ring_( Site::memberNotActive );
      output_.del( pair );
      return;
   }
   ring_( Site::memberActive );
   if ( !shouldInstallEgressAcl( pair.lag ) ) {
      ring_( Site::aclNotNeeded );
      output_.is( pair );
      return;
   }
   ring_( Site::aclNeeded );
   if ( input_.has( pair ) ) {
      ring_( Site::inInput );
      output_.is( pair );
   } else {
      ring_( Site::notInInput );
      output_.del( pair );
   }
}

template < class RingType >
void Basic< RingType >::handleAllLags() {
   for ( std::size_t at = 0; at < members_.lags(); ++at ) {
      const Intf lag = Intf::lag( at );
      for ( const Intf member : members_.of( lag ) ) {
         handleMember( { member, lag } );
      }
   }
}

template class Basic< Ring >;
template class Basic< ClockedRing >;
template class Basic< NoRing >;

} // namespace Bench::Floor
