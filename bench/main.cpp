// interlock-bench: proves that what it compares does the same job, then measures.
//
//    interlock-bench [--check] [--pointers=thread-safe] [Google Benchmark's options]
//
// --check proves and does not measure.

#include "bench/Registry.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Trace.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iterator>
#include <string_view>
#include <vector>

namespace {

void proveThatAllDoTheSame() {
   Bench::Contestants all;
   Bench::Ours::addContestants( all );
   Bench::Floor::addContestants( all );
   Bench::Usual::addSignals2Contestants( all );
   Bench::Usual::addSigcContestants( all );
   for ( const std::string_view interlock : { "basic", "peer", "vlan" } ) {
      Bench::Contestants contestants;
      std::ranges::copy_if( all, std::back_inserter( contestants ),
                            [ & ]( const auto & one ) { return one.interlock == interlock; } );
      for ( const std::uint64_t seed : { 1U, 2U, 3U } ) {
         Bench::check( contestants, seed );
      }
   }
   std::fputs( "all implementations give the same verdicts\n", stderr );
}

void registerAll() {
   Bench::Ours::registerWorlds();
   Bench::Floor::registerWorlds();
   Bench::Usual::registerSignals2Worlds();
   Bench::Usual::registerSigcWorlds();
   Bench::Ours::registerBurst();
   Bench::Parts::registerNotification();
   Bench::Parts::registerRingRecord();
   Bench::Parts::registerReferences();
   Bench::Parts::registerTimers();
}

// Also what an operator would see: it is no part of what is measured, and would fill the terminal.
void textTraceOff() {
   for ( const char * const handle :
         { "VeloMlagEgressAclIntfInterlockSm", "VeloVlanXlateIntfInterlockSm" } ) {
      Vex::traceHandle( handle ).levelMaskIs( 0 );
   }
}

// Takes our own option out of the command line; true when it was there.
bool taken( std::vector< char * > & arguments, std::string_view option ) {
   return std::erase_if( arguments,
                         [ & ]( const char * argument ) { return argument == option; } ) != 0;
}

} // namespace

int main( int count, char ** values ) {
   try {
      std::vector< char * > arguments( values, values + count );
      if ( taken( arguments, "--pointers=thread-safe" ) ) {
         Vex::pointerModeIs( Vex::PointerMode::threadSafe );
      }
      const bool checkOnly = taken( arguments, "--check" );
      textTraceOff();
      if ( !checkOnly ) {
         Bench::Ours::nameAll();
      }
      proveThatAllDoTheSame();
      if ( checkOnly ) {
         return 0;
      }
      registerAll();
      int left = static_cast< int >( arguments.size() );
      arguments.push_back( nullptr );
      benchmark::Initialize( &left, arguments.data() );
      if ( benchmark::ReportUnrecognizedArguments( left, arguments.data() ) ) {
         return 2;
      }
      benchmark::RunSpecifiedBenchmarks();
      benchmark::Shutdown();
      return 0;
   } catch ( const std::exception & error ) {
      std::fprintf( stderr, "interlock-bench: %s\n", error.what() );
      return 1;
   }
}
