#pragma once

// A task that runs once after a delay. Whoever watches it is notified when the task begins to run
// and again when it has run; taskCurrentlyRunning() tells the two apart.
//
// Ownership: held by whoever created it; destroying it cancels it. Holds its scheduler.
// Threading and re-entrancy: platform/Kel/TaskScheduler.h.

#include "platform/Kel/TaskPriority.h"
#include "platform/Kel/TaskScheduler.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/String.h"

#include <cstddef>
#include <cstdint>
#include <limits>

namespace Kel {

enum class TimerTaskAttribute : std::uint8_t { taskCurrentlyRunning };

class VEX_EXPORT TimerTask final : public Vex::Entity< TimerTaskAttribute > {
 public:
   /// Not scheduled. `name` is for people. A null scheduler is a null-argument error.
   TimerTask( Vex::Ptr< TaskScheduler > scheduler, TaskPriority priority, Vex::String name );

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   const Vex::Ptr< TaskScheduler > & scheduler() const noexcept { return scheduler_; }
   TaskPriority priority() const noexcept { return priority_; }
   const Vex::String & name() const noexcept { return name_; }

   /// Schedules one run `delay` seconds from now in place of the one scheduled before: a negative
   /// delay counts as zero, as soon as the scheduler runs; an infinite one means never. Not a
   /// number is a programming error.
   void scheduleTaskDelay( Vex::Seconds delay );
   /// The same for a moment on the framework's clock; one in the past counts as now.
   void scheduleTaskAt( Vex::Seconds due );

   /// The moment of the scheduled run; infinity when none is scheduled.
   Vex::Seconds due() const noexcept { return due_; }

   /// True while the notification of a run is being delivered.
   bool taskCurrentlyRunning() const noexcept { return running_; }

 private:
   friend class TaskScheduler;
   static constexpr std::size_t unplaced = std::numeric_limits< std::size_t >::max();

   ~TimerTask() override;

   void arm( Vex::Seconds due );
   void run();

   Vex::Ptr< TaskScheduler > scheduler_;
   // Kept by the scheduler, and side by side: putting a task off touches nothing else.
   Vex::Seconds due_ = Vex::Seconds::infinity();
   Vex::Seconds placedDue_; // what the entry in the heap says
   std::uint64_t order_ = 0; // of the latest scheduling
   std::size_t heapPosition_ = unplaced;

   Vex::String name_;
   TaskPriority priority_;
   bool running_ = false;
};

} // namespace Kel
