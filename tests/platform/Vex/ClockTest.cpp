#include "platform/Vex/Clock.h"

#include <gtest/gtest.h>

namespace {

using Vex::Seconds;

TEST( ClockTest, TheBuiltInClockDoesNotGoBack ) {
   Seconds before = Vex::now();
   EXPECT_GE( before, Seconds( 0 ) );
   for ( int read = 0; read < 1000; ++read ) {
      const Seconds after = Vex::now();
      ASSERT_LE( before, after );
      before = after;
   }
}

TEST( ClockTest, AVirtualClockStandsStillUntilItIsMoved ) {
   Vex::VirtualClock clock( Seconds( 5 ) );
   EXPECT_EQ( clock.now(), Seconds( 5 ) );
   EXPECT_EQ( clock.now(), Seconds( 5 ) );
   clock.jumpTo( Seconds( 7.5 ) );
   EXPECT_EQ( clock.now(), Seconds( 7.5 ) );
   clock.jumpTo( Seconds( 7.5 ) );
   EXPECT_EQ( clock.now(), Seconds( 7.5 ) );
}

TEST( ClockTest, AVirtualClockBeginsAtZero ) {
   EXPECT_EQ( Vex::VirtualClock().now(), Seconds( 0 ) );
}

TEST( ClockDeathTest, AJumpBackIsAnAssertion ) {
   Vex::VirtualClock clock( Seconds( 5 ) );
   EXPECT_DEATH( clock.jumpTo( Seconds( 4.999 ) ), "assertion failed: time >= now_" );
}

TEST( ClockTest, ClocksAreExchangedAndNullStandsForTheBuiltInOne ) {
   const Vex::VirtualClock clock( Seconds( 1e12 ) );
   EXPECT_EQ( Vex::clockIs( &clock ), nullptr );
   EXPECT_EQ( Vex::now(), Seconds( 1e12 ) );
   EXPECT_EQ( Vex::clockIs( nullptr ), &clock );
   EXPECT_LT( Vex::now(), Seconds( 1e12 ) );
}

TEST( ClockTest, AScopeRestoresTheClockThatItFound ) {
   const Vex::VirtualClock outer( Seconds( 1e12 ) );
   const Vex::VirtualClock inner( Seconds( 2e12 ) );
   {
      const Vex::ClockScope outerScope( outer );
      {
         const Vex::ClockScope innerScope( inner );
         EXPECT_EQ( Vex::now(), Seconds( 2e12 ) );
      }
      EXPECT_EQ( Vex::now(), Seconds( 1e12 ) );
   }
   EXPECT_LT( Vex::now(), Seconds( 1e12 ) );
}

} // namespace
