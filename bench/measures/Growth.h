#pragma once

// Memory, and the slowest event while a switch fills.

#include "bench/Allocations.h"
#include "bench/measures/Rested.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace Bench {

/// Bytes a pair over all entities and the interlock: fresh; after each pair has left and come back,
/// one by one; and after all have left, and all come back. Names are not counted: they live once in
/// the process, and all implementations need them.
template < World W >
void memory( benchmark::State & state ) {
   const Shape shape{ .pairs = static_cast< std::size_t >( state.range( 0 ) ) };
   const auto pairs = randomPairs( W( shape ), shape.pairs ); // names them all as well
   for ( auto _ : state ) {
      const LiveBytes live;
      const auto perPair = [ & ] {
         return static_cast< double >( LiveBytes::count() ) / static_cast< double >( pairs.size() );
      };
      auto world = std::make_unique< W >( shape );
      world->start();
      world->settle();
      state.counters[ "fresh" ] = perPair();
      for ( const auto & pair : pairs ) {
         world->memberDel( pair );
         world->inputDel( pair );
         world->memberIs( pair );
         world->inputIs( pair );
      }
      state.counters[ "worn" ] = perPair();
      for ( const auto & pair : pairs ) {
         world->memberDel( pair );
         world->inputDel( pair );
      }
      for ( const auto & pair : pairs ) {
         world->memberIs( pair );
         world->inputIs( pair );
      }
      world->settle();
      state.counters[ "refilled" ] = perPair();
      world->stop();
   }
}

/// The slowest event while pair after pair comes to a running interlock. The same events are timed
/// several times and each counts with its fastest time, so that what remains is the event's own.
template < World W >
void slowestEvent( benchmark::State & state ) {
   constexpr int runs = 7;
   const Shape shape{ .pairs = static_cast< std::size_t >( state.range( 0 ) ), .empty = true };
   using Clock = std::chrono::steady_clock;
   for ( auto _ : state ) {
      std::vector< Clock::duration > times( 2 * shape.pairs, Clock::duration::max() );
      for ( int run = 0; run < runs; ++run ) {
         W world( shape );
         const auto pairs = randomPairs( world, shape.pairs );
         world.start();
         std::size_t at = 0;
         const auto timed = [ & ]( const auto & event ) {
            const auto begin = Clock::now();
            event();
            times[ at ] = std::min( times[ at ], Clock::now() - begin );
            ++at;
         };
         for ( const auto & pair : pairs ) {
            timed( [ & ] { world.memberIs( pair ); } );
            timed( [ & ] { world.inputIs( pair ); } );
         }
         world.stop();
      }
      const auto slowest = std::ranges::max_element( times );
      const auto event = static_cast< std::size_t >( slowest - times.begin() );
      state.counters[ "slowest_us" ] =
         std::chrono::duration< double, std::micro >( *slowest ).count();
      const std::size_t pairsThere = event / 2;
      state.counters[ "pairs_there" ] = static_cast< double >( pairsThere );
      state.counters[ "is_input" ] = static_cast< double >( event % 2 );
   }
}

} // namespace Bench
