// References counted in the thread-safe pointer mode, which this process chooses.

#include "platform/Vex/Ptr.h"

#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <thread>
#include <vector>

namespace {

using Vex::Ptr;

const bool chosen = [] {
   Vex::pointerModeIs( Vex::PointerMode::plain ); // may be chosen again while there is no object
   Vex::pointerModeIs( Vex::PointerMode::threadSafe );
   return true;
}();

class Shared final : public Vex::Object {
 public:
   explicit Shared( std::atomic< int > & deaths ) : deaths_( deaths ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Shared" };
      return type;
   }

 private:
   ~Shared() override { ++deaths_; }

   std::atomic< int > & deaths_;
};

// Runs `work` on four threads at once.
template < class Work >
void onFourThreads( Work work ) {
   std::latch start( 4 );
   std::vector< std::jthread > threads;
   for ( int at = 0; at < 4; ++at ) {
      threads.emplace_back( [ & ] {
         start.arrive_and_wait();
         work();
      } );
   }
}

TEST( ThreadSafePtrTest, TheModeIsChosenBeforeTheFirstObject ) {
   EXPECT_TRUE( chosen );
   EXPECT_EQ( Vex::pointerMode(), Vex::PointerMode::threadSafe );
}

TEST( ThreadSafePtrTest, CopiesOnManyThreadsAreAllCounted ) {
   std::atomic< int > deaths = 0;
   const auto object = Vex::make< Shared >( deaths );
   onFourThreads( [ & ] {
      for ( int round = 0; round < 10'000; ++round ) {
         const Ptr< Shared > copy = object;
         Ptr< const Shared > view = copy;
         view.release();
      }
   } );
   EXPECT_EQ( object->referenceCount(), 1 );
   EXPECT_EQ( deaths, 0 );
}

TEST( ThreadSafePtrTest, OneOfManyThreadsDestroysTheObjectOnce ) {
   std::atomic< int > deaths = 0;
   for ( int round = 1; round <= 100; ++round ) {
      auto object = Vex::make< Shared >( deaths );
      std::latch start( 4 );
      std::vector< std::jthread > threads;
      for ( int at = 0; at < 4; ++at ) {
         threads.emplace_back( [ &start, copy = object ]() mutable {
            start.arrive_and_wait();
            copy.release();
         } );
      }
      object.release();
      threads.clear();
      ASSERT_EQ( deaths, round );
   }
}

TEST( ThreadSafePtrTest, AReferenceKeptWhenTheLastOneGoesKeepsTheObject ) {
   class Survivor final : public Vex::Object {
    public:
      explicit Survivor( Ptr< Survivor > & refuge ) : refuge_( refuge ) {}

      const Vex::Type & fwkType() const noexcept override {
         static constexpr Vex::Type type{ "Survivor" };
         return type;
      }

      int lives = 1;

    private:
      void lastReferenceGone() noexcept override {
         if ( lives-- > 0 ) {
            refuge_ = Ptr< Survivor >( this );
         }
      }

      Ptr< Survivor > & refuge_;
   };
   Ptr< Survivor > refuge;
   Vex::make< Survivor >( refuge ).release();
   ASSERT_NE( refuge, nullptr );
   EXPECT_EQ( refuge->lives, 0 );
   EXPECT_EQ( refuge->referenceCount(), 1 );
}

} // namespace
