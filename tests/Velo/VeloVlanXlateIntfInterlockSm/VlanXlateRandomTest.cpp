// Random sequences of everything that can happen to the VLAN-translation interlock, against a plain
// rule that knows its gaps. Output and order of the output are compared after each step.

#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateModel.h"
#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateSm.h"
#include "tests/platform/Seed.h"

#include <array>
#include <cstdint>
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
const std::array< std::string, 4 > configNames{ "PortChannel10", "PortChannel20", "PortChannel30",
                                                "Ethernet1" };

// Plays each step to the entities and to the model.
class Switch {
 public:
   explicit Switch( std::uint64_t seedOfRun ) : random_( seedOfRun ) {
      world.lagGone( "PortChannel10" );
      restart();
   }

   std::string step() {
      constexpr std::array actions{
         &Switch::inputEntry,    &Switch::inputEntry,     &Switch::memberOfSet,
         &Switch::memberOfSet,   &Switch::memberOfAnySet, &Switch::mapping,
         &Switch::mapping,       &Switch::mappingOfAny,   &Switch::newSet,
         &Switch::removedSet,    &Switch::newConfig,      &Switch::removedConfig,
         &Switch::outputEntry,   &Switch::otherInput,     &Switch::otherLagConfig,
         &Switch::otherBridging, &Switch::deletedWatch,   &Switch::settledWatch,
         &Switch::notifications, &Switch::deletionMark,   &Switch::restarted };
      return ( this->*actions[ below( actions.size() ) ] )();
   }

   std::string output() const { return TestSupport::admitted( world.output ); }

   Model::VlanXlate model;

 private:
   std::size_t below( std::size_t limit ) { return random_() % limit; }
   bool coin() { return below( 2 ) == 0; }
   template < std::size_t n >
   const std::string & any( const std::array< std::string, n > & names ) {
      return names[ below( n ) ];
   }

   // ---- The input, the output -------------------------------------------------------------------

   std::string inputEntry() {
      const Model::Pair pair{ any( portNames ), any( lagNames ) };
      const bool there = coin();
      const bool changed =
         there ? Model::add( model.input, pair ) : Model::remove( model.input, pair );
      if ( changed ) {
         model.inputChanged( pair );
      }
      const auto feature = entry( pair.first, pair.second );
      there ? world.aclIntfFeatureStatus->intfIs( feature )
            : world.aclIntfFeatureStatus->intfDel( feature );
      return "input " + pair.first + ' ' + pair.second + ( there ? " comes" : " goes" );
   }
   std::string otherInput() {
      world.aclIntfFeatureStatus = Vex::make< Interface::Interlock::IntfFeatureStatus >();
      model.input.clear();
      for ( const std::string & port : portNames ) {
         if ( coin() ) {
            world.installed( port, lagNames[ 0 ] );
            model.input.emplace_back( port, lagNames[ 0 ] );
         }
      }
      sm->vexInIntfFeatureStatus()->notifierIs( world.aclIntfFeatureStatus );
      return "another input status";
   }
   std::string outputEntry() {
      const Model::Pair pair{ any( portNames ), any( lagNames ) };
      if ( coin() ) {
         Model::add( model.output, pair );
         world.output->intfIs( entry( pair.first, pair.second ) );
         return "somebody writes the output";
      }
      Model::remove( model.output, pair );
      world.output->intfDel( entry( pair.first, pair.second ) );
      return "somebody deletes from the output";
   }

   // ---- LAGs ------------------------------------------------------------------------------------

   Model::Id createdSet( const std::string & lag ) {
      const auto id = static_cast< Model::Id >( sets_.size() );
      sets_.push_back( Vex::make< Hardware::Lag::InitialMember >( intf( lag ) ) );
      model.members[ id ].lag = lag;
      for ( const std::string & port : portNames ) {
         if ( coin() ) {
            sets_.back()->memberIs( intf( port ), {} );
            model.members[ id ].ports.push_back( port );
         }
      }
      return id;
   }
   static void put( Model::VlanXlate::Entries & entries, const std::string & key, Model::Id id ) {
      for ( auto & slot : entries ) {
         if ( slot.first == key ) {
            slot.second = id;
            return;
         }
      }
      entries.emplace_back( key, id );
   }
   static bool drop( Model::VlanXlate::Entries & entries, const std::string & key ) {
      return std::erase_if( entries, [ & ]( const auto & slot ) { return slot.first == key; } ) !=
             0;
   }

