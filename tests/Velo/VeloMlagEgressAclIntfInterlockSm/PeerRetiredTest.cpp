// A peer interlock that is retired, by whoever hears of a request, while one of its handlers is
// under way, or that is called afterwards: it leaves requests, link states, deadlines and output
// alone.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/RequestConsumer.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/TraceRecorder.h"

#include <functional>
#include <gtest/gtest.h>
#include <utility>

namespace Velo {
namespace {

using TestSupport::intf;
using TestSupport::PeerSm;
using TestSupport::requestOf;
using TestSupport::startPeer;
using TestSupport::stateOf;
using TestSupport::timersOf;
using TestSupport::World;

struct Retired : testing::Test {
   World world;
   Vex::Ptr< PeerSm > sm = startPeer( world );

   void atTheNextRequest( std::function< void() > script ) {
      consumer = RequestConsumer::of( world.request, [ script = std::move( script ) ]() mutable {
         if ( const auto now = std::exchange( script, nullptr ) ) {
            now();
         }
      } );
   }
   void retireAtTheNextRequest() {
      atTheNextRequest( [ this ] { sm->vexDoZombieReactors( true ); } );
   }

   Vex::Ptr< RequestConsumer > consumer;
};

TEST_F( Retired, AsksNothingMore ) {
   sm->vexDoZombieReactors( true );
   world.request->installRequestDel( intf( "PortChannel10" ) );
   sm->handlePeerInterlockLag( intf( "PortChannel10" ) );
   EXPECT_EQ( requestOf( world ), "none" );
}

TEST_F( Retired, RevokesNothingMore ) {
   sm->vexDoZombieReactors( true );
   world.memberGone( "Ethernet1" );
   sm->handlePeerInterlockLag( intf( "PortChannel10" ) );
   EXPECT_EQ( requestOf( world ), "2" );
}

TEST_F( Retired, TracesTheEntryOfAHandlerAndNoMore ) {
   sm->vexDoZombieReactors( true );
   world.answerRequest();
   TestSupport::TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm" );
   const Vex::String own = "MlagEgressAclIntfPeerInterlockSm::";
   sm->handlePeerInterlockLag( intf( "PortChannel10" ) );
   EXPECT_EQ( trace.take(),
              "0 handlePeerInterlockLag: " + own + "handlePeerInterlockLag lag : PortChannel10\n" );
   sm->handlePeerResponse( intf( "PortChannel10" ) );
   EXPECT_EQ( trace.take(),
              "0 handlePeerResponse: " + own + "handlePeerResponse lag: PortChannel10\n" );
}

TEST_F( Retired, ActsOnNoAnswerMore ) {
   sm->vexDoZombieReactors( true );
   world.answerRequest();
   sm->handlePeerResponse( intf( "PortChannel10" ) );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   world.answerGone();
   sm->linkStateIs( intf( "PortChannel10" ), LinkState::linkUp );
   sm->handlePeerResponse( intf( "PortChannel10" ) );
   EXPECT_EQ( stateOf( *sm ), "linkUp" );
}

TEST_F( Retired, WhileItAsksStoresNoStateAndDecidesNobody ) {
   retireAtTheNextRequest();
   world.lag( "PortChannel20", {} )
      .mlagIntf( "PortChannel20" )
      .member( "Ethernet5", "PortChannel20" );
   EXPECT_EQ( requestOf( world, "PortChannel20" ), "3" );
   EXPECT_EQ( stateOf( *sm, "PortChannel20" ), "linkDown" ); // as before it had members
   EXPECT_EQ( timersOf( *sm ), "PortChannel10 0.100000 | PortChannel10 0.100000" );
}

TEST_F( Retired, WhileItRevokesTheRequestOfALagThatWentDownKeepsItsState ) {
   retireAtTheNextRequest();
   world.memberGone( "Ethernet1" ).memberGone( "Ethernet2" );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
}

TEST_F( Retired, WhileItRevokesTheRequestOfALagThatLeftMlagKeepsItsState ) {
   retireAtTheNextRequest();
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
}

TEST_F( Retired, OrDeafHoldsTheMembersOfALagThatIsDown ) {
   // The LAG becomes an MLAG interface again while its request is being revoked, unheard: there is
   // no link state then, and no request.
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   sm->hasNotificationActiveIs( false );
   world.request->installRequestIs( intf( "PortChannel10" ), 7 );
   atTheNextRequest( [ this ] { world.mlagIntf( "PortChannel10" ); } );
   TestSupport::TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm" );
   Vex::String reason; // is told before the verdict
   const auto output =
      TestSupport::ScriptedConsumer::once( world.output, [ & ] { reason = trace.takeLast(); } );
   sm->handleMember( intf( "Ethernet1" ), intf( "PortChannel10" ) );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
   EXPECT_EQ( reason, "lag is down, member cannot be added" );
   EXPECT_EQ( stateOf( *sm ), "none" );
}

} // namespace
} // namespace Velo
