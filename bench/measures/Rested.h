#pragma once

// Worlds at rest, built once for all the measurements that leave them as they found them.

#include "bench/World.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Bench {

/// What a measurement is about; its name is MEASURE/interlock/implementation/trace.
struct Label {
   std::string_view interlock;
   std::string_view implementation;
   bool ring; // false: no trace at all

   std::string name( std::string_view measure ) const {
      std::string name( measure );
      for ( const std::string_view part :
            { interlock, implementation, std::string_view( ring ? "ring" : "off" ) } ) {
         name.append( "/" ).append( part );
      }
      return name;
   }
};

template < World W >
std::vector< typename W::Pair > randomPairs( const W & world, std::size_t count ) {
   std::vector< typename W::Pair > pairs;
   pairs.reserve( count );
   for ( const std::size_t at : randomOrder( count ) ) {
      pairs.push_back( world.pair( at ) );
   }
   return pairs;
}

/// A world with its interlock, and its pairs in random order, taken one after the other.
template < World W >
class Rested {
 public:
   explicit Rested( const Shape & shape )
       : world_( shape ), pairs_( randomPairs( world_, shape.pairs ) ) {
      world_.traceIs( true );
      world_.start();
      world_.settle();
   }
   Rested( const Rested & ) = delete;
   Rested & operator=( const Rested & ) = delete;
   Rested( Rested && ) = delete;
   Rested & operator=( Rested && ) = delete;
   ~Rested() { world_.stop(); }

   W & world() { return world_; }
   const typename W::Pair & next() {
      at_ = at_ + 1 < pairs_.size() ? at_ + 1 : 0;
      return pairs_[ at_ ];
   }
   bool atRest( const Shape & shape ) const {
      return world_.admitted() == ( shape.half ? shape.pairs / 2 : shape.pairs );
   }

 private:
   W world_;
   std::vector< typename W::Pair > pairs_;
   std::size_t at_ = 0;
};

template < World W >
Rested< W > & rested( const Shape & shape ) {
   static std::map< std::pair< std::size_t, bool >, std::unique_ptr< Rested< W > > > worlds;
   auto & world = worlds[ { shape.pairs, shape.half } ];
   if ( !world ) {
      world = std::make_unique< Rested< W > >( shape );
   }
   return *world;
}

/// Has the ring on, or all trace off, for as long as the scope lives.
template < World W >
class TraceScope {
 public:
   TraceScope( W & world, bool ring ) : world_( world ) { world_.traceIs( ring ); }
   TraceScope( const TraceScope & ) = delete;
   TraceScope & operator=( const TraceScope & ) = delete;
   TraceScope( TraceScope && ) = delete;
   TraceScope & operator=( TraceScope && ) = delete;
   ~TraceScope() { world_.traceIs( true ); }

 private:
   W & world_;
};

} // namespace Bench
