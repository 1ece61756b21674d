// Deadlines and the one task that is armed for the earliest, and the clean-up.

#include "platform/Kel/TaskPriority.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/RingRecorder.h"
#include "tests/support/TraceRecorder.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>

namespace Velo {
namespace {

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

struct Timeouts : testing::Test {
   World world;
   Vex::Ptr< PeerSm > sm = startPeer( world );

   /// Another LAG that asks now.
   void another( const String & lag, const String & member ) {
      world.lag( lag, {} ).mlagIntf( lag ).member( member, lag );
   }
   void jump( double to ) { world.clock.jumpTo( Vex::Seconds( to ) ); }
};

TEST_F( Timeouts, OneTaskOfPriorityThreeNamedTimeoutTask ) {
   ASSERT_TRUE( sm->task() );
   EXPECT_EQ( sm->task()->name(), "timeoutTask" );
   EXPECT_EQ( sm->task()->priority(), Kel::TaskPriority( 3 ) );
   EXPECT_EQ( sm->task()->scheduler(), world.scheduler );
   EXPECT_EQ( PeerSm::delay, Vex::Seconds( 0.1 ) );
   another( lag20, "Ethernet5" );
   EXPECT_EQ( world.scheduler->scheduled(), 1U );
}

TEST_F( Timeouts, NothingIsArmedWhereNobodyAsks ) {
   World idle;
   idle.mlagIntfGone( lag10 );
   const auto other = startPeer( idle );
   EXPECT_EQ( timersOf( *other ), "|" );
   EXPECT_FALSE( other->initialized() );
   other->initializedIs( true );
   EXPECT_TRUE( other->initialized() );
}

TEST_F( Timeouts, ALagFailsATenthOfASecondAfterItAsked ) {
   world.pass( 0.0999 );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
   world.pass( 0.0002 );
   EXPECT_EQ( stateOf( *sm ), "linkFail" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) ) << "even without the local ACL";
   EXPECT_EQ( timersOf( *sm ), "|" );
   EXPECT_EQ( requestOf( world ), "2" ) << "the request stays";
}

TEST_F( Timeouts, TheTaskGoesOnToTheNextLagWithItsRemainingTime ) {
   world.pass( 0.01 );
   another( lag20, "Ethernet5" );
   EXPECT_EQ( timersOf( *sm ), "PortChannel10 0.100000 PortChannel20 0.110000 | PortChannel10 "
                               "0.100000" );
   world.pass( 0.05 ).answerRequest( lag10 );
   EXPECT_EQ( timersOf( *sm ), "PortChannel20 0.110000 | PortChannel20 0.110000" );
   world.pass( 0.051 );
   EXPECT_EQ( stateOf( *sm, lag20 ), "linkFail" );
   EXPECT_EQ( stateOf( *sm, lag10 ), "linkUp" );
}

TEST_F( Timeouts, ADeadlineThatIsNotArmedGoesWithoutReArming ) {
   another( lag20, "Ethernet5" );
   TraceRecorder trace( handle, 1 );
   sm->timerDel( intf( lag20 ) );
   EXPECT_EQ( trace.take(), "0 handleTimer: " + own + "handleTimer lag : PortChannel20\n" );
   EXPECT_EQ( timersOf( *sm ), "PortChannel10 0.100000 | PortChannel10 0.100000" );
}

TEST_F( Timeouts, AllDeadlinesGoAtOnce ) {
   another( lag20, "Ethernet5" );
   sm->timerDelAll();
   EXPECT_EQ( timersOf( *sm ), "|" );
}

TEST_F( Timeouts, OfEqualDeadlinesTheFirstIsArmed ) {
   another( lag20, "Ethernet5" );
   another( "PortChannel30", "Ethernet9" );
   EXPECT_EQ( timersOf( *sm ), "PortChannel10 0.100000 PortChannel20 0.100000 PortChannel30 "
                               "0.100000 | PortChannel10 0.100000" );
   world.answerRequest( lag10 );
   EXPECT_EQ( timersOf( *sm ), "PortChannel20 0.100000 PortChannel30 0.100000 | PortChannel20 "
                               "0.100000" );
   const auto verdicts = VerdictLog::of( world.output );
   world.pass( 0.1 );
   EXPECT_EQ( verdicts->take(), "+(Ethernet5, PortChannel20) +(Ethernet9, PortChannel30)" );
   EXPECT_EQ( timersOf( *sm ), "|" );
}

TEST_F( Timeouts, AnEarlierDeadlineLaterInOrderIsFound ) {
   sm->timerIs( intf( lag20 ), Vex::Seconds( 0.3 ) );
   sm->timerIs( intf( "PortChannel30" ), Vex::Seconds( 0.2 ) );
   EXPECT_EQ( sm->activeLag(), intf( lag10 ) ) << "a new one takes nobody's place";
   sm->timerDel( intf( lag10 ) );
   EXPECT_EQ( sm->activeLag(), intf( "PortChannel30" ) );
   EXPECT_EQ( sm->task()->due(), Vex::Seconds( 0.2 ) );
}

TEST_F( Timeouts, TheSameDeadlineAgainRunsNoHandler ) {
   TraceRecorder trace( handle );
   sm->timerIs( intf( lag10 ), Vex::Seconds( 0.1 ) );
   sm->timerDel( intf( lag20 ) );
   EXPECT_EQ( trace.take(), "" );
   sm->timerIs( intf( lag10 ), Vex::Seconds( 0.2 ) );
   EXPECT_EQ( trace.take(), "0 handleTimer: " + own + "handleTimer lag : PortChannel10\n" );
}

TEST_F( Timeouts, ADeadlineInThePastRunsAsSoonAsTheSchedulerDoes ) {
   sm->timerDelAll();
   EXPECT_EQ( timersOf( *sm ), "|" );
   jump( 5 );
   sm->timerIs( intf( lag10 ), Vex::Seconds( 1 ) );
   EXPECT_EQ( sm->task()->due(), Vex::Seconds( 5 ) );
   world.scheduler->runDue();
   EXPECT_EQ( stateOf( *sm ), "linkFail" );
}

TEST_F( Timeouts, AfterAnHourOfSleepAllLagsThatFellDueFail ) {
   world.pass( 0.01 );
   another( lag20, "Ethernet5" );
   world.pass( 0.01 );
   another( "PortChannel30", "Ethernet9" );
   jump( 3600 );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" ) << "nothing has run yet";
   while ( world.scheduler->runDue() != 0 ) {
      EXPECT_EQ( brokenTimeouts( *sm ), "" );
   }
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10) (Ethernet5, PortChannel20) "
                                        "(Ethernet9, PortChannel30)" );
   EXPECT_EQ( timersOf( *sm ), "|" );
   another( "PortChannel40", "Ethernet13" );
   EXPECT_EQ( timersOf( *sm ), "PortChannel40 3600.100000 | PortChannel40 3600.100000" );
}

