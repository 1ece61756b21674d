#pragma once

// Runs timer tasks when they fall due. It owns no thread: an agent drives it from its own event
// loop,
//
//    wait until scheduler->nextDue() or an event, whichever comes first;
//    scheduler->runDue();
//
// and the replay tool and tests from a virtual clock (platform/Kel/VirtualTime.h).
//
// Order: by due moment; what is due at one moment runs in the order in which it was scheduled.
// Ownership: each task holds a counted reference to its scheduler; the scheduler borrows its tasks,
// and holds one only while that one runs.
// Threading: a scheduler and its tasks belong to one thread.
// Re-entrancy: a running task may schedule, cancel or destroy itself and others, and drop the
// scheduler. What it schedules runs in a later runDue(), however soon it is due, so that a task
// that re-arms itself without a delay cannot starve the agent's other events.
// Cost: scheduling and running one of n tasks takes O(log n). Putting a scheduled task off, and
// cancelling, writes to the task alone; the heap is put right when the task comes up, in O(log n),
// once however often it was put off.
// Errors: a task has its place from its creation on, so that scheduling needs no memory and cannot
// fail. What a task's run throws leaves runDue(); what else is due then runs in the next.

#include "platform/Vex/Export.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/Type.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Kel {

class TimerTask;

class VEX_EXPORT TaskScheduler final : public Vex::Object {
 public:
   TaskScheduler() = default;

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   /// The moment at which the next task falls due, on the framework's clock; nothing when no task
   /// is scheduled.
   std::optional< Vex::Seconds > nextDue() const noexcept;

   /// Runs what is due now; returns how many tasks ran.
   std::size_t runDue();

   /// How many tasks are scheduled.
   std::size_t scheduled() const noexcept { return scheduled_; }

 private:
   friend class TimerTask;

   // A four-way heap: half the levels of a two-way one, and siblings share a cache line or two.
   // A task has at most one entry. It says when the task is due, or, where the task was put off or
   // cancelled since, a moment before that: the task itself has the truth.
   struct Entry {
      Vex::Seconds due;
      std::uint64_t order = 0; // of scheduling
      TimerTask * task = nullptr;
   };

   ~TaskScheduler() override;

   void taskAdd();
   void taskDel( TimerTask & task ) noexcept;
   void schedule( TimerTask & task, Vex::Seconds due ) noexcept;
   void cancel( TimerTask & task ) noexcept;
   void settleFirst() const noexcept;
   void remove( std::size_t at ) const noexcept;
   static bool before( const Entry & a, const Entry & b ) noexcept;
   std::size_t leastChild( std::size_t first ) const noexcept;
   void place( std::size_t at, const Entry & entry ) const noexcept;
   void siftUp( std::size_t at, const Entry & entry ) const noexcept;
   void siftDown( std::size_t at, const Entry & entry ) const noexcept;

   mutable std::vector< Entry > heap_; // with room for all tasks; put right when it is looked at
   std::size_t tasks_ = 0; // that there are, scheduled or not
   std::size_t scheduled_ = 0;
   std::uint64_t nextOrder_ = 0;
};

} // namespace Kel
