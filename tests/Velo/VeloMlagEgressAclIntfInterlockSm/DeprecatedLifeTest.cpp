// How the deprecated egress-ACL interlock comes and goes, and what who hears of a verdict may do.

#include "Velo/VeloIntfInterlock.h"
#include "platform/Vex/GenericConstruction.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedSm.h"

#include <functional>
#include <string>
#include <vector>

namespace Velo {
namespace {

using Interface::LinkStatus;
using Mlag::State;
using TestSupport::admitted;
using TestSupport::intf;
using TestSupport::ScriptedConsumer;
using TestSupport::VerdictLog;

struct DeprecatedLife : DeprecatedInterlock {
   std::size_t notifieesOfLag() const {
      return world.hwLagConfig->initialMember( intf( "PortChannel10" ) )->notifiees();
   }
};

// ---- Construction -------------------------------------------------------------------------------

TEST_F( DeprecatedLife, EveryInputIsWatchedOnceItIsConstructed ) {
   world.lag( "PortChannel20", {} );
   start();
   EXPECT_EQ( watchedLags(), "PortChannel10 PortChannel20" );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel1000" );
   EXPECT_EQ( sm->inIntfFeatureStatus(), world.aclIntfFeatureStatus );
   EXPECT_EQ( sm->hwLagConfig(), world.hwLagConfig );
   EXPECT_EQ( sm->mlagStatus(), world.mlagStatus );
   EXPECT_EQ( sm->outIntfFeatureStatus(), world.output );
   EXPECT_EQ( notifieesOfLag(), 1U );
   EXPECT_EQ( world.mlagStatus->peerLink()->notifiees(), 1U );
}

TEST_F( DeprecatedLife, TheFullPassComesAfterTheInputReactorsAndBeforeTheOthers ) {
   world.mlagState( State::disabled );
   std::vector< std::size_t > seen;
   const auto consumer = ScriptedConsumer::once( world.output, [ & ] {
      seen = { world.aclIntfFeatureStatus->notifiees(), world.hwLagConfig->notifiees(),
               world.mlagStatus->notifiees(), notifieesOfLag(),
               world.mlagStatus->peerLink()->notifiees() };
   } );
   sm = startDeprecated( world );
   EXPECT_EQ( seen, ( std::vector< std::size_t >{ 1, 1, 1, 0, 0 } ) );
}

TEST_F( DeprecatedLife, WithoutPeerLinkThereIsNoReactorForIt ) {
   world.noPeerLink();
   start();
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
}

TEST_F( DeprecatedLife, TheReactorsAreActiveFromTheirCreationOn ) {
   sm = Vex::make< DeprecatedMlagEgressAclIntfInterlockSm >(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
   EXPECT_FALSE( sm->hasNotificationActive() ) << "the creator switches it on";
   EXPECT_TRUE( sm->vexInIntfFeatureStatus()->hasNotificationActive() );
   EXPECT_TRUE( sm->vexHwLagConfig()->hasNotificationActive() );
   EXPECT_TRUE( sm->vexMlagStatus()->hasNotificationActive() );
   EXPECT_TRUE( lagReactor()->hasNotificationActive() );
   EXPECT_TRUE( sm->vexPeerLinkIntf()->hasNotificationActive() );
}

TEST_F( DeprecatedLife, AnInputThatIsNotGivenHasNoReactor ) {
   world.mlagState( State::disabled );
   sm = Vex::make< DeprecatedMlagEgressAclIntfInterlockSm >( nullptr, world.hwLagConfig,
                                                             world.mlagStatus, world.output );
   EXPECT_EQ( sm->vexInIntfFeatureStatus(), nullptr );
   world.lagGone( "PortChannel10" );
   world.output->intfDel( TestSupport::entry( "Ethernet1", "PortChannel10" ) );
   sm = Vex::make< DeprecatedMlagEgressAclIntfInterlockSm >(
      world.aclIntfFeatureStatus, world.hwLagConfig, nullptr, world.output );
   EXPECT_EQ( sm->vexMlagStatus(), nullptr );
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
   sm->hasNotificationActiveIs( true );
   sm->vexDoZombieReactors( true );
}

TEST_F( DeprecatedLife, SwitchingNotificationsReachesEveryReactor ) {
   start();
   EXPECT_TRUE( sm->hasNotificationActive() );
   EXPECT_EQ( sm->referenceCount(), 1U );
   sm->hasNotificationActiveIs( false );
   EXPECT_FALSE( sm->vexInIntfFeatureStatus()->hasNotificationActive() );
   EXPECT_FALSE( sm->vexHwLagConfig()->hasNotificationActive() );
   EXPECT_FALSE( sm->vexMlagStatus()->hasNotificationActive() );
   EXPECT_FALSE( lagReactor()->hasNotificationActive() );
   EXPECT_FALSE( sm->vexPeerLinkIntf()->hasNotificationActive() );
   sm->hasNotificationActiveIs( true );
   sm->vexMlagStatus()->hasNotificationActiveIs( false );
   sm->hasNotificationActiveIs( true ); // no change, so nothing is passed on
   EXPECT_FALSE( sm->vexMlagStatus()->hasNotificationActive() );
   EXPECT_TRUE( sm->vexPeerLinkIntf()->hasNotificationActive() );
}

// ---- Teardown -----------------------------------------------------------------------------------

TEST_F( DeprecatedLife, TheOutputStaysWhenItGoes ) {
   world.installed( "Ethernet1" );
   start();
   sm.release();
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" );
   world.memberGone( "Ethernet1" ).mlagState( State::disabled ).notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( trace.take(), "" );
}

TEST_F( DeprecatedLife, NobodyIsWatchedOnceItHasGone ) {
   start();
   sm.release();
   EXPECT_EQ( world.aclIntfFeatureStatus->notifiees(), 0U );
   EXPECT_EQ( world.hwLagConfig->notifiees(), 0U );
   EXPECT_EQ( world.mlagStatus->notifiees(), 0U );
   EXPECT_EQ( world.mlagStatus->peerLink()->notifiees(), 0U );
   EXPECT_EQ( notifieesOfLag(), 0U );
}

TEST_F( DeprecatedLife, AReactorThatOutlivesItIsAZombieWithoutOwner ) {
   start();
   const auto in = sm->vexInIntfFeatureStatus();
   const auto lagConfig = sm->vexHwLagConfig();
   const auto mlag = sm->vexMlagStatus();
   const auto lag = lagReactor();
   const auto link = sm->vexPeerLinkIntf();
   sm.release();
   EXPECT_TRUE( in->markedForDeletion() );
   EXPECT_TRUE( lagConfig->markedForDeletion() );
   EXPECT_TRUE( mlag->markedForDeletion() );
   EXPECT_TRUE( lag->markedForDeletion() );
   EXPECT_TRUE( link->markedForDeletion() );
   // Revived, they would call their owner if they had one.
   in->vexDoZombieReactors( false );
   lagConfig->vexDoZombieReactors( false );
   mlag->vexDoZombieReactors( false );
   lag->vexDoZombieReactors( false );
   link->vexDoZombieReactors( false );
   world.installed( "Ethernet1" ).member( "Ethernet2" ).linkStatus( LinkStatus::down );
   world.lag( "PortChannel20", {} ).noPeerLink().mlagState( State::disabled );
   EXPECT_EQ( trace.take(), "" );
   EXPECT_EQ( verdicts->take(), "" );
}

// ---- Ways to construct it -----------------------------------------------------------------------

TEST_F( DeprecatedLife, TheExportedFactoryStartsIt ) {
   world.installed( "Ethernet1" );
   const auto made = deprecatedMlagEgressAclIntfInterlockSmFactory(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
   EXPECT_EQ( made->fwkType().name, "Velo::DeprecatedMlagEgressAclIntfInterlockSm" );
   EXPECT_TRUE( made->hasNotificationActive() );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

const Vex::String name = "DeprecatedMlagEgressAclIntfInterlockSm";

TEST_F( DeprecatedLife, IsConstructedByNameFromAnArrayOfArguments ) {
   world.installed( "Ethernet1" );
   const std::vector< Vex::Argument > arguments{ world.aclIntfFeatureStatus, world.hwLagConfig,
                                                 world.mlagStatus, world.output };
   const auto made =
      Vex::ptrCast< DeprecatedMlagEgressAclIntfInterlockSm >( Vex::construct( name, arguments ) );
   ASSERT_NE( made, nullptr );
   EXPECT_TRUE( made->hasNotificationActive() );
   EXPECT_EQ( made->outIntfFeatureStatus(), world.output );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( DeprecatedLife, ConstructedByNameComplainsOfWrongArguments ) {
   const std::vector< Vex::Argument > arguments{ world.aclIntfFeatureStatus, world.hwLagConfig,
                                                 world.bridgingConfig, world.output };
   try {
      Vex::construct( name, arguments );
      ADD_FAILURE() << "accepted";
   } catch ( const Vex::ConstructionError & error ) {
      EXPECT_EQ( std::string( error.what() ),
                 "DeprecatedMlagEgressAclIntfInterlockSm: argument 3: Mlag::Status (read-only) "
                 "wanted, Bridging::Config (writable) given" );
   }
   EXPECT_EQ( world.hwLagConfig->notifiees(), 0U );
}

// ---- Re-entrancy: PortChannel10 has the members Ethernet1 to Ethernet3, all of them held out ----

struct DeprecatedReentrancy : DeprecatedInterlock {
   DeprecatedReentrancy() {
      world.member( "Ethernet2" ).member( "Ethernet3" );
      start();
   }

   Vex::Ptr< ScriptedConsumer > consumer;
   void onFirstVerdict( std::function< void() > script ) {
      consumer = ScriptedConsumer::once( world.output, std::move( script ) );
   }
};

const Vex::String allAdmitted =
   "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) +(Ethernet3, PortChannel10)";

TEST_F( DeprecatedReentrancy, DroppedInTheMiddleOfAPassItEndsThePassAndReactsNoMore ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( verdicts->take(), allAdmitted );
   EXPECT_EQ( world.mlagStatus->peerLink()->notifiees(), 0U );
   world.linkStatus( LinkStatus::up ).mlagState( State::secondary ).memberGone( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( DeprecatedReentrancy, DroppedByTheVerdictOnAPeerLinkThatGoes ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   world.noPeerLink();
   EXPECT_EQ( verdicts->take(), allAdmitted );
   EXPECT_EQ( world.mlagStatus->notifiees(), 0U );
}

TEST_F( DeprecatedReentrancy, DroppedByTheVerdictOnAPeerLinkThatComesItWatchesNothing ) {
   world.noPeerLink().mlagIntf( "PortChannel10", Mlag::IntfState::inactive );
   verdicts->take();
   world.mlagIntf( "PortChannel10" );
   onFirstVerdict( [ & ] { sm.release(); } );
   world.peerLink( "Port-Channel2000" );
   EXPECT_EQ( admitted( world.output ), "" );
   EXPECT_EQ( world.mlagStatus->peerLink()->notifiees(), 0U );
}

TEST_F( DeprecatedReentrancy, DroppedByTheVerdictOnAMemberOrAnInputEntry ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   world.installed( "Ethernet2" ).installed( "Ethernet3" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
   start();
   onFirstVerdict( [ & ] { sm.release(); } );
   world.memberGone( "Ethernet2" ).memberGone( "Ethernet3" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet2, PortChannel10)" );
}

TEST_F( DeprecatedReentrancy, AMemberThatLeavesDuringThePassIsNotVisited ) {
   onFirstVerdict( [ & ] { world.memberGone( "Ethernet2" ); } );
   world.mlagState( State::disabled );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet3, PortChannel10)" );
}

TEST_F( DeprecatedReentrancy, AMemberThatComesDuringThePassIsDecidedOnce ) {
   onFirstVerdict( [ & ] { world.member( "Ethernet4" ); } );
   world.mlagState( State::disabled );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet4, PortChannel10) "
                                "+(Ethernet2, PortChannel10) +(Ethernet3, PortChannel10)" );
}

TEST_F( DeprecatedReentrancy, TheLagThatGoesDuringThePassHasNoMembersLeftToAdmit ) {
   onFirstVerdict( [ & ] { world.lagGone( "PortChannel10" ); } );
   world.mlagState( State::disabled );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   EXPECT_EQ( watchedLags(), "" );
}

TEST_F( DeprecatedReentrancy, TheLagThatGoesWhileItsMlagStatusIsObeyed ) {
   onFirstVerdict( [ & ] { world.lagGone( "PortChannel10" ); } );
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( DeprecatedReentrancy, AnotherLagConfigDuringThePassLetsThePassEndOnTheOldOne ) {
   onFirstVerdict( [ & ] {
      world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
      world.lag( "PortChannel10", { "Ethernet3" } );
      sm->vexHwLagConfig()->notifierIs( world.hwLagConfig );
   } );
   world.mlagState( State::disabled );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet3, PortChannel10)" )
      << "Ethernet2 is judged by the new configuration";
}

TEST_F( DeprecatedReentrancy, ThePeerLinkThatComesBackDuringThePassIsWatched ) {
   onFirstVerdict( [ & ] { world.peerLink( "Port-Channel2000" ); } );
   world.noPeerLink();
   EXPECT_EQ( admitted( world.output ), "" );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel2000" );
   world.linkStatus( LinkStatus::down );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( DeprecatedReentrancy, WithoutMlagStatusAfterThePassThereIsNoPeerLinkReactor ) {
   world.memberGone( "Ethernet2" ).memberGone( "Ethernet3" ); // the one verdict ends the pass
   onFirstVerdict( [ & ] { sm->vexMlagStatus()->notifierIs( nullptr ); } );
   world.peerLink( "Port-Channel2000", LinkStatus::down );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
}

TEST_F( DeprecatedReentrancy, ThePeerLinkReactorThatGoesDuringItsOwnNotification ) {
   onFirstVerdict( [ & ] { sm->peerLinkIntfDel(); } );
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( verdicts->take(), allAdmitted );
   world.linkStatus( LinkStatus::up );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( DeprecatedReentrancy, ALagThatComesDuringTheStartIsWatchedOnce ) {
   sm.release();
   world.installed( "Ethernet1" );
   onFirstVerdict( [ & ] { world.lag( "PortChannel20", { "Ethernet5" } ); } );
   sm = startDeprecated( world );
   EXPECT_EQ( watchedLags(), "PortChannel20 PortChannel10" );
   EXPECT_EQ( world.hwLagConfig->initialMember( intf( "PortChannel20" ) )->notifiees(), 1U );
}

TEST_F( DeprecatedReentrancy, AMemberThatComesToTheLagThatTheStartDecidesIsNotHeard ) {
   sm.release();
   world.mlagState( State::disabled );
   onFirstVerdict( [ & ] { world.member( "Ethernet4" ); } );
   sm = startDeprecated( world );
   EXPECT_FALSE( world.admits( "Ethernet4" ) );
   world.installed( "Ethernet4" );
   EXPECT_TRUE( world.admits( "Ethernet4" ) );
}

TEST_F( DeprecatedReentrancy, ThePeerLinkThatIsReplacedDuringTheStartIsTheOneWatched ) {
   sm.release();
   world.installed( "Ethernet1" );
   onFirstVerdict( [ & ] { world.peerLink( "Port-Channel2000" ); } );
   sm = startDeprecated( world );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel2000" );
   EXPECT_EQ( world.mlagStatus->peerLink()->notifiees(), 1U );
}

} // namespace
} // namespace Velo