TEST_F( Timeouts, TimeoutOfAMatchedLagIsNotArmedAgain ) {
   world.answerRequest().pass( 10 );
   EXPECT_EQ( stateOf( *sm ), "linkUp" );
   EXPECT_EQ( timersOf( *sm ), "|" );
}

TEST_F( Timeouts, ATimeoutOfALagThatIsMatchedAllTheSameFailsItAndFindsTheMatch ) {
   world.answerRequest().installed( "Ethernet1" );
   sm->timerIs( intf( lag10 ), Vex::Seconds( 0.1 ) );
   const auto verdicts = VerdictLog::of( world.output );
   TraceRecorder trace( handle, ~1U );
   world.pass( 0.1 );
   EXPECT_EQ( stateOf( *sm ), "linkUp" );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( trace.take(),
              "3 handleLinkState: Stopping timeout for lag PortChannel10\n"
              "4 handleTimeout: Syslog: Timeout has occurred on lag PortChannel10\n"
              "3 updateLinkState: Transitioning link state from linkFail to linkUp\n"
              "3 handleLinkState: Stopping timeout for lag PortChannel10\n"
              "3 lagMemberActive: lagMemberActive member is active\n"
              "3 handleMember: acl criteria satisfied (or linkFail), allowing member to join the "
              "lag\n" );
}

