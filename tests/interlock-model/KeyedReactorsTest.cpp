#include "interlock-model/ReactorMembers.h"
#include "platform/Vex/NullArgumentError.h"
#include "tests/interlock-model/Skeleton.h"
#include "tests/support/Names.h"

#include <gtest/gtest.h>

namespace InterlockModel {
namespace {

using TestSupport::intf;

struct AKeyedCollection : testing::Test {
   TestSupport::Marks marks;
   Vex::Ptr< Lamp > one = lamp( "one" );
   Vex::Ptr< Lamp > two = lamp( "two" );
   Vex::Ptr< LampSm > sm = Vex::make< LampSm >( marks );

   Vex::String keys() const {
      TestSupport::Marks result;
      for ( const Nodo::IntfId key : sm->lamps.reactors().keys() ) {
         result.add( key.stringValue() );
      }
      return result.take();
   }
};

TEST_F( AKeyedCollection, CreatesTheReactorOfANewKeyActiveAndRunsNoHandler ) {
   const auto reactor = sm->lamps.is( one );
   EXPECT_EQ( marks.take(), "" );
   EXPECT_EQ( sm->lamps.reactors().get( intf( "one" ) ), reactor );
   EXPECT_EQ( reactor->notifier(), one );
   EXPECT_TRUE( reactor->hasNotificationActive() );
   one->blink();
   EXPECT_EQ( marks.take(), "blink:one" );
}

TEST_F( AKeyedCollection, RePointsTheReactorOfAKnownKey ) {
   const auto reactor = sm->lamps.is( one );
   const auto other = lamp( "one" );
   EXPECT_EQ( sm->lamps.is( other ), reactor );
   EXPECT_EQ( marks.take(), "onNotifier:one" );
   EXPECT_EQ( sm->lamps.reactors().size(), 1U );
   EXPECT_EQ( one->notifiees(), 0U );
   EXPECT_EQ( other->notifiees(), 1U );
}

TEST_F( AKeyedCollection, RePointingLeavesTheNotificationsAsTheyAre ) {
   const auto reactor = sm->lampSmIs( one );
   reactor->hasNotificationActiveIs( false );
   sm->lamps.is( lamp( "one" ) );
   EXPECT_FALSE( reactor->hasNotificationActive() );
}

TEST_F( AKeyedCollection, RePointingSwitchesTheNotificationsOnWhereThatIsWanted ) {
   const auto reactor = sm->switchedOn.is( one );
   reactor->hasNotificationActiveIs( false );
   sm->switchedOn.is( lamp( "one" ) );
   EXPECT_TRUE( reactor->hasNotificationActive() );
}

TEST_F( AKeyedCollection, GivenTheWatchedEntityAgainDoesNothing ) {
   const auto reactor = sm->lamps.is( one );
   EXPECT_EQ( sm->lamps.is( one ), reactor );
   EXPECT_EQ( marks.take(), "" );
   EXPECT_EQ( one->notifiees(), 1U );
}

TEST_F( AKeyedCollection, RefusesANullArgumentByTheNameOfItsMutator ) {
   sm->lamps.is( one );
   try {
      sm->lamps.is( nullptr );
      ADD_FAILURE() << "accepted";
   } catch ( const Vex::NullArgumentError & error ) {
      EXPECT_EQ( error.mutator(), "lampSmIs" );
   }
   EXPECT_EQ( keys(), "one" );
}

TEST_F( AKeyedCollection, ReturnsTheRemovedReactorAsAZombieThatCallsNobody ) {
   sm->lampSmIs( one );
   sm->lampSmIs( two );
   const auto removed = sm->lamps.del( intf( "one" ) );
   EXPECT_EQ( marks.take(), "zombie:one" );
   EXPECT_TRUE( removed->markedForDeletion() );
   EXPECT_EQ( keys(), "two" );
   removed->vexDoZombieReactors( false );
   marks.take();
   one->blink();
   two->blink();
   EXPECT_EQ( marks.take(), "blink:two" );
}

TEST_F( AKeyedCollection, UnregistersARemovedReactorThatNobodyHolds ) {
   sm->lampSmIs( one );
   sm->lamps.del( intf( "one" ) );
   EXPECT_EQ( marks.take(), "zombie:one ~one" );
   EXPECT_EQ( one->notifiees(), 0U );
}

TEST_F( AKeyedCollection, ReturnsNullForAnAbsentKey ) {
   sm->lampSmIs( one );
   EXPECT_EQ( sm->lamps.del( intf( "two" ) ), nullptr );
   EXPECT_EQ( marks.take(), "" );
   EXPECT_EQ( keys(), "one" );
}

TEST_F( AKeyedCollection, RemovesAllInItsOrder ) {
   sm->lampSmIs( two );
   sm->lampSmIs( one );
   sm->lamps.delAll();
   EXPECT_EQ( marks.take(), "zombie:two ~two zombie:one ~one" );
   EXPECT_TRUE( sm->lamps.reactors().empty() );
   sm->lamps.delAll();
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AKeyedCollection, FollowsAnotherSetOfEntitiesKeepingTheReactorsOfKeysInBoth ) {
   const auto gone = sm->lampSmIs( one );
   const auto kept = sm->lampSmIs( two );
   marks.take();
   const auto room = Vex::make< LampRoom >();
   for ( const char * name : { "three", "two" } ) {
      room->lamps.put( intf( name ), lamp( name ) );
   }
   sm->lamps.follow( room->lamps );
   EXPECT_EQ( marks.take(), "onNotifier:two zombie:one" )
      << "first what is there, then what is not";
   EXPECT_EQ( keys(), "two three" );
   EXPECT_TRUE( gone->markedForDeletion() );
   EXPECT_EQ( sm->lamps.reactors().get( intf( "two" ) ), kept );
   EXPECT_EQ( kept->notifier(), room->lamps.get( intf( "two" ) ) );
   EXPECT_EQ( two->notifiees(), 0U );
}

TEST_F( AKeyedCollection, AReactorMayRemoveItselfInItsHandler ) {
   sm->lampSmIs( one );
   sm->onBlink = [ & ] { sm->lamps.del( intf( "one" ) ); };
   one->blink();
   EXPECT_EQ( marks.take(), "blink:one zombie:one ~one" );
   one->blink();
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AKeyedCollection, SwitchesAndMarksOnlyTheReactorsThatAreThere ) {
   sm->lampSmIs( one );
   sm->hasNotificationActiveIs( true );
   sm->lampSmIs( two );
   EXPECT_EQ( marks.take(), "on:one*" );
   sm->hasNotificationActiveIs( false );
   EXPECT_EQ( marks.take(), "off:one* off:two*" );
}

} // namespace
} // namespace InterlockModel
