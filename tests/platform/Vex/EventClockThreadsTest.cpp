// The time of records in the thread-safe pointer mode, where each of them has its own.

#include "platform/Vex/Clock.h"
#include "platform/Vex/EventClock.h"
#include "tests/platform/Vex/CountingClock.h"
#include "tests/platform/Vex/Watched.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using Vex::Seconds;

TEST( EventClockThreadsTest, WithinANotificationEachCallReadsTheClock ) {
   const CountingClock clock;
   const Vex::ClockScope scope( clock );
   std::string log;
   const auto entity = Vex::make< Watched >( log );
   const auto actor = Vex::make< Actor >( log, "a" );
   actor->act = []( int read ) {
      EXPECT_EQ( Vex::eventTime(), Seconds( read ) );
      EXPECT_EQ( Vex::eventTime(), Seconds( read + 1 ) );
   };
   actor->notifierIs( entity );
   entity->changed( 1 );
   entity->changed( 3 );
}

TEST( EventClockThreadsTest, NotificationsOfManyThreadsDoNotMeet ) {
   std::vector< std::jthread > threads;
   for ( int thread = 0; thread < 4; ++thread ) {
      threads.emplace_back( [] {
         std::string log;
         const auto entity = Vex::make< Watched >( log );
         const auto actor = Vex::make< Actor >( log, "a" );
         Seconds before;
         actor->act = [ & ]( int /* key */ ) {
            const Seconds time = Vex::eventTime();
            EXPECT_GE( time, before );
            before = time;
         };
         actor->notifierIs( entity );
         for ( int round = 0; round < 1'000; ++round ) {
            entity->changed( round );
         }
      } );
   }
}

} // namespace
