#include "replay/trace/Waiting.h"

#include <cerrno>
#include <csignal>
#include <poll.h>

namespace TraceTool {

namespace {

constexpr int milliseconds = 100;

volatile std::sig_atomic_t stopped = 0;

void onStop( int /* signal */ ) {
   stopped = 1;
}

// The second one ends the program whatever it does: it may hang in a write.
void stopOn( int signal ) {
   struct sigaction action{};
   action.sa_handler = onStop;
   action.sa_flags = static_cast< int >( SA_RESETHAND );
   sigaction( signal, &action, nullptr );
}

} // namespace

Waiting waitingFor( int out ) {
   stopOn( SIGINT );
   stopOn( SIGTERM );
   return [ out ] {
      pollfd reader{ out, 0, 0 }; // a closed pipe shows, whatever is asked for
      const int ready = stopped == 0 ? poll( &reader, 1, milliseconds ) : 0;
      return stopped == 0 && ready <= 0;
   };
}

} // namespace TraceTool
