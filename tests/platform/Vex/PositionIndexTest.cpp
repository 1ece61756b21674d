// An index of keys, and when it looks at an entry to find one. Each test keeps the keys by position
// itself, as a collection does.

#include "platform/Vex/PositionIndex.h"

#include "tests/platform/Seed.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

namespace {

class PositionIndexTest : public testing::Test {
 protected:
   using Index = Vex::PositionIndex< std::uint64_t >;

   auto keyAt() {
      return [ this ]( std::uint32_t position ) {
         ++looks;
         return keys.at( position );
      };
   }
   // Gives each key the next position.
   void add( std::uint64_t key ) {
      const auto position = static_cast< std::uint32_t >( keys.size() );
      index.makeRoom( key, position, keyAt() );
      index.add( key, position );
      keys.push_back( key );
   }
   // The position of `key`, or -1.
   int position( std::uint64_t key ) {
      const std::uint32_t position = index.find( key, keyAt() );
      return position != Index::none ? static_cast< int >( position ) : -1;
   }
   // The position that `key` had, or -1.
   int take( std::uint64_t key ) {
      const std::uint32_t position = index.take( key, keyAt() );
      return position != Index::none ? static_cast< int >( position ) : -1;
   }

   Index index{ 64 };
   std::vector< std::uint64_t > keys;
   std::uint64_t looks = 0;
};

constexpr std::uint64_t lag( std::uint64_t number ) {
   return number << 32U;
}

TEST_F( PositionIndexTest, IsEmptyWithoutSlots ) {
   EXPECT_TRUE( Index().empty() );
   EXPECT_FALSE( index.empty() );
}

TEST_F( PositionIndexTest, KeysThatFollowEachOtherAreFoundWithoutALookAtTheirEntries ) {
   for ( std::uint64_t port = 100; port < 5'000; ++port ) {
      add( lag( port / 16 ) | port );
   }
   looks = 0;
   for ( std::uint64_t port = 100; port < 5'000; ++port ) {
      ASSERT_EQ( position( lag( port / 16 ) | port ), static_cast< int >( port - 100 ) );
      ASSERT_EQ( position( lag( port / 16 + 1 ) | port ), -1 );
      ASSERT_EQ( position( lag( port / 16 ) | ( port + 8'192 ) ), -1 );
   }
   EXPECT_EQ( looks, 0 );
}

TEST_F( PositionIndexTest, AKeyWhoseHomeIsTakenIsToldApartByItsEntry ) {
   for ( std::uint64_t at = 0; at < 8; ++at ) {
      add( lag( at ) | 5 );
   }
   looks = 0;
   EXPECT_EQ( position( lag( 0 ) | 5 ), 0 );
   EXPECT_EQ( looks, 0 );
   for ( std::uint64_t at = 1; at < 8; ++at ) {
      EXPECT_EQ( position( lag( at ) | 5 ), static_cast< int >( at ) );
   }
   EXPECT_GE( looks, 7 );
   EXPECT_EQ( position( lag( 8 ) | 5 ), -1 );
}

TEST_F( PositionIndexTest, AKeyThatIsAwayIsFoundWhenTheOneAtItsHomeHasGone ) {
   add( 3 );
   add( 3 + 64 );
   EXPECT_EQ( take( 3 ), 0 );
   EXPECT_EQ( take( 3 ), -1 );
   EXPECT_EQ( position( 3 ), -1 );
   EXPECT_EQ( position( 3 + 64 ), 1 );
   add( 3 );
   EXPECT_EQ( position( 3 ), 2 );
   EXPECT_EQ( take( 3 + 64 ), 1 );
   EXPECT_EQ( take( 3 + 64 ), -1 );
   EXPECT_EQ( position( 3 + 64 ), -1 );
   EXPECT_EQ( position( 3 ), 2 );
}

TEST_F( PositionIndexTest, AnEntryMayMoveWhetherItsKeyIsAtHomeOrAway ) {
   add( 3 );
   add( 3 + 64 );
   keys.insert( keys.end(), { 3, 3 + 64 } );
   index.move( 3, 0, 2 );
   index.move( 3 + 64, 1, 3 );
   EXPECT_EQ( position( 3 ), 2 );
   EXPECT_EQ( position( 3 + 64 ), 3 );
}

TEST_F( PositionIndexTest, WhenKeysAreAwayTheyComeHomeAsSoonAsThereAreMoreHomes ) {
   for ( std::uint64_t port = 0; port < 48; ++port ) {
      add( 2 * port ); // as there are 64 homes, every second is for one or two
   }
   looks = 0;
   for ( std::uint64_t port = 0; port < 48; ++port ) {
      EXPECT_EQ( position( 2 * port ), static_cast< int >( port ) );
   }
   EXPECT_EQ( looks, 0 );
}

TEST_F( PositionIndexTest, KeysThatAllWantTheSameHomeAreFoundWithFewLooks ) {
   for ( std::uint64_t at = 0; at < 10'000; ++at ) {
      add( lag( at ) | 0x1FFFFFFF );
   }
   looks = 0;
   for ( std::uint64_t at = 0; at < 10'000; ++at ) {
      ASSERT_EQ( position( lag( at ) | 0x1FFFFFFF ), static_cast< int >( at ) );
   }
   EXPECT_LT( looks, 10'000 * 4 );
}

TEST_F( PositionIndexTest, AFreeHomeIsEnteredOnlyWithAPositionThatFits ) {
   EXPECT_EQ( index.freeHome( 1, 128 ), nullptr );
   std::uint64_t * const home = index.freeHome( 1, 127 );
   ASSERT_NE( home, nullptr );
   index.enter( *home, 1, 127 );
   EXPECT_EQ( position( 1 ), 127 );
   EXPECT_EQ( index.freeHome( 1 + 64, 0 ), nullptr );
}

TEST_F( PositionIndexTest, GrowsForAPositionThatIsTooHigh ) {
   EXPECT_TRUE( index.hasPosition( 127 ) );
   EXPECT_FALSE( index.hasPosition( 128 ) );
   index.makeRoom( 1, 1'000, keyAt() );
   index.add( 1, 1'000 );
   EXPECT_EQ( position( 1 ), 1'000 );
   EXPECT_TRUE( index.hasPosition( 1'023 ) );
}

// Keys with gaps between them, several of the same low bits, and positions that follow each other.
TEST_F( PositionIndexTest, AgreesWithAMap ) {
   SCOPED_TRACE( seedNote( 10 ) );
   std::mt19937_64 random( seed( 10 ) );
   std::map< std::uint64_t, int > model;
   for ( int step = 0; step < 100'000; ++step ) {
      const std::uint64_t key = lag( random() % 2 ) | random() % 3'000 * ( 1 + random() % 2 * 7 );
      const auto known = model.find( key );
      ASSERT_EQ( position( key ), known != model.end() ? known->second : -1 );
      if ( known != model.end() ) {
         ASSERT_EQ( take( key ), known->second );
         model.erase( known );
      } else {
         model[ key ] = static_cast< int >( keys.size() );
         add( key );
      }
   }
   for ( const auto & [ key, at ] : model ) {
      EXPECT_EQ( position( key ), at );
   }
}

} // namespace
