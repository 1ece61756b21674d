// The order of what the peer interlock traces and does: whoever hears of a change, and may be the
// end of this process, finds its reason in the trace, and no effect follows a broken promise.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/RequestConsumer.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Velo {
namespace {

using TestSupport::intf;
using TestSupport::PeerSm;
using TestSupport::requestOf;
using TestSupport::ScriptedConsumer;
using TestSupport::startPeer;
using TestSupport::TraceRecorder;
using TestSupport::World;
using String = Vex::String;

const String handle = "VeloMlagEgressAclIntfInterlockSm";
const String own = "MlagEgressAclIntfPeerInterlockSm::";

struct PeerTrace : testing::Test {
   World world;
   Vex::Ptr< PeerSm > sm = startPeer( world );
   TraceRecorder trace{ handle };
   String reason; // the latest message when the latest change was heard of
};

TEST_F( PeerTrace, TellsTheReasonBeforeTheVerdictIsWritten ) {
   const auto consumer = ScriptedConsumer::of(
      world.output, [ & ]( const auto &, bool ) { reason = trace.takeLast(); } );
   const String satisfied = "acl criteria satisfied (or linkFail), allowing member to join the lag";

   world.installed( "Ethernet1" ).answerRequest();
   EXPECT_EQ( reason, satisfied );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( reason, "mlag intf is 'linkUp' but local acl is not installed" );
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( reason, "lag is not an mlag intf" );
   world.mlagIntf( "PortChannel10" );
   EXPECT_EQ( reason, "member is not ready to be added to lag" );
   world.pass( 0.2 );
   EXPECT_EQ( reason, satisfied );
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( reason, "lag member is not active" );
}

TEST_F( PeerTrace, TellsTheReasonBeforeARequestIsWrittenOrWithdrawn ) {
   const auto consumer = RequestConsumer::of( world.request, [ & ] { reason = trace.takeLast(); } );
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( reason, "Revoking install request for lag (no longer active)" );
   world.member( "Ethernet1" );
   EXPECT_EQ( reason, "Sending install request to peer with value 3" );
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( reason, "Revoking install request for lag (no longer mlag intf)" );
}

TEST_F( PeerTrace, OfAMemberThatWaitsForTheLocalAclSaysNothingOfJoining ) {
   trace.take();
   world.answerRequest();
   EXPECT_THAT( trace.take(), testing::Not( testing::HasSubstr( "acl criteria satisfied" ) ) );
}

TEST_F( PeerTrace, OfALagThatIsNeitherActiveNorOfMlagCallsItInactive ) {
   world.mlagIntfGone( "PortChannel10" ).memberGone( "Ethernet1" );
   trace.take();
   sm->handlePeerInterlockLag( intf( "PortChannel10" ) );
   EXPECT_EQ(
      trace.take(),
      "0 handlePeerInterlockLag: " + own + "handlePeerInterlockLag lag : PortChannel10\n" +
         "3 handlePeerInterlockLag: lag is not active\n" +
         "3 handlePeerInterlockLag: Revoking install request for lag (no longer active)\n" );
}

TEST_F( PeerTrace, OfALagThatWentDownNamesNoMemberOfAnother ) {
   world.lag( "PortChannel20", {} ).member( "Ethernet5", "PortChannel20" );
   EXPECT_TRUE( world.admits( "Ethernet5", "PortChannel20" ) );
   trace.take();
   sm->handleLagInactive( intf( "PortChannel30" ) );
   EXPECT_THAT( trace.take(), testing::Not( testing::HasSubstr( "Ethernet5" ) ) );
}

TEST( PeerStart, ClearsTheOutputBeforeItWithdrawsRequests ) {
   World world;
   world.left( "Ethernet9", "PortChannel90" );
   world.request->installRequestIs( intf( "PortChannel91" ), 5 );
   String request;
   const auto consumer = ScriptedConsumer::of( world.output, [ & ]( const auto &, bool ) {
      request = requestOf( world, "PortChannel91" );
   } );
   const auto sm = startPeer( world );
   EXPECT_EQ( request, "5" );
   EXPECT_EQ( requestOf( world, "PortChannel91" ), "none" );
}

TEST( PeerTraceDeathTest, ABrokenPromiseIsTheEndBehindTheEntryOfItsHandler ) {
   const World world;
   const auto sm = startPeer( world );
   Vex::traceHandle( handle ).levelMaskIs( TraceRecorder::allLevels ); // to standard error
   EXPECT_DEATH( sm->shouldInstallEgressAcl( intf( "PortChannel99" ) ),
                 "shouldInstallEgressAcl lag : PortChannel99\n[^\n]*assertion failed" );
   EXPECT_DEATH( sm->handleLagInactive( intf( "PortChannel10" ) ),
                 "handleLagInactive lag : PortChannel10\n[^\n]*assertion failed" );
   EXPECT_DEATH( sm->updateLinkState( intf( "PortChannel99" ) ),
                 "updateLinkState lag : PortChannel99\n[^\n]*assertion failed" );
   Vex::traceHandle( handle ).levelMaskIs( 1U << 4U );
}

} // namespace
} // namespace Velo
