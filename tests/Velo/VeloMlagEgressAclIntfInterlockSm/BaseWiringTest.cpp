// Which change of which input calls which operation of the egress-ACL base.

#include "platform/Vex/NullArgumentError.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/RecordingSm.h"
#include "tests/support/Names.h"
#include "tests/support/World.h"

#include <gtest/gtest.h>

namespace Velo {
namespace {

using Interface::LinkStatus;
using TestSupport::entry;
using TestSupport::intf;
using TestSupport::World;

struct EgressAclBaseWiring : testing::Test {
   World world;
   Vex::Ptr< RecordingSm > sm = RecordingSm::of( world );

   Vex::String calls() const { return sm->marks.take(); }
   Vex::String watchedPeerLink() const {
      const auto watched = sm->vexPeerLinkIntf()->notifier();
      return watched ? watched->intfId().stringValue() : "none";
   }
};

// ---- aclIntfFeatureStatus -----------------------------------------------------------------------

TEST_F( EgressAclBaseWiring, AnInputEntryDecidesItsPairWhenItComesAndWhenItGoes ) {
   world.installed( "Ethernet1" );
   EXPECT_EQ( calls(), "member(Ethernet1,PortChannel10)" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( calls(), "member(Ethernet1,PortChannel10)" );
}

TEST_F( EgressAclBaseWiring, AnInputEntryOfAStrangerDecidesItsPair ) {
   world.installed( "Ethernet9", "PortChannel90" );
   EXPECT_EQ( calls(), "member(Ethernet9,PortChannel90)" );
}

TEST_F( EgressAclBaseWiring, AnotherInputStatusDecidesNothingAndIsFollowedFromThenOn ) {
   const auto other = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   other->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   sm->vexAclIntfFeatureStatus()->notifierIs( other );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->aclIntfFeatureStatus(), other );
   world.installed( "Ethernet1" );
   EXPECT_EQ( calls(), "" );
   other->intfDel( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( calls(), "member(Ethernet1,PortChannel10)" );
}

// ---- hwLagConfig --------------------------------------------------------------------------------

TEST_F( EgressAclBaseWiring, ANewLagIsWatchedAndDecidesNothing ) {
   world.lag( "PortChannel20", { "Ethernet5" } );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->watchedLags(), "PortChannel10 PortChannel20" );
   world.member( "Ethernet6", "PortChannel20" );
   EXPECT_EQ( calls(), "member(Ethernet6,PortChannel20)" );
}

TEST_F( EgressAclBaseWiring, AReplacedInitialMemberIsWatchedByTheSameWatcherAndDecidesNothing ) {
   const auto old = world.hwLagConfig->initialMember( intf( "PortChannel10" ) );
   const auto watcher = sm->initialMemberSm().get( intf( "PortChannel10" ) );
   world.lag( "PortChannel10", { "Ethernet2" } );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->initialMemberSm().get( intf( "PortChannel10" ) ), watcher );
   old->memberIs( intf( "Ethernet7" ), {} );
   EXPECT_EQ( calls(), "" );
   world.memberGone( "Ethernet2" );
   EXPECT_EQ( calls(), "member(Ethernet2,PortChannel10)" );
}

TEST_F( EgressAclBaseWiring, ARemovedLagLosesItsWatcherAndDecidesNothing ) {
   const auto old = world.hwLagConfig->initialMember( intf( "PortChannel10" ) );
   const auto watcher = sm->initialMemberSm().get( intf( "PortChannel10" ) );
   world.lagGone( "PortChannel10" );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->watchedLags(), "" );
   EXPECT_TRUE( watcher->markedForDeletion() );
   old->memberIs( intf( "Ethernet7" ), {} );
   EXPECT_EQ( calls(), "" );
}

TEST_F( EgressAclBaseWiring, ThePortsOfARemovedLagAreNoActiveMembers ) {
   EXPECT_TRUE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel10" ) ) );
   world.lagGone( "PortChannel10" );
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel10" ) ) );
}

