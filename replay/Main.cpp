// interlock-replay: plays scenarios to the interlocks of libVeloIntfInterlock.

#include "replay/CommandLine.h"
#include "replay/Play.h"
#include "replay/Writer.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <unistd.h>

int main( int argc, char ** argv ) {
   try {
      static_cast< void >( std::signal( SIGPIPE, SIG_IGN ) ); // a write that fails tells as much
      Replay::Writer writer( STDOUT_FILENO );
      const Replay::CommandLine commandLine = Replay::parseCommandLine( argc, argv );
      if ( commandLine.options ) {
         return Replay::play( *commandLine.options, writer );
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
