// Random sequences of everything that can happen to the deprecated egress-ACL interlock, against a
// plain rule that knows its gaps. Output and order of the output are compared after each step.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedModel.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedSm.h"
#include "tests/platform/Seed.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Velo {
namespace {

using TestSupport::entry;
using TestSupport::intf;

const std::array< std::string, 3 > lagNames{ "PortChannel10", "PortChannel20", "PortChannel30" };
const std::array< std::string, 4 > portNames{ "Ethernet1", "Ethernet2", "Ethernet3", "Ethernet4" };

// Plays each step to the entities and to the model.
class Switch {
 public:
   explicit Switch( std::uint64_t seedOfRun ) : random_( seedOfRun ) {
      world.lagGone( "PortChannel10" ).mlagIntfGone( "PortChannel10" ).noPeerLink();
      model.mlagState = 3;
      restart();
   }

   std::string step() {
      constexpr std::array actions{
         &Switch::inputEntry,   &Switch::inputEntry,    &Switch::memberOfSet,
         &Switch::memberOfSet,  &Switch::memberOfAny,   &Switch::newSet,
         &Switch::removedSet,   &Switch::mlagState,     &Switch::peerLink,
         &Switch::peerLink,     &Switch::linkStatus,    &Switch::linkStatus,
         &Switch::intfStatus,   &Switch::intfStatus,    &Switch::outputEntry,
         &Switch::otherInput,   &Switch::otherLags,     &Switch::watches,
         &Switch::otherMlag,    &Switch::notifications, &Switch::notifications,
         &Switch::deletionMark, &Switch::restarted };
      return ( this->*actions[ below( actions.size() ) ] )();
   }
   std::string output() const { return TestSupport::admitted( world.output ); }

   Model::Deprecated model;

 private:
   using Id = Model::Deprecated::Id;

   std::size_t below( std::size_t limit ) { return random_() % limit; }
   bool coin() { return below( 2 ) == 0; }
   template < std::size_t n >
   const std::string & any( const std::array< std::string, n > & names ) {
      return names[ below( n ) ];
   }

   // ---- The input, the output -------------------------------------------------------------------

   std::string inputEntry() {
      const Model::Deprecated::Pair pair{ any( portNames ), any( lagNames ) };
      const bool comes = coin();
      const bool there = model.contains( model.input, pair );
      if ( comes && !there ) {
         model.input.push_back( pair );
      } else if ( !comes ) {
         std::erase( model.input, pair );
      }
      if ( comes != there ) {
         model.inputChanged( pair );
      }
      comes ? world.installed( pair.first, pair.second )
            : world.notInstalled( pair.first, pair.second );
      return "input " + pair.first + ' ' + pair.second;
   }
   std::string otherInput() {
      world.aclIntfFeatureStatus = Vex::make< Interface::Interlock::IntfFeatureStatus >();
      model.input.clear();
      sm->vexInIntfFeatureStatus()->notifierIs( world.aclIntfFeatureStatus );
      return "another input status";
   }
   std::string outputEntry() {
      const Model::Deprecated::Pair pair{ any( portNames ), any( lagNames ) };
      if ( !model.contains( model.output, pair ) ) {
         model.output.push_back( pair );
         world.left( pair.first, pair.second );
         return "somebody writes the output";
      }
      std::erase( model.output, pair );
      world.output->intfDel( entry( pair.first, pair.second ) );
      return "somebody deletes from the output";
   }

   // ---- LAGs ------------------------------------------------------------------------------------

