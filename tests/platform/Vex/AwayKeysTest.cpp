// Keys by a hash of them. Each test keeps the keys by position itself, as a collection does.

#include "platform/Vex/AwayKeys.h"

#include "tests/platform/Seed.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

namespace {

class AwayKeysTest : public testing::Test {
 protected:
   using Keys = Vex::AwayKeys< std::uint64_t >;

   auto keyAt() {
      return [ this ]( std::uint32_t position ) {
         ++looks;
         return keys.at( position );
      };
   }
   // Gives each key the next position.
   void add( std::uint64_t key ) {
      away.makeRoom( keyAt() );
      away.add( key, static_cast< std::uint32_t >( keys.size() ) );
      keys.push_back( key );
   }
   // The position of `key`, or -1.
   int position( std::uint64_t key ) {
      const std::uint32_t slot = away.find( key, keyAt() );
      return slot != Keys::none ? static_cast< int >( away.position( slot ) ) : -1;
   }
   void remove( std::uint64_t key ) { away.remove( away.find( key, keyAt() ), keyAt() ); }

   Keys away;
   std::vector< std::uint64_t > keys;
   std::uint64_t looks = 0;
};

constexpr std::uint64_t lag( std::uint64_t number ) {
   return number << 32U;
}

TEST_F( AwayKeysTest, AreNoneAtFirst ) {
   EXPECT_EQ( away.size(), 0 );
   EXPECT_EQ( position( 5 ), -1 );
}

TEST_F( AwayKeysTest, AreFoundUntilTheyGo ) {
   for ( std::uint64_t at = 0; at < 1'000; ++at ) {
      add( lag( at ) | 5 );
   }
   EXPECT_EQ( away.size(), 1'000 );
   for ( std::uint64_t at = 0; at < 1'000; ++at ) {
      ASSERT_EQ( position( lag( at ) | 5 ), static_cast< int >( at ) );
      ASSERT_EQ( position( lag( at ) | 6 ), -1 );
   }
   for ( std::uint64_t at = 0; at < 1'000; at += 2 ) {
      remove( lag( at ) | 5 );
   }
   EXPECT_EQ( away.size(), 500 );
   for ( std::uint64_t at = 0; at < 1'000; ++at ) {
      ASSERT_EQ( position( lag( at ) | 5 ), at % 2 == 0 ? -1 : static_cast< int >( at ) );
   }
}

TEST_F( AwayKeysTest, AreFoundByTheirPositionsAndMayGetOthers ) {
   for ( std::uint64_t at = 0; at < 100; ++at ) {
      add( at * 64 );
   }
   const std::uint32_t slot = away.find( 7 * 64, 7U );
   EXPECT_EQ( away.position( slot ), 7 );
   away.positionIs( slot, 100 );
   keys.push_back( 7 * 64 );
   EXPECT_EQ( position( 7 * 64 ), 100 );
   EXPECT_EQ( away.find( 7 * 64, 100U ), slot );
}

TEST_F( AwayKeysTest, AreFoundWithFewLooksWhereverTheyDiffer ) {
   for ( int shift = 0; shift <= 48; ++shift ) {
      if ( shift >= 18 && shift < 32 ) {
         continue; // would use bits that are to be 0
      }
      away = Keys();
      keys.clear();
      for ( std::uint64_t at = 0; at < 4'096; ++at ) {
         add( at << shift );
      }
      looks = 0;
      for ( std::uint64_t at = 0; at < 4'096; ++at ) {
         ASSERT_EQ( position( at << shift ), static_cast< int >( at ) );
      }
      EXPECT_LT( looks, 4'096 * 4 ) << shift;
   }
}

TEST_F( AwayKeysTest, ThatComeAndGoAreStillFound ) {
   for ( std::uint64_t at = 0; at < 20; ++at ) {
      add( at );
   }
   for ( std::uint64_t round = 0; round < 10'000; ++round ) {
      remove( round + 10 );
      add( round + 20 );
      ASSERT_EQ( position( round + 10 ), -1 );
      ASSERT_EQ( position( round + 20 ), static_cast< int >( round + 20 ) );
      ASSERT_EQ( position( round % 10 ), static_cast< int >( round % 10 ) );
   }
   looks = 0;
   for ( std::uint64_t key = 20'000; key < 30'000; ++key ) {
      position( key );
   }
   EXPECT_LT( looks, 10'000 * 4 );
   EXPECT_EQ( away.size(), 20 );
}

TEST_F( AwayKeysTest, LeaveTogetherWhereverTheyAre ) {
   for ( std::uint64_t share = 1; share <= 5; ++share ) {
      away = Keys();
      keys.clear();
      for ( std::uint64_t at = 0; at < 95; ++at ) {
         add( lag( at ) | share ); // nearly as many as there are slots for, so that they crowd
      }
      const auto leaves = [ & ]( std::uint32_t position ) { return position % share == 0; };
      away.removeIf( leaves, keyAt() );
      for ( std::uint64_t at = 0; at < 95; ++at ) {
         ASSERT_EQ( position( lag( at ) | share ),
                    at % share == 0 ? -1 : static_cast< int >( at ) );
      }
      EXPECT_EQ( away.size(), 95 - ( 95 + share - 1 ) / share );
   }
}

// Of few slots, so that the ways of many cross each other and the end.
TEST_F( AwayKeysTest, AgreeWithAMap ) {
   SCOPED_TRACE( seedNote( 11 ) );
   std::mt19937_64 random( seed( 11 ) );
   std::map< std::uint64_t, int > model;
   for ( int step = 0; step < 100'000; ++step ) {
      const std::uint64_t key = lag( random() % 24 ) | random() % 2;
      const auto known = model.find( key );
      ASSERT_EQ( position( key ), known != model.end() ? known->second : -1 );
      if ( known != model.end() ) {
         remove( key );
         model.erase( known );
      } else if ( model.size() < 12 ) {
         model[ key ] = static_cast< int >( keys.size() );
         add( key );
      }
      ASSERT_EQ( away.size(), model.size() );
   }
}

} // namespace
