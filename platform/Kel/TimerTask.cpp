#include "platform/Kel/TimerTask.h"

#include "platform/Vex/Assert.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/NullArgumentError.h"
#include "platform/Vex/ScopedValue.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kel {

const Vex::Type & TimerTask::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Kel::TimerTask" };
   return type;
}

const Vex::Type & TimerTask::fwkType() const noexcept {
   return staticFwkType();
}

TimerTask::TimerTask( Vex::Ptr< TaskScheduler > scheduler, TaskPriority priority, Vex::String name )
    : scheduler_( std::move( scheduler ) ), name_( std::move( name ) ), priority_( priority ) {
   if ( !scheduler_ ) {
      throw Vex::NullArgumentError( "TimerTask" );
   }
   scheduler_->taskAdd();
}

TimerTask::~TimerTask() {
   scheduler_->taskDel( *this );
}

void TimerTask::scheduleTaskDelay( Vex::Seconds delay ) {
   const Vex::Seconds zero( 0 );
   arm( Vex::now() + ( delay < zero ? zero : delay ) );
}

void TimerTask::scheduleTaskAt( Vex::Seconds due ) {
   // A moment in the past would overtake, and from the task's own handler hold up, what is due now.
   arm( std::max( due, Vex::now() ) );
}

void TimerTask::arm( Vex::Seconds due ) {
   VEX_ASSERT( !std::isnan( due.value() ) );
   if ( due == Vex::Seconds::infinity() ) {
      scheduler_->cancel( *this );
   } else {
      scheduler_->schedule( *this, due );
   }
}

void TimerTask::run() {
   {
      const Vex::ScopedValue running( running_, true );
      notify( TimerTaskAttribute::taskCurrentlyRunning );
   }
   notify( TimerTaskAttribute::taskCurrentlyRunning );
}

} // namespace Kel