   Id createdSet( const std::string & lag ) {
      sets_.push_back( Vex::make< Hardware::Lag::InitialMember >( intf( lag ) ) );
      model.sets.push_back( { lag, {} } );
      for ( const std::string & port : portNames ) {
         if ( coin() ) {
            sets_.back()->memberIs( intf( port ), {} );
            model.sets.back().ports.push_back( port );
         }
      }
      return sets_.size() - 1;
   }
   std::string newSet() {
      const std::string & lag = any( lagNames );
      const Id id = createdSet( lag );
      const auto slot = std::ranges::find( model.lags, lag, &std::pair< std::string, Id >::first );
      if ( slot != model.lags.end() ) {
         slot->second = id;
      } else {
         model.lags.emplace_back( lag, id );
      }
      model.lagEntryChanged( lag );
      world.hwLagConfig->initialMemberIs( sets_[ id ] );
      return "a new set of " + lag;
   }
   std::string removedSet() {
      const std::string & lag = any( lagNames );
      if ( std::erase_if( model.lags, [ & ]( const auto & slot ) { return slot.first == lag; } ) ) {
         model.lagEntryChanged( lag );
      }
      world.lagGone( lag );
      return lag + " goes";
   }
   std::string memberOf( Id id ) {
      const std::string & port = any( portNames );
      auto & ports = model.sets[ id ].ports;
      if ( model.contains( ports, port ) ) {
         std::erase( ports, port );
         model.memberChanged( id, port );
         sets_[ id ]->memberDel( intf( port ) );
      } else {
         ports.push_back( port );
         model.memberChanged( id, port );
         sets_[ id ]->memberIs( intf( port ), {} );
      }
      return port + " of set " + std::to_string( id );
   }
   std::string memberOfSet() {
      return model.lags.empty() ? newSet()
                                : memberOf( model.lags[ below( model.lags.size() ) ].second );
   }
   std::string memberOfAny() {
      return sets_.empty() ? newSet() : memberOf( below( sets_.size() ) );
   }
   std::string otherLags() { // of which nobody is told
      world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
      model.lags.clear();
      for ( const std::string & lag : lagNames ) {
         if ( coin() ) {
            const Id id = createdSet( lag );
            model.lags.emplace_back( lag, id );
            world.hwLagConfig->initialMemberIs( sets_[ id ] );
         }
      }
      sm->vexHwLagConfig()->notifierIs( world.hwLagConfig );
      return "another LAG configuration";
   }

   // ---- MLAG ------------------------------------------------------------------------------------

   std::string mlagState() {
      const auto state = static_cast< unsigned >( below( 4 ) != 0 ? 3 + below( 2 ) : 5 );
      if ( std::exchange( model.mlagState, state ) != state ) {
         model.mlagStateChanged();
      }
      world.mlagState( static_cast< Mlag::State >( state ) );
      return "MLAG state " + std::to_string( state );
   }
   Id createdLink() {
      const bool named = below( 8 ) != 0;
      links_.push_back( Vex::make< Interface::EthIntfStatus >( named ? intf( "Port-Channel1000" )
                                                                     : Nodo::IntfId() ) );
      links_.back()->linkStatusIs( Interface::LinkStatus::up );
      model.links.push_back( { named, 2 } );
      return links_.size() - 1;
   }
   std::string peerLink() {
      if ( below( 6 ) == 0 ) {
         if ( std::exchange( model.peerLink, std::nullopt ) ) {
            model.peerLinkChanged();
         }
         world.mlagStatus->peerLinkIs( nullptr );
         return "no peer link";
      }
      const Id id = links_.empty() || coin() ? createdLink() : below( links_.size() );
      if ( std::exchange( model.peerLink, id ) != id ) {
         model.peerLinkChanged();
      }
      world.mlagStatus->peerLinkIs( links_[ id ] );
      return "peer link " + std::to_string( id );
   }
   std::string linkStatus() { // mostly of the link that counts
      if ( links_.empty() ) {
         return peerLink();
      }
      const Id id = model.peerLink && below( 3 ) != 0 ? *model.peerLink : below( links_.size() );
      const auto status = static_cast< unsigned >( below( 3 ) != 0 ? 2 : 1 );
      if ( std::exchange( model.links[ id ].status, status ) != status ) {
         model.linkStatusChanged( id );
      }
      links_[ id ]->linkStatusIs( static_cast< Interface::LinkStatus >( status ) );
      return "link " + std::to_string( id ) + " has status " + std::to_string( status );
   }
   std::string intfStatus() {
      const std::string & lag = any( lagNames );
      if ( below( 8 ) == 0 ) {
         if ( model.intfStatus.erase( lag ) != 0 ) {
            model.intfStatusChanged( lag );
         }
         world.mlagIntfGone( lag );
         return lag + " is no MLAG interface";
      }
      const bool known = below( 6 ) != 0;
      const auto peerState = static_cast< unsigned >( !known ? 0 : below( 4 ) != 0 ? 2 : 1 );
      const auto before = world.mlagStatus->intfStatusHas( intf( lag ) )
                             ? std::optional( world.mlagStatus->intfStatus( intf( lag ) ) )
                             : std::nullopt;
      const Mlag::IntfStatus status{ known ? "known" : "", Mlag::IntfState::unknown,
                                     static_cast< Mlag::IntfState >( peerState ) };
      model.intfStatus[ lag ] = { known, peerState };
      if ( before != status ) {
         model.intfStatusChanged( lag );
      }
      world.mlagStatus->intfStatusIs( intf( lag ), status );
      return lag + " has peer state " + std::to_string( peerState );
   }
   std::string otherMlag() { // of which nobody is told either
      world.mlagStatus = Vex::make< Mlag::Status >();
      world.mlagState( static_cast< Mlag::State >( model.mlagState ) );
      model.intfStatus.clear();
      for ( const std::string & lag : lagNames ) {
         if ( coin() ) {
            world.mlagIntf( lag );
            model.intfStatus[ lag ] = { true, 2 };
         }
      }
      const Id id = createdLink();
      model.peerLink = id;
      world.mlagStatus->peerLinkIs( links_[ id ] );
      sm->vexMlagStatus()->notifierIs( world.mlagStatus );
      return "another MLAG status";
   }

