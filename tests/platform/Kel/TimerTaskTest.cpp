#include "platform/Kel/TimerTask.h"

#include "platform/Vex/NullArgumentError.h"
#include "tests/platform/Kel/Tasks.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using Vex::Seconds;

using TimerTaskTest = TaskTest;

TEST_F( TimerTaskTest, IsBornUnarmedWithWhatItWasGiven ) {
   const auto task =
      Vex::make< Kel::TimerTask >( scheduler, Kel::TaskPriority( 200 ), "handleTimeout" );
   EXPECT_EQ( task->scheduler(), scheduler );
   EXPECT_EQ( task->priority(), Kel::TaskPriority( 200 ) );
   EXPECT_EQ( task->name(), "handleTimeout" );
   EXPECT_EQ( task->due(), Seconds::infinity() );
   EXPECT_FALSE( task->taskCurrentlyRunning() );
   EXPECT_EQ( scheduler->scheduled(), 0 );
}

TEST_F( TimerTaskTest, ANullSchedulerIsANullArgumentError ) {
   EXPECT_THROW( Vex::make< Kel::TimerTask >( nullptr, Kel::TaskPriority( 1 ), "task" ),
                 Vex::NullArgumentError );
}

TEST_F( TimerTaskTest, TellsWhenItIsDueWhileItIsArmed ) {
   const Task a = task( "a" );
   a.after( 1.5 );
   EXPECT_EQ( a.task->due(), Seconds( 101.5 ) );
   a.at( 107 );
   EXPECT_EQ( a.task->due(), Seconds( 107 ) );
   a.cancel();
   EXPECT_EQ( a.task->due(), Seconds::infinity() );
}

TEST_F( TimerTaskTest, NotifiesWhenItBeginsToRunAndAgainWhenItHasRun ) {
   const Task a = task( "a" );
   a.marker->act = [ & ] { marks += a.task->taskCurrentlyRunning() ? "(" : "?"; };
   a.marker->afterwards = [ & ] { marks += a.task->taskCurrentlyRunning() ? "?" : ")"; };
   a.after( 1 );
   EXPECT_EQ( runAt( 101 ), 1 );
   EXPECT_EQ( marks, "a()" );
}

TEST_F( TimerTaskTest, IsUnarmedWhileItRuns ) {
   const Task a = task( "a" );
   Seconds due( 0 );
   a.marker->act = [ & ] { due = a.task->due(); };
   a.after( 1 );
   runAt( 101 );
   EXPECT_EQ( due, Seconds::infinity() );
}

TEST_F( TimerTaskTest, IsNotRunningAfterAHandlerHasThrown ) {
   const Task a = task( "a" );
   a.marker->act = [] { throw std::runtime_error( "a" ); };
   a.after( 1 );
   EXPECT_THROW( runAt( 101 ), std::runtime_error );
   EXPECT_FALSE( a.task->taskCurrentlyRunning() );
   a.marker->act = [ & ] { marks += a.task->taskCurrentlyRunning() ? "!" : "?"; };
   a.after( 1 );
   EXPECT_EQ( runAt( 102 ), 1 );
   EXPECT_EQ( marks, "aa!" );
}

TEST_F( TimerTaskTest, ArmedWhenItHasRunItRunsAgainLater ) {
   const Task a = task( "a" );
   a.marker->afterwards = [ & ] { a.after( 0 ); };
   a.after( 1 );
   EXPECT_EQ( runAt( 101 ), 1 );
   EXPECT_EQ( scheduler->runDue(), 1 );
   EXPECT_EQ( marks, "aa" );
}

TEST_F( TimerTaskTest, EveryoneWhoWatchesItIsTold ) {
   const Task a = task( "a" );
   const auto second = Vex::make< Marker >( marks, "b" );
   second->notifierIs( a.task );
   a.after( 1 );
   runAt( 101 );
   EXPECT_EQ( marks, "ab" );
}

TEST_F( TimerTaskTest, HoldsItsScheduler ) {
   const Task a = task( "a" );
   EXPECT_EQ( scheduler->referenceCount(), 2 );
   a.after( 1 );
   EXPECT_EQ( scheduler->referenceCount(), 2 );
   EXPECT_EQ( a.task->referenceCount(), 2 ); // ours and the marker's: the scheduler only borrows
}

} // namespace
