#include "platform/Vex/EventClock.h"

#include "platform/Vex/Clock.h"
#include "tests/platform/Vex/CountingClock.h"
#include "tests/platform/Vex/Watched.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;
using Vex::Seconds;

class EventClockTest : public testing::Test {
 protected:
   EventClockTest() {
      actor->notifierIs( entity );
      actor->act = [ this ]( int calls ) { take( calls ); };
   }
   ~EventClockTest() override { actor->notifierIs( nullptr ); }
   EventClockTest( const EventClockTest & ) = delete;
   EventClockTest & operator=( const EventClockTest & ) = delete;
   EventClockTest( EventClockTest && ) = delete;
   EventClockTest & operator=( EventClockTest && ) = delete;

   void take( int calls ) {
      for ( ; calls > 0; --calls ) {
         times.push_back( Vex::eventTime().value() );
      }
   }

   const CountingClock clock;
   const Vex::ClockScope scope{ clock };
   std::string log;
   std::vector< double > times; // which read of the clock each call got
   Vex::Ptr< Watched > entity = Vex::make< Watched >( log );
   Vex::Ptr< Actor > actor = Vex::make< Actor >( log, "a" );
};

TEST_F( EventClockTest, WithinANotificationAllCallsGetTheTimeOfTheFirst ) {
   entity->changed( 3 );
   EXPECT_THAT( times, ElementsAre( 1, 1, 1 ) );
}

TEST_F( EventClockTest, AllNotifieesOfAChangeGetTheSameTime ) {
   const auto other = Vex::make< Actor >( log, "b" );
   other->act = actor->act;
   other->notifierIs( entity );
   entity->changed( 2 );
   EXPECT_THAT( times, ElementsAre( 1, 1, 1, 1 ) );
}

TEST_F( EventClockTest, TheNextNotificationReadsTheClockAnew ) {
   entity->changed( 2 );
   entity->changed( 2 );
   EXPECT_THAT( times, ElementsAre( 1, 1, 2, 2 ) );
}

TEST_F( EventClockTest, EverySixteenthCallReadsTheClockAnew ) {
   entity->changed( 33 );
   std::vector< double > wanted( 16, 1 );
   wanted.insert( wanted.end(), 16, 2 );
   wanted.push_back( 3 );
   EXPECT_EQ( times, wanted );
}

TEST_F( EventClockTest, OutsideOfANotificationEachCallReadsTheClock ) {
   take( 2 );
   entity->changed( 2 );
   take( 2 );
   EXPECT_THAT( times, ElementsAre( 1, 2, 3, 3, 4, 5 ) );
}

TEST_F( EventClockTest, ANotificationWithinANotificationBelongsToIt ) {
   const auto inner = Vex::make< Watched >( log );
   const auto innerActor = Vex::make< Actor >( log, "i" );
   innerActor->notifierIs( inner );
   innerActor->act = [ this ]( int calls ) { take( calls ); };
   actor->act = [ & ]( int calls ) {
      take( calls );
      inner->changed( calls );
      take( calls );
   };
   entity->changed( 1 );
   EXPECT_THAT( times, ElementsAre( 1, 1, 1 ) );
   actor->act = [ & ]( int calls ) { inner->changed( calls ); };
   entity->changed( 2 );
   EXPECT_THAT( times, ElementsAre( 1, 1, 1, 2, 2 ) );
}

TEST_F( EventClockTest, WhoDiesAtTheEndOfANotificationIsStillWithinIt ) {
   actor->act = [ this ]( int calls ) {
      take( calls );
      actor = Vex::make< Actor >( log, "next" );
   };
   actor->onDeath = [ this ] { take( 1 ); };
   entity->changed( 1 );
   EXPECT_THAT( times, ElementsAre( 1, 1 ) );
}

TEST_F( EventClockTest, AClockThatIsPutInPlaceIsReadAtOnce ) {
   const Vex::VirtualClock other( Seconds( 70 ) );
   actor->act = [ & ]( int calls ) {
      take( calls );
      {
         const Vex::ClockScope otherScope( other );
         take( calls );
      }
      take( calls );
   };
   entity->changed( 2 );
   EXPECT_THAT( times, ElementsAre( 1, 1, 70, 70, 2, 2 ) );
}

TEST_F( EventClockTest, AVirtualClockThatJumpsIsReadAtOnce ) {
   Vex::VirtualClock stepped( Seconds( 5 ) );
   const Vex::ClockScope steppedScope( stepped );
   actor->act = [ & ]( int calls ) {
      take( calls );
      stepped.jumpTo( Seconds( 6 ) );
      take( calls );
   };
   entity->changed( 1 );
   EXPECT_THAT( times, ElementsAre( 5, 6 ) );
}

TEST_F( EventClockTest, AHandlerThatThrowsEndsItsNotification ) {
   actor->act = [ this ]( int calls ) {
      take( calls );
      throw std::runtime_error( "handler" );
   };
   EXPECT_THROW( entity->changed( 1 ), std::runtime_error );
   take( 2 );
   EXPECT_THAT( times, ElementsAre( 1, 2, 3 ) );
}

TEST_F( EventClockTest, ReadingTheClockItselfNeitherTakesNorMovesTheTimeOfTheEvent ) {
   actor->act = [ this ]( int calls ) {
      take( calls );
      EXPECT_EQ( Vex::now(), Seconds( 2 ) );
      take( calls );
   };
   entity->changed( 1 );
   EXPECT_THAT( times, Each( 1 ) );
}

} // namespace
