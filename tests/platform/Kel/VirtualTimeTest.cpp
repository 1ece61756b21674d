#include "platform/Kel/VirtualTime.h"

#include "tests/platform/Kel/Tasks.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace {

using Vex::Seconds;

class VirtualTimeTest : public TaskTest {
 protected:
   void advanceTo( double moment ) { Kel::advanceTo( clock, *scheduler, Seconds( moment ) ); }

   // A task that marks the moment at which it runs, too.
   Task timed( const std::string & mark ) {
      Task created = task( mark );
      created.marker->act = [ this ] {
         std::ostringstream moment;
         moment << "@" << clock.now().value() << " ";
         marks += moment.str();
      };
      return created;
   }
};

using VirtualTimeDeathTest = VirtualTimeTest;

TEST_F( VirtualTimeTest, StopsAtEachDueMomentOnTheWay ) {
   const Task a = timed( "a" );
   const Task b = timed( "b" );
   a.after( 2 );
   b.after( 0.5 );
   advanceTo( 110 );
   EXPECT_EQ( marks, "b@100.5 a@102 " );
   EXPECT_EQ( clock.now(), Seconds( 110 ) );
}

TEST_F( VirtualTimeTest, RunsWhatIsDueAtExactlyTheTargetAndNothingLater ) {
   const Task a = timed( "a" );
   const Task b = timed( "b" );
   a.after( 10 );
   b.at( 110.000001 );
   advanceTo( 110 );
   EXPECT_EQ( marks, "a@110 " );
   EXPECT_EQ( scheduler->scheduled(), 1 );
}

TEST_F( VirtualTimeTest, RunsWhatIsScheduledOnTheWay ) {
   const Task a = timed( "a" );
   const auto mark = a.marker->act;
   a.marker->act = [ & ] {
      mark();
      a.after( 4 );
   };
   a.after( 1 );
   advanceTo( 110 );
   EXPECT_EQ( marks, "a@101 a@105 a@109 " );
   EXPECT_EQ( a.task->due(), Seconds( 113 ) );
}

TEST_F( VirtualTimeTest, RunsWhatIsScheduledWithoutDelayAtTheSameMoment ) {
   const Task a = timed( "a" );
   const Task b = timed( "b" );
   a.marker->act = [ & ] { b.after( 0 ); };
   a.after( 10 );
   advanceTo( 110 );
   EXPECT_EQ( marks, "ab@110 " );
}

TEST_F( VirtualTimeTest, ADeadlineThatHasPassedRunsNow ) {
   const Task a = timed( "a" );
   a.after( 1 );
   clock.jumpTo( Seconds( 105 ) );
   advanceTo( 105 );
   EXPECT_EQ( marks, "a@105 " );
}

TEST_F( VirtualTimeTest, AJumpRunsNothingUntilTheSchedulerRuns ) {
   const Task a = timed( "a" );
   const Task b = timed( "b" );
   b.after( 1800 );
   a.after( 0.1 );
   clock.jumpTo( Seconds( 3700 ) );
   EXPECT_EQ( marks, "" );
   EXPECT_EQ( scheduler->nextDue(), Seconds( 100.1 ) );
   EXPECT_EQ( scheduler->runDue(), 2 );
   EXPECT_EQ( marks, "a@3700 b@3700 " );
}

TEST_F( VirtualTimeTest, AHandlerMayDropTheScheduler ) {
   Task a = timed( "a" );
   a.marker->act = [ & ] {
      scheduler.release();
      a.drop();
   };
   a.after( 1 );
   advanceTo( 110 );
   EXPECT_EQ( marks, "a" );
   EXPECT_EQ( clock.now(), Seconds( 110 ) );
}

TEST_F( VirtualTimeDeathTest, ATargetInThePastIsAnAssertion ) {
   EXPECT_DEATH( advanceTo( 99 ), "assertion failed: target >= clock.now\\(\\)" );
}

} // namespace