TEST_F( Timeouts, RunsTheStepsOfATimeoutInOrder ) {
   another( lag20, "Ethernet5" );
   jump( 0.1 );
   TraceRecorder trace( handle );
   RingRecorder ring;
   world.scheduler->runDue();
   EXPECT_EQ(
      trace.take(),
      "0 handleTimeout: " + own + "handleTimeout lag : PortChannel10\n" +
         "0 handleLinkState: " + own + "handleLinkState lag : PortChannel10\n" +
         "3 handleLinkState: Stopping timeout for lag PortChannel10\n" + "0 handleTimer: " + own +
         "handleTimer lag : PortChannel10\n" + "0 resetTimer: " + own + "resetTimer\n" +
         "4 handleTimeout: Syslog: Timeout has occurred on lag PortChannel10\n" +
         "0 handleLag: " + own + "handleLag (top-level) lag : PortChannel10\n" +
         "0 handleLag: " + own + "handleLag lag: PortChannel10\n" + "0 handleMember: " + own +
         "handleMember memberIntf : Ethernet1 lag : PortChannel10\n" +
         "0 handlePeerInterlockLag: " + own + "handlePeerInterlockLag lag : PortChannel10\n" +
         "0 updateLinkState: " + own + "updateLinkState lag : PortChannel10\n" +
         "0 lagMemberActive: " + own + "lagMemberActive memberIntf : Ethernet1 lag : " +
         "PortChannel10\n" + "3 lagMemberActive: lagMemberActive member is active\n" +
         "3 handleMember: acl criteria satisfied (or linkFail), allowing member to join the lag\n" +
         "0 resetTimer: " + own + "resetTimer\n" );
   EXPECT_EQ( ring.take(),
              "0 handleTimeout: handleTimeout lag : PortChannel10 [PortChannel10]\n"
              "0 handleLinkState: handleLinkState lag : PortChannel10 [PortChannel10]\n"
              "3 handleLinkState: Stopping timeout for lag PortChannel10 [PortChannel10]\n"
              "0 handleTimer: handleTimer lag : PortChannel10 [PortChannel10]\n"
              "0 resetTimer: resetTimer []\n"
              "4 handleTimeout: Syslog: Timeout has occurred on lag PortChannel10 "
              "[PortChannel10]\n"
              "0 handleLag: handleLag (top-level) lag : PortChannel10 [PortChannel10]\n"
              "0 handleMember: handleMember memberIntf : Ethernet1 lag : PortChannel10 "
              "[Ethernet1|PortChannel10]\n"
              "0 handlePeerInterlockLag: handlePeerInterlockLag lag : PortChannel10 "
              "[PortChannel10]\n"
              "0 updateLinkState: updateLinkState lag : PortChannel10 [PortChannel10]\n"
              "3 handleMember: acl criteria satisfied (or linkFail), allowing member to join the "
              "lag []\n"
              "0 resetTimer: resetTimer []\n" );
   EXPECT_EQ( timersOf( *sm ), "PortChannel20 0.100000 | PortChannel20 0.100000" );
}

TEST_F( Timeouts, WhenNoTaskRunsOrThereIsNoneTheHandlerDoesNothing ) {
   TraceRecorder trace( handle );
   sm->handleTimeout();
   EXPECT_EQ( trace.take(), "" );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   sm->taskDel();
   EXPECT_EQ( sm->task(), nullptr );
   EXPECT_EQ( world.scheduler->scheduled(), 0U );
   sm->handleTimeout();
   EXPECT_EQ( trace.take(), "" );
}

TEST_F( Timeouts, ALagWhoseInitialMemberWentUnseenIsSettledByItsTimeout ) {
   world.lagGone( lag10 );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   world.pass( 0.1 );
   EXPECT_EQ( stateOf( *sm ), "linkDown" );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( timersOf( *sm ), "|" );
}

TEST_F( Timeouts, OneMomentAndItsEventsInEveryOrder ) {
   // A time-out, a matching answer and its withdrawal, all at 0.1 seconds.
   const std::array< std::array< int, 3 >, 6 > orders{
      { { 0, 1, 2 }, { 0, 2, 1 }, { 1, 0, 2 }, { 1, 2, 0 }, { 2, 0, 1 }, { 2, 1, 0 } } };
   const std::array< String, 6 > states{ "linkFail", "linkUp", "linkFail",
                                         "linkFail", "linkUp", "linkUp" };
   for ( std::size_t at = 0; at < orders.size(); ++at ) {
      World here;
      const auto one = startPeer( here.installed( "Ethernet1" ) );
      here.clock.jumpTo( Vex::Seconds( 0.1 ) );
      for ( const int event : orders[ at ] ) {
         event == 0   ? void( here.scheduler->runDue() )
         : event == 1 ? void( here.answerRequest() )
                      : void( here.answerGone() );
         EXPECT_EQ( brokenTimeouts( *one ), "" );
      }
      EXPECT_EQ( stateOf( *one ), states[ at ] ) << at;
      EXPECT_TRUE( here.admits( "Ethernet1" ) ) << at;
      EXPECT_EQ( here.scheduler->scheduled(), 0U );
   }
}

