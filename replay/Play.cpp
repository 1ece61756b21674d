#include "replay/Play.h"

#include "platform/Jotter/RingLayout.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Jotter/TraceFileError.h"
#include "replay/HostClock.h"
#include "replay/JsonLinesOutput.h"
#include "replay/Parser.h"
#include "replay/Runner.h"
#include "replay/ScenarioError.h"
#include "replay/ScenarioFile.h"
#include "replay/Text.h"
#include "replay/TextOutput.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>

namespace Replay {

namespace {

std::string shownName( const std::string & file ) {
   return file == standardInput ? "<stdin>" : file;
}

std::unique_ptr< Output > makeOutput( OutputKind kind, Writer & writer ) {
   switch ( kind ) {
   case OutputKind::text:
      return textOutput( writer );
   case OutputKind::jsonLines:
      return jsonLinesOutput( writer );
   }
   return nullptr;
}

std::unique_ptr< HostClock > makeClock( ClockKind kind, Writer & writer ) {
   switch ( kind ) {
   case ClockKind::virtualTime:
      return std::make_unique< VirtualHostClock >();
   case ClockKind::realTime: // who watches wants to see what there is
      return realHostClock( [ &writer ] { writer.flush(); } );
   }
   return nullptr;
}

// As large as the ring in memory.
std::unique_ptr< Jotter::TraceFile > makeTraceFile( const std::optional< std::string > & path ) {
   constexpr std::size_t descriptors = std::size_t{ 64 } * 1024;
   constexpr std::size_t bytes =
      descriptors + Jotter::TraceFile::defaultCells * sizeof( Jotter::Layout::Cell );
   return path ? std::make_unique< Jotter::TraceFile >( *path, bytes ) : nullptr;
}

std::size_t playOne( const std::string & file, const Options & options, Output & output ) {
   const Scenario scenario = parseScenario( readScenarioFile( file ) );
   const auto clock = makeClock( options.clock, output.writer() );
   const auto traceFile = makeTraceFile( options.traceFile );
   RunOptions run = options.run;
   run.traceFile = traceFile.get();
   output.begin( shownName( file ) );
   const std::size_t failed = runScenario( scenario, run, *clock, output );
   output.writer().flush();
   return failed;
}

void printError( const std::string & file, const ScenarioError & error ) {
   std::string line;
   appendPrintable( line, shownName( file ) );
   line += ':' + std::to_string( error.line() ) + ": " + error.what() + '\n';
   static_cast< void >( std::fputs( line.c_str(), stderr ) );
}

} // namespace

ExitStatus play( const Options & options, Writer & writer ) {
   const auto output = makeOutput( options.output, writer );
   bool failed = false;
   for ( const std::string & file : options.scenarios ) {
      try {
         failed |= playOne( file, options, *output ) > 0;
      } catch ( const ScenarioError & error ) {
         writer.flush(); // what came before the error is shown before it
         printError( file, error );
         return somethingWrong;
      } catch ( const Jotter::TraceFileError & error ) {
         std::string line;
         appendPrintable( line, error.what() );
         std::fprintf( stderr, "interlock-replay: --trace-file: %s\n", line.c_str() );
         return somethingWrong;
      }
      if ( writer.error() != 0 ) {
         if ( writer.error() != EPIPE ) { // a reader who has seen enough is no error to tell him of
            const std::string why = std::generic_category().message( writer.error() );
            std::fprintf( stderr, "interlock-replay: standard output: %s\n", why.c_str() );
         }
         return somethingWrong;
      }
   }
   return failed ? someFailed : allHeld;
}

} // namespace Replay
