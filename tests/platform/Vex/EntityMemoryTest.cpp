// Leaving an entity needs no memory, so that it cannot fail; registering may fail and then changes
// nothing.

#include "platform/Vex/Entity.h"
#include "tests/platform/Memory.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <vector>

namespace {

using Vex::Ptr;

enum class Attribute : std::uint8_t { value };

class Source final : public Vex::Entity< Attribute > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Source" };
      return type;
   }

   void changed() const { notify( Attribute::value ); }
};

// Calls functions by reference only, because a test counts the requests for memory.
class Watcher final : public Vex::ConstNotifiee< Source > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Watcher" };
      return type;
   }

   void onAttribute( Attribute /* attribute */, const Vex::NoKey & ) override {
      ++calls;
      if ( act != nullptr ) {
         ( *act )();
      }
   }

   const std::function< void() > * act = nullptr;
   const std::function< void() > * onDeath = nullptr;
   int calls = 0;

 private:
   ~Watcher() override {
      if ( onDeath != nullptr ) {
         ( *onDeath )();
      }
   }
};

class EntityMemoryTest : public testing::Test {
 protected:
   void SetUp() override {
      for ( int at = 0; at < 100; ++at ) {
         watchers.push_back( Vex::make< Watcher >() );
         watchers.back()->notifierIs( source );
      }
   }

   // How often memory was asked for while the source told of a change.
   std::uint64_t requestsOfAChange() const {
      const std::uint64_t before = Memory::requests();
      source->changed();
      return Memory::requests() - before;
   }

   const Ptr< Source > source = Vex::make< Source >();
   std::vector< Ptr< Watcher > > watchers;
};

TEST_F( EntityMemoryTest, ADeliveryNeedsNoMemory ) {
   EXPECT_EQ( requestsOfAChange(), 0 );
   EXPECT_EQ( watchers.back()->calls, 1 );
}

TEST_F( EntityMemoryTest, LeavingADeliveryNeedsNoMemory ) {
   const std::function< void() > leaveAll = [ & ] {
      for ( const Ptr< Watcher > & watcher : watchers ) {
         watcher->notifierIs( nullptr );
      }
   };
   watchers.front()->act = &leaveAll;
   EXPECT_EQ( requestsOfAChange(), 0 );
   EXPECT_EQ( source->notifiees(), 0 );
}

TEST_F( EntityMemoryTest, DyingInADeliveryNeedsNoMemory ) {
   const std::function< void() > dropOthers = [ & ] {
      for ( std::size_t at = 1; at < watchers.size(); ++at ) {
         watchers[ at ].release();
      }
   };
   watchers.front()->act = &dropOthers;
   EXPECT_EQ( requestsOfAChange(), 0 );
   EXPECT_EQ( source->notifiees(), 1 );
}

TEST_F( EntityMemoryTest, TheRoomForLeavingIsThereAgainInEveryDelivery ) {
   std::size_t next = 1;
   const std::function< void() > dropTen = [ & ] {
      for ( int left = 10; left > 0 && next < watchers.size(); --left ) {
         watchers[ next++ ].release();
      }
   };
   watchers.front()->act = &dropTen;
   for ( int round = 0; round < 10; ++round ) {
      EXPECT_EQ( requestsOfAChange(), 0 ) << round;
   }
   EXPECT_EQ( source->notifiees(), 1 );
}

TEST_F( EntityMemoryTest, LeavingADeliveryThatADyingNotifieeSetsOffNeedsNoMemory ) {
   const std::function< void() > changeAgain = [ & ] { source->changed(); };
   watchers[ 1 ]->onDeath = &changeAgain;
   const std::function< void() > dropOneAndThenTheOthers = [ & ] {
      if ( watchers.front()->calls == 1 ) {
         watchers[ 1 ].release();
         return;
      }
      for ( std::size_t at = 2; at < watchers.size(); ++at ) {
         watchers[ at ].release();
      }
   };
   watchers.front()->act = &dropOneAndThenTheOthers;
   EXPECT_EQ( requestsOfAChange(), 0 );
   EXPECT_EQ( source->notifiees(), 1 );
}

TEST_F( EntityMemoryTest, TheOnlyNotifieeNeedsNoMemoryToRegister ) {
   const auto other = Vex::make< Source >();
   const std::uint64_t before = Memory::requests();
   watchers.front()->notifierIs( other );
   EXPECT_EQ( Memory::requests(), before );
   other->changed();
   EXPECT_EQ( watchers.front()->calls, 1 );
}

TEST_F( EntityMemoryTest, RegisteringAsTheSecondWithoutMemoryChangesNothing ) {
   const auto other = Vex::make< Source >();
   watchers[ 0 ]->notifierIs( other );
   const int failed =
      Memory::attemptsUntilSuccess< std::bad_alloc >( [ & ] { watchers[ 1 ]->notifierIs( other ); },
                                                      [ & ] {
                                                         EXPECT_EQ( other->notifiees(), 1 );
                                                         other->changed();
                                                         EXPECT_EQ( watchers[ 1 ]->calls, 0 );
                                                      } );
   EXPECT_GT( failed, 0 );
   EXPECT_EQ( other->notifiees(), 2 );
}

TEST_F( EntityMemoryTest, RegisteringWithoutMemoryChangesNothing ) {
   const auto late = Vex::make< Watcher >();
   Memory::attemptsUntilSuccess< std::bad_alloc >( [ & ] { late->notifierIs( source ); },
                                                   [ & ] {
                                                      EXPECT_EQ( late->notifier(), nullptr );
                                                      EXPECT_EQ( source->notifiees(), 100 );
                                                   } );
   EXPECT_EQ( source->notifiees(), 101 );
}

TEST_F( EntityMemoryTest, BeingPointedElsewhereWithoutMemoryLeavesItWhereItIs ) {
   const auto other = Vex::make< Source >();
   watchers.back()->notifierIs( other ); // there is room for one
   const Ptr< Watcher > watcher = watchers.front();
   const int failed =
      Memory::attemptsUntilSuccess< std::bad_alloc >( [ & ] { watcher->notifierIs( other ); },
                                                      [ & ] {
                                                         EXPECT_EQ( watcher->notifier(), source );
                                                         EXPECT_EQ( other->notifiees(), 1 );
                                                      } );
   EXPECT_GT( failed, 0 );
   source->changed();
   EXPECT_EQ( watcher->calls, 0 );
   other->changed();
   EXPECT_EQ( watcher->calls, 1 );
}

} // namespace
