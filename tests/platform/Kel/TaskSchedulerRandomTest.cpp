// The scheduler against an ordered list of (due moment, order of scheduling).

#include "platform/Kel/TaskScheduler.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Entity.h"
#include "tests/platform/Seed.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Vex::Seconds;

// Appends the number of its task to a list.
class Number final : public Vex::ConstNotifiee< Kel::TimerTask > {
 public:
   Number( std::size_t number, std::vector< std::size_t > & ran )
       : number_( number ), ran_( ran ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Number" };
      return type;
   }

   void onAttribute( Kel::TimerTaskAttribute /* attribute */, const Vex::NoKey & ) override {
      if ( notifier()->taskCurrentlyRunning() ) {
         ran_.push_back( number_ );
      }
   }

 private:
   std::size_t number_;
   std::vector< std::size_t > & ran_;
};

class TaskSchedulerRandomTest : public testing::Test {
 protected:
   using Due = std::pair< double, std::uint64_t >; // moment and order of scheduling

   void create( std::size_t count ) {
      tasks.resize( count );
      numbers.resize( count );
      due.resize( count );
      for ( std::size_t at = 0; at < count; ++at ) {
         recreate( at );
      }
   }

   // Destroys the task, and makes another one of the same number.
   void recreate( std::size_t number ) {
      cancelInModel( number );
      numbers[ number ].release();
      tasks[ number ].release();
      tasks[ number ] =
         Vex::make< Kel::TimerTask >( scheduler, Kel::TaskPriority( 1 ), std::string() );
      numbers[ number ] = Vex::make< Number >( number, ran );
      numbers[ number ]->notifierIs( tasks[ number ] );
   }

   void arm( std::size_t number, double delay ) {
      cancelInModel( number );
      tasks[ number ]->scheduleTaskDelay( Seconds( delay ) );
      due[ number ] = { clock.now().value() + delay, ++order };
      model.emplace( due[ number ], number );
   }

   void cancel( std::size_t number ) {
      cancelInModel( number );
      tasks[ number ]->scheduleTaskDelay( Seconds::infinity() );
   }

   void cancelInModel( std::size_t number ) {
      model.erase( due[ number ] );
      due[ number ] = {};
   }

   // Runs what is due at `moment`, here and in the model, and compares.
   void runTo( double moment ) {
      clock.jumpTo( Seconds( moment ) );
      std::vector< std::size_t > wanted;
      while ( !model.empty() && model.begin()->first.first <= moment ) {
         wanted.push_back( model.begin()->second );
         cancelInModel( wanted.back() );
      }
      ran.clear();
      ASSERT_EQ( scheduler->runDue(), wanted.size() );
      ASSERT_EQ( ran, wanted );
      ASSERT_EQ( scheduler->scheduled(), model.size() );
      if ( !model.empty() ) {
         ASSERT_EQ( scheduler->nextDue(), Seconds( model.begin()->first.first ) );
      }
   }

   Vex::VirtualClock clock;
   const Vex::ClockScope scope{ clock };
   const Vex::Ptr< Kel::TaskScheduler > scheduler = Vex::make< Kel::TaskScheduler >();
   std::vector< std::size_t > ran;
   std::vector< Vex::Ptr< Kel::TimerTask > > tasks;
   std::vector< Vex::Ptr< Number > > numbers;
   std::vector< Due > due;
   std::map< Due, std::size_t > model;
   std::uint64_t order = 0;
};

TEST_F( TaskSchedulerRandomTest, AgreesWithAnOrderedListWhateverIsArmedCancelledAndDestroyed ) {
   SCOPED_TRACE( seedNote( 21 ) );
   std::mt19937_64 random( seed( 21 ) );
   create( 60 );
   for ( int step = 0; step < 20'000; ++step ) {
      const std::size_t number = random() % tasks.size();
      // Few different delays, so that many fall due at one moment.
      const auto dice = random() % 8;
      if ( random() % 32 == 0 ) {
         recreate( number );
      } else if ( dice == 0 ) {
         const auto wait = static_cast< double >( random() % 4 );
         ASSERT_NO_FATAL_FAILURE( runTo( clock.now().value() + wait ) ) << "step " << step;
      } else if ( dice <= 2 ) {
         cancel( number );
      } else {
         arm( number, static_cast< double >( random() % 10 ) );
      }
   }
}

TEST_F( TaskSchedulerRandomTest, AHundredThousandArmedTasksRunInOrder ) {
   SCOPED_TRACE( seedNote( 22 ) );
   std::mt19937_64 random( seed( 22 ) );
   create( 100'000 );
   for ( std::size_t number = 0; number < tasks.size(); ++number ) {
      arm( number, static_cast< double >( random() % 1'000 ) / 8 );
   }
   for ( int round = 0; round < 50'000; ++round ) {
      const std::size_t number = random() % tasks.size();
      if ( random() % 2 == 0 ) {
         arm( number, static_cast< double >( random() % 1'000 ) / 8 );
      } else {
         cancel( number );
      }
   }
   for ( double moment = 0; moment <= 125; moment += 25 ) {
      ASSERT_NO_FATAL_FAILURE( runTo( moment ) );
   }
   EXPECT_TRUE( model.empty() );
}

} // namespace
