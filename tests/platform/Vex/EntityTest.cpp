#include "platform/Vex/Entity.h"

#include "tests/platform/Vex/Watched.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Vex::Ptr;

// Three actors a, b and c, registered in this order. What happens is one line in `log`.
class EntityTest : public testing::Test {
 protected:
   Ptr< Actor > actor( const std::string & name ) {
      auto created = Vex::make< Actor >( log, name );
      created->notifierIs( entity );
      return created;
   }

   // Lets every reference go without a trace in the log of the test.
   void TearDown() override {
      for ( Ptr< Actor > * each : { &a, &b, &c, &d } ) {
         if ( *each ) {
            ( *each )->act = {};
            ( *each )->onDeath = [] {};
         }
         each->release();
      }
      entity.release();
   }

   std::string log;
   Ptr< Watched > entity = Vex::make< Watched >( log );
   Ptr< Actor > a = actor( "a" );
   Ptr< Actor > b = actor( "b" );
   Ptr< Actor > c = actor( "c" );
   Ptr< Actor > d;
};

TEST_F( EntityTest, NotifieesAreCalledInTheOrderInWhichTheyRegistered ) {
   entity->changed( 1 );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 c1 a2 b2 c2 " );
   EXPECT_EQ( entity->notifiees(), 3 );
}

TEST_F( EntityTest, WhoLeavesAndRegistersAgainIsCalledLast ) {
   a->notifierIs( nullptr );
   EXPECT_EQ( entity->notifiees(), 2 );
   a->notifierIs( entity );
   entity->changed( 1 );
   EXPECT_EQ( log, "b1 c1 a1 " );
}

TEST_F( EntityTest, AnEntityWithoutNotifieesTellsNobody ) {
   const auto lonely = Vex::make< Watched >( log, "lonely" );
   lonely->changed( 1 );
   EXPECT_EQ( log, "" );
}

TEST_F( EntityTest, AnotherEntitysNotifieesAreNotCalled ) {
   const auto other = Vex::make< Watched >( log, "other" );
   b->notifierIs( other );
   entity->changed( 1 );
   other->changed( 2 );
   EXPECT_EQ( log, "a1 c1 b2 " );
}

// --- a handler removes ---

TEST_F( EntityTest, AHandlerMayRemoveItself ) {
   a->act = [ & ]( int ) { a->notifierIs( nullptr ); };
   entity->changed( 1 );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 c1 b2 c2 " );
   EXPECT_EQ( entity->notifiees(), 2 );
}

TEST_F( EntityTest, AHandlerMayRemoveItselfAsTheLastOne ) {
   c->act = [ & ]( int ) { c->notifierIs( nullptr ); };
   entity->changed( 1 );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 c1 a2 b2 " );
}

TEST_F( EntityTest, OneRemovedBeforeItsTurnIsNotCalledAnyMore ) {
   a->act = [ & ]( int ) { b->notifierIs( nullptr ); };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 c1 " );
   EXPECT_EQ( entity->notifiees(), 2 );
}

TEST_F( EntityTest, OneRemovedAfterItsTurnShiftsNobodyElse ) {
   b->act = [ & ]( int ) { a->notifierIs( nullptr ); };
   entity->changed( 1 );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 c1 b2 c2 " );
}

TEST_F( EntityTest, AHandlerMayRemoveEverybody ) {
   b->act = [ & ]( int ) {
      for ( const Ptr< Actor > & each : { a, b, c } ) {
         each->notifierIs( nullptr );
      }
      EXPECT_EQ( entity->notifiees(), 0 );
   };
   entity->changed( 1 );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 " );
}

// --- a handler adds ---

