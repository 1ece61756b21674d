#include "platform/Kel/TaskScheduler.h"

#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Assert.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Ptr.h"

#include <cstddef>
#include <cstdint>
#include <optional>

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

// The inner steps first, and inline: as functions that the library exports they would be called
// one by one.

// Without a jump: which of two entries is first is anybody's guess, and a wrong one costs more than
// both comparisons.
inline bool TaskScheduler::before( const Entry & a, const Entry & b ) noexcept {
   const auto earlier = static_cast< unsigned >( a.due.value() < b.due.value() );
   const auto later = static_cast< unsigned >( b.due.value() < a.due.value() );
   const auto scheduledBefore = static_cast< unsigned >( a.order < b.order );
   return ( earlier | ( ( later ^ 1U ) & scheduledBefore ) ) != 0;
}

inline std::size_t TaskScheduler::leastChild( std::size_t first ) const noexcept {
   const auto least = [ this ]( std::size_t a, std::size_t b ) {
      return a + ( b - a ) * static_cast< std::size_t >( before( heap_[ b ], heap_[ a ] ) );
   };
   if ( first + fanOut <= heap_.size() ) {
      return least( least( first, first + 1 ), least( first + 2, first + 3 ) );
   }
   std::size_t found = first;
   for ( std::size_t child = first + 1; child < heap_.size(); ++child ) {
      found = least( found, child );
   }
   return found;
}

inline void TaskScheduler::place( std::size_t at, const Entry & entry ) const noexcept {
   heap_[ at ] = entry;
   entry.task->heapPosition_ = at;
}

inline void TaskScheduler::siftUp( std::size_t at, const Entry & entry ) const noexcept {
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

inline void TaskScheduler::siftDown( std::size_t at, const Entry & entry ) const noexcept {
   for ( std::size_t child = at * fanOut + 1; child < heap_.size(); child = at * fanOut + 1 ) {
      const std::size_t least = leastChild( child );
      if ( !before( heap_[ least ], entry ) ) {
         break;
      }
      place( at, heap_[ least ] );
      at = least;
   }
   place( at, entry );
}

inline void TaskScheduler::remove( std::size_t at ) const noexcept {
   const Entry gap = heap_[ at ];
   const Entry last = heap_.back();
   gap.task->heapPosition_ = TimerTask::unplaced;
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

void TaskScheduler::cancel( TimerTask & task ) noexcept {
   if ( task.due_ != Vex::Seconds::infinity() ) {
      task.due_ = Vex::Seconds::infinity();
      --scheduled_;
   }
}

// Puts the heap right until its first entry says the truth, which makes it the first of all.
inline void TaskScheduler::settleFirst() const noexcept {
   while ( !heap_.empty() ) {
      TimerTask & task = *heap_.front().task;
      if ( task.due_ == Vex::Seconds::infinity() ) {
         remove( 0 );
      } else if ( heap_.front().order != task.order_ ) {
         task.placedDue_ = task.due_;
         siftDown( 0, { task.due_, task.order_, &task } );
      } else {
         return;
      }
   }
}

TaskScheduler::~TaskScheduler() {
   VEX_ASSERT( heap_.empty() ); // a task would have held us
}

std::optional< Vex::Seconds > TaskScheduler::nextDue() const noexcept {
   settleFirst();
   return heap_.empty() ? std::nullopt : std::optional( heap_.front().due );
}

std::size_t TaskScheduler::runDue() {
   const Vex::Ptr< TaskScheduler > self( this );
   const Vex::Seconds now = Vex::now();
   const std::uint64_t firstLater = nextOrder_;
   std::size_t ran = 0;
   for ( settleFirst();
         !heap_.empty() && heap_.front().due <= now && heap_.front().order < firstLater;
         settleFirst() ) {
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

void TaskScheduler::taskDel( TimerTask & task ) noexcept {
   cancel( task );
   if ( task.heapPosition_ != TimerTask::unplaced ) {
      remove( task.heapPosition_ );
   }
   --tasks_;
}

void TaskScheduler::schedule( TimerTask & task, Vex::Seconds due ) noexcept {
   if ( task.due_ == Vex::Seconds::infinity() ) {
      ++scheduled_;
   }
   task.due_ = due;
   task.order_ = nextOrder_++;
   if ( task.heapPosition_ == TimerTask::unplaced ) {
      heap_.push_back( {} );
      task.placedDue_ = due;
      siftUp( heap_.size() - 1, { due, task.order_, &task } );
   } else if ( due < task.placedDue_ ) {
      task.placedDue_ = due;
      siftUp( task.heapPosition_, { due, task.order_, &task } );
   }
}

} // namespace Kel
