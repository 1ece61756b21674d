// Whoever is notified of a verdict may change any entity, and may drop the interlock.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/BasicSm.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/World.h"

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

namespace Velo {
namespace {

using Interface::LinkStatus;
using Mlag::IntfState;
using Mlag::State;
using TestSupport::admitted;
using TestSupport::intf;
using TestSupport::IntfFeature;
using TestSupport::ScriptedConsumer;
using TestSupport::VerdictLog;
using TestSupport::World;

// Three members in two LAGs, all held out until MLAG is disabled, which admits them in one pass:
// Ethernet1, Ethernet2, then Ethernet5.
struct AConsumer : testing::Test {
   World world;
   Vex::Ptr< MlagEgressAclIntfInterlockSm > sm;
   Vex::Ptr< ScriptedConsumer > consumer;
   Vex::Ptr< VerdictLog > verdicts;

   AConsumer() {
      world.member( "Ethernet2" ).lag( "PortChannel20", { "Ethernet5" } );
      world.mlagIntf( "PortChannel20" );
      sm = startBasic( world );
   }
   void onFirstVerdict( std::function< void() > script ) {
      // Behind the log, so that the log is in the order of the changes.
      verdicts = VerdictLog::of( world.output );
      consumer = ScriptedConsumer::once( world.output, std::move( script ) );
   }
   Vex::String pass() {
      world.mlagState( State::disabled );
      return verdicts->take();
   }
   std::size_t notifiees() const {
      return world.aclIntfFeatureStatus->notifiees() + world.hwLagConfig->notifiees() +
             world.mlagStatus->notifiees() + world.peerLinkEntity()->notifiees();
   }
};

TEST_F( AConsumer, MayRemoveTheMemberThatWasJustAdmitted ) {
   onFirstVerdict( [ & ] { world.memberGone( "Ethernet1" ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) -(Ethernet1, PortChannel10) "
                      "+(Ethernet2, PortChannel10) +(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayRemoveTheMemberThatComesNext ) {
   onFirstVerdict( [ & ] { world.memberGone( "Ethernet2" ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayAddAMemberWhichIsDecidedAtOnceAndOnce ) {
   onFirstVerdict( [ & ] { world.member( "Ethernet3" ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet3, PortChannel10) "
                      "+(Ethernet2, PortChannel10) +(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayTurnTheMlagStateBackInTheMiddleOfThePassThatItCaused ) {
   onFirstVerdict( [ & ] { world.mlagState( State::primary ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) -(Ethernet1, PortChannel10)" );
   EXPECT_EQ( admitted( world.output ), "" );
}

TEST_F( AConsumer, MayChangeTheMlagInterfaceOfTheLagUnderWay ) {
   onFirstVerdict( [ & ] {
      world.mlagState( State::primary ).mlagIntf( "PortChannel10", IntfState::inactive );
   } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) -(Ethernet1, PortChannel10) "
                      "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10)" );
}

TEST_F( AConsumer, MayReportAnAclInstalled ) {
   onFirstVerdict(
      [ & ] { world.mlagState( State::primary ).installed( "Ethernet5", "PortChannel20" ); } );
   pass();
   EXPECT_EQ( admitted( world.output ), "(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayTakeTheLinkStatusUpAndDown ) {
   onFirstVerdict( [ & ] { world.linkStatus( LinkStatus::up ); } );
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) -(Ethernet1, PortChannel10)" );
}

TEST_F( AConsumer, MayReplaceThePeerLinkWhileItIsBeingReplaced ) {
   onFirstVerdict( [ & ] { world.peerLink( "Port-Channel3000", LinkStatus::down ); } );
   world.peerLink( "Port-Channel2000", LinkStatus::down );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) "
                                "+(Ethernet5, PortChannel20)" );
   EXPECT_EQ( sm->vexPeerLinkIntf()->notifier()->intfId(), intf( "Port-Channel3000" ) );
   world.linkStatus( LinkStatus::up );
   EXPECT_EQ( admitted( world.output ), "" );
}

TEST_F( AConsumer, MayRemoveThePeerLinkWhileItIsBeingReplaced ) {
   onFirstVerdict( [ & ] { world.noPeerLink(); } );
   world.peerLink( "Port-Channel2000", LinkStatus::down );
   EXPECT_EQ( sm->vexPeerLinkIntf()->notifier(), nullptr );
   EXPECT_EQ( world.peerLinkEntity()->notifiees(), 0U );
}

TEST_F( AConsumer, MayRemoveTheLagWhoseMembersAreWalked ) {
   onFirstVerdict( [ & ] { world.lagGone( "PortChannel10" ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet5, PortChannel20)" )
      << "Ethernet2 is no active member any more; Ethernet1 stays until something touches it";
   EXPECT_EQ( sm->initialMemberSm().size(), 1U );
}

TEST_F( AConsumer, MayRemoveTheLagWhoseMlagInterfaceHasChanged ) {
   onFirstVerdict( [ & ] { world.lagGone( "PortChannel10" ); } );
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( AConsumer, MayReplaceTheInitialMemberWhoseMembersAreWalked ) {
   onFirstVerdict( [ & ] { world.lag( "PortChannel10", { "Ethernet2", "Ethernet3" } ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) "
                      "+(Ethernet5, PortChannel20)" )
      << "the pass goes on over the members that it began with";
   world.memberGone( "Ethernet3" ).member( "Ethernet3" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet3, PortChannel10)" );
}

TEST_F( AConsumer, MayRemoveALagThatThePassHasNotReached ) {
   onFirstVerdict( [ & ] { world.lagGone( "PortChannel20" ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10)" );
}

TEST_F( AConsumer, MayAddALagWhichThePassDoesNotReach ) {
   onFirstVerdict( [ & ] { world.lag( "PortChannel30", { "Ethernet7" } ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) "
                      "+(Ethernet5, PortChannel20)" );
   world.member( "Ethernet8", "PortChannel30" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet8, PortChannel30)" );
}

TEST_F( AConsumer, MayReplaceTheWholeLagConfig ) {
   onFirstVerdict( [ & ] {
      world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
      world.lag( "PortChannel20", { "Ethernet5" } ).lag( "PortChannel30", { "Ethernet7" } );
      sm->vexHwLagConfig()->notifierIs( world.hwLagConfig );
   } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet5, PortChannel20)" )
      << "the pass goes on over the LAGs that it began with, as the new configuration has them";
   world.mlagState( State::inactive );
   EXPECT_EQ( verdicts->take(), "+(Ethernet7, PortChannel30)" );
}

TEST_F( AConsumer, MayReplaceTheWholeMlagStatus ) {
   onFirstVerdict( [ & ] {
      world.mlagStatus = Vex::make< Mlag::Status >();
      sm->vexMlagStatus()->notifierIs( world.mlagStatus );
   } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) "
                      "+(Ethernet5, PortChannel20)" );
   world.mlagState( State::primary ).peerLink( "Port-Channel1000" ).mlagIntf( "PortChannel10" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet2, PortChannel10)" );
}

TEST_F( AConsumer, MayReplaceTheWholeMlagStatusWhileThePeerLinkIsBeingReplaced ) {
   onFirstVerdict( [ & ] {
      world.mlagStatus = Vex::make< Mlag::Status >();
      world.peerLink( "Port-Channel3000" );
      sm->vexMlagStatus()->notifierIs( world.mlagStatus );
   } );
   world.peerLink( "Port-Channel2000", LinkStatus::down );
   EXPECT_EQ( sm->vexPeerLinkIntf()->notifier(), world.peerLinkEntity() );
   EXPECT_EQ( sm->vexPeerLinkIntf()->notifier()->intfId(), intf( "Port-Channel3000" ) );
}

TEST_F( AConsumer, MayUndoTheVerdict ) {
   onFirstVerdict(
      [ & ] { world.output->intfDel( TestSupport::entry( "Ethernet1", "PortChannel10" ) ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) -(Ethernet1, PortChannel10) "
                      "+(Ethernet2, PortChannel10) +(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayStartAnotherInterlockOnTheSameOutput ) {
   Vex::Ptr< MlagEgressAclIntfInterlockSm > other;
   onFirstVerdict( [ & ] { other = startBasic( world ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) "
                      "+(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayDropTheInterlockInTheMiddleOfAPassWhichThenRunsToItsEnd ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) "
                      "+(Ethernet5, PortChannel20)" );
   EXPECT_EQ( notifiees(), 0U );
   world.mlagState( State::primary ).installed( "Ethernet1" ).memberGone( "Ethernet1" );
   world.linkStatus( LinkStatus::down ).mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( verdicts->take(), "" );
}

// The same from inside each kind of notification.
TEST_F( AConsumer, MayDropTheInterlockInsideAnInputEntry ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   world.installed( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   EXPECT_EQ( notifiees(), 0U );
}

TEST_F( AConsumer, MayDropTheInterlockInsideAMember ) {
   world.mlagIntfGone( "PortChannel10" );
   onFirstVerdict( [ & ] { sm.release(); } );
   world.member( "Ethernet4" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet4, PortChannel10)" );
   EXPECT_EQ( notifiees(), 0U );
   EXPECT_EQ( world.hwLagConfig->initialMember( intf( "PortChannel10" ) )->notifiees(), 0U );
}

TEST_F( AConsumer, MayDropTheInterlockInsideAnMlagInterface ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10)" );
   EXPECT_EQ( notifiees(), 0U );
}

TEST_F( AConsumer, MayDropTheInterlockInsideALinkStatus ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( notifiees(), 0U );
}

TEST_F( AConsumer, MayDropTheInterlockInsideAReplacedPeerLink ) {
   const auto old = world.peerLinkEntity();
   onFirstVerdict( [ & ] { sm.release(); } );
   world.peerLink( "Port-Channel2000", LinkStatus::down );
   EXPECT_EQ( notifiees(), 0U );
   EXPECT_EQ( old->notifiees(), 0U );
}

TEST_F( AConsumer, MayDropTheInterlockAndTheEntityThatIsNotifying ) {
   onFirstVerdict( [ & ] {
      sm.release();
      world.mlagStatus = Vex::make< Mlag::Status >();
      world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
   } );
   auto * const borrowed = world.mlagStatus.get(); // its last reference goes in the notification
   borrowed->mlagStateIs( State::disabled );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) "
                                "+(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayMarkTheInterlockForDeletionWhichThenDecidesNothingMore ) {
   onFirstVerdict( [ & ] { sm->vexDoZombieReactors( true ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10)" );
   sm->handleIntfFeature( TestSupport::entry( "Ethernet2", "PortChannel10" ) );
   sm->handleInitialized();
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( AConsumer, MaySwitchTheNotificationsOff ) {
   onFirstVerdict( [ & ] { sm->hasNotificationActiveIs( false ); } );
   EXPECT_EQ( pass(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10) "
                      "+(Ethernet5, PortChannel20)" );
   world.mlagState( State::primary );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( AConsumer, MayActDuringTheFirstPassOfAnInterlock ) {
   sm.release();
   world.mlagState( State::disabled ).left( "Ethernet9", "PortChannel90" );
   onFirstVerdict( [ & ] { world.memberGone( "Ethernet1" ).member( "Ethernet3" ); } );
   sm = startBasic( world );
   EXPECT_EQ( verdicts->take(), "-(Ethernet9, PortChannel90) +(Ethernet3, PortChannel10) "
                                "+(Ethernet2, PortChannel10) +(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayThrowOutOfTheFirstPassWhichLeavesNothingRegistered ) {
   sm.release();
   world.mlagState( State::disabled );
   onFirstVerdict( [] { throw std::runtime_error( "no" ); } );
   EXPECT_THROW( startBasic( world ), std::runtime_error );
   EXPECT_EQ( notifiees(), 0U );
   for ( const auto lag : world.hwLagConfig->initialMember().entries() ) {
      EXPECT_EQ( lag.value->notifiees(), 0U );
   }
   sm = startBasic( world );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10) (Ethernet2, PortChannel10) "
                                        "(Ethernet5, PortChannel20)" );
}

TEST_F( AConsumer, MayThrowOutOfAPassAfterWhichTheInterlockGoesOn ) {
   onFirstVerdict( [] { throw std::runtime_error( "no" ); } );
   EXPECT_THROW( world.mlagState( State::disabled ), std::runtime_error );
   verdicts->take();
   world.mlagState( State::inactive );
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10) +(Ethernet5, PortChannel20)" );
}

} // namespace
} // namespace Velo
