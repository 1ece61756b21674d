#include "platform/Kel/TaskScheduler.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Ptr.h"
#include "tests/platform/Memory.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <optional>
#include <vector>

namespace {

using Vex::Seconds;

class TaskSchedulerMemoryTest : public testing::Test {
 protected:
   Vex::VirtualClock clock;
   const Vex::ClockScope scope{ clock };
   const Vex::Ptr< Kel::TaskScheduler > scheduler = Vex::make< Kel::TaskScheduler >();
   const Vex::Ptr< Kel::TimerTask > task =
      Vex::make< Kel::TimerTask >( scheduler, Kel::TaskPriority( 1 ), "task" );
};

TEST_F( TaskSchedulerMemoryTest, ATaskWithoutMemoryIsNotCreatedAndNeedsNoneOnceItIs ) {
   std::vector< Vex::Ptr< Kel::TimerTask > > tasks( 20 );
   for ( auto & created : tasks ) {
      Memory::attemptsUntilSuccess< std::bad_alloc >(
         [ & ] { created = Vex::make< Kel::TimerTask >( scheduler, Kel::TaskPriority( 1 ), "" ); },
         [ & ] { EXPECT_EQ( scheduler->nextDue(), std::nullopt ); } );
   }
   const Memory::RunsOut memory( 0 );
   task->scheduleTaskDelay( Seconds( 1 ) );
   for ( const auto & created : tasks ) {
      created->scheduleTaskDelay( Seconds( 2 ) );
   }
   EXPECT_EQ( scheduler->scheduled(), 21U );
}

TEST_F( TaskSchedulerMemoryTest, ArmingAgainCancellingAndRunningNeedNoMemory ) {
   task->scheduleTaskDelay( Seconds( 1 ) );
   const std::uint64_t before = Memory::requests();
   task->scheduleTaskDelay( Seconds( 2 ) );
   task->scheduleTaskDelay( Seconds::infinity() );
   task->scheduleTaskDelay( Seconds( 3 ) );
   clock.jumpTo( Seconds( 3 ) );
   const auto ran = scheduler->runDue();
   EXPECT_EQ( Memory::requests(), before );
   EXPECT_EQ( ran, 1 );
}

} // namespace
