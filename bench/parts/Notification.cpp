// One change told to 1, 4 and 64 listeners.

#include "bench/Registry.h"
#include "bench/baseline/sigc/Library.h"
#include "bench/baseline/signals2/Library.h"
#include "platform/Vex/Entity.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <vector>

namespace Bench::Parts {

namespace {

enum class PulseAttribute : std::uint8_t { pulse };

class Pulse final : public Vex::Entity< PulseAttribute, std::uint64_t > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Bench::Pulse" };
      return type;
   }
   void pulse( std::uint64_t key ) const { notify( Attribute::pulse, key ); }
};

class PulseNotifiee final : public Vex::ConstNotifiee< Pulse > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Bench::PulseNotifiee" };
      return type;
   }
   void onAttribute( Attribute /* attribute */, const std::uint64_t & key ) override {
      sum_ += key;
   }

 private:
   std::uint64_t sum_ = 0;
};

class Listener {
 public:
   Listener() = default;
   Listener( const Listener & ) = delete;
   Listener & operator=( const Listener & ) = delete;
   Listener( Listener && ) = delete;
   Listener & operator=( Listener && ) = delete;
   virtual ~Listener() = default;
   virtual void onAttribute( PulseAttribute attribute, const std::uint64_t & key ) = 0;
};

class CountingListener final : public Listener {
 public:
   void onAttribute( PulseAttribute /* attribute */, const std::uint64_t & key ) override {
      sum_ += key;
   }

 private:
   std::uint64_t sum_ = 0;
};

void bare( benchmark::State & state ) {
   std::vector< std::unique_ptr< Listener > > owned;
   std::vector< Listener * > listeners;
   for ( std::int64_t at = 0; at < state.range( 0 ); ++at ) {
      owned.push_back( std::make_unique< CountingListener >() );
      listeners.push_back( owned.back().get() );
   }
   std::uint64_t key = 0;
   for ( auto _ : state ) {
      benchmark::DoNotOptimize( listeners.data() ); // no listener's type is known
      ++key;
      for ( Listener * const listener : listeners ) {
         listener->onAttribute( PulseAttribute::pulse, key );
      }
   }
}

void ours( benchmark::State & state ) {
   const auto pulse = Vex::make< Pulse >();
   std::vector< Vex::Ptr< PulseNotifiee > > notifiees;
   for ( std::int64_t at = 0; at < state.range( 0 ); ++at ) {
      notifiees.push_back( Vex::make< PulseNotifiee >() );
      notifiees.back()->notifierIs( pulse );
   }
   std::uint64_t key = 0;
   for ( auto _ : state ) {
      benchmark::DoNotOptimize( notifiees.data() );
      pulse->pulse( ++key );
   }
}

template < class Library >
void signal( benchmark::State & state ) {
   typename Library::template Signal< PulseAttribute, const std::uint64_t & > signal;
   std::vector< std::uint64_t > sums( static_cast< std::size_t >( state.range( 0 ) ) );
   std::vector< typename Library::Connection > connections;
   for ( std::uint64_t & sum : sums ) {
      connections.push_back(
         Library::connect( signal, [ &sum ]( PulseAttribute /* attribute */,
                                             const std::uint64_t & key ) { sum += key; } ) );
   }
   std::uint64_t key = 0;
   for ( auto _ : state ) {
      ++key;
      signal( PulseAttribute::pulse, key );
   }
   benchmark::DoNotOptimize( sums.data() );
}

} // namespace

void registerNotification() {
   const auto add = []( const char * name, auto function ) {
      benchmark::RegisterBenchmark( name, function )->Arg( 1 )->Arg( 4 )->Arg( 64 );
   };
   add( "notify/bare", bare );
   add( "notify/ours", ours );
   add( "notify/signals2", signal< Usual::Signals2 > );
   add( "notify/sigc", signal< Usual::Sigc > );
}

} // namespace Bench::Parts