TEST_F( Timeouts, AreHeardWhileNotificationsAreOff ) {
   // Or else this LAG would ask for good, and PortChannel20 would never get a time-out.
   sm->hasNotificationActiveIs( false );
   world.pass( 0.2 );
   EXPECT_EQ( stateOf( *sm ), "linkFail" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   sm->hasNotificationActiveIs( true );
   another( lag20, "Ethernet5" );
   world.pass( 0.2 );
   EXPECT_EQ( stateOf( *sm, lag20 ), "linkFail" );
   EXPECT_EQ( timersOf( *sm ), "|" );
}

TEST_F( Timeouts, AreNotHeardByAZombie ) {
   sm->vexDoZombieReactors( true );
   world.pass( 0.2 );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
}

TEST_F( Timeouts, CleanUpWithdrawsRequestsThenForgetsStatesAndDeadlines ) {
   another( lag20, "Ethernet5" );
   world.left( "Ethernet7" ).request->installRequestIs( intf( "PortChannel99" ), 5 );
   const auto requests =
      logOf( world.request, [ & ] { return ":" + stateOf( *sm ) + ":" + timersOf( *sm ); } );
   const auto verdicts = VerdictLog::of( world.output );
   TraceRecorder trace( handle );
   sm->doCleanup();
   const String states = ":linkRequesting:PortChannel10 0.100000 PortChannel20 0.100000 | "
                         "PortChannel10"; // disarmed before anything else
   EXPECT_EQ( requests->take(), "installRequest(PortChannel10)" + states +
                                   " installRequest(PortChannel20)" + states +
                                   " installRequest(PortChannel99)" + states );
   EXPECT_EQ( trace.take(), "0 doCleanup: " + own + "doCleanup\n" + //
                               "0 handleLinkState: " + own +
                               "handleLinkState lag : PortChannel10\n"
                               "3 handleLinkState: Stopping timeout for lag PortChannel10\n"
                               "0 handleTimer: " +
                               own +
                               "handleTimer lag : PortChannel10\n"
                               "0 resetTimer: " +
                               own +
                               "resetTimer\n"
                               "0 handleLinkState: " +
                               own +
                               "handleLinkState lag : PortChannel20\n"
                               "3 handleLinkState: Stopping timeout for lag PortChannel20\n"
                               "0 handleTimer: " +
                               own +
                               "handleTimer lag : PortChannel20\n"
                               "0 resetTimer: " +
                               own + "resetTimer\n" );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_TRUE( world.request->installRequest().empty() );
   EXPECT_TRUE( sm->linkState().empty() );
   EXPECT_EQ( timersOf( *sm ), "|" );
}

TEST_F( Timeouts, CleanUpWithNothingOutstandingOnlyDisarms ) {
   sm->linkStateDelAll();
   world.request->installRequestDel( intf( lag10 ) );
   sm->timerIs( intf( lag10 ), Vex::Seconds( 0.1 ) );
   TraceRecorder trace( handle );
   sm->doCleanup();
   EXPECT_EQ( trace.take(), "0 doCleanup: " + own + "doCleanup\n" );
   EXPECT_EQ( timersOf( *sm ), "PortChannel10 0.100000 | PortChannel10" );
}

TEST_F( Timeouts, WhatIsChangedWhileCleaningUpIsNotActedUpon ) {
   const auto requests = logOf( world.request, [ & ]() -> String {
      world.memberGone( "Ethernet1" ).member( "Ethernet1" ).answer( lag10, 2 );
      world.mlagIntf( lag10, Mlag::IntfState::inactive );
      return "";
   } );
   sm->doCleanup();
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( stateOf( *sm ), "none" );
   requests->notifierIs( nullptr );
   world.memberGone( "Ethernet1" ).member( "Ethernet1" ); // by itself it lives on
   EXPECT_EQ( requestOf( world ), "3" );
}

TEST_F( Timeouts, DestructionWritesNothing ) {
   const auto requests = logOf( world.request );
   TraceRecorder trace( handle );
   sm.release();
   EXPECT_EQ( requests->take(), "" );
   EXPECT_EQ( trace.take(), "" );
   EXPECT_EQ( requestOf( world ), "2" );
   EXPECT_EQ( world.scheduler->scheduled(), 0U );
   EXPECT_EQ( world.scheduler->referenceCount(), 1U );
}

TEST( TimeoutDeathTest, ToArmWithoutATaskIsAProgrammingError ) {
   const World world;
   const auto sm = startPeer( world );
   sm->taskDel();
   EXPECT_DEATH( sm->resetTimer(), "MlagEgressAclIntfPeerInterlockSmTimeout.cpp:[0-9]+: assertion "
                                   "failed: task_\n" );
}

} // namespace
} // namespace Velo
