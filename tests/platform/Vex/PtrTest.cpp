#include "platform/Vex/Ptr.h"

#include <functional>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace {

using Vex::Ptr;

class Animal : public Vex::Object {
 public:
   explicit Animal( int & deaths ) : deaths_( deaths ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Animal" };
      return type;
   }

   std::function< void() > onDeath = [] {};

 protected:
   ~Animal() override {
      ++deaths_;
      onDeath();
   }

 private:
   int & deaths_;
};

class Dog final : public Animal {
 public:
   using Animal::Animal;
};

class Cat final : public Animal {
 public:
   using Animal::Animal;
};

class PtrTest : public testing::Test {
 protected:
   int deaths = 0;
};

TEST_F( PtrTest, IsNullByDefault ) {
   const Ptr< Animal > none;
   EXPECT_FALSE( none );
   EXPECT_EQ( none, nullptr );
   EXPECT_EQ( none.get(), nullptr );
   EXPECT_EQ( Ptr< Animal >( nullptr ), none );
}

TEST_F( PtrTest, MayBeAConstantNull ) {
   static constexpr Ptr< Animal > none;
   EXPECT_EQ( none, nullptr );
   EXPECT_FALSE( Ptr< Animal >( none ) );
}

TEST_F( PtrTest, MakeAdoptsTheCountThatTheObjectIsBornWith ) {
   {
      const auto dog = Vex::make< Dog >( deaths );
      EXPECT_EQ( dog->referenceCount(), 1 );
      EXPECT_EQ( deaths, 0 );
   }
   EXPECT_EQ( deaths, 1 );
}

TEST_F( PtrTest, AdoptTakesNoReferenceOfItsOwnAndLeakDropsNone ) {
   auto dog = Vex::make< Dog >( deaths );
   Dog * const leaked = dog.leak();
   EXPECT_EQ( dog, nullptr );
   EXPECT_EQ( leaked->referenceCount(), 1 );
   const auto adopted = Ptr< Dog >::adopt( leaked );
   EXPECT_EQ( adopted->referenceCount(), 1 );
   EXPECT_EQ( deaths, 0 );
}

TEST_F( PtrTest, ACopySharesTheObject ) {
   auto first = Vex::make< Dog >( deaths );
   Ptr< Dog > second = first;
   EXPECT_EQ( first, second );
   EXPECT_EQ( first->referenceCount(), 2 );
   first.release();
   EXPECT_EQ( deaths, 0 );
   second.release();
   EXPECT_EQ( deaths, 1 );
}

TEST_F( PtrTest, APtrToAnObjectThatIsHeldTakesAReferenceOfItsOwn ) {
   const auto dog = Vex::make< Dog >( deaths );
   {
      const Ptr< Dog > again( dog.get() );
      EXPECT_EQ( dog->referenceCount(), 2 );
   }
   EXPECT_EQ( dog->referenceCount(), 1 );
}

TEST_F( PtrTest, AMoveLeavesNullBehindAndCountsNothing ) {
   auto first = Vex::make< Dog >( deaths );
   Ptr< Dog > second = std::move( first );
   EXPECT_EQ( first, nullptr ); // NOLINT(bugprone-use-after-move): the promise under test
   EXPECT_EQ( second->referenceCount(), 1 );
   Ptr< Dog > third;
   third = std::move( second );
   EXPECT_EQ( second, nullptr ); // NOLINT(bugprone-use-after-move): the promise under test
   EXPECT_EQ( third->referenceCount(), 1 );
   EXPECT_EQ( deaths, 0 );
}

TEST_F( PtrTest, AssignmentDropsWhatWasHeldBefore ) {
   auto first = Vex::make< Dog >( deaths );
   const auto second = Vex::make< Dog >( deaths );
   first = second;
   EXPECT_EQ( deaths, 1 );
   EXPECT_EQ( first, second );
   first = nullptr;
   EXPECT_EQ( first, nullptr );
   EXPECT_EQ( second->referenceCount(), 1 );
}

