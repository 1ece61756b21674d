#include "platform/Kel/TaskScheduler.h"

#include "tests/platform/Kel/Tasks.h"

#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Vex::Seconds;

using TaskSchedulerTest = TaskTest;
using TaskSchedulerDeathTest = TaskTest;

TEST_F( TaskSchedulerTest, HasNothingToRunAtFirst ) {
   EXPECT_EQ( scheduler->nextDue(), std::nullopt );
   EXPECT_EQ( scheduler->scheduled(), 0 );
   EXPECT_EQ( scheduler->runDue(), 0 );
}

TEST_F( TaskSchedulerTest, RunsATaskWhenItFallsDueAndNotBefore ) {
   const Task a = task( "a" );
   a.after( 0.1 );
   EXPECT_EQ( runAt( 100.09 ), 0 );
   EXPECT_EQ( marks, "" );
   EXPECT_EQ( runAt( 100.1 ), 1 );
   EXPECT_EQ( marks, "a" );
}

TEST_F( TaskSchedulerTest, RunsATaskOnce ) {
   const Task a = task( "a" );
   a.after( 1 );
   EXPECT_EQ( runAt( 101 ), 1 );
   EXPECT_EQ( runAt( 200 ), 0 );
   EXPECT_EQ( marks, "a" );
}

TEST_F( TaskSchedulerTest, RunsByDueMomentNotByOrderOfScheduling ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   const Task c = task( "c" );
   a.after( 3 );
   b.after( 1 );
   c.after( 2 );
   EXPECT_EQ( runAt( 103 ), 3 );
   EXPECT_EQ( marks, "bca" );
}

TEST_F( TaskSchedulerTest, RunsWhatIsDueAtOneMomentInTheOrderOfScheduling ) {
   std::vector< Task > tasks;
   std::string wanted;
   for ( char mark = 'a'; mark <= 'z'; ++mark ) {
      tasks.push_back( task( std::string( 1, mark ) ) );
      wanted += mark;
   }
   for ( const Task & each : tasks ) {
      each.after( 1 );
   }
   runAt( 101 );
   EXPECT_EQ( marks, wanted );
}

TEST_F( TaskSchedulerTest, SchedulingAnArmedTaskReplacesItsDeadline ) {
   const Task a = task( "a" );
   a.after( 1 );
   a.after( 3 );
   EXPECT_EQ( scheduler->scheduled(), 1 );
   EXPECT_EQ( runAt( 102 ), 0 );
   EXPECT_EQ( runAt( 103 ), 1 );
   a.after( 3 );
   a.after( 1 );
   EXPECT_EQ( runAt( 104 ), 1 );
   EXPECT_EQ( runAt( 106 ), 0 );
   EXPECT_EQ( marks, "aa" );
}

TEST_F( TaskSchedulerTest, SchedulingAnArmedTaskForTheSameMomentPutsItLast ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   a.after( 1 );
   b.after( 1 );
   a.after( 1 );
   runAt( 101 );
   EXPECT_EQ( marks, "ba" );
}

TEST_F( TaskSchedulerTest, AnInfiniteDelayCancels ) {
   const Task a = task( "a" );
   a.after( 1 );
   a.cancel();
   EXPECT_EQ( scheduler->nextDue(), std::nullopt );
   EXPECT_EQ( scheduler->scheduled(), 0 );
   EXPECT_EQ( runAt( 1e9 ), 0 );
   a.cancel(); // of what is not armed: a no-op
   a.after( 1 );
   EXPECT_EQ( runAt( 1e9 + 1 ), 1 );
}

TEST_F( TaskSchedulerTest, ANegativeDelayCountsAsZero ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   const Task c = task( "c" );
   a.after( 0 );
   b.after( -50 );
   c.after( -std::numeric_limits< double >::infinity() );
   EXPECT_EQ( scheduler->nextDue(), Seconds( 100 ) );
   EXPECT_EQ( scheduler->runDue(), 3 );
   EXPECT_EQ( marks, "abc" );
}

