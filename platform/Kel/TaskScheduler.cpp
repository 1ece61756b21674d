#include "platform/Kel/TaskScheduler.h"

#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Assert.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Ptr.h"

#include <algorithm>
#include <utility>

namespace Kel {

namespace {
constexpr std::size_t fanOut = 4;
} // namespace

const Vex::Type & TaskScheduler::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Kel::TaskScheduler" };
   return type;
}

const Vex::Type & TaskScheduler::fwkType() const noexcept {
   return staticFwkType();
}

TaskScheduler::~TaskScheduler() {
   VEX_ASSERT( heap_.empty() ); // a scheduled task would have held us
}

std::optional< Vex::Seconds > TaskScheduler::nextDue() const noexcept {
   return heap_.empty() ? std::nullopt : std::optional( heap_.front().due );
}

std::size_t TaskScheduler::runDue() {
   const Vex::Ptr< TaskScheduler > self( this );
   const Vex::Seconds now = Vex::now();
   const std::uint64_t firstLater = nextOrder_;
   std::size_t ran = 0;
   while ( !heap_.empty() && heap_.front().due <= now && heap_.front().order < firstLater ) {
      const Vex::Ptr< TimerTask > task( heap_.front().task );
      cancel( *task );
      task->run();
      ++ran;
   }
   return ran;
}

void TaskScheduler::taskAdd() {
   if ( heap_.capacity() <= tasks_ ) {
      heap_.reserve( 2 * tasks_ + 1 );
   }
   ++tasks_;
}

void TaskScheduler::schedule( TimerTask & task, Vex::Seconds due ) noexcept {
   if ( task.heapPosition_ == TimerTask::unscheduled ) {
      heap_.push_back( {} );
      siftUp( heap_.size() - 1, { due, nextOrder_++, &task } );
      return;
   }
   const std::size_t at = task.heapPosition_;
   const Entry entry{ due, nextOrder_++, &task };
   if ( before( entry, heap_[ at ] ) ) {
      siftUp( at, entry );
   } else {
      siftDown( at, entry );
   }
}

void TaskScheduler::cancel( TimerTask & task ) noexcept {
   const std::size_t at = std::exchange( task.heapPosition_, TimerTask::unscheduled );
   if ( at == TimerTask::unscheduled ) {
      return;
   }
   const Entry gap = heap_[ at ];
   const Entry last = heap_.back();
   heap_.pop_back();
   if ( at == heap_.size() ) {
      return;
   }
   if ( before( last, gap ) ) {
      siftUp( at, last );
   } else {
      siftDown( at, last );
   }
}

bool TaskScheduler::before( const Entry & a, const Entry & b ) noexcept {
   return a.due != b.due ? a.due < b.due : a.order < b.order;
}

void TaskScheduler::place( std::size_t at, const Entry & entry ) noexcept {
   heap_[ at ] = entry;
   entry.task->heapPosition_ = at;
}

void TaskScheduler::siftUp( std::size_t at, const Entry & entry ) noexcept {
   while ( at > 0 ) {
      const std::size_t parent = ( at - 1 ) / fanOut;
      if ( !before( entry, heap_[ parent ] ) ) {
         break;
      }
      place( at, heap_[ parent ] );
      at = parent;
   }
   place( at, entry );
}

void TaskScheduler::siftDown( std::size_t at, const Entry & entry ) noexcept {
   for ( ;; ) {
      const std::size_t firstChild = at * fanOut + 1;
      if ( firstChild >= heap_.size() ) {
         break;
      }
      const std::size_t endOfChildren = std::min( firstChild + fanOut, heap_.size() );
      std::size_t least = firstChild;
      for ( std::size_t child = firstChild + 1; child < endOfChildren; ++child ) {
         if ( before( heap_[ child ], heap_[ least ] ) ) {
            least = child;
         }
      }
      if ( !before( heap_[ least ], entry ) ) {
         break;
      }
      place( at, heap_[ least ] );
      at = least;
   }
   place( at, entry );
}

} // namespace Kel
