// interlock-agent SOCKET TRACE-FILE: a forwarding agent that runs the interlocks. Whoever publishes
// a switch's entities connects to SOCKET and writes changes as lines of the scenario language; each
// client reads, as JSON Lines and in one order, what was done and what came of it.
//
// One thread, which waits in epoll_wait and nowhere else. All descriptors are level-triggered: what
// a pass leaves undone wakes the next one. A pass hears what has come, does it, runs the time-outs
// that are due, and sends what is to be told.
//
// A client that does not read is not listened to either, until it has read; when others make it
// fall too far behind, it is dropped. When memory runs out the agent ends: whoever supervises it
// starts it again, and its interlocks decide everything from the entities as they then stand. That
// is a state that is known, which a mended one is not.

#include "examples/agent/Agent.h"
#include "examples/agent/Descriptors.h"
#include "platform/Jotter/FlightRecorder.h"
#include "platform/Vex/Clock.h"
#include "replay/Text.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <map>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <utility>

namespace ForwardingAgent {

namespace {

constexpr std::size_t KiB = 1024;
constexpr std::size_t traceBytes = 2048 * KiB;
constexpr std::size_t longestLine = 16 * KiB;
constexpr std::size_t readAtOnce = 4 * KiB; // so that no client keeps the others waiting
constexpr std::size_t listensBelow = 64 * KiB; // that the client has yet to read
constexpr std::size_t mostUnread = 4096 * KiB;
constexpr std::size_t mostClients = 64;
constexpr Vex::Seconds partingTime( 1 ); // for the clients to read the end
constexpr Vex::Seconds acceptPause( 1 );

constexpr std::string_view tooLong = "the line is too long; wanted: at most 16384 bytes";
static_assert( longestLine == 16384 ); // as the text says

/// A connection: what has come and is not done yet, and what is told and not sent yet.
class Client {
 public:
   Client( Descriptor socket, std::uint64_t number ) noexcept
       : socket_( std::move( socket ) ), number_( number ) {}

   int descriptor() const noexcept { return socket_.get(); }

   void receive();
   /// Calls `execute( line, origin )` for each line that is there and whole, as long as the client
   /// reads what it is told; and tells it of those that nobody can execute.
   template < class Execute >
   void takeLines( const Execute & execute );
   void tell( std::string_view text );
   void send();

   /// What it has to say and to be told is over; `parting`: the latter is enough.
   bool isOver( bool parting ) const noexcept {
      return dropped_ || ( out_.empty() && ( parting || ( saidAll_ && !lineWaits_ ) ) );
   }
   /// The events that it waits for.
   std::uint32_t awaited( bool parting ) const noexcept {
      const bool hears = !parting && !saidAll_ && !lineWaits_ && isListenedTo();
      const bool speaks = !out_.empty() || lineWaits_;
      return ( hears ? EPOLLIN : 0U ) | ( speaks ? EPOLLOUT : 0U );
   }

 private:
   bool isListenedTo() const noexcept { return !dropped_ && out_.size() < listensBelow; }

   Descriptor socket_;
   std::uint64_t number_;
   std::uint64_t line_ = 0; // that was taken last
   std::string in_;
   std::string out_;
   bool lineWaits_ = false; // a whole one is in `in_`
   bool skips_ = false; // the rest of a line that is too long
   bool saidAll_ = false; // no more will come
   bool deaf_ = false; // it will not read any more; what it says is done nevertheless
   bool dropped_ = false;
};

void Client::receive() {
   std::array< char, readAtOnce > bytes; // NOLINT(cppcoreguidelines-pro-type-member-init)
   const ssize_t count = ::read( socket_.get(), bytes.data(), bytes.size() );
   if ( count > 0 ) {
      in_.append( bytes.data(), static_cast< std::size_t >( count ) );
   } else if ( count == 0 || ( errno != EAGAIN && errno != EINTR ) ) {
      saidAll_ = true;
   }
}

template < class Execute >
void Client::takeLines( const Execute & execute ) {
   std::string_view rest = in_;
   std::size_t end = rest.find( '\n' );
   for ( ; end != std::string_view::npos && isListenedTo(); end = rest.find( '\n' ) ) {
      std::string_view line = rest.substr( 0, end );
      rest.remove_prefix( end + 1 );
      ++line_;
      if ( std::exchange( skips_, false ) ) {
         continue; // this was its end
      }
      if ( line_ == 1 ) { // who sends a file sends its beginning, too
         line = Replay::withoutByteOrderMark( line );
      }
      if ( line.size() > longestLine ) {
         tell( errorLine( { number_, line_ }, tooLong ) );
      } else {
         line.remove_suffix( line.ends_with( '\r' ) ? 1 : 0 );
         execute( line, Origin{ number_, line_ } );
      }
   }
   in_.erase( 0, in_.size() - rest.size() );
   lineWaits_ = end != std::string_view::npos;
   if ( lineWaits_ || in_.empty() ) {
      return;
   }
   if ( saidAll_ && !skips_ ) {
      // Whoever died in the middle of a line must not be taken at half his word.
      tell( errorLine( { number_, line_ + 1 }, "the line has no end, and is not done" ) );
   } else if ( in_.size() > longestLine && !skips_ ) {
      tell( errorLine( { number_, line_ + 1 }, tooLong ) );
      skips_ = true;
   }
   if ( saidAll_ || skips_ ) {
      in_.clear();
   }
}

void Client::tell( std::string_view text ) {
   if ( deaf_ || dropped_ ) {
      return;
   }
   if ( out_.size() + text.size() <= mostUnread ) {
      out_ += text;
      return;
   }
   dropped_ = true;
   std::fprintf( stderr, "interlock-agent: client %ju does not read, and is dropped\n",
                 std::uintmax_t{ number_ } );
}

void Client::send() {
   std::string_view rest = out_;
   while ( !rest.empty() ) {
      const ssize_t count = ::write( socket_.get(), rest.data(), rest.size() );
      if ( count >= 0 ) {
         rest.remove_prefix( static_cast< std::size_t >( count ) );
      } else if ( errno == EAGAIN ) {
         break; // epoll tells when there is room
      } else if ( errno != EINTR ) {
         deaf_ = true;
         rest = {};
      }
   }
   out_.erase( 0, out_.size() - rest.size() );
}

class Loop {
 public:
   explicit Loop( const std::string & path );

