#include "platform/Kel/TaskScheduler.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Ptr.h"
#include "tests/platform/Memory.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <optional>

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

TEST_F( TaskSchedulerMemoryTest, ATaskThatFoundNoMemoryIsNotArmed ) {
   EXPECT_EQ( 1, Memory::attemptsUntilSuccess< std::bad_alloc >(
                    [ & ] { task->scheduleTaskDelay( Seconds( 1 ) ); },
                    [ & ] {
                       EXPECT_EQ( scheduler->nextDue(), std::nullopt );
                       EXPECT_EQ( task->due(), Seconds::infinity() );
                    } ) );
   EXPECT_EQ( task->due(), Seconds( 1 ) );
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
