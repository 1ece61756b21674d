#include "interlock-model/Reactor.h"

#include "interlock-model/ReactorMembers.h"
#include "tests/interlock-model/Skeleton.h"

#include <gtest/gtest.h>

namespace InterlockModel {
namespace {

struct AReactor : testing::Test {
   TestSupport::Marks marks;
   Vex::Ptr< Lamp > left = lamp( "left" );
   Vex::Ptr< LampSm > sm = Vex::make< LampSm >( marks );
};

TEST_F( AReactor, IsCreatedWithNotificationsActiveAndRunsNoHandler ) {
   sm->left.create( left );
   EXPECT_TRUE( sm->left.reactor()->hasNotificationActive() );
   EXPECT_FALSE( sm->left.reactor()->markedForDeletion() );
   EXPECT_EQ( sm->left.notifier(), left );
   EXPECT_EQ( marks.take(), "" );
   left->blink();
   EXPECT_EQ( marks.take(), "blink:left" );
}

TEST_F( AReactor, IsNotCreatedForAnInputThatWasNotGiven ) {
   sm->left.createIfGiven( nullptr );
   EXPECT_EQ( sm->left.reactor(), nullptr );
   EXPECT_EQ( sm->left.notifier(), nullptr );
   sm->hasNotificationActiveIs( true );
   sm->vexDoZombieReactors( true );
   EXPECT_EQ( sm->left.del(), nullptr );
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AReactor, IsCreatedForAnInputThatWasGiven ) {
   sm->left.createIfGiven( left );
   EXPECT_EQ( sm->left.notifier(), left );
}

TEST_F( AReactor, LooksAtItsEntityWithoutTakingAReference ) {
   sm->left.create( left );
   const auto references = left->referenceCount();
   const auto & watched = sm->left.notifier();
   EXPECT_EQ( watched, left );
   EXPECT_EQ( left->referenceCount(), references );
   const auto right = lamp( "right" );
   sm->left.reactor()->notifierIs( right );
   EXPECT_EQ( watched, right );
}

TEST_F( AReactor, MayWatchNothing ) {
   sm->left.create( nullptr );
   EXPECT_NE( sm->left.reactor(), nullptr );
   EXPECT_EQ( sm->left.notifier(), nullptr );
   EXPECT_TRUE( sm->left.reactor()->hasNotificationActive() );
}

TEST_F( AReactor, ForwardsNothingWhileItsNotificationsAreInactive ) {
   sm->leftIs( left );
   sm->left.reactor()->hasNotificationActiveIs( false );
   marks.take();
   left->blink();
   EXPECT_EQ( marks.take(), "" );
   sm->left.reactor()->hasNotificationActiveIs( true );
   marks.take();
   left->blink();
   EXPECT_EQ( marks.take(), "blink:left" );
}

TEST_F( AReactor, ForwardsNothingAsAZombie ) {
   sm->leftIs( left );
   sm->left.reactor()->vexDoZombieReactors( true );
   marks.take();
   left->blink();
   EXPECT_EQ( marks.take(), "" );
   sm->left.reactor()->vexDoZombieReactors( false );
   marks.take();
   left->blink();
   EXPECT_EQ( marks.take(), "blink:left" );
}

TEST_F( AReactor, RePointedWatchesTheOtherEntityOnly ) {
   const auto other = lamp( "other" );
   sm->leftIs( left );
   sm->left.reactor()->notifierIs( other );
   EXPECT_EQ( marks.take(), "onNotifier:other" );
   left->blink();
   other->blink();
   EXPECT_EQ( marks.take(), "blink:other" );
}

TEST_F( AReactor, RePointedAtWhatItWatchesDoesNothing ) {
   sm->leftIs( left );
   sm->left.reactor()->notifierIs( left );
   EXPECT_EQ( marks.take(), "" );
   EXPECT_EQ( left->notifiees(), 1U );
}

TEST_F( AReactor, TakenOutIsAZombieThatCallsNobody ) {
   sm->leftIs( left );
   const auto reactor = sm->left.del();
   EXPECT_EQ( marks.take(), "zombie:left" );
   EXPECT_TRUE( reactor->markedForDeletion() );
   EXPECT_EQ( sm->left.reactor(), nullptr );
   EXPECT_EQ( sm->left.notifier(), nullptr );
   reactor->vexDoZombieReactors( false );
   marks.take();
   left->blink();
   EXPECT_EQ( marks.take(), "" );
}

TEST_F( AReactor, TakenOutMayBeCreatedAgain ) {
   sm->leftIs( left );
   sm->left.del();
   sm->leftIs( left );
   marks.take();
   left->blink();
   EXPECT_EQ( marks.take(), "blink:left" );
   EXPECT_EQ( left->notifiees(), 1U );
}

TEST_F( AReactor, HoldsNoReferenceToItsOwner ) {
   sm->leftIs( left );
   EXPECT_EQ( sm->referenceCount(), 1U );
}

TEST_F( AReactor, IsCalledSoByTheFramework ) {
   sm->leftIs( left );
   EXPECT_EQ( sm->left.reactor()->fwkType().name, "InterlockModel::Reactor" );
}

} // namespace
} // namespace InterlockModel