TEST_F( TaskSchedulerTest, AMomentInThePastIsDueAtOnce ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   a.after( 0 );
   b.at( 50 );
   EXPECT_EQ( scheduler->runDue(), 2 );
   EXPECT_EQ( b.task->due(), Seconds::infinity() );
}

TEST_F( TaskSchedulerDeathTest, ADelayThatIsNotANumberIsAnAssertion ) {
   const Task a = task( "a" );
   EXPECT_DEATH( a.after( std::numeric_limits< double >::quiet_NaN() ),
                 "assertion failed: .*isnan" );
   EXPECT_DEATH( a.at( std::numeric_limits< double >::quiet_NaN() ), "assertion failed: .*isnan" );
}

TEST_F( TaskSchedulerTest, NextDueIsTheEarliestDeadline ) {
   const Task a = task( "a" );
   Task b = task( "b" );
   a.after( 2 );
   EXPECT_EQ( scheduler->nextDue(), Seconds( 102 ) );
   b.after( 1 );
   EXPECT_EQ( scheduler->nextDue(), Seconds( 101 ) );
   b.drop();
   EXPECT_EQ( scheduler->nextDue(), Seconds( 102 ) );
   runAt( 102 );
   EXPECT_EQ( scheduler->nextDue(), std::nullopt );
}

TEST_F( TaskSchedulerTest, ATaskThatIsDestroyedDoesNotRun ) {
   Task a = task( "a" );
   const Task b = task( "b" );
   a.after( 1 );
   b.after( 2 );
   a.drop();
   EXPECT_EQ( scheduler->scheduled(), 1 );
   EXPECT_EQ( runAt( 102 ), 1 );
   EXPECT_EQ( marks, "b" );
}

TEST_F( TaskSchedulerTest, AJumpOverManyDeadlinesRunsThemAllInOrder ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   const Task c = task( "c" );
   c.after( 3000 );
   a.after( 0.1 );
   b.after( 60 );
   EXPECT_EQ( runAt( 3700 ), 3 );
   EXPECT_EQ( marks, "abc" );
}

// --- what a handler may do ---

TEST_F( TaskSchedulerTest, AHandlerMayArmItsOwnTaskAgain ) {
   const Task a = task( "a" );
   a.marker->act = [ & ] { a.after( 1 ); };
   a.after( 1 );
   EXPECT_EQ( runAt( 101 ), 1 );
   EXPECT_EQ( a.task->due(), Seconds( 102 ) );
   EXPECT_EQ( runAt( 102 ), 1 );
   EXPECT_EQ( marks, "aa" );
}

TEST_F( TaskSchedulerTest, WhatAHandlerSchedulesWithoutDelayRunsInALaterRun ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   const Task c = task( "c" );
   a.marker->act = [ & ] {
      a.after( 0 );
      if ( marks == "a" ) {
         c.after( -1 );
      }
   };
   a.after( 1 );
   b.after( 1 );
   EXPECT_EQ( runAt( 101 ), 2 );
   EXPECT_EQ( marks, "ab" );
   EXPECT_EQ( scheduler->nextDue(), Seconds( 101 ) );
   EXPECT_EQ( scheduler->runDue(), 2 );
   EXPECT_EQ( marks, "abac" );
}

TEST_F( TaskSchedulerTest, WhatAHandlerSchedulesForAPastMomentHoldsNobodyUp ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   a.marker->act = [ & ] { a.at( 50 ); };
   a.at( 50 );
   b.after( 1 );
   EXPECT_EQ( runAt( 101 ), 2 );
   EXPECT_EQ( marks, "ab" );
   EXPECT_EQ( scheduler->runDue(), 1 );
   EXPECT_EQ( marks, "aba" );
}

TEST_F( TaskSchedulerTest, AHandlerThatPostponesADueTaskKeepsItFromRunning ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   a.marker->act = [ & ] { b.after( 1 ); };
   a.after( 1 );
   b.after( 1 );
   EXPECT_EQ( runAt( 101 ), 1 );
   EXPECT_EQ( runAt( 102 ), 1 );
   EXPECT_EQ( marks, "ab" );
}