   // ---- The interlock itself --------------------------------------------------------------------

   std::string watches() {
      const std::string & lag = any( lagNames );
      switch ( below( 4 ) ) {
      case 0:
         model.lagWatch.erase( lag );
         sm->initialMemberSmDel( intf( lag ) );
         break;
      case 1:
         model.linkWatch.reset();
         sm->peerLinkIntfDel();
         break;
      case 2:
         if ( !sets_.empty() ) { // whatever set, also one that is out of use
            const Id id = below( sets_.size() );
            model.lagWatch[ model.sets[ id ].lag ].entity = id;
            sm->initialMemberSmIs( sets_[ id ] );
         }
         break;
      case 3:
         model.lagWatch.clear();
         sm->initialMemberSmDelAll();
         break;
      }
      return "reactors are changed by hand";
   }
   std::string notifications() {
      const bool on = below( 3 ) != 0;
      model.notificationsActive( on );
      sm->hasNotificationActiveIs( on );
      return on ? "notifications on" : "notifications off";
   }
   std::string deletionMark() {
      const bool zombies = below( 3 ) == 0;
      model.markedForDeletion( zombies );
      sm->vexDoZombieReactors( zombies );
      return zombies ? "marked for deletion" : "marked no more";
   }
   void restart() {
      sm.release();
      model.started();
      sm = startDeprecated( world );
   }
   std::string restarted() {
      if ( coin() ) {
         restart();
      }
      return "a restart";
   }

   TestSupport::World world;
   Vex::Ptr< DeprecatedMlagEgressAclIntfInterlockSm > sm;
   std::vector< Vex::Ptr< Hardware::Lag::InitialMember > > sets_;
   std::vector< Vex::Ptr< Interface::EthIntfStatus > > links_;
   std::mt19937_64 random_;
};

TEST( DeprecatedRandom, TheOutputIsThatOfThePlainRuleWithItsGaps ) {
   const std::uint64_t first = seed( 1 );
   std::size_t needed = 0;
   for ( std::uint64_t run = first; run < first + 60; ++run ) {
      Switch device( run );
      for ( int step = 0; step < 300; ++step ) {
         const std::string action = device.step();
         ASSERT_EQ( device.output(), device.model.outputText() )
            << "after step " << step << ", " << action
            << "; play it again with INTERLOCK_SEED=" << run;
         for ( const std::string & lag : lagNames ) {
            needed += device.model.aclNeeded( lag ) ? 1U : 0U;
         }
      }
   }
   EXPECT_GT( needed, 60U * 150U ) << "the ACL was hardly ever needed";
}

} // namespace
} // namespace Velo
