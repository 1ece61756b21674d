// Any bytes as a sequence of events that all interlocks hear of, on one set of entities; after each
// event they are as their models say.

#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Trace.h"
#include "tests/fuzz/EventRun.h"

#include <string>

namespace {

constexpr std::size_t mostEvents = 500;

std::string play( Fuzz::Bytes bytes, std::string * history ) {
   Fuzz::EventRun run;
   run.begin( bytes.next() );
   std::string difference = run.difference();
   for ( std::size_t events = 0; events < mostEvents && bytes.more() && difference.empty();
         ++events ) {
      const std::string event = run.event( bytes );
      if ( history != nullptr ) {
         *history += event + '\n';
      }
      difference = run.difference();
   }
   return difference;
}

// What the traces cost is spent better on more events; other tests look at them.
void silence() {
   Jotter::defaultTraceFileIs( nullptr );
   Vex::traceHandle( "VeloMlagEgressAclIntfInterlockSm" ).levelMaskIs( 0 );
   Vex::traceHandle( "VeloVlanXlateIntfInterlockSm" ).levelMaskIs( 0 );
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const std::uint8_t * data, std::size_t size ) {
   static const bool silent = ( silence(), true );
   static_cast< void >( silent );
   const Fuzz::Bytes bytes( { data, size } );
   if ( const std::string difference = play( bytes, nullptr ); !difference.empty() ) {
      std::string history;
      play( bytes, &history );
      Fuzz::fail( difference + " after\n" + history );
   }
   return 0;
}
