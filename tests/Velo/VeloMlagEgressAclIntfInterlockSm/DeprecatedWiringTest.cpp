// Which change of which input calls which handler of the deprecated egress-ACL interlock, and what
// keeps a call from being made.

#include "platform/Vex/NullArgumentError.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedSm.h"

namespace Velo {
namespace {

using Interface::LinkStatus;
using TestSupport::entry;
using TestSupport::intf;
using TestSupport::World;

struct DeprecatedWiring : DeprecatedInterlock {
   DeprecatedWiring() { start(); }
};

const Vex::String allLags =
   "handleMlagStateOrPeerlink() handleAllLags() handleMember(Ethernet1,PortChannel10)";

// ---- inIntfFeatureStatus ------------------------------------------------------------------------

TEST_F( DeprecatedWiring, AnInputEntryCallsItsHandlerWhenItComesAndWhenItGoes ) {
   const Vex::String call =
      "handleIntfFeature(Ethernet9,PortChannel90) handleMember(Ethernet9,PortChannel90)";
   world.installed( "Ethernet9", "PortChannel90" );
   EXPECT_EQ( calls(), call );
   world.notInstalled( "Ethernet9", "PortChannel90" );
   EXPECT_EQ( calls(), call );
}

TEST_F( DeprecatedWiring, AnotherInputStatusCallsNothingAndIsFollowedFromThenOn ) {
   const auto other = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   other->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   sm->vexInIntfFeatureStatus()->notifierIs( other );
   EXPECT_EQ( calls(), "" );
   world.installed( "Ethernet1" );
   EXPECT_EQ( calls(), "" );
   world.mlagState( Mlag::State::secondary );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   other->intfDel( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

// ---- hwLagConfig --------------------------------------------------------------------------------

TEST_F( DeprecatedWiring, ANewLagIsWatchedAndCallsNothing ) {
   world.lag( "PortChannel20", { "Ethernet5" } );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( watchedLags(), "PortChannel10 PortChannel20" );
   world.member( "Ethernet6", "PortChannel20" );
   EXPECT_EQ( calls(), "handleMember(Ethernet6,PortChannel20)" );
}

TEST_F( DeprecatedWiring, ARemovedLagIsWatchedNoMoreAndCallsNothing ) {
   const auto old = world.hwLagConfig->initialMember( intf( "PortChannel10" ) );
   const auto reactor = lagReactor();
   world.lagGone( "PortChannel10" );
   EXPECT_EQ( watchedLags(), "" );
   EXPECT_TRUE( reactor->markedForDeletion() );
   old->memberIs( intf( "Ethernet2" ), {} );
   EXPECT_EQ( calls(), "" );
}

TEST_F( DeprecatedWiring, AReplacedInitialMemberIsWatchedByTheSameReactorAndCallsNothing ) {
   const auto old = world.hwLagConfig->initialMember( intf( "PortChannel10" ) );
   const auto reactor = lagReactor();
   world.lag( "PortChannel10", { "Ethernet2" } );
   EXPECT_EQ( lagReactor(), reactor );
   old->memberIs( intf( "Ethernet3" ), {} );
   EXPECT_EQ( calls(), "" );
   world.memberGone( "Ethernet2" );
   EXPECT_EQ( calls(), "handleMember(Ethernet2,PortChannel10)" );
}

// It follows the new configuration, but its member reactors stay where they are until the
// configuration changes under their key.
TEST_F( DeprecatedWiring, AnotherLagConfigCallsNothingAndMovesNoMemberReactor ) {
   const auto old = world.hwLagConfig->initialMember( intf( "PortChannel10" ) );
   world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
   world.lag( "PortChannel20", { "Ethernet5" } ).lag( "PortChannel10", { "Ethernet2" } );
   sm->vexHwLagConfig()->notifierIs( world.hwLagConfig );
   EXPECT_EQ( sm->hwLagConfig(), world.hwLagConfig );
   EXPECT_EQ( watchedLags(), "PortChannel10" );
   EXPECT_EQ( lagReactor()->notifier(), old );
   EXPECT_EQ( calls(), "" );
   world.member( "Ethernet3" ).member( "Ethernet6", "PortChannel20" );
   EXPECT_EQ( calls(), "" );
   old->memberIs( intf( "Ethernet4" ), {} ); // heard, and judged by the new configuration
   EXPECT_EQ( calls(), "handleMember(Ethernet4,PortChannel10)" );
   EXPECT_FALSE( world.admits( "Ethernet4" ) );
   world.mlagState( Mlag::State::disabled );
   EXPECT_EQ( TestSupport::admitted( world.output ),
              "(Ethernet5, PortChannel20) (Ethernet6, PortChannel20) (Ethernet2, PortChannel10) "
              "(Ethernet3, PortChannel10)" );
   world.lag( "PortChannel10", {} ).lag( "PortChannel20", {} );
   EXPECT_EQ( watchedLags(), "PortChannel10 PortChannel20" );
   EXPECT_EQ( lagReactor()->notifier(),
              world.hwLagConfig->initialMember( intf( "PortChannel10" ) ) );
}

TEST_F( DeprecatedWiring, NoLagConfigAnyMoreCallsNothingAndLeavesTheReactors ) {
   sm->vexHwLagConfig()->notifierIs( nullptr );
   world.lagGone( "PortChannel10" );
   EXPECT_EQ( watchedLags(), "PortChannel10" );
   EXPECT_EQ( calls(), "" );
}

// ---- mlagStatus ---------------------------------------------------------------------------------

TEST_F( DeprecatedWiring, TheMlagStateDecidesEveryLag ) {
   world.mlagState( Mlag::State::disabled );
   EXPECT_EQ( calls(), allLags );
}

TEST_F( DeprecatedWiring, AReplacedPeerLinkDecidesEveryLagOnceAndIsWatchedFromThenOn ) {
   const auto reactor = sm->vexPeerLinkIntf();
   world.peerLink( "Port-Channel2000" );
   EXPECT_EQ( calls(), allLags );
   EXPECT_EQ( sm->vexPeerLinkIntf(), reactor );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel2000" );
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( calls(), allLags );
}

TEST_F( DeprecatedWiring, EveryLagIsDecidedBeforeThePeerLinkReactorMoves ) {
   Vex::String seen;
   const auto consumer =
      TestSupport::ScriptedConsumer::once( world.output, [ & ] { seen = watchedPeerLink(); } );
   world.peerLink( "Port-Channel2000", LinkStatus::down );
   EXPECT_EQ( seen, "Port-Channel1000" );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel2000" );
}

TEST_F( DeprecatedWiring, ARemovedPeerLinkDecidesEveryLagOnceAndLosesItsReactor ) {
   const auto reactor = sm->vexPeerLinkIntf();
   world.noPeerLink();
   EXPECT_EQ( calls(), allLags );
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
   EXPECT_TRUE( reactor->markedForDeletion() );
   world.linkStatus( LinkStatus::down ); // of the link that was
   EXPECT_EQ( calls(), "" );
   world.peerLink( "Port-Channel1000" );
   EXPECT_EQ( calls(), allLags );
   EXPECT_NE( sm->vexPeerLinkIntf(), reactor );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel1000" );
}

TEST_F( DeprecatedWiring, AnMlagInterfaceDecidesItsLagWhenItComesChangesAndGoes ) {
   const Vex::String call =
      "handleMlagIntfStatus(PortChannel10) handleMember(Ethernet1,PortChannel10)";
   world.mlagIntf( "PortChannel10", Mlag::IntfState::inactive );
   EXPECT_EQ( calls(), call );
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( calls(), call );
   world.mlagIntf( "PortChannel10" );
   EXPECT_EQ( calls(), call );
   world.mlagIntf( "PortChannel90" );
   EXPECT_EQ( calls(), "handleMlagIntfStatus(PortChannel90)" );
}

TEST_F( DeprecatedWiring, WhichInterlockIsWantedIsNotItsBusiness ) {
   world.peerInterlock( true );
   EXPECT_EQ( calls(), "" );
}

TEST_F( DeprecatedWiring, AnotherMlagStatusCallsNothingAndIsFollowedFromThenOn ) {
   const auto oldLink = world.mlagStatus->peerLink();
   const auto old = world.mlagStatus;
   world.mlagStatus = Vex::make< Mlag::Status >();
   world.peerLink( "Port-Channel2000" );
   sm->vexMlagStatus()->notifierIs( world.mlagStatus );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->mlagStatus(), world.mlagStatus );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel1000" ) << "until the peer link changes";
   world.linkStatus( LinkStatus::down );
   old->mlagStateIs( Mlag::State::disabled );
   EXPECT_EQ( calls(), "" );
   world.mlagState( Mlag::State::primary );
   EXPECT_EQ( calls(), allLags );
   world.peerLink( "Port-Channel3000" );
   EXPECT_EQ( calls(), allLags );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel3000" );
}

TEST_F( DeprecatedWiring, NoMlagStatusAnyMoreCallsNothing ) {
   sm->vexMlagStatus()->notifierIs( nullptr );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel1000" );
}

// ---- initialMemberSm, peerLinkIntf --------------------------------------------------------------

TEST_F( DeprecatedWiring, AMemberDecidesItsPairAloneWhenItComesChangesAndGoes ) {
   const Vex::String call = "handleMember(Ethernet2,PortChannel10)";
   world.member( "Ethernet2" );
   EXPECT_EQ( calls(), call );
   world.member( "Ethernet2", "PortChannel10", World::PortProgType( 7 ) );
   EXPECT_EQ( calls(), call );
   world.memberGone( "Ethernet2" );
   EXPECT_EQ( calls(), call );
}

TEST_F( DeprecatedWiring, TheLinkStatusOfThePeerLinkDecidesEveryLag ) {
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( calls(), allLags );
   world.linkStatus( LinkStatus::up );
   EXPECT_EQ( calls(), allLags );
}

// ---- Guards: marked for deletion ----------------------------------------------------------------

TEST_F( DeprecatedWiring, AZombieCallsNoHandlerAndKeepsNothing ) {
   sm->vexDoZombieReactors( true );
   EXPECT_TRUE( sm->markedForDeletion() );
   world.installed( "Ethernet1" ).member( "Ethernet2" ).linkStatus( LinkStatus::down );
   world.lag( "PortChannel20", {} ).lagGone( "PortChannel10" );
   world.mlagIntfGone( "PortChannel10" ).mlagState( Mlag::State::disabled );
   world.peerLink( "Port-Channel2000" );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( watchedLags(), "PortChannel10" );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel1000" );
   world.noPeerLink();
   EXPECT_NE( sm->vexPeerLinkIntf(), nullptr );
}

TEST_F( DeprecatedWiring, WithoutOwnerNothingIsCalledAndNothingIsKept ) {
   sm->vexInIntfFeatureStatus()->ownerDel();
   sm->vexHwLagConfig()->ownerDel();
   sm->vexMlagStatus()->ownerDel();
   sm->vexPeerLinkIntf()->ownerDel();
   lagReactor()->ownerDel();
   world.installed( "Ethernet1" ).member( "Ethernet2" ).linkStatus( LinkStatus::down );
   world.lagGone( "PortChannel10" ).mlagState( Mlag::State::disabled ).noPeerLink();
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( watchedLags(), "PortChannel10" );
   EXPECT_NE( sm->vexPeerLinkIntf(), nullptr );
}

// ---- Guards: notifications inactive -------------------------------------------------------------

TEST_F( DeprecatedWiring, WhileNotificationsAreInactiveNoHandlerIsCalled ) {
   sm->hasNotificationActiveIs( false );
   world.installed( "Ethernet1" ).member( "Ethernet2" ).linkStatus( LinkStatus::down );
   world.mlagState( Mlag::State::disabled ).mlagIntfGone( "PortChannel10" );
   world.peerLink( "Port-Channel2000" ).noPeerLink();
   EXPECT_EQ( calls(), "" );
   sm->hasNotificationActiveIs( true );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( verdicts->take(), "" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" ) << "no ACL is needed by now";
}

TEST_F( DeprecatedWiring, WhileNotificationsAreInactiveTheMemberReactorsAreKept ) {
   sm->hasNotificationActiveIs( false );
   world.lag( "PortChannel20", {} ).lagGone( "PortChannel10" );
   EXPECT_EQ( watchedLags(), "PortChannel20" );
   sm->hasNotificationActiveIs( true );
   world.member( "Ethernet5", "PortChannel20" );
   EXPECT_EQ( calls(), "handleMember(Ethernet5,PortChannel20)" );
}

TEST_F( DeprecatedWiring, WhileNotificationsAreInactiveThePeerLinkReactorIsMoved ) {
   sm->hasNotificationActiveIs( false );
   const auto reactor = sm->vexPeerLinkIntf();
   world.peerLink( "Port-Channel2000" );
   EXPECT_EQ( sm->vexPeerLinkIntf(), reactor );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel2000" );
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( calls(), "" );
   world.noPeerLink();
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
   EXPECT_EQ( calls(), "" );
}

TEST_F( DeprecatedWiring, AReactorThatIsCreatedMeanwhileIsActiveFromItsCreationOn ) {
   world.noPeerLink();
   sm->hasNotificationActiveIs( false );
   calls();
   world.lag( "PortChannel20", {} ).peerLink( "Port-Channel2000" );
   EXPECT_FALSE( lagReactor()->hasNotificationActive() );
   EXPECT_TRUE( lagReactor( "PortChannel20" )->hasNotificationActive() );
   EXPECT_TRUE( sm->vexPeerLinkIntf()->hasNotificationActive() );
   world.member( "Ethernet2" ).member( "Ethernet5", "PortChannel20" );
   EXPECT_EQ( calls(), "handleMember(Ethernet5,PortChannel20)" );
}

TEST_F( DeprecatedWiring, EachReactorHasItsOwnMark ) {
   sm->vexInIntfFeatureStatus()->hasNotificationActiveIs( false );
   world.installed( "Ethernet1" );
   EXPECT_EQ( calls(), "" );
   world.mlagState( Mlag::State::secondary );
   EXPECT_EQ( calls(), allLags );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

// ---- Mutators -----------------------------------------------------------------------------------

TEST_F( DeprecatedWiring, ANullInitialMemberIsRefusedAndNothingIsWatched ) {
   try {
      sm->initialMemberSmIs( nullptr );
      ADD_FAILURE() << "accepted";
   } catch ( const Vex::NullArgumentError & error ) {
      EXPECT_EQ( error.mutator(), "initialMemberSmIs" );
   }
   EXPECT_EQ( watchedLags(), "PortChannel10" );
}

TEST_F( DeprecatedWiring, TheSetterCreatesAnActiveReactorAndCallsNothing ) {
   const auto created =
      sm->initialMemberSmIs( World::initialMember( "PortChannel20", { "Ethernet5" } ) );
   EXPECT_TRUE( created->hasNotificationActive() );
   EXPECT_EQ( lagReactor( "PortChannel20" ), created );
   EXPECT_EQ( calls(), "" );
}

TEST_F( DeprecatedWiring, TheSetterRePointsAReactorAndLeavesItsNotificationsAsTheyAre ) {
   sm->hasNotificationActiveIs( false );
   const auto im = World::initialMember( "PortChannel10", { "Ethernet5" } );
   EXPECT_EQ( sm->initialMemberSmIs( im ), lagReactor() );
   EXPECT_EQ( lagReactor()->notifier(), im );
   EXPECT_FALSE( lagReactor()->hasNotificationActive() );
   im->memberDel( intf( "Ethernet5" ) );
   EXPECT_EQ( calls(), "" );
   sm->hasNotificationActiveIs( true );
   sm->initialMemberSmIs( World::initialMember( "PortChannel10", {} ) );
   EXPECT_TRUE( lagReactor()->hasNotificationActive() );
}

TEST_F( DeprecatedWiring, TheDeleterReturnsAZombieAndWritesNothing ) {
   const auto reactor = lagReactor();
   EXPECT_EQ( sm->initialMemberSmDel( intf( "PortChannel10" ) ), reactor );
   EXPECT_TRUE( reactor->markedForDeletion() );
   EXPECT_EQ( sm->initialMemberSmDel( intf( "PortChannel10" ) ), nullptr );
   world.member( "Ethernet2" );
   EXPECT_EQ( calls(), "" );
}

TEST_F( DeprecatedWiring, AllMemberReactorsMayBeDeleted ) {
   world.lag( "PortChannel20", {} );
   const auto reactor = lagReactor();
   sm->initialMemberSmDelAll();
   EXPECT_EQ( watchedLags(), "" );
   EXPECT_TRUE( reactor->markedForDeletion() );
   EXPECT_EQ( calls(), "" );
}

TEST_F( DeprecatedWiring, ThePeerLinkMutatorsCreateMoveAndRemoveTheReactorAndCallNothing ) {
   const auto link = world.mlagStatus->peerLink();
   const auto reactor = sm->vexPeerLinkIntf();
   sm->peerLinkIntfIs( Vex::make< Interface::EthIntfStatus >( intf( "Port-Channel2000" ) ) );
   EXPECT_EQ( sm->vexPeerLinkIntf(), reactor );
   EXPECT_EQ( watchedPeerLink(), "Port-Channel2000" );
   sm->peerLinkIntfIs( nullptr );
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
   EXPECT_TRUE( reactor->markedForDeletion() );
   sm->peerLinkIntfIs( link );
   ASSERT_NE( sm->vexPeerLinkIntf(), nullptr );
   EXPECT_TRUE( sm->vexPeerLinkIntf()->hasNotificationActive() );
   sm->peerLinkIntfDel();
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
   sm->peerLinkIntfDel();
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( calls(), "" );
}

} // namespace
} // namespace Velo
