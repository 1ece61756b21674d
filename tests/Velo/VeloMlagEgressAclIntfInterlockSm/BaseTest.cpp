// Construction, guards and handlers of the egress-ACL base.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/RecordingSm.h"
#include "tests/support/Names.h"
#include "tests/support/RingRecorder.h"
#include "tests/support/TraceRecorder.h"
#include "tests/support/World.h"

#include <functional>
#include <gtest/gtest.h>

namespace Velo {
namespace {

using Interface::LinkStatus;
using TestSupport::entry;
using TestSupport::intf;
using TestSupport::RingRecorder;
using TestSupport::TraceRecorder;
using TestSupport::World;

struct EgressAclBase : testing::Test {
   World world;
   Vex::Ptr< RecordingSm > sm;

   void start() { sm = RecordingSm::of( world ); }
   Vex::String calls() const { return sm->marks.take(); }
};

// ---- Construction -------------------------------------------------------------------------------

TEST_F( EgressAclBase, CallsNoHookWhenItIsConstructed ) {
   start();
   EXPECT_EQ( calls(), "" );
   EXPECT_FALSE( sm->hasNotificationActive() );
   EXPECT_EQ( sm->smName(), "" );
}

TEST_F( EgressAclBase, WatchesEveryLagThatIsThereWhenItIsConstructed ) {
   world.lag( "PortChannel20", {} ).lag( "PortChannel15", { "Ethernet3" } );
   start();
   EXPECT_EQ( sm->watchedLags(), "PortChannel10 PortChannel20 PortChannel15" );
   world.member( "Ethernet5", "PortChannel20" );
   EXPECT_EQ( calls(), "member(Ethernet5,PortChannel20)" );
}

TEST_F( EgressAclBase, ForwardsFromItsConstructionOn ) {
   start();
   world.installed( "Ethernet1" ).mlagState( Mlag::State::disabled ).linkStatus( LinkStatus::down );
   EXPECT_EQ( calls(), "member(Ethernet1,PortChannel10) state[Port-Channel1000] "
                       "state[Port-Channel1000]" );
}

TEST_F( EgressAclBase, HasNoReactorForAnInputThatWasNotGiven ) {
   sm = Vex::make< RecordingSm >( nullptr, world.hwLagConfig, world.mlagStatus, world.output );
   EXPECT_EQ( sm->vexAclIntfFeatureStatus(), nullptr );
   EXPECT_EQ( sm->aclIntfFeatureStatus(), nullptr );
   EXPECT_NE( sm->vexHwLagConfig(), nullptr );

   sm = Vex::make< RecordingSm >( world.aclIntfFeatureStatus, nullptr, world.mlagStatus,
                                  world.output );
   EXPECT_EQ( sm->vexHwLagConfig(), nullptr );
   EXPECT_EQ( sm->watchedLags(), "" );
   EXPECT_NE( sm->vexMlagStatus(), nullptr );

   sm = Vex::make< RecordingSm >( world.aclIntfFeatureStatus, world.hwLagConfig, nullptr,
                                  world.output );
   EXPECT_EQ( sm->vexMlagStatus(), nullptr );
   ASSERT_NE( sm->vexPeerLinkIntf(), nullptr );
   EXPECT_EQ( sm->vexPeerLinkIntf()->notifier(), nullptr );

   sm = Vex::make< RecordingSm >( nullptr, nullptr, nullptr, nullptr );
   EXPECT_EQ( sm->outIntfFeatureStatus(), nullptr );
   EXPECT_NE( sm->vexPeerLinkIntf(), nullptr );
}

TEST_F( EgressAclBase, ReadsItsInputsAndWritesItsOutput ) {
   start();
   EXPECT_EQ( sm->aclIntfFeatureStatus(), world.aclIntfFeatureStatus );
   EXPECT_EQ( sm->hwLagConfig(), world.hwLagConfig );
   EXPECT_EQ( sm->mlagStatus(), world.mlagStatus );
   EXPECT_EQ( sm->outIntfFeatureStatus(), world.output );
}

TEST_F( EgressAclBase, SwitchesEveryReactorItHas ) {
   start();
   sm->hasNotificationActiveIs( true );
   sm->hasNotificationActiveIs( false );
   EXPECT_FALSE( sm->vexAclIntfFeatureStatus()->hasNotificationActive() );
   EXPECT_FALSE( sm->vexHwLagConfig()->hasNotificationActive() );
   EXPECT_FALSE( sm->vexMlagStatus()->hasNotificationActive() );
   EXPECT_FALSE( sm->vexPeerLinkIntf()->hasNotificationActive() );
   EXPECT_FALSE( sm->initialMemberSm().get( intf( "PortChannel10" ) )->hasNotificationActive() );
}

// ---- Guards -------------------------------------------------------------------------------------

// Every change of the wiring table, once a reactor.
struct Change {
   const char * name;
   std::function< Vex::Ptr< Vex::NotifieeBase >( RecordingSm & ) > reactor;
   std::function< void( World &, RecordingSm & ) > make;
};

void PrintTo( const Change & change, std::ostream * out ) {
   *out << change.name;
}

Vex::Ptr< Vex::NotifieeBase > acl( RecordingSm & sm ) {
   return sm.vexAclIntfFeatureStatus();
}
Vex::Ptr< Vex::NotifieeBase > lags( RecordingSm & sm ) {
   return sm.vexHwLagConfig();
}
Vex::Ptr< Vex::NotifieeBase > mlag( RecordingSm & sm ) {
   return sm.vexMlagStatus();
}
Vex::Ptr< Vex::NotifieeBase > peerLink( RecordingSm & sm ) {
   return sm.vexPeerLinkIntf();
}
Vex::Ptr< Vex::NotifieeBase > members( RecordingSm & sm ) {
   return sm.initialMemberSm().get( intf( "PortChannel10" ) );
}

const Change changes[] = {
   { "InputEntry", acl, []( World & world, RecordingSm & ) { world.installed( "Ethernet1" ); } },
   { "Lag", lags, []( World & world, RecordingSm & ) { world.lag( "PortChannel20", {} ); } },
   { "LagGone", lags, []( World & world, RecordingSm & ) { world.lagGone( "PortChannel10" ); } },
   { "LagConfig", lags,
     []( World &, RecordingSm & sm ) {
        sm.vexHwLagConfig()->notifierIs( Vex::make< Hardware::Lag::Config >() );
     } },
   { "MlagState", mlag,
     []( World & world, RecordingSm & ) { world.mlagState( Mlag::State::disabled ); } },
   { "PeerLinkGone", mlag, []( World & world, RecordingSm & ) { world.noPeerLink(); } },
   { "PeerLink", mlag, []( World & world, RecordingSm & ) { world.peerLink( "Port-Channel2" ); } },
   { "MlagIntf", mlag,
     []( World & world, RecordingSm & ) { world.mlagIntfGone( "PortChannel10" ); } },
   { "MlagStatus", mlag,
     []( World &, RecordingSm & sm ) {
        sm.vexMlagStatus()->notifierIs( Vex::make< Mlag::Status >() );
     } },
   { "LinkStatus", peerLink,
     []( World & world, RecordingSm & ) { world.linkStatus( LinkStatus::down ); } },
   { "RePointedPeerLink", peerLink,
     []( World &, RecordingSm & sm ) {
        sm.peerLinkIntfIs( Vex::make< Interface::EthIntfStatus >( intf( "Port-Channel2" ) ) );
     } },
   { "Member", members, []( World & world, RecordingSm & ) { world.member( "Ethernet2" ); } },
};

struct EgressAclBaseGuards : testing::TestWithParam< Change > {
   World world;
   Vex::Ptr< RecordingSm > sm = RecordingSm::of( world );
   const Interface::EthIntfStatus * peerLinkBefore = world.mlagStatus->peerLink().get();

