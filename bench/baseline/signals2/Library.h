#pragma once

// Boost.Signals2 as the library that tells of changes. Everything is on one thread, so its mutex is
// the dummy one, which is the faster choice.

#include <boost/signals2.hpp>
#include <boost/signals2/dummy_mutex.hpp>
#include <utility>

namespace Bench::Usual {

struct Signals2 {
   template < class... Arguments >
   using Signal = typename boost::signals2::signal_type<
      void( Arguments... ),
      boost::signals2::keywords::mutex_type< boost::signals2::dummy_mutex > >::type;
   using Connection = boost::signals2::scoped_connection;

   template < class SignalType, class Handler >
   static Connection connect( SignalType & signal, Handler handler ) {
      return signal.connect( std::move( handler ) );
   }
};

} // namespace Bench::Usual
