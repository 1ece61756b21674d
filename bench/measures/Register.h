#pragma once

// Everything that is measured of one world.

#include "bench/measures/Events.h"
#include "bench/measures/Growth.h"
#include "bench/measures/Passes.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Bench {

inline constexpr std::array< std::int64_t, 4 > sizes{ 1 << 10, 1 << 14, 1 << 16, 1 << 20 };

/// The times, with the ring on or with all trace off.
template < World W >
void registerTimes( const Label & label ) {
   const auto add = [ & ]( std::string_view measure, auto function ) {
      const bool ring = label.ring;
      return benchmark::RegisterBenchmark(
         label.name( measure ).c_str(),
         [ function, ring ]( benchmark::State & state ) { function( state, ring ); } );
   };
   for ( const std::int64_t size : sizes ) {
      add( "event-input", eventToVerdict< W, InputEvent > )->Arg( size );
      add( "event-member", eventToVerdict< W, MemberEvent > )->Arg( size );
      add( "pass-half", fullPass< W, HalfChanges > )->Arg( size );
      add( "pass-none", fullPass< W, NoneChanges > )->Arg( size );
      add( "start-up", startUp< W > )->Arg( size )->UseManualTime();
   }
   add( "event-cold", coldEvent< W > )->Arg( 1 << 16 )->UseManualTime()->Iterations( 1 );
}

/// What does not depend on the trace, and need not be repeated.
template < World W >
void registerSpace( const Label & label ) {
   const auto once = [ & ]( std::string_view measure, auto function ) {
      benchmark::RegisterBenchmark( label.name( measure ).c_str(), function )
         ->Arg( 1 << 16 )
         ->Iterations( 1 )
         ->Repetitions( 1 );
   };
   once( "memory", memory< W > );
   once( "slowest", slowestEvent< W > );
}

} // namespace Bench
