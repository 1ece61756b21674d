// From an event to its verdict: the basic interlock, ring trace on and text trace off as in
// production, and everything off. A pair of events is measured, so that each round begins with the
// same entities: the input pair goes and comes, each time with one verdict.

#include "Velo/VeloIntfInterlock.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Ptr.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Interface::Interlock::IntfFeature;
using Interface::Interlock::IntfFeatureStatus;

constexpr std::size_t membersPerLag = 16;

// A switch in which every LAG is an MLAG interface that needs its ACL, and every ACL is installed.
class Switch {
 public:
   explicit Switch( std::size_t pairs ) {
      mlag->mlagStateIs( Mlag::State::primary );
      auto peerLink = Vex::make< Interface::EthIntfStatus >( Nodo::IntfId( "Ethernet1000" ) );
      peerLink->linkStatusIs( Interface::LinkStatus::up );
      mlag->peerLinkIs( peerLink );
      for ( std::size_t at = 0; at < pairs; ++at ) {
         addPair( at );
      }
      // Events come in no order that the tables were filled in. The seed is fixed: every run and
      // every size sees the same kind of order.
      std::ranges::shuffle( order, std::mt19937_64( 1 ) ); // NOLINT: repeatable on purpose
      interlock = Velo::mlagEgressAclIntfInterlockSmFactory( acl, config, mlag, output );
   }

   Vex::Ptr< IntfFeatureStatus > acl = Vex::make< IntfFeatureStatus >();
   Vex::Ptr< IntfFeatureStatus > output = Vex::make< IntfFeatureStatus >();
   Vex::Ptr< Hardware::Lag::Config > config = Vex::make< Hardware::Lag::Config >();
   Vex::Ptr< Mlag::Status > mlag = Vex::make< Mlag::Status >();
   Vex::Ptr< InterlockModel::StateMachine > interlock;
   std::vector< IntfFeature > order;

 private:
   void addPair( std::size_t at ) {
      const Nodo::IntfId lag( "PortChannel" + std::to_string( at / membersPerLag + 1 ) );
      const Nodo::IntfId member( "Ethernet" + std::to_string( at + 1 ) );
      if ( !config->initialMember( lag ) ) {
         config->initialMemberIs( Vex::make< Hardware::Lag::InitialMember >( lag ) );
         mlag->intfStatusIs( lag, { "", Mlag::IntfState::active, Mlag::IntfState::active } );
      }
      config->initialMember( lag )->memberIs( member, {} );
      acl->intfIs( { member, lag } );
      order.push_back( { member, lag } );
   }
};

void check( const Switch & world ) {
   if ( world.output->intf().size() != world.order.size() ) {
      throw std::logic_error( "every pair should be admitted between two rounds" );
   }
}

void inputPairGoesAndComes( benchmark::State & state, bool ring ) {
   Jotter::TraceFile * const before = Jotter::defaultTraceFile();
   Switch world( static_cast< std::size_t >( state.range( 0 ) ) );
   if ( !ring ) {
      Jotter::defaultTraceFileIs( nullptr );
   }
   std::size_t at = 0;
   for ( auto _ : state ) {
      const IntfFeature pair = world.order[ at ];
      at = at + 1 < world.order.size() ? at + 1 : 0;
      world.acl->intfDel( pair );
      world.acl->intfIs( pair );
   }
   Jotter::defaultTraceFileIs( before );
   check( world );
   state.SetItemsProcessed( 2 * static_cast< std::int64_t >( state.iterations() ) );
}

void mlagStateFlips( benchmark::State & state ) {
   Switch world( static_cast< std::size_t >( state.range( 0 ) ) );
   for ( auto _ : state ) {
      world.mlag->mlagStateIs( Mlag::State::inactive );
      world.mlag->mlagStateIs( Mlag::State::primary );
   }
   check( world );
   state.SetItemsProcessed( 2 * static_cast< std::int64_t >( state.iterations() ) *
                            state.range( 0 ) );
}

BENCHMARK_CAPTURE( inputPairGoesAndComes, ring, true )
   ->RangeMultiplier( 16 )
   ->Range( 1 << 10, 1 << 16 );
BENCHMARK_CAPTURE( inputPairGoesAndComes, no_trace, false )
   ->RangeMultiplier( 16 )
   ->Range( 1 << 10, 1 << 16 );
BENCHMARK( mlagStateFlips )->RangeMultiplier( 16 )->Range( 1 << 10, 1 << 16 );

} // namespace
