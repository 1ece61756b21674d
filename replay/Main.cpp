// interlock-replay: plays scenarios to the interlocks of libVeloIntfInterlock.

#include "replay/CommandLine.h"
#include "replay/HostClock.h"
#include "replay/Play.h"
#include "replay/Terminal.h"
#include "replay/Writer.h"
#include "replay/explain/ExplainCommandLine.h"
#include "replay/explain/ExplainScenario.h"
#include "replay/import/ImportCommand.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <unistd.h>

int main( int argc, char ** argv ) {
   try {
      static_cast< void >( std::signal( SIGPIPE, SIG_IGN ) ); // a write that fails tells as much
      Replay::Writer writer( STDOUT_FILENO );
      if ( Explain::isExplain( argc, argv ) ) {
         Replay::Writer errors( STDERR_FILENO );
         return Explain::explainScenario( argc, argv, writer, errors );
      }
      if ( Import::isImport( argc, argv ) ) {
         Replay::Writer errors( STDERR_FILENO );
         return Import::importConfig( argc, argv, writer, errors );
      }
      const Replay::CommandLine commandLine = Replay::parseCommandLine( argc, argv );
      if ( commandLine.options ) {
         const bool watched = Replay::isTerminal( STDERR_FILENO );
         return Replay::play( *commandLine.options, writer,
                              { watched ? STDERR_FILENO : -1, Replay::realTime } );
      }
      if ( !commandLine.error.empty() ) {
         std::fprintf( stderr, "interlock-replay: %s\n", commandLine.error.c_str() );
         return Replay::somethingWrong;
      }
      writer.buffer() += commandLine.text;
      writer.flush();
      return writer.error() == 0 ? Replay::allHeld : Replay::somethingWrong;
   } catch ( const std::exception & error ) {
      std::fprintf( stderr, "interlock-replay: %s\n", error.what() );
   }
   return Replay::somethingWrong;
}
