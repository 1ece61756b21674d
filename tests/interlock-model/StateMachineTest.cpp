#include "interlock-model/StateMachine.h"

#include "tests/interlock-model/Skeleton.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace InterlockModel {
namespace {

struct AStateMachine : testing::Test {
   TestSupport::Marks marks;
   Vex::Ptr< Lamp > left = lamp( "left" );
   Vex::Ptr< Lamp > one = lamp( "one" );
   Vex::Ptr< Lamp > two = lamp( "two" );
   Vex::Ptr< Lamp > right = lamp( "right" );
   Vex::Ptr< Lamp > ceiling = lamp( "ceiling" );
   Vex::Ptr< CeilingLampSm > sm = Vex::make< CeilingLampSm >( marks );

   AStateMachine() {
      // Not in the order of declaration.
      sm->ceilingIs( ceiling );
      sm->lampSmIs( two );
      sm->rightIs( right );
      sm->lampSmIs( one );
      sm->leftIs( left );
      marks.take();
   }

   std::size_t notifiees() const {
      return left->notifiees() + one->notifiees() + two->notifiees() + right->notifiees() +
             ceiling->notifiees();
   }
};

TEST_F( AStateMachine, SwitchesItsOwnNotificationsFirstThenEachReactorInOrderOfDeclaration ) {
   sm->hasNotificationActiveIs( true );
   EXPECT_TRUE( sm->hasNotificationActive() );
   EXPECT_EQ( marks.take(), "on:left* on:two* on:one* on:right* on:ceiling*" );
   sm->hasNotificationActiveIs( false );
   EXPECT_FALSE( sm->hasNotificationActive() );
   EXPECT_EQ( marks.take(), "off:left* off:two* off:one* off:right* off:ceiling*" );
}

TEST_F( AStateMachine, SwitchedTwiceTheSameWaySwitchesNothing ) {
   sm->hasNotificationActiveIs( false );
   EXPECT_EQ( marks.take(), "" );
   sm->hasNotificationActiveIs( true );
   marks.take();
   sm->hasNotificationActiveIs( true );
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AStateMachine, MarksItsReactorsInOrderOfDeclarationAndItselfLast ) {
   sm->vexDoZombieReactors( true );
   EXPECT_TRUE( sm->markedForDeletion() );
   EXPECT_EQ( marks.take(), "zombie:left zombie:two zombie:one zombie:right zombie:ceiling" );
   sm->vexDoZombieReactors( false );
   EXPECT_FALSE( sm->markedForDeletion() );
   EXPECT_EQ( marks.take(), "alive:left alive:two alive:one alive:right alive:ceiling" );
}

TEST_F( AStateMachine, MarkedTwiceTheSameWayMarksNothing ) {
   sm->vexDoZombieReactors( false );
   EXPECT_EQ( marks.take(), "" );
   sm->vexDoZombieReactors( true );
   marks.take();
   sm->vexDoZombieReactors( true );
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AStateMachine, MakesZombiesThenReleasesSingleReactorsThenCollections ) {
   sm.release();
   EXPECT_EQ( marks.take(), "zombie:left zombie:two zombie:one zombie:right zombie:ceiling "
                            "~left ~right ~ceiling ~sm ~two ~one" );
   EXPECT_EQ( notifiees(), 0U );
}

TEST_F( AStateMachine, MarkedBeforeIsTakenApartWithoutMarkingAgain ) {
   sm->vexDoZombieReactors( true );
   marks.take();
   sm.release();
   EXPECT_EQ( marks.take(), "~left ~right ~ceiling ~sm ~two ~one" );
}

TEST_F( AStateMachine, LeavesAReactorThatSomebodyHoldsWithoutOwnerAsAZombie ) {
   const auto single = sm->left.reactor();
   const auto keyed = sm->lamps.reactors().get( one->key() );
   sm.release();
   marks.take();
   EXPECT_TRUE( single->markedForDeletion() );
   EXPECT_TRUE( keyed->markedForDeletion() );
   left->blink();
   one->blink();
   // Not even brought back to life do they have anybody to call.
   single->vexDoZombieReactors( false );
   keyed->vexDoZombieReactors( false );
   marks.take();
   left->blink();
   one->blink();
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AStateMachine, ThatLosesItsLastReferenceInAHandlerLivesUntilTheHandlerHasReturned ) {
   sm->onBlink = [ & ] {
      sm.release();
      marks.add( "released" );
   };
   one->blink();
   EXPECT_EQ( marks.take(), "blink:one released "
                            "zombie:left zombie:two zombie:one zombie:right zombie:ceiling "
                            "~left ~right ~ceiling ~sm ~two ~one" )
      << "the reactor under way goes with the end of the delivery";
   EXPECT_EQ( notifiees(), 0U );
   one->blink();
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AStateMachine, TakenApartInAHandlerIsNotCalledForTheRestOfTheDelivery ) {
   sm->lampSmIs( left ); // the second notifiee of this lamp
   sm->onBlink = [ & ] { sm.release(); };
   left->blink();
   const auto happened = marks.take();
   EXPECT_TRUE( happened.starts_with( "blink:left zombie:" ) ) << happened;
   EXPECT_EQ( happened.find( "blink", 1 ), Vex::String::npos ) << happened;
   EXPECT_EQ( left->notifiees(), 0U );
}

class ThrowingSm final : public LampSm {
 public:
   ThrowingSm( TestSupport::Marks & marks,
               const Vex::Ptr< Lamp > & single,
               const Vex::Ptr< Lamp > & keyed,
               const Vex::Ptr< Lamp > & own )
       : LampSm( marks ) {
      leftIs( single );
      lampSmIs( keyed );
      create( own_, own );
      throw std::runtime_error( "no" );
   }

 private:
   ~ThrowingSm() override = default;

   SingleReactor< LampReactor > own_{ *this };
};

TEST( AConstructorThatThrows, UnregistersTheReactorsCreatedSoFar ) {
   TestSupport::Marks marks;
   const auto single = lamp( "single" );
   const auto keyed = lamp( "keyed" );
   const auto own = lamp( "own" );
   EXPECT_THROW( Vex::make< ThrowingSm >( marks, single, keyed, own ), std::runtime_error );
   for ( const auto & lamp : { single, keyed, own } ) {
      EXPECT_EQ( lamp->notifiees(), 0U ) << lamp->name();
      EXPECT_EQ( lamp->referenceCount(), 2U ) << lamp->name() << ", here and in the list";
   }
}

} // namespace
} // namespace InterlockModel
