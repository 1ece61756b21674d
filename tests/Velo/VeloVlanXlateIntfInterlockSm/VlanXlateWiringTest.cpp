// Which change of which input calls which handler of the VLAN-translation interlock, and what keeps
// a call from being made.

#include "platform/Vex/NullArgumentError.h"
#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateSm.h"

namespace Velo {
namespace {

using TestSupport::entry;
using TestSupport::intf;
using TestSupport::World;
using Sm = VlanXlateIntfInterlockSm;

struct VlanXlateWiring : VlanXlateInterlock {
   VlanXlateWiring() { world.switchIntfConfig(); }

   Vex::String lags() const { return watched( sm->initialMemberSm() ); }
   Vex::String configs() const { return watched( sm->switchIntfConfigSm() ); }
   Vex::Ptr< Sm::VexInitialMemberSm > lagReactor() const {
      return sm->initialMemberSm().get( intf( "PortChannel10" ) );
   }
   Vex::Ptr< Sm::VexSwitchIntfConfigSm > configReactor() const {
      return sm->switchIntfConfigSm().get( intf( "PortChannel10" ) );
   }
};

const Vex::String config10 = "handleIntfConfig intf: PortChannel10";

// ---- inIntfFeatureStatus ------------------------------------------------------------------------

TEST_F( VlanXlateWiring, AnInputEntryCallsItsHandlerWhenItComesAndWhenItGoes ) {
   start();
   world.installed( "Ethernet1" );
   EXPECT_EQ( calls(), "handleIntfFeature intfFeature: (Ethernet1, PortChannel10)" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( calls(), "handleIntfFeature intfFeature: (Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateWiring, AnotherInputStatusCallsNothingAndIsFollowedFromThenOn ) {
   world.translated( 10 );
   start();
   const auto other = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   other->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   sm->vexInIntfFeatureStatus()->notifierIs( other );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( verdicts->take(), "" );
   world.installed( "Ethernet1" ).notInstalled( "Ethernet1" );
   EXPECT_EQ( calls(), "" );
   world.translated( 20 ); // counts from the next decision on
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   other->intfDel( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

// ---- hwLagConfig --------------------------------------------------------------------------------

TEST_F( VlanXlateWiring, ANewLagIsWatchedAndCallsNothing ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5" } );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( lags(), "PortChannel10 PortChannel20" );
   world.member( "Ethernet6", "PortChannel20" );
   EXPECT_EQ( calls(), "handleMember memberIntf: Ethernet6 lag: PortChannel20" );
}

TEST_F( VlanXlateWiring, ARemovedLagIsWatchedNoMoreAndCallsNothing ) {
   start();
   const auto old = world.hwLagConfig->initialMember( intf( "PortChannel10" ) );
   const auto reactor = lagReactor();
   world.lagGone( "PortChannel10" );
   EXPECT_EQ( lags(), "" );
   EXPECT_TRUE( reactor->markedForDeletion() );
   old->memberIs( intf( "Ethernet2" ), {} );
   EXPECT_EQ( calls(), "" );
}

TEST_F( VlanXlateWiring, AReplacedInitialMemberIsWatchedByTheSameReactorAndCallsNothing ) {
   start();
   const auto old = world.hwLagConfig->initialMember( intf( "PortChannel10" ) );
   const auto reactor = lagReactor();
   world.lag( "PortChannel10", { "Ethernet2" } );
   EXPECT_EQ( lagReactor(), reactor );
   old->memberIs( intf( "Ethernet3" ), {} );
   EXPECT_EQ( calls(), "" );
   world.member( "Ethernet4" );
   EXPECT_EQ( calls(), "handleMember memberIntf: Ethernet4 lag: PortChannel10" );
}

TEST_F( VlanXlateWiring, AnotherLagConfigIsWatchedWithItsLagsAndCallsNothing ) {
   world.lag( "PortChannel20", { "Ethernet5" } );
   start();
   const auto kept = sm->initialMemberSm().get( intf( "PortChannel20" ) );
   const auto gone = lagReactor();
   const auto old = world.hwLagConfig;
   world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
   world.lag( "PortChannel30", { "Ethernet7" } ).lag( "PortChannel20", { "Ethernet6" } );
   sm->vexHwLagConfig()->notifierIs( world.hwLagConfig );
   EXPECT_EQ( lags(), "PortChannel20 PortChannel30" );
   EXPECT_EQ( sm->initialMemberSm().get( intf( "PortChannel20" ) ), kept );
   EXPECT_TRUE( gone->markedForDeletion() );
   old->initialMember( intf( "PortChannel20" ) )->memberDel( intf( "Ethernet5" ) );
   old->initialMember( intf( "PortChannel10" ) )->memberDel( intf( "Ethernet1" ) );
   old->initialMemberDel( intf( "PortChannel20" ) );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( lags(), "PortChannel20 PortChannel30" );
   world.member( "Ethernet8", "PortChannel20" ).memberGone( "Ethernet7", "PortChannel30" );
   EXPECT_EQ( calls(), "handleMember memberIntf: Ethernet8 lag: PortChannel20; "
                       "handleMember memberIntf: Ethernet7 lag: PortChannel30" );
}

TEST_F( VlanXlateWiring, NoLagConfigAnyMoreLeavesTheReactors ) {
   start();
   sm->vexHwLagConfig()->notifierIs( nullptr );
   EXPECT_EQ( lags(), "PortChannel10" );
   EXPECT_FALSE( lagReactor()->markedForDeletion() );
   EXPECT_EQ( calls(), "" );
   world.lagGone( "PortChannel10" );
   EXPECT_EQ( lags(), "PortChannel10" );
}

// ---- initialMemberSm ----------------------------------------------------------------------------

TEST_F( VlanXlateWiring, AMemberCallsItsHandlerWhenItComesChangesAndGoes ) {
   start();
   const Vex::String call = "handleMember memberIntf: Ethernet2 lag: PortChannel10";
   world.member( "Ethernet2" );
   EXPECT_EQ( calls(), call );
   world.member( "Ethernet2", "PortChannel10", World::PortProgType( 7 ) );
   EXPECT_EQ( calls(), call );
   world.memberGone( "Ethernet2" );
   EXPECT_EQ( calls(), call );
}

TEST_F( VlanXlateWiring, AMemberReactorWithoutNotifierSpeaksOfTheEmptyLag ) {
   start();
   const auto reactor = lagReactor();
   reactor->notifierIs( nullptr );
   EXPECT_EQ( calls(), "" );
   reactor->onAttribute( Hardware::Lag::InitialMember::Attribute::member, intf( "Ethernet1" ) );
   EXPECT_EQ( calls(), "handleMember memberIntf: Ethernet1 lag: " );
}

// ---- bridgingConfig -----------------------------------------------------------------------------

TEST_F( VlanXlateWiring, ANewSwitchingConfigurationCallsItsHandlerAndIsWatched ) {
   start();
   world.bridgingConfig->switchIntfConfigIs( switchIntfConfig( "PortChannel20", true ) );
   EXPECT_EQ( calls(), "handleIntfConfig intf: PortChannel20" );
   EXPECT_EQ( configs(), "PortChannel10 PortChannel20" );
   world.translated( 20, "PortChannel20" );
   EXPECT_EQ( calls(), "handleIntfConfig intf: PortChannel20" );
}

TEST_F( VlanXlateWiring, ARemovedSwitchingConfigurationCallsItsHandlerAndIsWatchedNoMore ) {
   start();
   const auto old = world.bridgingConfig->switchIntfConfig( intf( "PortChannel10" ) );
   const auto reactor = configReactor();
   world.bridgingConfig->switchIntfConfigDel( intf( "PortChannel10" ) );
   EXPECT_EQ( calls(), config10 );
   EXPECT_EQ( configs(), "" );
   EXPECT_TRUE( reactor->markedForDeletion() );
   old->ingressVlanXlateIs( Bridging::VlanXlateKey( 10 ), Bridging::VlanId( 11 ) );
   EXPECT_EQ( calls(), "" );
}

TEST_F( VlanXlateWiring, AReplacedSwitchingConfigurationIsWatchedByTheSameReactor ) {
   start();
   const auto old = world.bridgingConfig->switchIntfConfig( intf( "PortChannel10" ) );
   const auto reactor = configReactor();
   world.bridgingConfig->switchIntfConfigIs( switchIntfConfig( "PortChannel10", true ) );
   EXPECT_EQ( calls(), config10 );
   EXPECT_EQ( configReactor(), reactor );
   old->ingressVlanXlateIs( Bridging::VlanXlateKey( 10 ), Bridging::VlanId( 11 ) );
   EXPECT_EQ( calls(), "" );
   world.notTranslated( 10 );
   EXPECT_EQ( calls(), config10 );
}

TEST_F( VlanXlateWiring, TheHandlerIsCalledBeforeTheReactorIsThere ) {
   start();
   Vex::String seen;
   const auto consumer =
      TestSupport::ScriptedConsumer::once( world.output, [ & ] { seen = configs(); } );
   world.lag( "PortChannel20", { "Ethernet5" } );
   world.switchIntfConfig( "PortChannel20" );
   EXPECT_EQ( seen, "PortChannel10" );
   EXPECT_EQ( configs(), "PortChannel10 PortChannel20" );
}

TEST_F( VlanXlateWiring, AnotherBridgingConfigIsWatchedWithItsEntriesAndCallsNothing ) {
   world.switchIntfConfig( "PortChannel20" );
   start();
   const auto kept = sm->switchIntfConfigSm().get( intf( "PortChannel20" ) );
   const auto gone = configReactor();
   const auto old = world.bridgingConfig;
   world.bridgingConfig = Vex::make< Bridging::Config >();
   world.translated( 10, "PortChannel30" ).translated( 10, "PortChannel20" );
   sm->vexBridgingConfig()->notifierIs( world.bridgingConfig );
   EXPECT_EQ( configs(), "PortChannel20 PortChannel30" );
   EXPECT_EQ( sm->switchIntfConfigSm().get( intf( "PortChannel20" ) ), kept );
   EXPECT_TRUE( gone->markedForDeletion() );
   for ( const auto & name : { "PortChannel10", "PortChannel20" } ) {
      old->switchIntfConfig( intf( name ) )
         ->egressVlanXlateIs( Bridging::VlanXlateKey( 5 ), Bridging::VlanId( 6 ) );
   }
   old->switchIntfConfigDel( intf( "PortChannel20" ) );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( configs(), "PortChannel20 PortChannel30" );
   world.notTranslated( 10, "PortChannel20" ).notTranslated( 10, "PortChannel30" );
   EXPECT_EQ( calls(),
              "handleIntfConfig intf: PortChannel20; handleIntfConfig intf: PortChannel30" );
}

TEST_F( VlanXlateWiring, AnotherBridgingConfigCountsFromTheNextDecisionOn ) {
   start();
   world.bridgingConfig = Vex::make< Bridging::Config >();
   world.translated( 10 );
   sm->vexBridgingConfig()->notifierIs( world.bridgingConfig );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   world.translated( 20 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateWiring, NoBridgingConfigAnyMoreLeavesTheReactors ) {
   start();
   sm->vexBridgingConfig()->notifierIs( nullptr );
   EXPECT_EQ( configs(), "PortChannel10" );
   EXPECT_FALSE( configReactor()->markedForDeletion() );
   EXPECT_EQ( calls(), "" );
}

// ---- switchIntfConfigSm -------------------------------------------------------------------------

TEST_F( VlanXlateWiring, AnIngressMappingCallsTheHandlerWhenItComesChangesAndGoes ) {
   start();
   world.translated( 10 );
   EXPECT_EQ( calls(), config10 );
   world.switchIntfConfig().ingressVlanXlateIs( Bridging::VlanXlateKey( 10 ),
                                                Bridging::VlanId( 11 ) );
   EXPECT_EQ( calls(), config10 );
   world.notTranslated( 10 );
   EXPECT_EQ( calls(), config10 );
}

TEST_F( VlanXlateWiring, AnEgressMappingCallsTheHandlerWhenItComesAndWhenItGoes ) {
   start();
   egressTranslated( world, 10 );
   EXPECT_EQ( calls(), config10 );
   egressNotTranslated( world, 10 );
   EXPECT_EQ( calls(), config10 );
}

TEST_F( VlanXlateWiring, AConfigReactorWithoutNotifierSpeaksOfTheEmptyInterface ) {
   start();
   const auto reactor = configReactor();
   reactor->notifierIs( nullptr );
   EXPECT_EQ( calls(), "" );
   for ( const auto attribute : { Bridging::SwitchIntfConfig::Attribute::ingressVlanXlate,
                                  Bridging::SwitchIntfConfig::Attribute::egressVlanXlate } ) {
      reactor->onAttribute( attribute, Bridging::VlanXlateKey( 10 ) );
      EXPECT_EQ( calls(), "handleIntfConfig intf: " );
   }
}

// ---- Guards: marked for deletion ----------------------------------------------------------------

TEST_F( VlanXlateWiring, AZombieCallsNoHandler ) {
   start();
   sm->vexDoZombieReactors( true );
   world.installed( "Ethernet1" ).member( "Ethernet2" ).translated( 10 );
   egressTranslated( world, 10 );
   world.bridgingConfig->switchIntfConfigDel( intf( "PortChannel10" ) );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateWiring, AZombieGoesOnKeepingTheCollections ) {
   start();
   sm->vexDoZombieReactors( true );
   world.lag( "PortChannel20", {} ).lagGone( "PortChannel10" );
   world.switchIntfConfig( "PortChannel20" );
   world.bridgingConfig->switchIntfConfigDel( intf( "PortChannel10" ) );
   EXPECT_EQ( lags(), "PortChannel20" );
   EXPECT_EQ( configs(), "PortChannel20" );
   EXPECT_EQ( calls(), "" );
}

TEST_F( VlanXlateWiring, AZombieFollowsAnotherConfigAsWell ) {
   start();
   sm->vexDoZombieReactors( true );
   world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
   world.bridgingConfig = Vex::make< Bridging::Config >();
   world.lag( "PortChannel20", {} ).switchIntfConfig( "PortChannel30" );
   sm->vexHwLagConfig()->notifierIs( world.hwLagConfig );
   sm->vexBridgingConfig()->notifierIs( world.bridgingConfig );
   EXPECT_EQ( lags(), "PortChannel20" );
   EXPECT_EQ( configs(), "PortChannel30" );
}

// ---- Guards: no notifier, no owner --------------------------------------------------------------

TEST_F( VlanXlateWiring, WithoutNotifierTheCollectionsAreNotKept ) {
   world.lagGone( "PortChannel10" ); // so that the decision does not ask the configurations
   start();
   sm->initialMemberSmIs( World::initialMember( "PortChannel20", {} ) );
   const auto lagConfig = sm->vexHwLagConfig();
   const auto bridging = sm->vexBridgingConfig();
   bridging->notifierIs( nullptr );
   bridging->onAttribute( Bridging::Config::Attribute::switchIntfConfig, intf( "PortChannel10" ) );
   EXPECT_EQ( calls(), config10 ) << "the handler does not ask for a notifier";
   lagConfig->notifierIs( nullptr );
   lagConfig->onAttribute( Hardware::Lag::Config::Attribute::initialMember,
                           intf( "PortChannel20" ) );
   EXPECT_EQ( lags(), "PortChannel20" );
   EXPECT_EQ( configs(), "PortChannel10" );
}

TEST_F( VlanXlateWiring, WithoutOwnerNothingIsCalledAndNothingIsKept ) {
   start();
   sm->vexInIntfFeatureStatus()->ownerDel();
   sm->vexHwLagConfig()->ownerDel();
   sm->vexBridgingConfig()->ownerDel();
   lagReactor()->ownerDel();
   configReactor()->ownerDel();
   world.installed( "Ethernet1" ).member( "Ethernet2" ).translated( 10 );
   egressTranslated( world, 10 );
   world.lag( "PortChannel20", {} ).lagGone( "PortChannel10" );
   world.switchIntfConfig( "PortChannel20" );
   sm->vexHwLagConfig()->notifierIs( Vex::make< Hardware::Lag::Config >() );
   sm->vexBridgingConfig()->notifierIs( Vex::make< Bridging::Config >() );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( lags(), "PortChannel10" );
   EXPECT_EQ( configs(), "PortChannel10" );
}

// ---- Guards: whether notifications are active is not asked --------------------------------------

TEST_F( VlanXlateWiring, InactiveNotificationsKeepNothingFromBeingDecided ) {
   start();
   sm->hasNotificationActiveIs( false );
   EXPECT_FALSE( sm->vexInIntfFeatureStatus()->hasNotificationActive() );
   EXPECT_FALSE( lagReactor()->hasNotificationActive() );
   world.translated( 10 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
   world.installed( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
   world.member( "Ethernet1" );
   world.bridgingConfig->switchIntfConfigDel( intf( "PortChannel10" ) );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.lag( "PortChannel20", {} );
   EXPECT_EQ( lags(), "PortChannel10 PortChannel20" );
   EXPECT_EQ( configs(), "" );
}

// ---- Collection mutators ------------------------------------------------------------------------

template < class Mutator >
Vex::String complaint( Mutator mutator ) {
   try {
      mutator();
   } catch ( const Vex::NullArgumentError & error ) {
      return error.mutator();
   }
   return "none";
}

TEST_F( VlanXlateWiring, ANullEntityIsRefusedAndNothingIsWatched ) {
   start();
   EXPECT_EQ( complaint( [ & ] { sm->initialMemberSmIs( nullptr ); } ), "initialMemberSmIs" );
   EXPECT_EQ( complaint( [ & ] { sm->switchIntfConfigSmIs( nullptr ); } ), "switchIntfConfigSmIs" );
   EXPECT_EQ( lags(), "PortChannel10" );
   EXPECT_EQ( configs(), "PortChannel10" );
}

TEST_F( VlanXlateWiring, ASetterCreatesAnActiveReactorAndCallsNothing ) {
   start();
   const auto lag =
      sm->initialMemberSmIs( World::initialMember( "PortChannel20", { "Ethernet5" } ) );
   const auto config = sm->switchIntfConfigSmIs( switchIntfConfig( "PortChannel10", true ) );
   const auto newConfig = sm->switchIntfConfigSmIs( switchIntfConfig( "PortChannel20", true ) );
   EXPECT_TRUE( lag->hasNotificationActive() );
   EXPECT_TRUE( newConfig->hasNotificationActive() );
   EXPECT_EQ( config, configReactor() );
   EXPECT_EQ( lags(), "PortChannel10 PortChannel20" );
   EXPECT_EQ( configs(), "PortChannel10 PortChannel20" );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateWiring, ASetterRePointsAReactorAndSwitchesItsNotificationsOn ) {
   start();
   sm->hasNotificationActiveIs( false );
   const auto im = World::initialMember( "PortChannel10", { "Ethernet5" } );
   const auto config = switchIntfConfig( "PortChannel10", true );
   EXPECT_EQ( sm->initialMemberSmIs( im ), lagReactor() );
   EXPECT_EQ( sm->switchIntfConfigSmIs( config ), configReactor() );
   EXPECT_EQ( lagReactor()->notifier(), im );
   EXPECT_EQ( configReactor()->notifier(), config );
   EXPECT_TRUE( lagReactor()->hasNotificationActive() );
   EXPECT_TRUE( configReactor()->hasNotificationActive() );
   EXPECT_FALSE( sm->hasNotificationActive() );
   EXPECT_EQ( calls(), "" );
}

TEST_F( VlanXlateWiring, ASetterSwitchesNotificationsOnAlsoWhereTheEntityIsTheSame ) {
   start();
   sm->hasNotificationActiveIs( false );
   sm->initialMemberSmIs( world.hwLagConfig->initialMember( intf( "PortChannel10" ) ) );
   sm->switchIntfConfigSmIs( world.bridgingConfig->switchIntfConfig( intf( "PortChannel10" ) ) );
   EXPECT_TRUE( lagReactor()->hasNotificationActive() );
   EXPECT_TRUE( configReactor()->hasNotificationActive() );
}

TEST_F( VlanXlateWiring, ADeleterReturnsAZombieAndWritesNothing ) {
   start();
   const auto lag = lagReactor();
   const auto config = configReactor();
   EXPECT_EQ( sm->initialMemberSmDel( intf( "PortChannel10" ) ), lag );
   EXPECT_EQ( sm->switchIntfConfigSmDel( intf( "PortChannel10" ) ), config );
   EXPECT_TRUE( lag->markedForDeletion() );
   EXPECT_TRUE( config->markedForDeletion() );
   EXPECT_EQ( sm->initialMemberSmDel( intf( "PortChannel10" ) ), nullptr );
   EXPECT_EQ( sm->switchIntfConfigSmDel( intf( "PortChannel10" ) ), nullptr );
   world.member( "Ethernet2" ).translated( 10 );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateWiring, AllReactorsOfACollectionMayBeDeleted ) {
   world.lag( "PortChannel20", {} ).switchIntfConfig( "PortChannel20" );
   start();
   const auto lag = lagReactor();
   sm->initialMemberSmDelAll();
   EXPECT_EQ( lags(), "" );
   EXPECT_EQ( configs(), "PortChannel10 PortChannel20" );
   const auto config = configReactor();
   sm->switchIntfConfigSmDelAll();
   EXPECT_EQ( configs(), "" );
   EXPECT_TRUE( lag->markedForDeletion() );
   EXPECT_TRUE( config->markedForDeletion() );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

} // namespace
} // namespace Velo