TEST_F( EntityTest, OneAddedDuringADeliveryDoesNotGetIt ) {
   b->act = [ & ]( int key ) {
      if ( key == 1 ) {
         d = actor( "d" );
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 c1 " );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 c1 a2 b2 c2 d2 " );
}

TEST_F( EntityTest, ManyMayBeAddedDuringADelivery ) {
   std::vector< Ptr< Actor > > added;
   a->act = [ & ]( int key ) {
      for ( int at = 0; key == 1 && at < 1000; ++at ) {
         added.push_back( actor( "x" ) );
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 c1 " );
   EXPECT_EQ( entity->notifiees(), 1003 );
}

TEST_F( EntityTest, OneThatLeavesAndRegistersAgainBeforeItsTurnMissesTheDelivery ) {
   a->act = [ & ]( int key ) {
      if ( key == 1 ) {
         b->notifierIs( nullptr );
         b->notifierIs( entity );
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 c1 " );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 c1 a2 c2 b2 " );
}

TEST_F( EntityTest, AHandlerThatLeavesAndRegistersAgainIsNotCalledTwice ) {
   b->act = [ & ]( int key ) {
      if ( key == 1 ) {
         b->notifierIs( nullptr );
         b->notifierIs( entity );
      }
   };
   entity->changed( 1 );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 c1 a2 c2 b2 " );
}

TEST_F( EntityTest, OneThatTakesThePlaceOfTheOnlyOneDuringADeliveryDoesNotGetIt ) {
   b.release();
   c.release();
   log.clear();
   a->act = [ & ]( int ) {
      a->notifierIs( nullptr );
      d = actor( "d" );
      EXPECT_EQ( entity->notifiees(), 1 );
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 " );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 d2 " );
}

TEST_F( EntityTest, OnesThatRegisterWhenTheFirstHasLeftADeliveryComeBehindTheOthers ) {
   a->act = [ & ]( int ) {
      a->notifierIs( nullptr );
      d = actor( "d" );
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 c1 " );
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 c1 b2 c2 d2 " );
   EXPECT_EQ( entity->notifiees(), 3 );
}

// --- a handler drops the last reference ---

TEST_F( EntityTest, OneThatLosesItsLastReferenceBeforeItsTurnIsNotCalledAndLivesToTheEnd ) {
   a->act = [ & ]( int ) { b.release(); };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 c1 ~b " );
}

TEST_F( EntityTest, OneThatLosesItsLastReferenceAfterItsTurnLivesToTheEnd ) {
   b->act = [ & ]( int ) { a.release(); };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 c1 ~a " );
}

TEST_F( EntityTest, AHandlerThatDropsTheLastReferenceToItselfRunsToItsEnd ) {
   b->quiet = false;
   b->act = [ & ]( int ) { b.release(); };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 /b c1 ~b " );
   EXPECT_EQ( entity->notifiees(), 2 );
}

TEST_F( EntityTest, TheOnlyNotifieeMayDropItself ) {
   a.release();
   c.release();
   log.clear();
   b->quiet = false;
   b->act = [ & ]( int ) { b.release(); };
   entity->changed( 1 );
   EXPECT_EQ( log, "b1 /b ~b " );
}

TEST_F( EntityTest, OutsideADeliveryALastReferenceDestroysAtOnce ) {
   b.release();
   EXPECT_EQ( log, "~b " );
   entity->changed( 1 );
   EXPECT_EQ( log, "~b a1 c1 " );
}

TEST_F( EntityTest, AHandlerMayDropTheEntityWhoseNotifieesKeepIt ) {
   a->act = [ & ]( int ) { entity.release(); };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 c1 " );
   EXPECT_EQ( a->notifier()->notifiees(), 3 );
}

TEST_F( EntityTest, AnEntityThatLosesItsLastNotifieeAndReferenceLivesToTheEndOfTheDelivery ) {
   a->act = [ & ]( int ) {
      entity.release();
      for ( const Ptr< Actor > & each : { a, b, c } ) {
         each->notifierIs( nullptr );
      }
      log += "dropped ";
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 dropped ~entity " );
}

TEST_F( EntityTest, AHandlerMayDropEverything ) {
   b->quiet = false;
   b->act = [ & ]( int ) {
      entity.release();
      a.release();
      c.release();
      b.release();
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 /b ~a ~c ~b ~entity " );
}

TEST_F( EntityTest, TheDepartedAreLetGoInTheOrderInWhichTheyLeft ) {
   a->act = [ & ]( int ) {
      c.release();
      b.release();
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 ~c ~b " );
}

TEST_F( EntityTest, OneThatLeavesSeveralTimesInADeliveryIsKeptOnce ) {
   b->quiet = false;
   b->act = [ & ]( int ) {
      b->notifierIs( nullptr );
      b->notifierIs( entity );
      b->notifierIs( nullptr );
      b.release();
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 /b c1 ~b " );
}

TEST_F( EntityTest, OneThatOutlivedADeliveryThatItLeftIsKeptByTheNextOneAgain ) {
   b->quiet = false;
   b->act = [ & ]( int key ) {
      if ( key == 1 ) {
         b->notifierIs( nullptr );
      } else {
         b.release();
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 /b c1 " );
   b->notifierIs( entity );
   log.clear();
   entity->changed( 2 );
   EXPECT_EQ( log, "a2 c2 b2 /b ~b " );
}

TEST_F( EntityTest, ADepartedNotifieesDestructorMayChangeTheEntity ) {
   a->act = [ & ]( int key ) {
      if ( key == 1 ) {
         b->onDeath = [ & ] { entity->changed( 2 ); };
         b.release();
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 c1 ~b a2 c2 " );
}

TEST_F( EntityTest, TheDestructorsOfTheDepartedMayMakeOthersDepart ) {
   b->onDeath = [ & ] { entity->changed( 2 ); };
   c->onDeath = [ & ] { entity->changed( 3 ); };
   d = actor( "d" );
   a->act = [ & ]( int key ) {
      if ( key == 1 ) {
         b.release();
      } else if ( key == 2 ) {
         c.release();
      }
   };
   d->act = [ & ]( int key ) {
      if ( key == 3 ) {
         a.release();
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 c1 d1 ~b a2 d2 ~c a3 d3 ~a " );
   EXPECT_EQ( entity->notifiees(), 1 );
}

TEST_F( EntityTest, OneThatRegistersWhileTheDepartedDieGetsTheNextDelivery ) {
   b->onDeath = [ & ] {
      d = actor( "d" );
      entity->changed( 2 );
   };
   a->act = [ & ]( int ) { b.release(); };
   entity->changed( 1 );
   entity->changed( 3 );
   EXPECT_EQ( log, "a1 c1 ~b a2 c2 d2 a3 c3 d3 " );
   EXPECT_EQ( entity->notifiees(), 3 );
}

// --- nested deliveries ---

TEST_F( EntityTest, ANestedDeliveryRunsToItsEndFirst ) {
   a->act = [ & ]( int key ) {
      if ( key == 1 ) {
         entity->changed( 2 );
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 a2 b2 c2 b1 c1 " );
}

TEST_F( EntityTest, OneRemovedInANestedDeliveryIsNotCalledInTheOuterOneEither ) {
   a->act = [ & ]( int key ) {
      if ( key == 1 ) {
         entity->changed( 2 );
      }
   };
   b->act = [ & ]( int ) { c->notifierIs( nullptr ); };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 a2 b2 b1 " );
}

TEST_F( EntityTest, OneDroppedInANestedDeliveryLivesToTheEndOfTheOuterOne ) {
   b->act = [ & ]( int key ) {
      if ( key == 1 ) {
         entity->changed( 2 );
         log += "back ";
      }
   };
   a->act = [ & ]( int key ) {
      if ( key == 2 ) {
         b.release();
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 a2 c2 back c1 ~b " );
}

TEST_F( EntityTest, OneAddedInADeliveryGetsTheNestedOnesThatFollow ) {
   a->act = [ & ]( int key ) {
      if ( key == 1 ) {
         d = actor( "d" );
         entity->changed( 2 );
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 a2 b2 c2 d2 b1 c1 " );
}

TEST_F( EntityTest, AnEntityDroppedInANestedDeliveryLivesToTheEndOfTheOuterOne ) {
   a->act = [ & ]( int key ) {
      if ( key == 1 ) {
         entity->changed( 2 );
         log += "back ";
      } else {
         entity.release();
         b.release();
         c.release();
         a->notifierIs( nullptr );
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 a2 back ~b ~c ~entity " );
}

TEST_F( EntityTest, OneThatLeavesTheEntitiesOfTwoNestedDeliveriesLivesToTheEndOfTheOuterOne ) {
   const auto other = Vex::make< Watched >( log, "other" );
   b->quiet = false;
   b->act = [ & ]( int key ) {
      if ( key == 1 ) {
         b->notifierIs( other );
         other->changed( 2 );
         log += "back ";
      } else {
         b.release();
      }
   };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 b1 b2 /b back /b c1 ~b " );
   EXPECT_EQ( other->notifiees(), 0 );
   EXPECT_EQ( other->referenceCount(), 1 );
}

TEST_F( EntityTest, ADeliveryOfAnotherEntityMayRemoveFromThisOne ) {
   const auto other = Vex::make< Watched >( log, "other" );
   d = Vex::make< Actor >( log, "d" );
   d->notifierIs( other );
   d->act = [ & ]( int ) { b.release(); };
   a->act = [ & ]( int ) { other->changed( 7 ); };
   entity->changed( 1 );
   EXPECT_EQ( log, "a1 d7 c1 ~b " );
}

// --- a handler throws ---

TEST_F( EntityTest, AHandlerThatThrowsEndsTheDeliveryAndLeavesTheEntityInOrder ) {
   a->act = [ & ]( int key ) {
      if ( key == 1 ) {
         c.release();
      }
   };
   b->act = []( int key ) {
      if ( key == 1 ) {
         throw std::runtime_error( "b" );
      }
   };
   EXPECT_THROW( entity->changed( 1 ), std::runtime_error );
   EXPECT_EQ( log, "a1 b1 ~c " );
   EXPECT_EQ( entity->notifiees(), 2 );
   b->notifierIs( nullptr ); // outside a delivery: gone at once
   entity->changed( 2 );
   EXPECT_EQ( log, "a1 b1 ~c a2 " );
}

// --- many ---

TEST_F( EntityTest, ManyMayDepartInOneDelivery ) {
   std::vector< Ptr< Actor > > many;
   for ( int at = 0; at < 1000; ++at ) {
      many.push_back( actor( "x" ) );
   }
   a->act = [ & ]( int ) { many.clear(); };
   for ( int round = 1; round <= 2; ++round ) {
      entity->changed( round );
   }
   EXPECT_EQ( entity->notifiees(), 3 );
   EXPECT_TRUE( log.starts_with( "a1 b1 c1 ~x " ) );
   EXPECT_TRUE( log.ends_with( "~x a2 b2 c2 " ) );
}

TEST( EntityDeathTest, LeavingWithoutHavingRegisteredIsAnAssertion ) {
   std::string log;
   const auto entity = Vex::make< Watched >( log );
   const auto stranger = Vex::make< Actor >( log, "stranger" );
   EXPECT_DEATH( entity->notifieeDel( *stranger ), "assertion failed" );
}

} // namespace
