#include "replay/HostClock.h"

#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Entity.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using Vex::Seconds;

// Notes its name when its task runs.
class Mark final : public Vex::ConstNotifiee< Kel::TimerTask > {
 public:
   Mark( std::string & marks, char name ) noexcept : marks_( marks ), name_( name ) {}
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Mark" };
      return type;
   }
   void onAttribute( Attribute, const Key & ) override {
      if ( notifier()->taskCurrentlyRunning() ) {
         marks_ += name_;
      }
   }

 private:
   std::string & marks_;
   char name_;
};

struct Tasks {
   Vex::Ptr< Mark > add( char name, double due ) {
      auto task = Vex::make< Kel::TimerTask >( scheduler, Kel::TaskPriority( 0 ), "test" );
      task->scheduleTaskAt( Seconds( due ) );
      auto mark = Vex::make< Mark >( marks, name );
      mark->notifierIs( task );
      return mark;
   }
   std::string marks;
   Vex::Ptr< Kel::TaskScheduler > scheduler = Vex::make< Kel::TaskScheduler >();
};

TEST( VirtualHostClock, StopsAtEachDueMomentAndEndsAtExactlyTheTarget ) {
   Replay::VirtualHostClock host;
   const Vex::ClockScope scope( host.clock() );
   Tasks tasks;
   const auto c = tasks.add( 'c', 0.3 );
   const auto a = tasks.add( 'a', 0.1 );
   const auto d = tasks.add( 'd', 0.30001 );
   const auto b = tasks.add( 'b', 0.1 );
   host.advanceTo( *tasks.scheduler, Seconds( 0.3 ) );
   EXPECT_EQ( tasks.marks, "abc" );
   EXPECT_EQ( Vex::now(), Seconds( 0.3 ) );
}

TEST( RealHostClock, ReadsTheTargetWhenItHasWaitedForIt ) {
   int waits = 0;
   const auto host = Replay::realHostClock( [ &waits ] { ++waits; } );
   const Vex::ClockScope scope( host->clock() );
   Tasks tasks;
   host->advanceTo( *tasks.scheduler, Seconds( 0.002 ) );
   EXPECT_EQ( Vex::now(), Seconds( 0.002 ) );
   EXPECT_LE( waits, 1 ); // none on a machine that was busy meanwhile
}

TEST( RealHostClock, RunsWhatIsDueInOrderAndLeavesTheRest ) {
   const auto host = Replay::realHostClock( [] {} );
   const Vex::ClockScope scope( host->clock() );
   Tasks tasks;
   const auto b = tasks.add( 'b', 0.002 );
   const auto a = tasks.add( 'a', 0.001 );
   const auto c = tasks.add( 'c', 1e9 );
   host->advanceTo( *tasks.scheduler, Seconds( 0.002 ) );
   EXPECT_EQ( tasks.marks, "ab" );
}

TEST( RealHostClock, StandsStillBetweenTheStepsSoThatNothingDueAtANamedMomentIsMissed ) {
   const auto host = Replay::realHostClock( [] {} );
   const Vex::ClockScope scope( host->clock() );
   Tasks tasks;
   host->advanceTo( *tasks.scheduler, Seconds( 0.001 ) );
   const auto task = Vex::make< Kel::TimerTask >( tasks.scheduler, Kel::TaskPriority( 0 ), "test" );
   const auto mark = Vex::make< Mark >( tasks.marks, 'm' );
   mark->notifierIs( task );
   task->scheduleTaskDelay( Seconds( 0 ) );
   host->advanceTo( *tasks.scheduler, Seconds( 0.001 ) );
   EXPECT_EQ( tasks.marks, "m" );
}

} // namespace
