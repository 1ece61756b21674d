// interlock-trace: prints the records of a trace file, with nothing but the file.

#include "replay/Writer.h"
#include "replay/trace/Program.h"
#include "replay/trace/Waiting.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <unistd.h>

int main( int argc, char ** argv ) {
   try {
      static_cast< void >( std::signal( SIGPIPE, SIG_IGN ) ); // a write that fails tells as much
      Replay::Writer out( STDOUT_FILENO );
      Replay::Writer err( STDERR_FILENO );
      return TraceTool::run( argc, argv, out, err,
                             [] { return TraceTool::waitingFor( STDOUT_FILENO ); } );
   } catch ( const std::exception & error ) {
      std::fprintf( stderr, "interlock-trace: %s\n", error.what() );
   }
   return TraceTool::unusable;
}