   std::string newSet() {
      const std::string & lag = any( lagNames );
      const Model::Id id = createdSet( lag );
      put( model.lags, lag, id );
      model.lagEntryChanged( lag );
      world.hwLagConfig->initialMemberIs( sets_[ static_cast< std::size_t >( id ) ] );
      return "a new set of " + lag;
   }
   std::string removedSet() {
      const std::string & lag = any( lagNames );
      if ( drop( model.lags, lag ) ) {
         model.lagEntryChanged( lag );
      }
      world.lagGone( lag );
      return lag + " goes";
   }
   std::string memberOf( Model::Id id ) {
      const std::string & port = any( portNames );
      auto & set = *sets_[ static_cast< std::size_t >( id ) ];
      auto & ports = model.members[ id ].ports;
      if ( coin() ) {
         const Hardware::Lag::PortProgType type{ static_cast< std::uint8_t >( below( 2 ) ) };
         const bool changed = set.member().find( intf( port ) ) == nullptr ||
                              *set.member().find( intf( port ) ) != type;
         Model::add( ports, port );
         if ( changed ) {
            model.memberChanged( id, port );
         }
         set.memberIs( intf( port ), type );
         return port + " enters set " + std::to_string( id );
      }
      if ( Model::remove( ports, port ) ) {
         model.memberChanged( id, port );
      }
      set.memberDel( intf( port ) );
      return port + " leaves set " + std::to_string( id );
   }
   std::string memberOfSet() {
      return model.lags.empty() ? newSet()
                                : memberOf( model.lags[ below( model.lags.size() ) ].second );
   }
   std::string memberOfAnySet() {
      return sets_.empty() ? newSet()
                           : memberOf( static_cast< Model::Id >( below( sets_.size() ) ) );
   }
   std::string otherLagConfig() {
      world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
      const auto before = std::exchange( model.lags, {} );
      for ( const std::string & lag : lagNames ) {
         const Model::Id * const old = Model::VlanXlate::find( before, lag );
         if ( below( 3 ) != 0 ) { // the same set or another one
            const Model::Id id = old != nullptr && coin() ? *old : createdSet( lag );
            put( model.lags, lag, id );
            world.hwLagConfig->initialMemberIs( sets_[ static_cast< std::size_t >( id ) ] );
         }
      }
      model.lagConfigReplaced();
      sm->vexHwLagConfig()->notifierIs( world.hwLagConfig );
      return "another LAG configuration";
   }

   // ---- Bridging --------------------------------------------------------------------------------

