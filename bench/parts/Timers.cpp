// Tasks of one scheduler: arming one that is armed already beside others, cancelling and arming it
// again, and firing all that are due. Each scheduler reads the clock as it does by itself: ours the
// exact one at each arming, libuv none (its loop keeps a time), libevent the coarse one. So arming
// is measured on equal terms besides: all read the exact clock, or none reads any.

#include "bench/Registry.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Entity.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <event2/event.h>
#include <memory>
#include <queue>
#include <random>
#include <stdexcept>
#include <uv.h>
#include <vector>

namespace Bench::Parts {

namespace {

/// Tasks in this library's scheduler, each with one notifiee.
class OurTasks {
 public:
   explicit OurTasks( std::size_t count ) {
      for ( std::size_t at = 0; at < count; ++at ) {
         tasks_.push_back(
            Vex::make< Kel::TimerTask >( scheduler_, Kel::TaskPriority( 3 ), "benchTask" ) );
         watchers_.push_back( Vex::make< Watcher >() );
         watchers_.back()->notifierIs( tasks_.back() );
      }
   }
   void arm( std::size_t at, unsigned milliseconds ) {
      tasks_[ at ]->scheduleTaskDelay( Vex::Seconds( milliseconds / 1000.0 ) );
   }
   void cancel( std::size_t at ) { tasks_[ at ]->scheduleTaskDelay( Vex::Seconds::infinity() ); }
   void run() { scheduler_->runDue(); }

 private:
   class Watcher final : public Vex::ConstNotifiee< Kel::TimerTask > {
    public:
      const Vex::Type & fwkType() const noexcept override {
         static constexpr Vex::Type type{ "Bench::Watcher" };
         return type;
      }
      void onAttribute( Attribute /* attribute */, const Vex::NoKey & /* key */ ) override {
         fired_ += notifier()->taskCurrentlyRunning() ? 1U : 0U;
      }

    private:
      std::uint64_t fired_ = 0;
   };

   Vex::Ptr< Kel::TaskScheduler > scheduler_ = Vex::make< Kel::TaskScheduler >();
   std::vector< Vex::Ptr< Kel::TimerTask > > tasks_;
   std::vector< Vex::Ptr< Watcher > > watchers_;
};

/// The same on a clock that its host moves once a round of its loop.
class OurTasksOnKeptTime {
 public:
   explicit OurTasksOnKeptTime( std::size_t count ) : tasks_( count ) {}
   void arm( std::size_t at, unsigned milliseconds ) { tasks_.arm( at, milliseconds ); }

 private:
   Vex::VirtualClock clock_;
   Vex::ClockScope scope_{ clock_ };
   OurTasks tasks_;
};

class UvTasks {
 public:
   explicit UvTasks( std::size_t count ) : tasks_( count ) {
      uv_loop_init( &loop_ );
      for ( uv_timer_t & task : tasks_ ) {
         uv_timer_init( &loop_, &task );
         task.data = &fired_;
      }
   }
   UvTasks( const UvTasks & ) = delete;
   UvTasks & operator=( const UvTasks & ) = delete;
   UvTasks( UvTasks && ) = delete;
   UvTasks & operator=( UvTasks && ) = delete;
   ~UvTasks() {
      for ( uv_timer_t & task : tasks_ ) {
         uv_close( reinterpret_cast< uv_handle_t * >( &task ), nullptr );
      }
      uv_run( &loop_, UV_RUN_DEFAULT );
      uv_loop_close( &loop_ );
   }
   void arm( std::size_t at, unsigned milliseconds ) {
      uv_timer_start(
         &tasks_[ at ],
         []( uv_timer_t * task ) { ++*static_cast< std::uint64_t * >( task->data ); }, milliseconds,
         0 );
   }
   void cancel( std::size_t at ) { uv_timer_stop( &tasks_[ at ] ); }
   void run() { uv_run( &loop_, UV_RUN_NOWAIT ); }
   void readClock() { uv_update_time( &loop_ ); }

 private:
   uv_loop_t loop_{};
   std::uint64_t fired_ = 0;
   std::vector< uv_timer_t > tasks_;
};

class UvTasksThatReadTheClock {
 public:
   explicit UvTasksThatReadTheClock( std::size_t count ) : tasks_( count ) {}
   void arm( std::size_t at, unsigned milliseconds ) {
      tasks_.readClock();
      tasks_.arm( at, milliseconds );
   }

 private:
   UvTasks tasks_;
};

class EventTasks {
 public:
   explicit EventTasks( std::size_t count, int flags = 0 ) : base_( newBase( flags ) ) {
      for ( std::size_t at = 0; at < count; ++at ) {
         tasks_.push_back( event_new(
            base_, -1, 0,
            []( int, short, void * fired ) { ++*static_cast< std::uint64_t * >( fired ); },
            &fired_ ) );
      }
   }
   EventTasks( const EventTasks & ) = delete;
   EventTasks & operator=( const EventTasks & ) = delete;
   EventTasks( EventTasks && ) = delete;
   EventTasks & operator=( EventTasks && ) = delete;
   ~EventTasks() {
      for ( event * const task : tasks_ ) {
         event_free( task );
      }
      event_base_free( base_ );
   }
   void arm( std::size_t at, unsigned milliseconds ) {
      const timeval delay{ milliseconds / 1000, milliseconds % 1000 * 1000L };
      event_add( tasks_[ at ], &delay );
   }
   void cancel( std::size_t at ) { event_del( tasks_[ at ] ); }
   void run() { event_base_loop( base_, EVLOOP_NONBLOCK ); }