TEST_F( EgressAclBaseWiring, AnotherLagConfigIsWatchedWithItsLagsAndDecidesNothing ) {
   world.lag( "PortChannel20", { "Ethernet5" } );
   const auto kept = sm->initialMemberSm().get( intf( "PortChannel20" ) );
   const auto old = world.hwLagConfig;
   world.hwLagConfig = Vex::make< Hardware::Lag::Config >();
   world.lag( "PortChannel30", { "Ethernet8" } ).lag( "PortChannel20", { "Ethernet6" } );
   sm->vexHwLagConfig()->notifierIs( world.hwLagConfig );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->watchedLags(), "PortChannel20 PortChannel30" );
   EXPECT_EQ( sm->initialMemberSm().get( intf( "PortChannel20" ) ), kept );

   old->initialMember( intf( "PortChannel10" ) )->memberDel( intf( "Ethernet1" ) );
   old->initialMember( intf( "PortChannel20" ) )->memberDel( intf( "Ethernet5" ) );
   old->initialMemberIs( World::initialMember( "PortChannel40", {} ) );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->watchedLags(), "PortChannel20 PortChannel30" );

   world.memberGone( "Ethernet6", "PortChannel20" ).memberGone( "Ethernet8", "PortChannel30" );
   EXPECT_EQ( calls(), "member(Ethernet6,PortChannel20) member(Ethernet8,PortChannel30)" );
}

TEST_F( EgressAclBaseWiring, NoLagConfigAnyMoreLeavesTheWatchers ) {
   sm->vexHwLagConfig()->notifierIs( nullptr );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->watchedLags(), "PortChannel10" );
}

// ---- initialMemberSm ----------------------------------------------------------------------------

TEST_F( EgressAclBaseWiring, AMemberDecidesItsPairAloneWhenItComesChangesAndGoes ) {
   world.lag( "PortChannel20", { "Ethernet5" } );
   world.member( "Ethernet2" );
   EXPECT_EQ( calls(), "member(Ethernet2,PortChannel10)" );
   world.member( "Ethernet2", "PortChannel10", World::PortProgType( 7 ) );
   EXPECT_EQ( calls(), "member(Ethernet2,PortChannel10)" );
   world.memberGone( "Ethernet2" );
   EXPECT_EQ( calls(), "member(Ethernet2,PortChannel10)" );
}

TEST_F( EgressAclBaseWiring, AMemberWatcherWithoutInitialMemberSpeaksOfTheEmptyLag ) {
   const auto watcher = sm->initialMemberSm().get( intf( "PortChannel10" ) );
   watcher->notifierIs( nullptr );
   EXPECT_EQ( calls(), "" );
   watcher->onAttribute( Hardware::Lag::InitialMember::Attribute::member, intf( "Ethernet1" ) );
   EXPECT_EQ( calls(), "member(Ethernet1,)" );
}

TEST_F( EgressAclBaseWiring, AWatcherRePointedDecidesNothing ) {
   const auto other = World::initialMember( "PortChannel10", { "Ethernet4" } );
   const auto watcher = sm->initialMemberSm().get( intf( "PortChannel10" ) );
   EXPECT_EQ( sm->initialMemberSmIs( other ), watcher );
   EXPECT_EQ( calls(), "" );
   other->memberDel( intf( "Ethernet4" ) );
   EXPECT_EQ( calls(), "member(Ethernet4,PortChannel10)" );
}

TEST_F( EgressAclBaseWiring, AWatcherIsMadeActiveAndDecidesNothing ) {
   const auto im = World::initialMember( "PortChannel20", { "Ethernet5" } );
   const auto watcher = sm->initialMemberSmIs( im );
   EXPECT_TRUE( watcher->hasNotificationActive() );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( sm->watchedLags(), "PortChannel10 PortChannel20" );
}

TEST_F( EgressAclBaseWiring, ANullInitialMemberIsRefusedAndNothingIsWatched ) {
   try {
      sm->initialMemberSmIs( nullptr );
      ADD_FAILURE() << "accepted";
   } catch ( const Vex::NullArgumentError & error ) {
      EXPECT_EQ( error.mutator(), "initialMemberSmIs" );
   }
   EXPECT_EQ( sm->watchedLags(), "PortChannel10" );
}

