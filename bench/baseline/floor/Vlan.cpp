#include "bench/baseline/floor/Vlan.h"

namespace Bench::Floor {

Vlan::Vlan( PairSet & input,
            Members & members,
            std::vector< Mappings > & mappings,
            Output & output )
    : input_( input ), members_( members ), mappings_( mappings ), output_( output ) {
   for ( std::size_t at = 0; at < members_.lags(); ++at ) {
      handleIntfConfig( Intf::lag( at ) );
   }
}

void Vlan::inputIs( const Pair & pair ) {
   if ( input_.insert( pair ) ) {
      update( pair, members_.has( pair ) );
   }
}

void Vlan::inputDel( const Pair & pair ) {
   if ( input_.erase( pair ) ) {
      update( pair, members_.has( pair ) );
   }
}

void Vlan::memberIs( const Pair & pair ) {
   if ( members_.insert( pair ) ) {
      update( pair, members_.has( pair ) );
   }
}

void Vlan::memberDel( const Pair & pair ) {
   if ( members_.erase( pair ) ) {
      update( pair, members_.has( pair ) );
   }
}

void Vlan::mappingsAre( Intf lag, Mappings mappings ) {
   if ( mappings_[ lag.index() ] != mappings ) {
      mappings_[ lag.index() ] = mappings;
      handleIntfConfig( lag );
   }
}

void Vlan::update( const Pair & pair, bool active ) {
   const Mappings & mappings = mappings_[ pair.lag.index() ];
   const bool needed = mappings.ingress != 0 || mappings.egress != 0;
   if ( active && ( !needed || input_.has( pair ) ) ) {
      output_.is( pair );
   } else {
      output_.del( pair );
   }
}

void Vlan::handleIntfConfig( Intf lag ) {
   for ( const Intf member : members_.of( lag ) ) {
      update( { member, lag }, true );
   }
}

} // namespace Bench::Floor
