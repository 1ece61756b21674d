// The watching end: what a notifiee does when it is pointed at an entity.

#include "platform/Vex/Entity.h"
#include "tests/platform/Vex/Watched.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace {

using Vex::Ptr;

class NotifieeTest : public testing::Test {
 protected:
   std::string log;
   const Ptr< Watched > first = Vex::make< Watched >( log, "first" );
   const Ptr< Watched > second = Vex::make< Watched >( log, "second" );
   const Ptr< Actor > actor = Vex::make< Actor >( log, "a" );
};

TEST_F( NotifieeTest, WatchesNothingAtFirst ) {
   EXPECT_EQ( actor->notifier(), nullptr );
   first->changed( 1 );
   EXPECT_EQ( log, "" );
}

TEST_F( NotifieeTest, HoldsItsNotifierUntilItIsPointedElsewhere ) {
   actor->notifierIs( first );
   EXPECT_EQ( actor->notifier(), first );
   EXPECT_EQ( first->referenceCount(), 2 );
   actor->notifierIs( second );
   EXPECT_EQ( first->referenceCount(), 1 );
   EXPECT_EQ( second->referenceCount(), 2 );
}

TEST_F( NotifieeTest, APointedElsewhereNotifieeHearsTheNewEntityOnly ) {
   actor->notifierIs( first );
   actor->notifierIs( second );
   first->changed( 1 );
   second->changed( 2 );
   EXPECT_EQ( log, "a2 " );
   EXPECT_EQ( first->notifiees(), 0 );
}

TEST_F( NotifieeTest, OnNotifierRunsForEachOtherNotifierAndForNone ) {
   actor->onNewNotifier = [ & ] { log += actor->notifier() ? "new " : "none "; };
   actor->notifierIs( first );
   actor->notifierIs( second );
   actor->notifierIs( nullptr );
   EXPECT_EQ( log, "new new none " );
}

TEST_F( NotifieeTest, PointingItWhereItPointsIsANoOp ) {
   actor->notifierIs( first );
   const auto later = Vex::make< Actor >( log, "b" );
   later->notifierIs( first );
   actor->onNewNotifier = [ & ] { log += "new "; };
   actor->notifierIs( first );
   first->changed( 1 );
   EXPECT_EQ( log, "a1 b1 " ); // its place in the order is kept
   EXPECT_EQ( first->notifiees(), 2 );
}

TEST_F( NotifieeTest, PointingItAtNothingTwiceIsANoOp ) {
   actor->onNewNotifier = [ & ] { log += "new "; };
   actor->notifierIs( nullptr );
   EXPECT_EQ( log, "" );
}

TEST_F( NotifieeTest, IsRegisteredBeforeOnNotifierRuns ) {
   actor->onNewNotifier = [ & ] {
      log += "new ";
      first->changed( 1 );
   };
   actor->notifierIs( first );
   EXPECT_EQ( log, "new a1 " );
}

TEST_F( NotifieeTest, HasLeftTheOldNotifierBeforeOnNotifierRuns ) {
   actor->notifierIs( first );
   actor->onNewNotifier = [ & ] {
      log += "new ";
      first->changed( 1 );
   };
   actor->notifierIs( second );
   EXPECT_EQ( log, "new " );
}

TEST_F( NotifieeTest, MayBePointedElsewhereWhileItIsCalled ) {
   actor->notifierIs( first );
   actor->act = [ & ]( int ) { actor->notifierIs( second ); };
   first->changed( 1 );
   first->changed( 2 );
   second->changed( 3 );
   EXPECT_EQ( log, "a1 a3 " );
}

TEST_F( NotifieeTest, AnOnNotifierThatThrowsLeavesItWatching ) {
   actor->onNewNotifier = [] { throw std::runtime_error( "onNotifier" ); };
   EXPECT_THROW( actor->notifierIs( first ), std::runtime_error );
   EXPECT_EQ( actor->notifier(), first );
   first->changed( 1 );
   EXPECT_EQ( log, "a1 " );
}

TEST_F( NotifieeTest, TheLastReferenceToANotifieeReleasesItsNotifier ) {
   auto shortLived = Vex::make< Actor >( log, "b" );
   shortLived->notifierIs( first );
   shortLived.release();
   EXPECT_EQ( log, "~b " );
   EXPECT_EQ( first->referenceCount(), 1 );
   EXPECT_EQ( first->notifiees(), 0 );
}

TEST_F( NotifieeTest, ANotifieeKeepsAnEntityThatNobodyElseHolds ) {
   auto only = Vex::make< Watched >( log, "only" );
   actor->notifierIs( only );
   only.release();
   EXPECT_EQ( log, "" );
   actor->notifierIs( nullptr );
   EXPECT_EQ( log, "~only " );
}

TEST_F( NotifieeTest, HasTwoMarksThatDeliveryDoesNotLookAt ) {
   EXPECT_FALSE( actor->hasNotificationActive() );
   EXPECT_FALSE( actor->markedForDeletion() );
   actor->notifierIs( first );
   first->changed( 1 );
   actor->hasNotificationActiveIs( true );
   actor->vexDoZombieReactors( true );
   EXPECT_TRUE( actor->hasNotificationActive() );
   EXPECT_TRUE( actor->markedForDeletion() );
   first->changed( 2 );
   EXPECT_EQ( log, "a1 a2 " );
   actor->vexDoZombieReactors( false );
   EXPECT_FALSE( actor->markedForDeletion() );
}

// Registers, and then cannot be built after all.
class Stillborn final : public Vex::ConstNotifiee< Watched > {
 public:
   explicit Stillborn( const Ptr< Watched > & entity ) {
      notifierIs( entity );
      throw std::runtime_error( "stillborn" );
   }

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Stillborn" };
      return type;
   }

   void onAttribute( WatchedAttribute /* attribute */, const int & /* key */ ) override {}
};

TEST_F( NotifieeTest, AConstructorThatThrowsLeavesNoRegistrationBehind ) {
   EXPECT_THROW( Vex::make< Stillborn >( first ), std::runtime_error );
   EXPECT_EQ( first->notifiees(), 0 );
   EXPECT_EQ( first->referenceCount(), 1 );
}

TEST_F( NotifieeTest, AConstructorThatThrowsDuringADeliveryLeavesNoRegistrationBehind ) {
   actor->notifierIs( first );
   actor->act = [ & ]( int ) {
      EXPECT_THROW( Vex::make< Stillborn >( first ), std::runtime_error );
   };
   first->changed( 1 );
   EXPECT_EQ( first->notifiees(), 1 );
   first->changed( 2 );
   EXPECT_EQ( log, "a1 a2 " );
}

} // namespace