TEST_F( EgressAclBaseWiring, ADeletedWatcherIsReturnedAsAZombie ) {
   const auto watcher = sm->initialMemberSm().get( intf( "PortChannel10" ) );
   EXPECT_EQ( sm->initialMemberSmDel( intf( "PortChannel10" ) ), watcher );
   EXPECT_TRUE( watcher->markedForDeletion() );
   EXPECT_EQ( sm->initialMemberSmDel( intf( "PortChannel10" ) ), nullptr );
   world.member( "Ethernet2" );
   EXPECT_EQ( calls(), "" );
}

TEST_F( EgressAclBaseWiring, AllWatchersMayBeDeleted ) {
   world.lag( "PortChannel20", {} );
   sm->initialMemberSmDelAll();
   EXPECT_EQ( sm->watchedLags(), "" );
   world.member( "Ethernet2" ).member( "Ethernet2", "PortChannel20" );
   EXPECT_EQ( calls(), "" );
}

// ---- mlagStatus ---------------------------------------------------------------------------------

TEST_F( EgressAclBaseWiring, TheMlagStateCallsItsHookOnce ) {
   world.mlagState( Mlag::State::disabled );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
}

TEST_F( EgressAclBaseWiring, AnMlagInterfaceCallsItsHookWhenItComesChangesAndGoes ) {
   world.mlagIntf( "PortChannel20", Mlag::IntfState::inactive );
   EXPECT_EQ( calls(), "mlagIntf(PortChannel20)" );
   world.mlagIntf( "PortChannel20", Mlag::IntfState::active );
   EXPECT_EQ( calls(), "mlagIntf(PortChannel20)" );
   world.mlagIntfGone( "PortChannel20" );
   EXPECT_EQ( calls(), "mlagIntf(PortChannel20)" );
}

TEST_F( EgressAclBaseWiring, WhichInterlockIsWantedIsNotItsBusiness ) {
   world.peerInterlock( true );
   EXPECT_EQ( calls(), "" );
}

TEST_F( EgressAclBaseWiring, AReplacedPeerLinkCallsTheHookBeforeAndAfterTheReactorMoves ) {
   world.peerLink( "Port-Channel2000" );
   EXPECT_EQ( calls(), "state[Port-Channel1000] state[Port-Channel2000]" );
}

TEST_F( EgressAclBaseWiring, ARemovedPeerLinkCallsTheHookOnceAndIsWatchedNoMore ) {
   const auto reactor = sm->vexPeerLinkIntf();
   world.noPeerLink();
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
   EXPECT_EQ( sm->vexPeerLinkIntf(), reactor );
   EXPECT_EQ( watchedPeerLink(), "none" );
   world.linkStatus( LinkStatus::down ); // of the link that was
   EXPECT_EQ( calls(), "" );
}

TEST_F( EgressAclBaseWiring, APeerLinkThatComesBackCallsTheHookBeforeAndAfterTheReactorMoves ) {
   world.noPeerLink();
   calls();
   world.peerLink( "Port-Channel1000" );
   EXPECT_EQ( calls(), "state[] state[Port-Channel1000]" );
}

TEST_F( EgressAclBaseWiring, AnotherMlagStatusCallsTheHookBeforeAndAfterItsPeerLinkIsWatched ) {
   const auto old = world.mlagStatus;
   world.mlagStatus = Vex::make< Mlag::Status >();
   world.peerLink( "Port-Channel2000" );
   sm->vexMlagStatus()->notifierIs( world.mlagStatus );
   EXPECT_EQ( calls(), "state[Port-Channel1000] state[Port-Channel2000]" );
   EXPECT_EQ( sm->mlagStatus(), world.mlagStatus );
   old->mlagStateIs( Mlag::State::disabled );
   old->peerLinkIs( nullptr );
   EXPECT_EQ( calls(), "" );
   world.mlagState( Mlag::State::secondary );
   EXPECT_EQ( calls(), "state[Port-Channel2000]" );
}

