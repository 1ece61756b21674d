#include "interlock-model/ChildStateMachine.h"

#include "tests/interlock-model/Skeleton.h"

#include <gtest/gtest.h>
#include <utility>

namespace InterlockModel {
namespace {

/// Owns a LampSm, declared before a reactor of its own.
class HouseSm final : public LampSm {
 public:
   using LampSm::LampSm;

   void doorIs( const Vex::Ptr< Lamp > & lamp ) { create( door, lamp ); }

   ChildStateMachine< LampSm > child{ *this };
   SingleReactor< LampReactor > door{ *this };

 private:
   ~HouseSm() override = default;
};

struct AChildStateMachine : testing::Test {
   TestSupport::Marks marks;
   Vex::Ptr< Lamp > left = lamp( "left" );
   Vex::Ptr< Lamp > door = lamp( "door" );
   Vex::Ptr< HouseSm > house = Vex::make< HouseSm >( marks );

   Vex::Ptr< LampSm > aChild() {
      auto child = Vex::make< LampSm >( marks );
      child->leftIs( left );
      marks.take();
      return child;
   }
};

TEST_F( AChildStateMachine, IsSwitchedInTheOrderOfDeclaration ) {
   house->doorIs( door );
   house->child.is( aChild() );
   house->hasNotificationActiveIs( true );
   EXPECT_EQ( marks.take(), "on:left* on:door*" );
   EXPECT_TRUE( house->child.sm()->hasNotificationActive() );
   house->hasNotificationActiveIs( false );
   EXPECT_EQ( marks.take(), "off:left* off:door*" );
}

TEST_F( AChildStateMachine, IsNotMarkedWithItsOwner ) {
   house->doorIs( door );
   house->child.is( aChild() );
   house->vexDoZombieReactors( true );
   EXPECT_EQ( marks.take(), "zombie:door" );
   EXPECT_FALSE( house->child.sm()->markedForDeletion() );
}

TEST_F( AChildStateMachine, IsDroppedAfterTheReactorsOfItsOwner ) {
   house->doorIs( door );
   house->child.is( aChild() );
   house.release();
   EXPECT_EQ( marks.take(), "zombie:door ~door zombie:left ~left ~sm ~sm" );
   EXPECT_EQ( left->notifiees(), 0U );
}

TEST_F( AChildStateMachine, ThatSomebodyHoldsIsAZombieWithItsNotificationsOffWhenItsOwnerHasGone ) {
   const auto held = aChild();
   held->hasNotificationActiveIs( true );
   house->child.is( held );
   house.release();
   EXPECT_TRUE( held->markedForDeletion() );
   EXPECT_FALSE( held->hasNotificationActive() );
   marks.take();
   left->blink();
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AChildStateMachine, ThatIsReplacedIsDroppedAsAZombie ) {
   const auto first = aChild();
   const auto second = aChild();
   house->child.is( first );
   house->child.is( second );
   EXPECT_EQ( house->child.sm(), second );
   EXPECT_TRUE( first->markedForDeletion() );
   EXPECT_FALSE( second->markedForDeletion() );
}

TEST_F( AChildStateMachine, TakenOutHasItsNotificationsOffButIsAliveUntilItIsDropped ) {
   const auto held = aChild();
   held->hasNotificationActiveIs( true );
   house->child.is( held );
   auto removed = house->child.del();
   EXPECT_EQ( removed, held );
   EXPECT_EQ( house->child.sm(), nullptr );
   EXPECT_FALSE( held->hasNotificationActive() );
   EXPECT_FALSE( held->markedForDeletion() );
   ChildStateMachine< LampSm >::drop( std::move( removed ) );
   EXPECT_TRUE( held->markedForDeletion() );
}

TEST_F( AChildStateMachine, MayBeAbsent ) {
   EXPECT_EQ( house->child.del(), nullptr );
   ChildStateMachine< LampSm >::drop( nullptr );
   house->child.is( nullptr );
   house->hasNotificationActiveIs( true );
   house->vexDoZombieReactors( true );
   house.release();
   EXPECT_EQ( marks.take(), "~sm" );
}

} // namespace
} // namespace InterlockModel
