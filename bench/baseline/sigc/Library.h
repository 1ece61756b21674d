#pragma once

// libsigc++ as the library that tells of changes.

#include <sigc++/sigc++.h>
#include <utility>

namespace Bench::Usual {

struct Sigc {
   template < class... Arguments >
   using Signal = sigc::signal< void, Arguments... >;

   /// Disconnects when it is destroyed, which sigc::connection does not.
   class Connection {
    public:
      Connection() = default;
      explicit Connection( sigc::connection connection ) : connection_( std::move( connection ) ) {}
      Connection( const Connection & ) = delete;
      Connection & operator=( const Connection & ) = delete;
      Connection( Connection && other ) noexcept
          : connection_( std::exchange( other.connection_, sigc::connection() ) ) {}
      Connection & operator=( Connection && other ) noexcept {
         std::swap( connection_, other.connection_ );
         return *this;
      }
      ~Connection() { connection_.disconnect(); }

    private:
      sigc::connection connection_;
   };

   template < class SignalType, class Handler >
   static Connection connect( SignalType & signal, Handler handler ) {
      return Connection( signal.connect( std::move( handler ) ) );
   }
};

} // namespace Bench::Usual
