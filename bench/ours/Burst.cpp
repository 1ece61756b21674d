// The peer interlock under a burst: all LAGs ask at once, and the peer answers in the order asked,
// in reverse, at random, or not at all; and all LAGs become inactive at once. Time is virtual, so
// that nothing waits; what is measured is the work of the one thread.

#include "Velo/VeloIntfInterlock.h"
#include "bench/Registry.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "platform/Kel/VirtualTime.h"
#include "platform/Vex/Clock.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace Bench::Ours {

namespace {

class Burst {
 public:
   Burst( std::size_t lags, std::size_t members ) {
      mlag_->mlagStateIs( Mlag::State::primary );
      mlag_->peerInterlockIs( true );
      interlock_ = Velo::mlagEgressAclIntfInterlockControllerSmFactory(
         input_, config_, mlag_, response_, request_, scheduler_, output_ );
      for ( std::size_t at = 0; at < lags; ++at ) {
         lags_.emplace_back( lagName( at ) );
         mlag_->intfStatusIs( lags_[ at ],
                              { "", Mlag::IntfState::active, Mlag::IntfState::inactive } );
         config_->initialMemberIs( Vex::make< Hardware::Lag::InitialMember >( lags_[ at ] ) );
         for ( std::size_t port = 0; port < members; ++port ) {
            ports_.emplace_back( memberName( at * members + port ) );
         }
      }
      members_ = members;
   }

   void ask() {
      for ( std::size_t at = 0; at < ports_.size(); ++at ) {
         config_->initialMember( lags_[ at / members_ ] )->memberIs( ports_[ at ], {} );
      }
   }
   void answer( const std::vector< std::size_t > & order ) {
      for ( const std::size_t at : order ) {
         response_->installResponseIs( lags_[ at ], request_->installRequest( lags_[ at ] ) );
      }
   }
   void silence() { Kel::advanceTo( clock_, *scheduler_, clock_.now() + Vex::Seconds( 1 ) ); }
   void allPortsGo() {
      for ( std::size_t at = 0; at < ports_.size(); ++at ) {
         config_->initialMember( lags_[ at / members_ ] )->memberDel( ports_[ at ] );
      }
   }
   // The LAGs go as a whole, and the peer takes its answers back: what is left in the output is
   // looked for LAG by LAG.
   void allLagsGo() {
      for ( const Nodo::IntfId lag : lags_ ) {
         config_->initialMemberDel( lag );
      }
      for ( const Nodo::IntfId lag : lags_ ) {
         response_->installResponseDel( lag );
      }
   }
   std::size_t admitted() const { return output_->intf().size(); }
   std::size_t ports() const { return ports_.size(); }

 private:
   Vex::VirtualClock clock_;
   Vex::ClockScope scope_{ clock_ };
   using Status = Interface::Interlock::IntfFeatureStatus;
   Vex::Ptr< Status > input_ = Vex::make< Status >();
   Vex::Ptr< Hardware::Lag::Config > config_ = Vex::make< Hardware::Lag::Config >();
   Vex::Ptr< Mlag::Status > mlag_ = Vex::make< Mlag::Status >();
   Vex::Ptr< Mlag::AclInstallRequest > request_ = Vex::make< Mlag::AclInstallRequest >();
   Vex::Ptr< Mlag::AclInstallResponse > response_ = Vex::make< Mlag::AclInstallResponse >();
   Vex::Ptr< Kel::TaskScheduler > scheduler_ = Vex::make< Kel::TaskScheduler >();
   Vex::Ptr< Status > output_ = Vex::make< Status >();
   Vex::Ptr< InterlockModel::StateMachine > interlock_;
   std::vector< Nodo::IntfId > lags_;
   std::vector< Nodo::IntfId > ports_;
   std::size_t members_;
};

enum class Answers : std::uint8_t { inOrder, inReverse, atRandom, never };

std::vector< std::size_t > orderOf( Answers answers, std::size_t lags ) {
   std::vector< std::size_t > order = randomOrder( lags );
   if ( answers != Answers::atRandom ) {
      std::ranges::sort( order );
   }
   if ( answers == Answers::inReverse ) {
      std::ranges::reverse( order );
   }
   return order;
}

template < class Prepare, class Measured >
void timeBursts( benchmark::State & state, Prepare prepare, Measured measured, bool admits ) {
   const auto lags = static_cast< std::size_t >( state.range( 0 ) );
   for ( auto _ : state ) {
      Burst burst( lags, static_cast< std::size_t >( state.range( 1 ) ) );
      prepare( burst );
      const auto begin = std::chrono::steady_clock::now();
      measured( burst );
      state.SetIterationTime(
         std::chrono::duration< double >( std::chrono::steady_clock::now() - begin ).count() );
      if ( burst.admitted() != ( admits ? burst.ports() : 0 ) ) {
         state.SkipWithError( "verdicts are not those that the burst should end with" );
      }
   }
   state.SetItemsProcessed( static_cast< std::int64_t >( state.iterations() ) * state.range( 0 ) );
}

void answered( benchmark::State & state, Answers answers ) {
   const auto order = orderOf( answers, static_cast< std::size_t >( state.range( 0 ) ) );
   timeBursts(
      state, []( Burst & /* burst */ ) {},
      [ & ]( Burst & burst ) {
         burst.ask();
         answers == Answers::never ? burst.silence() : burst.answer( order );
      },
      true );
}

void inactive( benchmark::State & state, void ( Burst::*go )() ) {
   const auto order = orderOf( Answers::inOrder, static_cast< std::size_t >( state.range( 0 ) ) );
   timeBursts(
      state,
      [ & ]( Burst & burst ) {
         burst.ask();
         burst.answer( order );
      },
      [ go ]( Burst & burst ) { ( burst.*go )(); }, false );
}

void add( const char * name, const auto & function ) {
   benchmark::RegisterBenchmark( name, function )
      ->ArgsProduct( { { 256, 1024, 4096, 16384 }, { 1, 16 } } )
      ->UseManualTime();
}

} // namespace

void registerBurst() {
   add( "burst/in-order", []( auto & state ) { answered( state, Answers::inOrder ); } );
   add( "burst/in-reverse", []( auto & state ) { answered( state, Answers::inReverse ); } );
   add( "burst/at-random", []( auto & state ) { answered( state, Answers::atRandom ); } );
   add( "burst/never", []( auto & state ) { answered( state, Answers::never ); } );
   add( "burst/all-ports-go", []( auto & state ) { inactive( state, &Burst::allPortsGo ); } );
   add( "burst/all-lags-go", []( auto & state ) { inactive( state, &Burst::allLagsGo ); } );
}

} // namespace Bench::Ours