   /// Until SIGTERM or SIGINT, and until the clients know.
   void run();

 private:
   // What an event is about: these, or the number of a client.
   static constexpr std::uint64_t listening = UINT64_MAX;
   static constexpr std::uint64_t timing = UINT64_MAX - 1;
   static constexpr std::uint64_t signalled = UINT64_MAX - 2;

   struct Watched {
      Client client;
      std::uint32_t awaited = EPOLLIN; // events, as epoll knows them
   };

   void watch( int descriptor, std::uint32_t events, std::uint64_t what, int operation );
   void armTimer();
   void handleEvents();
   void handle( const epoll_event & event );
   void accept();
   void decide();
   void serve();
   void tellAll( std::string_view text );
   void stop();

   Agent agent_;
   std::map< std::uint64_t, Watched > clients_; // by number, which is the order of connecting
   std::uint64_t lastNumber_ = 0;
   std::optional< Vex::Seconds > armed_; // the timer, for this moment
   std::optional< Vex::Seconds >
      acceptAgain_; // at this moment: the system had no room for a client
   std::optional< Vex::Seconds > stopBy_; // the end is told; at this moment it is over
   sigset_t stopSignals_ = blockedStopSignals();
   Descriptor epoll_{ checked( ::epoll_create1( EPOLL_CLOEXEC ), "epoll_create1" ) };
   Descriptor timer_{ checked( ::timerfd_create( CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC ),
                               "timerfd_create" ) };
   Descriptor signals_{
      checked( ::signalfd( -1, &stopSignals_, SFD_NONBLOCK | SFD_CLOEXEC ), "signalfd" ) };
   ListeningSocket socket_;
};

Loop::Loop( const std::string & path ) : socket_( path ) {
   watch( timer_.get(), EPOLLIN, timing, EPOLL_CTL_ADD );
   watch( signals_.get(), EPOLLIN, signalled, EPOLL_CTL_ADD );
   watch( socket_.get(), EPOLLIN, listening, EPOLL_CTL_ADD );
}

void Loop::watch( int descriptor, std::uint32_t events, std::uint64_t what, int operation ) {
   epoll_event event{};
   event.events = events;
   event.data.u64 = what;
   checked( ::epoll_ctl( epoll_.get(), operation, descriptor, &event ), "epoll_ctl" );
}

void Loop::run() {
   while ( !stopBy_ || ( !clients_.empty() && Vex::now() < *stopBy_ ) ) {
      armTimer();
      handleEvents();
      if ( !stopBy_ ) {
         decide();
      }
      serve();
   }
}

// The timer is set only when the moment is another one: most events leave the next time-out as it
// is, and then cost no call of the system. Vex::now() counts from where CLOCK_MONOTONIC does,
// unless somebody has put another clock in its place, which an agent does not.
void Loop::armTimer() {
   std::optional< Vex::Seconds > due = stopBy_ ? stopBy_ : agent_.nextDue();
   if ( acceptAgain_ && ( !due || *acceptAgain_ < *due ) ) {
      due = acceptAgain_;
   }
   if ( due != armed_ ) {
      const itimerspec setting{ {}, due ? roundedUp( *due ) : timespec{} };
      checked( ::timerfd_settime( timer_.get(), TFD_TIMER_ABSTIME, &setting, nullptr ),
               "timerfd_settime" );
      armed_ = due;
   }
}

void Loop::handleEvents() {
   std::array< epoll_event, 16 > events{};
   const int count =
      ::epoll_wait( epoll_.get(), events.data(), static_cast< int >( events.size() ), -1 );
   if ( count < 0 && errno != EINTR ) {
      checked( count, "epoll_wait" );
   }
   for ( int at = 0; at < count; ++at ) {
      handle( events[ static_cast< std::size_t >( at ) ] );
   }
}

void Loop::handle( const epoll_event & event ) {
   if ( event.data.u64 == listening ) {
      accept();
   } else if ( event.data.u64 == timing ) {
      take< std::uint64_t >( timer_ );
      armed_.reset(); // so that it is set anew even for the same moment, should that be yet to come
      if ( acceptAgain_ && *acceptAgain_ <= Vex::now() ) {
         acceptAgain_.reset();
         watch( socket_.get(), EPOLLIN, listening, EPOLL_CTL_MOD );
      }
   } else if ( event.data.u64 == signalled ) {
      take< signalfd_siginfo >( signals_ );
      stop();
   } else if ( const auto found = clients_.find( event.data.u64 ); found != clients_.end() ) {
      // That the other end has gone is told unasked. Who is not listened to is sent to, which finds
      // that out, too.
      if ( event.events != EPOLLOUT && ( found->second.awaited & EPOLLIN ) != 0 ) {
         found->second.client.receive();
      }
   }
}

// One at a time: where others wait, the event comes again.
void Loop::accept() {
   Descriptor socket( ::accept4( socket_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC ) );
   if ( socket.get() < 0 ) {
      if ( errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM ) {
         std::perror( "interlock-agent: no client can be accepted" );
         watch( socket_.get(), 0, listening, EPOLL_CTL_MOD ); // which would wake us at once again
         acceptAgain_ = Vex::now() + acceptPause;
      }
      return;
   }
   const std::uint64_t number = ++lastNumber_;
   Client client( std::move( socket ), number );
   if ( clients_.size() >= mostClients ) {
      client.tell( errorLine( { number, 0 }, "too many clients are connected" ) );
      client.send();
      return;
   }
   client.tell( agent_.standing( "state", number ) );
   watch( client.descriptor(), EPOLLIN, number, EPOLL_CTL_ADD );
   clients_.emplace( number, Watched{ std::move( client ) } );
}

// Time-outs come behind the lines: an answer that is there is not late.
void Loop::decide() {
   for ( auto & [ number, watched ] : clients_ ) {
      Client & sender = watched.client;
      sender.takeLines( [ & ]( std::string_view line, Origin origin ) {
         const Told told = agent_.execute( line, origin );
         told.onlyToSender ? sender.tell( told.text ) : tellAll( told.text );
      } );
   }
   tellAll( agent_.runDue() );
}

void Loop::tellAll( std::string_view text ) {
   for ( auto & [ number, watched ] : clients_ ) {
      watched.client.tell( text );
   }
}

void Loop::serve() {
   const bool parting = stopBy_.has_value();
   for ( auto & [ number, watched ] : clients_ ) {
      watched.client.send();
   }
   std::erase_if( clients_,
                  [ & ]( const auto & entry ) { return entry.second.client.isOver( parting ); } );
   for ( auto & [ number, watched ] : clients_ ) {
      const std::uint32_t awaited = watched.client.awaited( parting );
      if ( std::exchange( watched.awaited, awaited ) != awaited ) {
         watch( watched.client.descriptor(), awaited, number, EPOLL_CTL_MOD );
      }
   }
}

// The second signal does not wait for the clients.
void Loop::stop() {
   if ( stopBy_ ) {
      clients_.clear();
      return;
   }
   stopBy_ = Vex::now() + partingTime;
   acceptAgain_.reset();
   socket_.close();
   agent_.stop();
   for ( auto & [ number, watched ] : clients_ ) {
      watched.client.tell( agent_.standing( "end", number ) );
   }
}

void runAgent( const std::string & path, const std::string & traceFile ) {
   Loop loop( path ); // first, so that a second agent leaves the recorder of the first one alone
   if ( const std::string reason = Jotter::defaultTraceFileInto( traceFile, traceBytes );
        !reason.empty() ) {
      std::fprintf( stderr, "interlock-agent: %s\n", reason.c_str() ); // recorded in memory, then
   }
   std::printf( "interlock-agent: listening on %s\n", path.c_str() );
   static_cast< void >( std::fflush( stdout ) );
   loop.run();
}

} // namespace

} // namespace ForwardingAgent

int main( int argc, char ** argv ) {
   if ( argc != 3 ) {
      const bool help = argc == 2 && std::string_view( argv[ 1 ] ) == "--help";
      std::fputs( "usage: interlock-agent SOCKET TRACE-FILE\n", help ? stdout : stderr );
      return help ? 0 : 2;
   }
   static_cast< void >( std::signal( SIGPIPE, SIG_IGN ) ); // a write that fails tells as much
   try {
      ForwardingAgent::runAgent( argv[ 1 ], argv[ 2 ] );
      return 0;
   } catch ( const std::bad_alloc & ) {
      static_cast< void >( std::fputs( "interlock-agent: out of memory\n", stderr ) );
   } catch ( const std::exception & error ) {
      std::fprintf( stderr, "interlock-agent: %s\n", error.what() );
   }
   return 1;
}