TEST_F( TaskSchedulerTest, AHandlerMayCancelItselfAndOthersThatAreDue ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   const Task c = task( "c" );
   a.marker->act = [ & ] {
      a.after( 1 );
      a.cancel();
      b.cancel();
   };
   for ( const Task * each : { &a, &b, &c } ) {
      each->after( 1 );
   }
   EXPECT_EQ( runAt( 101 ), 2 );
   EXPECT_EQ( marks, "ac" );
   EXPECT_EQ( scheduler->scheduled(), 0 );
}

TEST_F( TaskSchedulerTest, AHandlerMayDestroyItsOwnTask ) {
   Task a = task( "a" );
   const Task b = task( "b" );
   a.marker->act = [ & ] {
      a.after( 5 );
      a.drop();
      marks += "!";
   };
   a.after( 1 );
   b.after( 1 );
   EXPECT_EQ( runAt( 101 ), 2 );
   EXPECT_EQ( marks, "a!b" );
   EXPECT_EQ( scheduler->scheduled(), 0 );
}

TEST_F( TaskSchedulerTest, AHandlerMayDestroyOthersThatAreDue ) {
   const Task a = task( "a" );
   Task b = task( "b" );
   const Task c = task( "c" );
   a.marker->act = [ & ] { b.drop(); };
   for ( const Task * each : { &a, static_cast< const Task * >( &b ), &c } ) {
      each->after( 1 );
   }
   EXPECT_EQ( runAt( 101 ), 2 );
   EXPECT_EQ( marks, "ac" );
}

TEST_F( TaskSchedulerTest, AHandlerMayDropTheScheduler ) {
   Task a = task( "a" );
   a.marker->act = [ & ] {
      scheduler.release();
      a.drop();
   };
   a.after( 1 );
   EXPECT_EQ( runAt( 101 ), 1 );
   EXPECT_EQ( marks, "a" );
}

TEST_F( TaskSchedulerTest, TheOthersThatAreDueRunThoughAHandlerHasDroppedTheScheduler ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   a.marker->act = [ & ] { scheduler.release(); };
   a.after( 1 );
   b.after( 1 );
   EXPECT_EQ( runAt( 101 ), 2 );
   EXPECT_EQ( marks, "ab" );
   EXPECT_EQ( b.task->scheduler()->referenceCount(), 2 );
}

TEST_F( TaskSchedulerTest, AHandlerMayRunWhatElseIsDue ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   a.marker->act = [ & ] {
      EXPECT_EQ( scheduler->runDue(), 1 );
      marks += "!";
   };
   a.after( 1 );
   b.after( 1 );
   EXPECT_EQ( runAt( 101 ), 1 );
   EXPECT_EQ( marks, "ab!" );
}

TEST_F( TaskSchedulerTest, AHandlerThatThrowsLeavesTheOthersToTheNextRun ) {
   const Task a = task( "a" );
   const Task b = task( "b" );
   a.marker->act = [] { throw std::runtime_error( "a" ); };
   a.after( 1 );
   b.after( 1 );
   clock.jumpTo( Seconds( 101 ) );
   EXPECT_THROW( scheduler->runDue(), std::runtime_error );
   EXPECT_FALSE( a.task->taskCurrentlyRunning() );
   EXPECT_EQ( a.task->due(), Seconds::infinity() );
   EXPECT_EQ( scheduler->runDue(), 1 );
   EXPECT_EQ( marks, "ab" );
}

TEST_F( TaskSchedulerTest, TwoSchedulersAreIndependent ) {
   const auto other = Vex::make< Kel::TaskScheduler >();
   const Task a = task( "a" );
   a.after( 1 );
   clock.jumpTo( Seconds( 101 ) );
   EXPECT_EQ( other->runDue(), 0 );
   EXPECT_EQ( other->nextDue(), std::nullopt );
   EXPECT_EQ( scheduler->runDue(), 1 );
}

} // namespace