 private:
   static event_base * newBase( int flags ) {
      event_config * const config = event_config_new();
      event_config_set_flag( config, flags );
      event_base * const base = event_base_new_with_config( config );
      event_config_free( config );
      return base;
   }

   event_base * base_;
   std::uint64_t fired_ = 0;
   std::vector< event * > tasks_;
};

class EventTasksThatReadTheClock : public EventTasks {
 public:
   explicit EventTasksThatReadTheClock( std::size_t count )
       : EventTasks( count, EVENT_BASE_FLAG_PRECISE_TIMER ) {}
};

/// What one writes by hand: entries that were replaced or cancelled stay until they come up, or
/// until they are in the majority.
class QueueTasks {
 public:
   explicit QueueTasks( std::size_t count ) : generation_( count ) {}
   void arm( std::size_t at, unsigned milliseconds ) {
      if ( queue_.size() > 2 * generation_.size() + 16 ) {
         sweep();
      }
      queue_.push( { now() + milliseconds / 1000.0, at, ++generation_[ at ] } );
   }
   void cancel( std::size_t at ) { ++generation_[ at ]; }
   void run() {
      const double time = now();
      while ( !queue_.empty() && queue_.top().due <= time ) {
         const Entry entry = queue_.top();
         queue_.pop();
         if ( entry.generation == generation_[ entry.task ] ) {
            ++fired_;
         }
      }
   }

 private:
   struct Entry {
      double due;
      std::size_t task;
      std::uint64_t generation;
      friend bool operator<( const Entry & a, const Entry & b ) { return a.due > b.due; }
   };
   static double now() {
      return std::chrono::duration< double >( std::chrono::steady_clock::now().time_since_epoch() )
         .count();
   }
   void sweep() {
      std::vector< Entry > live;
      for ( ; !queue_.empty(); queue_.pop() ) {
         if ( queue_.top().generation == generation_[ queue_.top().task ] ) {
            live.push_back( queue_.top() );
         }
      }
      queue_ = std::priority_queue< Entry >( std::less< Entry >(), std::move( live ) );
   }

   std::vector< std::uint64_t > generation_;
   std::priority_queue< Entry > queue_;
   std::uint64_t fired_ = 0;
};

// Delays of a minute and more: nothing falls due while arming is measured.
std::vector< unsigned > randomDelays() {
   std::mt19937 random( 1 ); // NOLINT: repeatable on purpose
   std::vector< unsigned > delays( 4096 );
   for ( unsigned & delay : delays ) {
      delay = 60000 + static_cast< unsigned >( random() % 60000 );
   }
   return delays;
}

template < class Tasks, bool cancels >
void arming( benchmark::State & state ) {
   const auto count = static_cast< std::size_t >( state.range( 0 ) );
   Tasks tasks( count );
   const auto delays = randomDelays();
   const auto order = randomOrder( count );
   for ( std::size_t at = 0; at < count; ++at ) {
      tasks.arm( at, delays[ at % delays.size() ] );
   }
   std::size_t round = 0;
   for ( auto _ : state ) {
      const std::size_t task = order[ round % count ];
      if constexpr ( cancels ) {
         tasks.cancel( task );
      }
      tasks.arm( task, delays[ ++round % delays.size() ] );
   }
   state.SetItemsProcessed( static_cast< std::int64_t >( state.iterations() ) );
}

template < class Tasks >
void firing( benchmark::State & state ) {
   const auto count = static_cast< std::size_t >( state.range( 0 ) );
   Tasks tasks( count );
   for ( auto _ : state ) {
      for ( std::size_t at = 0; at < count; ++at ) {
         tasks.arm( at, 0 );
      }
      const auto begin = std::chrono::steady_clock::now();
      tasks.run();
      state.SetIterationTime(
         std::chrono::duration< double >( std::chrono::steady_clock::now() - begin ).count() );
   }
   state.SetItemsProcessed( static_cast< std::int64_t >( state.iterations() ) * state.range( 0 ) );
}

benchmark::internal::Benchmark * named( const std::string & name, auto function ) {
   return benchmark::RegisterBenchmark( name.c_str(), function )
      ->Arg( 1 )
      ->Arg( 1000 )
      ->Arg( 100000 );
}

template < class Tasks >
void add( const std::string & implementation ) {
   named( "timer-arm/" + implementation, arming< Tasks, false > );
   named( "timer-cancel/" + implementation, arming< Tasks, true > );
   named( "timer-fire/" + implementation, firing< Tasks > )->UseManualTime();
}

void addEqualTerms() {
   named( "timer-arm-exact-clock/ours", arming< OurTasks, false > );
   named( "timer-arm-exact-clock/libuv", arming< UvTasksThatReadTheClock, false > );
   named( "timer-arm-exact-clock/libevent", arming< EventTasksThatReadTheClock, false > );
   named( "timer-arm-kept-time/ours", arming< OurTasksOnKeptTime, false > );
   named( "timer-arm-kept-time/libuv", arming< UvTasks, false > );
}

} // namespace

void registerTimers() {
   add< OurTasks >( "ours" );
   add< UvTasks >( "libuv" );
   add< EventTasks >( "libevent" );
   add< QueueTasks >( "priority_queue" );
   addEqualTerms();
}

} // namespace Bench::Parts