   // What the change has done, calls and watchers.
   Vex::String effect() {
      GetParam().make( world, *sm );
      Vex::String result = sm->marks.take() + '|' + sm->watchedLags();
      const bool relinked = sm->vexPeerLinkIntf()->notifier().get() != peerLinkBefore;
      return relinked && GetParam().reactor( *sm ) != sm->vexPeerLinkIntf() ? result + "|relinked"
                                                                            : result;
   }
};

TEST_P( EgressAclBaseGuards, ForwardsWhileActiveAndAlive ) {
   EXPECT_NE( effect(), "|PortChannel10" );
}

TEST_P( EgressAclBaseGuards, ForwardsNothingWhileNotificationsAreInactive ) {
   GetParam().reactor( *sm )->hasNotificationActiveIs( false );
   EXPECT_EQ( effect(), "|PortChannel10" );
}

TEST_P( EgressAclBaseGuards, ForwardsNothingAsAZombie ) {
   GetParam().reactor( *sm )->vexDoZombieReactors( true );
   EXPECT_EQ( effect(), "|PortChannel10" );
}

INSTANTIATE_TEST_SUITE_P( Wiring,
                          EgressAclBaseGuards,
                          testing::ValuesIn( changes ),
                          []( const auto & param ) { return Vex::String( param.param.name ); } );

// ---- Handlers -----------------------------------------------------------------------------------

TEST_F( EgressAclBase, AMemberOfALagIsActiveWhateverItsPortProgType ) {
   for ( const unsigned type : { 0U, 1U, 255U } ) {
      world.member( "Ethernet1", "PortChannel10", static_cast< World::PortProgType >( type ) );
      start();
      EXPECT_TRUE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel10" ) ) ) << type;
   }
}

TEST_F( EgressAclBase, ALagWithoutMembersHasNoActiveMember ) {
   world.lag( "PortChannel10", {} );
   start();
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel10" ) ) );
}

TEST_F( EgressAclBase, AMemberOfOneLagIsNotActiveInAnother ) {
   world.lag( "PortChannel20", { "Ethernet5" } );
   start();
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel20" ) ) );
}

TEST_F( EgressAclBase, TracesWhetherAMemberIsActive ) {
   start();
   sm->smNameIs( "Sm::" );
   const RingRecorder ringScope;
   TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm" );
   sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel10" ) );
   EXPECT_EQ( trace.take(), "0 lagMemberActive: Sm::lagMemberActive memberIntf : Ethernet1 lag : "
                            "PortChannel10\n"
                            "3 lagMemberActive: lagMemberActive member is active\n" );
   sm->lagMemberActive( intf( "Ethernet2" ), intf( "PortChannel10" ) );
   EXPECT_EQ( trace.take(), "0 lagMemberActive: Sm::lagMemberActive memberIntf : Ethernet2 lag : "
                            "PortChannel10\n"
                            "3 lagMemberActive: lagMemberActive member is not active\n" );
   sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel20" ) );
   EXPECT_EQ( trace.take(), "0 lagMemberActive: Sm::lagMemberActive memberIntf : Ethernet1 lag : "
                            "PortChannel20\n"
                            "3 lagMemberActive: lagMemberActive member is not active\n" );
}

TEST_F( EgressAclBase, HandleLagDecidesItsMembersInTheirOrder ) {
   world.lag( "PortChannel10", { "Ethernet3", "Ethernet1", "Ethernet2" } );
   start();
   sm->smNameIs( "Sm::" );
   TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm" );
   sm->handleLag( intf( "PortChannel10" ) );
   EXPECT_EQ( calls(), "lag(PortChannel10) member(Ethernet3,PortChannel10) "
                       "member(Ethernet1,PortChannel10) member(Ethernet2,PortChannel10)" );
   EXPECT_EQ( trace.take(), "0 handleLag: Sm::handleLag lag: PortChannel10\n" );
}

TEST_F( EgressAclBase, HandleLagOfAStrangerDecidesNothing ) {
   start();
   sm->smNameIs( "Sm::" );
   TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm" );
   sm->handleLag( intf( "Ethernet1" ) );
   EXPECT_EQ( calls(), "lag(Ethernet1)" );
   EXPECT_EQ( trace.take(), "0 handleLag: Sm::handleLag lag: Ethernet1\n"
                            "2 handleLag: Interface isn't a lag or it is a lag but not active\n" );
}

TEST_F( EgressAclBase, HandleAllLagsCallsHandleLagOfEachInTheirOrder ) {
   world.lag( "PortChannel20", {} ).lag( "PortChannel15", { "Ethernet3" } );
   start();
   sm->smNameIs( "Sm::" );
   TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm", 1 );
   sm->handleAllLags();
   EXPECT_EQ( calls(), "lag(PortChannel10) member(Ethernet1,PortChannel10) lag(PortChannel20) "
                       "lag(PortChannel15) member(Ethernet3,PortChannel15)" );
   EXPECT_EQ( trace.take(), "0 handleAllLags: Sm::handleAllLags\n"
                            "0 handleLag: Sm::handleLag lag: PortChannel10\n"
                            "0 handleLag: Sm::handleLag lag: PortChannel20\n"
                            "0 handleLag: Sm::handleLag lag: PortChannel15\n" );
}

TEST_F( EgressAclBase, HandleIntfFeatureTracesToTextAndRing ) {
   start();
   sm->smNameIs( "Sm::" );
   RingRecorder ring;
   TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm" );
   sm->handleIntfFeature( entry( "Ethernet7", "PortChannel70" ) );
   EXPECT_EQ( calls(), "member(Ethernet7,PortChannel70)" );
   EXPECT_EQ( trace.take(), "0 handleIntfFeature: Sm::handleIntfFeature memberIntf : Ethernet7 lag "
                            ": PortChannel70\n" );
   EXPECT_EQ( ring.take(), "0 handleIntfFeature: handleIntfFeature memberIntf : Ethernet7 lag : "
                           "PortChannel70 [Ethernet7|PortChannel70]\n" );
}

TEST_F( EgressAclBase, EveryOtherMessageOfTheBaseGoesToTheTextAlone ) {
   world.lag( "PortChannel20", { "Ethernet3" } );
   start();
   RingRecorder ring;
   sm->handleAllLags();
   sm->handleLag( intf( "Ethernet1" ) );
   sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel10" ) );
   sm->lagMemberActive( intf( "Ethernet2" ), intf( "PortChannel10" ) );
   EXPECT_EQ( ring.take(), "" );
}

// The base's own hook, which the peer-coordinated interlock keeps.
class BaseHookSm final : public MlagEgressAclIntfInterlockBaseSm {
 public:
   explicit BaseHookSm( const World & world )
       : MlagEgressAclIntfInterlockBaseSm(
            world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output ) {}
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "BaseHookSm" };
      return type;
   }
   bool shouldInstallEgressAcl( Nodo::IntfId /* lag */ ) override { return false; }
   void handleMember( Nodo::IntfId /* member */, Nodo::IntfId /* lag */ ) override { ++calls; }
   void handleMlagIntfStatus( Nodo::IntfId /* lag */ ) override { ++calls; }

   int calls = 0;

 private:
   ~BaseHookSm() override = default;
};

TEST_F( EgressAclBase, WithoutAHookOfItsOwnMlagStateAndPeerLinkHaveNoEffect ) {
   const auto base = Vex::make< BaseHookSm >( world );
   TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm" );
   world.mlagState( Mlag::State::disabled ).linkStatus( LinkStatus::down ).noPeerLink();
   world.peerLink( "Port-Channel2000" );
   EXPECT_EQ( base->calls, 0 );
   EXPECT_EQ( trace.take(), "" );
   EXPECT_EQ( base->vexPeerLinkIntf()->notifier(), world.mlagStatus->peerLink() );
}

} // namespace
} // namespace Velo
