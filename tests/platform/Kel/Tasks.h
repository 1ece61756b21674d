#pragma once

// Timer tasks for tests: each appends one mark per firing to a common text, so that one comparison
// shows count and order, and then does what the test has given it to do.

#include "platform/Kel/TaskScheduler.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Seconds.h"

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>

class Marker final : public Vex::ConstNotifiee< Kel::TimerTask > {
 public:
   Marker( std::string & marks, std::string mark ) : marks_( marks ), mark_( std::move( mark ) ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Marker" };
      return type;
   }

   void onAttribute( Kel::TimerTaskAttribute /* attribute */, const Vex::NoKey & ) override {
      if ( notifier()->taskCurrentlyRunning() ) {
         marks_ += mark_;
         act();
      } else {
         afterwards();
      }
   }

   std::function< void() > act = [] {};
   std::function< void() > afterwards = [] {};

 private:
   std::string & marks_;
   std::string mark_;
};

/// A task and its marker. Dropping both destroys the task.
struct Task {
   Vex::Ptr< Kel::TimerTask > task;
   Vex::Ptr< Marker > marker;

   void after( double seconds ) const { task->scheduleTaskDelay( Vex::Seconds( seconds ) ); }
   void at( double moment ) const { task->scheduleTaskAt( Vex::Seconds( moment ) ); }
   void cancel() const { task->scheduleTaskDelay( Vex::Seconds::infinity() ); }
   void drop() {
      task.release();
      marker.release();
   }
};

class TaskTest : public testing::Test {
 protected:
   Task task( const std::string & mark ) {
      Task created{ Vex::make< Kel::TimerTask >( scheduler, Kel::TaskPriority( 1 ), mark ),
                    Vex::make< Marker >( marks, mark ) };
      created.marker->notifierIs( created.task );
      return created;
   }

   std::size_t runAt( double moment ) {
      clock.jumpTo( Vex::Seconds( moment ) );
      return scheduler->runDue();
   }

   std::string marks;
   Vex::VirtualClock clock{ Vex::Seconds( 100 ) };
   const Vex::ClockScope scope{ clock };
   Vex::Ptr< Kel::TaskScheduler > scheduler = Vex::make< Kel::TaskScheduler >();
};