   Model::Id createdConfig( const std::string & name ) {
      const auto id = static_cast< Model::Id >( configs_.size() );
      const bool translated = coin();
      configs_.push_back( switchIntfConfig( name, translated ) );
      model.switching[ id ] = { name, translated ? 1 : 0 };
      return id;
   }
   std::string newConfig() {
      const std::string & name = any( configNames );
      const Model::Id id = createdConfig( name );
      put( model.configs, name, id );
      model.configEntryChanged( name );
      world.bridgingConfig->switchIntfConfigIs( configs_[ static_cast< std::size_t >( id ) ] );
      return "a new configuration of " + name;
   }
   std::string removedConfig() {
      const std::string & name = any( configNames );
      if ( drop( model.configs, name ) ) {
         model.configEntryChanged( name );
      }
      world.bridgingConfig->switchIntfConfigDel( intf( name ) );
      return "the configuration of " + name + " goes";
   }
   std::string mappingOf( Model::Id id ) {
      using Bridging::VlanXlateKey;
      auto & config = *configs_[ static_cast< std::size_t >( id ) ];
      const VlanXlateKey vlan( static_cast< std::uint16_t >( 10 + below( 2 ) ) );
      const bool ingress = coin();
      const auto & mappings = ingress ? config.ingressVlanXlate() : config.egressVlanXlate();
      if ( coin() ) {
         const Bridging::VlanId target( static_cast< std::uint16_t >( 1000 + below( 2 ) ) );
         const auto * const before = mappings.find( vlan );
         model.switching[ id ].mappings += before == nullptr ? 1 : 0;
         if ( before == nullptr || *before != target ) {
            model.mappingChanged( id );
         }
         ingress ? config.ingressVlanXlateIs( vlan, target )
                 : config.egressVlanXlateIs( vlan, target );
         return "a mapping of configuration " + std::to_string( id );
      }
      if ( mappings.has( vlan ) ) {
         --model.switching[ id ].mappings;
         model.mappingChanged( id );
      }
      ingress ? config.ingressVlanXlateDel( vlan ) : config.egressVlanXlateDel( vlan );
      return "a mapping less of configuration " + std::to_string( id );
   }
   std::string mapping() {
      return model.configs.empty()
                ? newConfig()
                : mappingOf( model.configs[ below( model.configs.size() ) ].second );
   }
   std::string mappingOfAny() {
      return configs_.empty() ? newConfig()
                              : mappingOf( static_cast< Model::Id >( below( configs_.size() ) ) );
   }
   std::string otherBridging() {
      world.bridgingConfig = Vex::make< Bridging::Config >();
      const auto before = std::exchange( model.configs, {} );
      for ( const std::string & name : configNames ) {
         const Model::Id * const old = Model::VlanXlate::find( before, name );
         if ( below( 3 ) != 0 ) {
            const Model::Id id = old != nullptr && coin() ? *old : createdConfig( name );
            put( model.configs, name, id );
            world.bridgingConfig->switchIntfConfigIs(
               configs_[ static_cast< std::size_t >( id ) ] );
         }
      }
      model.bridgingConfigReplaced();
      sm->vexBridgingConfig()->notifierIs( world.bridgingConfig );
      return "another bridging configuration";
   }

   // ---- The interlock itself --------------------------------------------------------------------

   std::string deletedWatch() {
      const std::string & name = any( lagNames );
      if ( coin() ) {
         model.lagWatch.erase( name );
         sm->initialMemberSmDel( intf( name ) );
      } else {
         model.configWatch.erase( name );
         sm->switchIntfConfigSmDel( intf( name ) );
      }
      return "a reactor of " + name + " goes";
   }
   std::string settledWatch() { // at whatever set or configuration, also at one out of use
      if ( !sets_.empty() && coin() ) {
         const std::size_t id = below( sets_.size() );
         const auto number = static_cast< Model::Id >( id );
         model.lagWatch[ model.members[ number ].lag ].entity = number;
         sm->initialMemberSmIs( sets_[ id ] );
      } else if ( !configs_.empty() ) {
         const std::size_t id = below( configs_.size() );
         const auto number = static_cast< Model::Id >( id );
         model.configWatch[ model.switching[ number ].intf ].entity = number;
         sm->switchIntfConfigSmIs( configs_[ id ] );
      }
      return "a reactor is pointed by hand";
   }
   std::string notifications() {
      sm->hasNotificationActiveIs( coin() ); // of no consequence
      return "notifications are switched";
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
      sm = startVlanXlate( world );
   }
   std::string restarted() {
      if ( below( 3 ) == 0 ) {
         restart();
      }
      return "a restart";
   }

   TestSupport::World world;
   Vex::Ptr< VlanXlateIntfInterlockSm > sm;
   std::vector< Vex::Ptr< Hardware::Lag::InitialMember > > sets_;
   std::vector< Vex::Ptr< Bridging::SwitchIntfConfig > > configs_;
   std::mt19937_64 random_;
};

TEST( VlanXlateRandom, TheOutputIsThatOfThePlainRuleWithItsGaps ) {
   const std::uint64_t first = seed( 1 );
   std::size_t admittedSteps = 0;
   for ( std::uint64_t run = first; run < first + 60; ++run ) {
      Switch device( run );
      for ( int step = 0; step < 300; ++step ) {
         const std::string action = device.step();
         ASSERT_EQ( device.output(), device.model.outputText() )
            << "after step " << step << ", " << action
            << "; play it again with INTERLOCK_SEED=" << run;
         admittedSteps += device.model.output.empty() ? 0U : 1U;
      }
   }
   EXPECT_GT( admittedSteps, 60U * 100U ) << "hardly anything was ever admitted";
}

} // namespace
} // namespace Velo