TEST_F( EgressAclBaseWiring, AnotherMlagStatusWithTheSamePeerLinkCallsTheHookOnce ) {
   const auto other = Vex::make< Mlag::Status >();
   other->peerLinkIs( world.mlagStatus->peerLink() );
   sm->vexMlagStatus()->notifierIs( other );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
}

TEST_F( EgressAclBaseWiring, AnotherMlagStatusWithoutPeerLinkCallsTheHookOnceAndNoneIsWatched ) {
   sm->vexMlagStatus()->notifierIs( Vex::make< Mlag::Status >() );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
   EXPECT_EQ( watchedPeerLink(), "none" );
}

TEST_F( EgressAclBaseWiring, NoMlagStatusAnyMoreCallsNothing ) {
   sm->vexMlagStatus()->notifierIs( nullptr );
   EXPECT_EQ( calls(), "" );
}

TEST_F( EgressAclBaseWiring, TheMlagStatusMayBeTakenAwayByTheHookOfAReplacedPeerLink ) {
   sm->onHook = [ & ] { sm->vexMlagStatus()->notifierIs( nullptr ); };
   world.peerLink( "Port-Channel2000" );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
   EXPECT_EQ( watchedPeerLink(), "none" );
}

TEST_F( EgressAclBaseWiring, AnotherMlagStatusMayBeTakenAwayByTheHookThatItCalls ) {
   const auto other = Vex::make< Mlag::Status >();
   other->peerLinkIs( Vex::make< Interface::EthIntfStatus >( intf( "Port-Channel2000" ) ) );
   sm->onHook = [ & ] { sm->vexMlagStatus()->notifierIs( nullptr ); };
   sm->vexMlagStatus()->notifierIs( other );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
   EXPECT_EQ( watchedPeerLink(), "none" );
}

// ---- peerLinkIntf -------------------------------------------------------------------------------

TEST_F( EgressAclBaseWiring, TheLinkStatusOfThePeerLinkCallsTheHook ) {
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
   world.linkStatus( LinkStatus::up );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
}

TEST_F( EgressAclBaseWiring, ThePeerLinkReactorIsThereWithoutAPeerLink ) {
   sm = RecordingSm::of( World().noPeerLink() );
   ASSERT_NE( sm->vexPeerLinkIntf(), nullptr );
   EXPECT_EQ( watchedPeerLink(), "none" );
   EXPECT_TRUE( sm->vexPeerLinkIntf()->hasNotificationActive() );
}

TEST_F( EgressAclBaseWiring, RePointedAtTheSamePeerLinkCallsNothing ) {
   sm->peerLinkIntfIs( world.mlagStatus->peerLink() );
   EXPECT_EQ( calls(), "" );
}

TEST_F( EgressAclBaseWiring, RePointedAtNoPeerLinkCallsNothing ) {
   sm->peerLinkIntfIs( nullptr );
   EXPECT_EQ( calls(), "" );
   EXPECT_EQ( watchedPeerLink(), "none" );
}

TEST_F( EgressAclBaseWiring, ADeletedPeerLinkReactorIsAZombieAndIsMadeAnewWhenNeeded ) {
   const auto reactor = sm->vexPeerLinkIntf();
   sm->peerLinkIntfDel();
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
   EXPECT_TRUE( reactor->markedForDeletion() );
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( calls(), "" );
   sm->peerLinkIntfIs( world.mlagStatus->peerLink() );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
   EXPECT_NE( sm->vexPeerLinkIntf(), reactor );
   world.linkStatus( LinkStatus::up );
   EXPECT_EQ( calls(), "state[Port-Channel1000]" );
}

TEST_F( EgressAclBaseWiring, ThePeerLinkReactorMayBeDeletedByTheHookThatItRuns ) {
   sm->onHook = [ & ] { sm->peerLinkIntfDel(); };
   sm->peerLinkIntfIs( Vex::make< Interface::EthIntfStatus >( intf( "Port-Channel2000" ) ) );
   EXPECT_EQ( calls(), "state[Port-Channel2000]" );
   EXPECT_EQ( sm->vexPeerLinkIntf(), nullptr );
}

} // namespace
} // namespace Velo