TEST_F( PtrTest, SelfAssignmentChangesNothing ) {
   auto dog = Vex::make< Dog >( deaths );
   auto & same = dog;
   dog = same;
   EXPECT_EQ( dog->referenceCount(), 1 );
   dog = std::move( same );
   ASSERT_NE( dog, nullptr );
   EXPECT_EQ( dog->referenceCount(), 1 );
   EXPECT_EQ( deaths, 0 );
}

TEST_F( PtrTest, SwapExchangesTheObjects ) {
   auto first = Vex::make< Dog >( deaths );
   Ptr< Dog > second;
   Dog * const dog = first.get();
   first.swap( second );
   EXPECT_EQ( first, nullptr );
   EXPECT_EQ( second.get(), dog );
   EXPECT_EQ( dog->referenceCount(), 1 );
}

TEST_F( PtrTest, AReadOnlyViewSharesTheObjectAndIsTheLastToHoldIt ) {
   auto dog = Vex::make< Dog >( deaths );
   const Ptr< const Dog > view = dog;
   EXPECT_EQ( view, dog );
   EXPECT_EQ( dog->referenceCount(), 2 );
   dog.release();
   EXPECT_EQ( deaths, 0 );
   EXPECT_EQ( view->referenceCount(), 1 );
}

TEST_F( PtrTest, AReadOnlyViewDoesNotBecomeWritable ) {
   EXPECT_FALSE( (std::is_convertible_v< Ptr< const Dog >, Ptr< Dog > >));
   EXPECT_TRUE( (std::is_convertible_v< Ptr< Dog >, Ptr< const Dog > >));
}

TEST_F( PtrTest, UpConversionSharesWhenCopiedAndCountsNothingWhenMoved ) {
   auto dog = Vex::make< Dog >( deaths );
   const Ptr< Animal > copied = dog;
   EXPECT_EQ( copied->referenceCount(), 2 );
   const Ptr< const Animal > moved = std::move( dog );
   EXPECT_EQ( dog, nullptr ); // NOLINT(bugprone-use-after-move): the promise under test
   EXPECT_EQ( moved->referenceCount(), 2 );
   EXPECT_EQ( moved, copied );
}

TEST_F( PtrTest, DownConversionIsNullWhereTheTypeDoesNotFit ) {
   const Ptr< Animal > animal = Vex::make< Dog >( deaths );
   EXPECT_EQ( Vex::ptrCast< Dog >( animal ), animal );
   EXPECT_EQ( Vex::ptrCast< Cat >( animal ), nullptr );
   EXPECT_EQ( animal->referenceCount(), 1 );
   EXPECT_EQ( Vex::ptrCast< Dog >( Ptr< Animal >() ), nullptr );
}

TEST_F( PtrTest, DownConversionOfAReadOnlyViewStaysReadOnly ) {
   const Ptr< const Animal > animal = Vex::make< Dog >( deaths );
   const auto dog = Vex::ptrCast< const Dog >( animal );
   EXPECT_TRUE( (std::is_same_v< decltype( dog ), const Ptr< const Dog > >));
   EXPECT_EQ( dog, animal );
}

TEST_F( PtrTest, TheDestructionSeesTheReleasedVariableNull ) {
   auto dog = Vex::make< Dog >( deaths );
   bool sawNull = false;
   dog->onDeath = [ & ] { sawNull = dog == nullptr; };
   dog.release();
   EXPECT_TRUE( sawNull );
}

TEST_F( PtrTest, TheDestructionSeesTheNewObjectInAnAssignedVariable ) {
   auto dog = Vex::make< Dog >( deaths );
   const auto next = Vex::make< Dog >( deaths );
   bool sawNext = false;
   dog->onDeath = [ & ] { sawNext = dog == next; };
   dog = next;
   EXPECT_TRUE( sawNext );
}

TEST_F( PtrTest, AReleaseWithinTheDestructionThatItSetsOffDropsNothingTwice ) {
   auto dog = Vex::make< Dog >( deaths );
   dog->onDeath = [ & ] { dog.release(); };
   dog.release();
   EXPECT_EQ( deaths, 1 );
}

