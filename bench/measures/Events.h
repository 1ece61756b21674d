#pragma once

// From one event to its verdict. Events come in pairs, so that each round finds the world at rest:
// something goes, and the member is held out; it comes back, and the member is admitted.

#include "bench/Allocations.h"
#include "bench/measures/Rested.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Bench {

/// The hardware layer reports the feature of a pair gone, and programmed again.
struct InputEvent {
   template < World W >
   static void goes( W & world, const typename W::Pair & pair ) {
      world.inputDel( pair );
   }
   template < World W >
   static void comes( W & world, const typename W::Pair & pair ) {
      world.inputIs( pair );
   }
};

/// A port leaves its LAG, and joins it again.
struct MemberEvent {
   template < World W >
   static void goes( W & world, const typename W::Pair & pair ) {
      world.memberDel( pair );
   }
   template < World W >
   static void comes( W & world, const typename W::Pair & pair ) {
      world.memberIs( pair );
   }
};

template < World W, class Event >
void eventToVerdict( benchmark::State & state, bool ring ) {
   const Shape shape{ .pairs = static_cast< std::size_t >( state.range( 0 ) ) };
   auto & rested = Bench::rested< W >( shape );
   W & world = rested.world();
   const TraceScope< W > trace( world, ring );
   const std::uint64_t heard = world.heard();
   const std::uint64_t allocated = allocations();
   for ( auto _ : state ) {
      const typename W::Pair pair = rested.next();
      Event::goes( world, pair );
      Event::comes( world, pair );
   }
   const auto events = 2 * static_cast< std::uint64_t >( state.iterations() );
   state.counters[ "allocations" ] =
      static_cast< double >( allocations() - allocated ) / static_cast< double >( events );
   state.SetItemsProcessed( static_cast< std::int64_t >( events ) );
   if ( world.heard() - heard != events || !rested.atRest( shape ) ) {
      state.SkipWithError( "not one verdict for each event" );
   }
}

/// Empties the caches by walking over more memory than they hold.
inline void emptyCaches() {
   static std::vector< std::uint64_t > walked( ( std::size_t{ 96 } << 20U ) / 8 );
   for ( std::size_t at = 0; at < walked.size(); at += 8 ) {
      ++walked[ at ];
   }
   benchmark::ClobberMemory();
}

/// The first event after the machine has done something else: data and code are in no cache. The
/// time of an iteration is the median of its events, because a single one that is disturbed would
/// outweigh all others.
template < World W >
void coldEvent( benchmark::State & state, bool ring ) {
   constexpr std::size_t events = 64;
   const Shape shape{ .pairs = static_cast< std::size_t >( state.range( 0 ) ) };
   auto & rested = Bench::rested< W >( shape );
   W & world = rested.world();
   const TraceScope< W > trace( world, ring );
   std::vector< std::chrono::duration< double > > times;
   const auto timed = [ & ]( const auto & event ) {
      emptyCaches();
      const auto begin = std::chrono::steady_clock::now();
      event();
      times.emplace_back( std::chrono::steady_clock::now() - begin );
   };
   for ( auto _ : state ) {
      times.clear();
      while ( times.size() < events ) {
         const typename W::Pair pair = rested.next();
         timed( [ & ] { world.inputDel( pair ); } );
         timed( [ & ] { world.inputIs( pair ); } );
      }
      std::ranges::nth_element( times, times.begin() + events / 2 );
      state.SetIterationTime( times[ events / 2 ].count() );
   }
   state.SetItemsProcessed( static_cast< std::int64_t >( state.iterations() ) );
}

} // namespace Bench
