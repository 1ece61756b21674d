// The exchange with the peer, and which members join when.

#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/RingRecorder.h"
#include "tests/support/TraceRecorder.h"

#include <gtest/gtest.h>

namespace Velo {
namespace {

using Mlag::IntfState;
using Mlag::State;
using TestSupport::admitted;
using TestSupport::brokenTimeouts;
using TestSupport::intf;
using TestSupport::logOf;
using TestSupport::PeerSm;
using TestSupport::requestOf;
using TestSupport::RingRecorder;
using TestSupport::startPeer;
using TestSupport::stateOf;
using TestSupport::timersOf;
using TestSupport::TraceRecorder;
using TestSupport::VerdictLog;
using TestSupport::World;
using String = Vex::String;

const String handle = "VeloMlagEgressAclIntfInterlockSm";
const String own = "MlagEgressAclIntfPeerInterlockSm::";
const String lag10 = "PortChannel10";
const String lag20 = "PortChannel20";

struct PeerInterlock : testing::Test {
   World world;
   Vex::Ptr< PeerSm > sm;

   void start() { sm = startPeer( world ); }
   /// Without telling the interlock.
   template < class Change >
   void quietly( Change change ) {
      sm->hasNotificationActiveIs( false );
      change();
      sm->hasNotificationActiveIs( true );
   }
};

// ---- Tokens

TEST_F( PeerInterlock, TheFirstRequestCarriesTwoWhereNothingWasAnswered ) {
   start();
   EXPECT_EQ( sm->watermark(), 2U );
   EXPECT_EQ( requestOf( world ), "2" );
}

TEST_F( PeerInterlock, ResumesBehindTheLargestAnswer ) {
   world.answer( "PortChannel98", 5 ).answer( "PortChannel99", 9 ).answer( "PortChannel97", 7 );
   world.mlagIntfGone( lag10 );
   start();
   EXPECT_EQ( sm->watermark(), 9U );
   world.mlagIntf( lag10 );
   EXPECT_EQ( requestOf( world ), "10" );
}

TEST_F( PeerInterlock, ResumesFromOneWhereTheAnswersAreZero ) {
   world.answer( lag10, 0 ).mlagIntfGone( lag10 );
   start();
   EXPECT_EQ( sm->watermark(), 1U );
}

TEST_F( PeerInterlock, TokensWrapAroundAndZeroIsNoRequest ) {
   world.answer( "PortChannel99", 0xffffffff );
   start();
   EXPECT_EQ( sm->watermark(), 0U );
   EXPECT_EQ( requestOf( world ), "0" );
   world.answer( lag10, 0 );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   world.pass( 0.1 );
   EXPECT_EQ( stateOf( *sm ), "linkFail" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   world.memberGone( "Ethernet1" ).member( "Ethernet1" );
   EXPECT_EQ( requestOf( world ), "1" );
}

TEST_F( PeerInterlock, EachRequestCarriesAFreshToken ) {
   world.lag( lag20, { "Ethernet5" } ).mlagIntf( lag20 );
   start();
   EXPECT_EQ( requestOf( world, lag10 ), "2" );
   EXPECT_EQ( requestOf( world, lag20 ), "3" );
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( stateOf( *sm ), "linkDown" );
   world.member( "Ethernet1" );
   EXPECT_EQ( requestOf( world ), "4" );
   world.answer( lag10, 2 );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" ) << "a late answer to an old request";
   world.answer( lag10, 4 );
   EXPECT_EQ( stateOf( *sm ), "linkUp" );
}

TEST_F( PeerInterlock, TheWatermarkIsSetAndRaisedByHand ) {
   start();
   sm->watermarkIs( 0xfffffffe );
   EXPECT_EQ( sm->watermarkInc( 3 ), 1U );
   EXPECT_EQ( sm->watermark(), 1U );
}

TEST_F( PeerInterlock, ARequestThatStandsIsNotSentAgain ) {
   start();
   const auto requests = logOf( world.request );
   world.member( "Ethernet2" ).mlagIntf( lag10, IntfState::inactive ).installed( "Ethernet1" );
   EXPECT_EQ( requests->take(), "" );
   EXPECT_EQ( sm->watermark(), 2U );
}

// ---- Answers

TEST_F( PeerInterlock, AnAnswerToARequestThatIsNotThereMatchesNothing ) {
   start();
   quietly( [ & ] { world.request->installRequestDel( intf( lag10 ) ); } );
   TraceRecorder trace( handle );
   world.answer( lag10, 2 );
   EXPECT_EQ( trace.take(),
              "0 handlePeerResponse: " + own + "handlePeerResponse lag: PortChannel10\n" );
}

TEST_F( PeerInterlock, AnotherAnswerWhileRequestingIsIgnored ) {
   start();
   TraceRecorder trace( handle );
   RingRecorder ring;
   world.answer( lag10, 3 );
   EXPECT_EQ( trace.take(),
              "0 handlePeerResponse: " + own + "handlePeerResponse lag: PortChannel10\n" );
   EXPECT_EQ( ring.take(), "0 handlePeerResponse: handlePeerResponse lag: PortChannel10 "
                           "[PortChannel10]\n" );
   EXPECT_EQ( timersOf( *sm ), "PortChannel10 0.100000 | PortChannel10 0.100000" );
}

TEST_F( PeerInterlock, AnAnswerThatGoesOrChangesFailsTheLagForGood ) {
   start();
   world.answerRequest().pass( 1 );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
   world.answerGone();
   EXPECT_EQ( stateOf( *sm ), "linkFail" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   world.answer( lag10, 1 ).answerGone().member( "Ethernet2" );
   EXPECT_EQ( stateOf( *sm ), "linkFail" );
   EXPECT_TRUE( world.admits( "Ethernet2" ) );
   world.answerRequest();
   EXPECT_EQ( stateOf( *sm ), "linkUp" );
   EXPECT_EQ( admitted( world.output ), "" ) << "back to the local ACL";
}

TEST_F( PeerInterlock, AnswersOfAnotherEntityDoNotCount ) {
   start();
   sm->vexAclResponseFromPeer()->notifierIs( Vex::make< Mlag::AclInstallResponse >() );
   world.answerRequest();
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
}

// ---- Members

TEST_F( PeerInterlock, AMemberWaitsForTheAnswerThenForTheLocalAcl ) {
   start();
   EXPECT_EQ( admitted( world.output ), "" );
   world.answerRequest();
   EXPECT_EQ( admitted( world.output ), "" );
   world.installed( "Ethernet1" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( admitted( world.output ), "" );
   world.mlagIntf( lag10, IntfState::inactive );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" ) << "no ACL needed";
}

TEST_F( PeerInterlock, AMemberOfAnOrdinaryLagJoinsAtOnceWithoutARequest ) {
   world.mlagIntfGone( lag10 );
   start();
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( stateOf( *sm ), "none" );
}

TEST_F( PeerInterlock, AnEntryThatEqualsTheDefaultIsNoMlagInterface ) {
   start();
   world.mlagStatus->intfStatusIs( intf( lag10 ), {} );
   EXPECT_EQ( stateOf( *sm ), "none" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( PeerInterlock, MlagStateAndPeerLinkPlayNoPart ) {
   start();
   TraceRecorder trace( handle );
   world.mlagState( State::disabled ).linkStatus( Interface::LinkStatus::down ).noPeerLink();
   world.peerLink( "Ethernet49" );
   EXPECT_EQ( trace.take(), "" );
}

TEST_F( PeerInterlock, ALagThatIsNoMlagInterfaceAnyMoreLosesRequestThenState ) {
   start();
   const auto requests = logOf( world.request, [ & ] { return stateOf( *sm ); } );
   TraceRecorder trace( handle, ~1U );
   world.mlagIntfGone( lag10 );
   EXPECT_EQ( requests->take(), "installRequest(PortChannel10)linkRequesting" );
   EXPECT_EQ( stateOf( *sm ), "none" );
   EXPECT_EQ( trace.take(), "3 handlePeerInterlockLag: Revoking install request for lag (no longer "
                            "mlag intf)\n"
                            "3 handleLinkState: Stopping timeout for lag PortChannel10\n"
                            "3 lagMemberActive: lagMemberActive member is active\n"
                            "3 handleMember: lag is not an mlag intf\n" );
}

TEST_F( PeerInterlock, ALagThatLosesItsLastMemberIsDown ) {
   start();
   TraceRecorder trace( handle, ~1U );
   RingRecorder ring;
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( trace.take(),
              "3 handlePeerInterlockLag: lag is not active\n"
              "3 handlePeerInterlockLag: Revoking install request for lag (no longer active)\n"
              "3 updateLinkState: Transitioning link state from linkRequesting to linkDown\n"
              "3 handleLinkState: Stopping timeout for lag PortChannel10\n"
              "3 lagMemberActive: lagMemberActive member is not active\n"
              "3 handleMember: lag member is not active\n" );
   EXPECT_NE( ring.take().find( "3 updateLinkState: Transitioning link state from 1 to linkDown "
                                "[1]\n" ),
              String::npos );
   world.mlagIntfGone( lag10 );
   EXPECT_EQ( stateOf( *sm ), "none" );
   world.mlagIntf( lag10 );
   EXPECT_EQ( stateOf( *sm ), "linkDown" );
}

TEST_F( PeerInterlock, AMemberOfADownLagIsHeld ) {
   start();
   world.left( "Ethernet1" );
   quietly( [ & ] { sm->linkStateDel( intf( lag10 ) ); } );
   sm->aclRequestToPeer()->installRequestDel( intf( lag10 ) );
   // Down beside members is what a state by hand makes: asking again replaces it.
   world.installed( "Ethernet1" );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
}

TEST_F( PeerInterlock, AReportedAclDecidesItsMemberOnly ) {
   world.member( "Ethernet2" ).installed( "Ethernet2" );
   start();
   world.answerRequest();
   const auto verdicts = VerdictLog::of( world.output );
   world.installed( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.installed( "Ethernet8" );
   EXPECT_EQ( verdicts->take(), "" ) << "no member";
}

TEST_F( PeerInterlock, AnswersOfMembersThatLeftUnseenAreTakenBackWithTheLag ) {
   world.mlagIntfGone( lag10 ).member( "Ethernet2" );
   start();
   world.lagGone( lag10 );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10) (Ethernet2, PortChannel10)" );
   TraceRecorder trace( handle, 1 );
   world.mlagIntf( lag10 );
   EXPECT_EQ( admitted( world.output ), "" );
   EXPECT_EQ( trace.take().substr( 0, 3 * 100 ).find( "handleLag (top-level)" ) != String::npos,
              true );
   EXPECT_EQ( stateOf( *sm ), "linkDown" );
}

// ---- The start

TEST_F( PeerInterlock, StartsByDecidingWhatAnEarlierOwnerLeft ) {
   world.left( "Ethernet1" )
      .left( "Ethernet7" )
      .left( "Ethernet5", lag20 )
      .left( "Ethernet6", lag20 );
   world.lag( "PortChannel30", {} ).left( "Ethernet9", "PortChannel30" );
   world.mlagIntf( "PortChannel30" );
   const auto verdicts = VerdictLog::of( world.output );
   start();
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet9, PortChannel30) "
                                "-(Ethernet7, PortChannel10) -(Ethernet5, PortChannel20) "
                                "-(Ethernet6, PortChannel20)" );
   EXPECT_EQ( stateOf( *sm, "PortChannel30" ), "linkDown" );
   EXPECT_EQ( stateOf( *sm, lag20 ), "none" );
}

TEST_F( PeerInterlock, StartsByRevokingRequestsOfInactiveLagsAndKeepsTheOthers ) {
   world.request->installRequestIs( intf( lag10 ), 40 );
   world.request->installRequestIs( intf( lag20 ), 41 );
   world.request->installRequestIs( intf( "PortChannel30" ), 42 );
   world.lag( "PortChannel30", {} ).answer( lag10, 40 );
   TraceRecorder trace( handle, 1U << 2U );
   start();
   EXPECT_EQ( requestOf( world, lag10 ), "40" );
   EXPECT_EQ( requestOf( world, lag20 ), "none" );
   EXPECT_EQ( requestOf( world, "PortChannel30" ), "none" );
   EXPECT_EQ( stateOf( *sm ), "linkUp" );
   EXPECT_EQ( sm->watermark(), 40U );
   EXPECT_EQ( trace.take(),
              "2 handleMember: mlag intf is 'linkUp' but local acl is not installed\n" );
}

TEST_F( PeerInterlock, AnOutputEntryOfAMemberIsDecidedOnce ) {
   world.mlagIntfGone( lag10 ).left( "Ethernet1" );
   TraceRecorder trace( handle, 1 );
   start();
   const String all = trace.take();
   const std::size_t first = all.find( own + "handleMember" );
   EXPECT_NE( first, String::npos );
   EXPECT_EQ( all.find( own + "handleMember", first + 1 ), String::npos );
}

TEST_F( PeerInterlock, TracesTheStartWithItsPrefix ) {
   TraceRecorder trace( handle );
   RingRecorder ring;
   start();
   EXPECT_EQ(
      trace.take(),
      "0 handleInitialized: " + own + "handleInitialized\n" + "0 handleAllLags: " + own +
         "handleAllLags\n" + "0 handleLag: " + own + "handleLag (top-level) lag : PortChannel10\n" +
         "0 handleLag: " + own + "handleLag lag: PortChannel10\n" + "0 handleMember: " + own +
         "handleMember memberIntf : Ethernet1 lag : PortChannel10\n" +
         "0 handlePeerInterlockLag: " + own + "handlePeerInterlockLag lag : PortChannel10\n" +
         "2 handlePeerInterlockLag: Sending install request to peer with value 2\n" +
         "0 updateLinkState: " + own + "updateLinkState lag : PortChannel10\n" +
         "3 updateLinkState: Transitioning link state from linkDown to linkRequesting\n" +
         "0 handleLinkState: " + own + "handleLinkState lag : PortChannel10\n" +
         "3 handleLinkState: Starting timeout for lag PortChannel10 at time 0.000000\n" +
         "0 handleTimer: " + own + "handleTimer lag : PortChannel10\n" + "0 lagMemberActive: " +
         own + "lagMemberActive memberIntf : Ethernet1 lag : PortChannel10\n" +
         "3 lagMemberActive: lagMemberActive member is active\n" +
         "3 handleMember: member is not ready to be added to lag\n" );
   EXPECT_EQ(
      ring.take(),
      "0 handleInitialized: handleInitialized []\n"
      "0 handleLag: handleLag (top-level) lag : PortChannel10 [PortChannel10]\n"
      "0 handleMember: handleMember memberIntf : Ethernet1 lag : PortChannel10 "
      "[Ethernet1|PortChannel10]\n"
      "0 handlePeerInterlockLag: handlePeerInterlockLag lag : PortChannel10 [PortChannel10]\n"
      "2 handlePeerInterlockLag: Sending install request to peer with value 2 [2]\n"
      "0 updateLinkState: updateLinkState lag : PortChannel10 [PortChannel10]\n"
      "3 updateLinkState: Transitioning link state from 0 to linkRequesting [0]\n"
      "0 handleLinkState: handleLinkState lag : PortChannel10 [PortChannel10]\n"
      "3 handleLinkState: Starting timeout for lag PortChannel10 at time 0.000000 "
      "[PortChannel10|0.000000]\n"
      "0 handleTimer: handleTimer lag : PortChannel10 [PortChannel10]\n"
      "3 handleMember: member is not ready to be added to lag []\n" );
}

TEST_F( PeerInterlock, TracesAnAnswerStepByStep ) {
   start();
   TraceRecorder trace( handle );
   world.answerRequest();
   const String all = trace.take();
   EXPECT_EQ( all.substr( 0, all.find( "0 handlePeerInterlockLag" ) ),
              "0 handlePeerResponse: " + own + "handlePeerResponse lag: PortChannel10\n" +
                 "0 handleLag: " + own + "handleLag (top-level) lag : PortChannel10\n" +
                 "0 handleLag: " + own + "handleLag lag: PortChannel10\n" + "0 handleMember: " +
                 own + "handleMember memberIntf : Ethernet1 lag : PortChannel10\n" );
   EXPECT_EQ( all.substr( all.find( "0 shouldInstallEgressAcl" ) ),
              "0 shouldInstallEgressAcl: " + own + "shouldInstallEgressAcl lag : PortChannel10\n" +
                 "2 handleMember: mlag intf is 'linkUp' but local acl is not installed\n" );
   world.mlagIntf( lag10, IntfState::inactive );
   EXPECT_EQ( trace.take().find( "0 handleMlagIntfStatus: " + own +
                                 "handleMlagIntfStatus mlagIntf: PortChannel10\n0 handleLag: " ),
              0U );
}

TEST_F( PeerInterlock, TracesAnInactiveLag ) {
   start();
   world.left( "Ethernet7" );
   quietly( [ & ] { world.lagGone( lag10 ); } );
   TraceRecorder trace( handle, 1 );
   sm->handleLag( intf( lag10 ) );
   EXPECT_EQ(
      trace.take().find( "0 handleLag: " + own + "handleLag (top-level) lag : PortChannel10\n" +
                         "0 handleLagInactive: " + own + "handleLagInactive lag : PortChannel10\n" +
                         "0 handlePeerInterlockLag: " + own ),
      0U );
   EXPECT_EQ( admitted( world.output ), "" );
}

TEST_F( PeerInterlock, AsksForTheAclWhereTheLagIsActiveOnThePeer ) {
   start();
   EXPECT_TRUE( sm->shouldInstallEgressAcl( intf( lag10 ) ) );
   for ( const unsigned other : { 0U, 1U, 3U } ) {
      world.mlagIntf( lag10, static_cast< IntfState >( other ) );
      EXPECT_FALSE( sm->shouldInstallEgressAcl( intf( lag10 ) ) );
   }
}

TEST_F( PeerInterlock, WithoutAResponseEntityHasNoReactorForIt ) {
   world.lagGone( lag10 );
   EXPECT_EQ( Vex::make< Mlag::AclInstallResponse >()->notifiees(), 0U );
   start();
   EXPECT_TRUE( sm->vexAclResponseFromPeer()->hasNotificationActive() );
   sm->vexDoZombieReactors( true );
   world.lag( lag10, { "Ethernet1" } ).mlagIntf( lag10, IntfState::inactive );
   EXPECT_EQ( requestOf( world ), "none" );
}

TEST( PeerInterlockDeathTest, BrokenPromisesAreProgrammingErrors ) {
   World world;
   const auto sm = startPeer( world );
   EXPECT_DEATH( sm->shouldInstallEgressAcl( intf( "PortChannel99" ) ),
                 "assertion failed: mlagStatus\\(\\)->intfStatus\\( lag \\)\n" );
   EXPECT_DEATH( sm->handleLagInactive( intf( lag10 ) ),
                 "assertion failed: !im \\|\\| im->members\\(\\) == 0\n" );
}

} // namespace
} // namespace Velo
