#pragma once

// The descriptors of the loop in Main.cpp: who closes them, the socket at its path, and the two
// values of the system that they are made with. What cannot be had is a std::runtime_error with its
// reason.

#include "platform/Vex/Seconds.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ForwardingAgent {

inline int checked( int result, const char * what ) {
   if ( result < 0 ) {
      throw std::system_error( errno, std::generic_category(), what );
   }
   return result;
}

/// Owns a descriptor; negative: none.
class Descriptor {
 public:
   explicit Descriptor( int number = -1 ) noexcept : number_( number ) {}
   Descriptor( Descriptor && other ) noexcept : number_( std::exchange( other.number_, -1 ) ) {}
   Descriptor & operator=( Descriptor && other ) noexcept {
      std::swap( number_, other.number_ );
      return *this;
   }
   Descriptor( const Descriptor & ) = delete;
   Descriptor & operator=( const Descriptor & ) = delete;
   ~Descriptor() {
      if ( number_ >= 0 ) {
         ::close( number_ );
      }
   }
   int get() const noexcept { return number_; }

 private:
   int number_;
};

/// Takes what made a descriptor of events readable.
template < class Event >
void take( const Descriptor & from ) {
   Event event{};
   if ( ::read( from.get(), &event, sizeof event ) < 0 && errno != EAGAIN && errno != EINTR ) {
      checked( -1, "read" );
   }
}

/// Listens at a path, which belongs to it until it goes.
class ListeningSocket {
 public:
   explicit ListeningSocket( std::string path ) : path_( std::move( path ) ) {
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      if ( path_.empty() || path_.size() >= sizeof address.sun_path ) {
         throw std::runtime_error( path_ + ": no path for a socket; wanted: 1 to 107 bytes" );
      }
      path_.copy( address.sun_path, path_.size() );
      const auto * const at = reinterpret_cast< const sockaddr * >( &address );
      // Two agents that start at once must not take each other's new socket for a dead one.
      const std::filesystem::path folder = std::filesystem::path( path_ ).parent_path();
      const Descriptor lock( checked(
         ::open( folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC ),
         path_.c_str() ) );
      checked( ::flock( lock.get(), LOCK_EX ), path_.c_str() );
      removeDead( at, sizeof address );
      const mode_t before = ::umask( S_IRWXG | S_IRWXO | S_IXUSR ); // ports obey who may connect
      const int bound = ::bind( socket_.get(), at, sizeof address );
      ::umask( before );
      checked( bound, path_.c_str() );
      checked( ::lstat( path_.c_str(), &mine_ ), path_.c_str() );
      checked( ::listen( socket_.get(), SOMAXCONN ), path_.c_str() );
   }
   ListeningSocket( const ListeningSocket & ) = delete;
   ListeningSocket & operator=( const ListeningSocket & ) = delete;
   ListeningSocket( ListeningSocket && ) = delete;
   ListeningSocket & operator=( ListeningSocket && ) = delete;
   ~ListeningSocket() { close(); }

   int get() const noexcept { return socket_.get(); }
   void close() noexcept {
      struct stat found{};
      if ( socket_.get() >= 0 && ::lstat( path_.c_str(), &found ) == 0 &&
           found.st_dev == mine_.st_dev && found.st_ino == mine_.st_ino ) {
         ::unlink( path_.c_str() );
      }
      socket_ = Descriptor();
   }

 private:
   static Descriptor makeSocket() {
      return Descriptor(
         checked( ::socket( AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0 ), "socket" ) );
   }

   // A process that was killed leaves its socket behind, at which nobody listens any more.
   void removeDead( const sockaddr * at, socklen_t size ) const {
      struct stat found{};
      if ( ::lstat( path_.c_str(), &found ) != 0 ) {
         return; // nothing is there, or bind() says what is wrong
      }
      const Descriptor probe = makeSocket();
      if ( ::connect( probe.get(), at, size ) == 0 || errno == EAGAIN ) {
         throw std::runtime_error( path_ + ": another process listens there" );
      }
      if ( !S_ISSOCK( found.st_mode ) || errno != ECONNREFUSED ) {
         throw std::runtime_error( path_ + ": something is there, and is no dead socket" );
      }
      checked( ::unlink( path_.c_str() ), path_.c_str() );
   }

   std::string path_;
   Descriptor socket_ = makeSocket();
   struct stat mine_{};
};

/// The same moment for the system, or the next one that it can tell apart; never one that disarms.
inline timespec roundedUp( Vex::Seconds moment ) {
   constexpr double nanoseconds = 1e9;
   const double seconds = std::floor( std::clamp( moment.value(), 0.0, 1e9 ) );
   const double rest = std::ceil( ( moment.value() - seconds ) * nanoseconds );
   return { static_cast< time_t >( seconds ),
            static_cast< long >( std::clamp( rest, 1.0, nanoseconds - 1 ) ) };
}

inline sigset_t blockedStopSignals() {
   sigset_t signals;
   sigemptyset( &signals );
   sigaddset( &signals, SIGTERM );
   sigaddset( &signals, SIGINT );
   checked( ::sigprocmask( SIG_BLOCK, &signals, nullptr ), "sigprocmask" );
   return signals;
}

} // namespace ForwardingAgent
