#pragma once

// Every pair is decided anew, because of one change (MLAG state) or of one for each LAG (its status
// at the peer, its translation); and the first pass of an interlock.

#include "bench/measures/Rested.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>

namespace Bench {

struct HalfChanges {
   template < World W >
   static void pass( W & world, bool on ) {
      world.passHalf( on );
   }
};

struct NoneChanges {
   template < World W >
   static void pass( W & world, bool on ) {
      world.passNone( on );
   }
};

template < World W, class Change >
void fullPass( benchmark::State & state, bool ring ) {
   const Shape shape{ .pairs = static_cast< std::size_t >( state.range( 0 ) ), .half = true };
   auto & rested = Bench::rested< W >( shape );
   W & world = rested.world();
   const TraceScope< W > trace( world, ring );
   for ( auto _ : state ) {
      Change::pass( world, false );
      Change::pass( world, true );
   }
   state.SetItemsProcessed( 2 * static_cast< std::int64_t >( state.iterations() ) *
                            state.range( 0 ) );
   if ( !rested.atRest( shape ) ) {
      state.SkipWithError( "half of the pairs should be admitted" );
   }
}

/// An interlock is created over inputs that are there, with an empty output.
template < World W >
void startUp( benchmark::State & state, bool ring ) {
   static std::map< std::int64_t, std::unique_ptr< W > > worlds;
   auto & world = worlds[ state.range( 0 ) ];
   if ( !world ) {
      world =
         std::make_unique< W >( Shape{ .pairs = static_cast< std::size_t >( state.range( 0 ) ) } );
   }
   const TraceScope< W > trace( *world, ring );
   for ( auto _ : state ) {
      const auto begin = std::chrono::steady_clock::now();
      world->start();
      state.SetIterationTime(
         std::chrono::duration< double >( std::chrono::steady_clock::now() - begin ).count() );
      world->stop();
   }
   state.SetItemsProcessed( static_cast< std::int64_t >( state.iterations() ) * state.range( 0 ) );
}

} // namespace Bench