// Takes and drops references to itself while it is being built and torn down.
class Selfish final : public Vex::Object {
 public:
   explicit Selfish( int & deaths ) : deaths_( deaths ) { takeAndDrop(); }

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Selfish" };
      return type;
   }

 private:
   ~Selfish() override {
      ++deaths_;
      takeAndDrop();
      takeAndDrop();
   }

   void takeAndDrop() {
      const Ptr< Selfish > self( this );
      const Ptr< const Selfish > view = self;
   }

   int & deaths_;
};

TEST_F( PtrTest, AReferenceTakenAndDroppedInAConstructorDoesNotDestroyTheObject ) {
   const auto object = Vex::make< Selfish >( deaths );
   EXPECT_EQ( deaths, 0 );
   EXPECT_EQ( object->referenceCount(), 1 );
}

TEST_F( PtrTest, AReferenceTakenAndDroppedInADestructorDoesNotDestroyTheObjectAgain ) {
   Vex::make< Selfish >( deaths ).release();
   EXPECT_EQ( deaths, 1 );
}

// Hides in a refuge when its last reference goes, as often as it is told to.
class Survivor final : public Vex::Object {
 public:
   Survivor( Ptr< Survivor > & refuge, int & deaths ) : refuge_( refuge ), deaths_( deaths ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Survivor" };
      return type;
   }

   int lives = 0;
   int farewells = 0;

 private:
   ~Survivor() override { ++deaths_; }

   void lastReferenceGone() noexcept override {
      ++farewells;
      if ( lives > 0 ) {
         --lives;
         refuge_ = Ptr< Survivor >( this );
      }
   }

   Ptr< Survivor > & refuge_;
   int & deaths_;
};

TEST_F( PtrTest, AReferenceKeptWhenTheLastOneGoesKeepsTheObjectAlive ) {
   Ptr< Survivor > refuge;
   auto survivor = Vex::make< Survivor >( refuge, deaths );
   survivor->lives = 1;
   survivor.release();
   ASSERT_EQ( deaths, 0 );
   EXPECT_EQ( refuge->referenceCount(), 1 );
   EXPECT_EQ( refuge->farewells, 1 );
}

TEST_F( PtrTest, TheDropOfAKeptReferenceAsksAgainAndThenDestroys ) {
   Ptr< Survivor > refuge;
   auto survivor = Vex::make< Survivor >( refuge, deaths );
   survivor->lives = 2;
   survivor.release();
   Ptr< Survivor > second = std::move( refuge );
   second.release();
   ASSERT_EQ( deaths, 0 );
   EXPECT_EQ( refuge->farewells, 2 );
   refuge.release();
   EXPECT_EQ( deaths, 1 );
}

// Gives a reference to itself away while it is already being destroyed.
class Escapee final : public Vex::Object {
 public:
   explicit Escapee( Ptr< Escapee > & outside ) : outside_( outside ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Escapee" };
      return type;
   }

 private:
   ~Escapee() override { outside_ = Ptr< Escapee >( this ); }

   Ptr< Escapee > & outside_;
};

TEST( PtrDeathTest, AReferenceThatOutlivesTheDestructorIsAnAssertion ) {
   EXPECT_DEATH(
      {
         Ptr< Escapee > outside;
         Vex::make< Escapee >( outside ).release();
      },
      "assertion failed: referenceCount\\(\\) == 1" );
}

TEST( PtrDeathTest, ThePointerModeIsChosenBeforeTheFirstObject ) {
   EXPECT_EQ( Vex::pointerMode(), Vex::PointerMode::plain );
   int deaths = 0;
   const auto dog = Vex::make< Dog >( deaths );
   EXPECT_DEATH( Vex::pointerModeIs( Vex::PointerMode::threadSafe ),
                 "Object.cpp:[0-9]+: assertion failed: !anyObjectBorn" );
}

TEST( PtrDeathTest, ThePointerModeIsNotEvenChosenAgainAfterTheFirstObject ) {
   int deaths = 0;
   Vex::make< Dog >( deaths ).release();
   EXPECT_DEATH( Vex::pointerModeIs( Vex::PointerMode::plain ), "assertion failed" );
}

} // namespace
