#include "platform/Vex/HomeSlots.h"

#include "tests/platform/Seed.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace {

using Narrow = Vex::HomeSlots< std::uint32_t >;
using Wide = Vex::HomeSlots< std::uint64_t >;

constexpr std::uint64_t lag( std::uint64_t number ) {
   return number << 32U;
}

template < class Slots, class Number >
void put( Slots & slots, Number key, std::uint32_t position ) {
   slots.makeRoom( key );
   slots.put( key, position );
}
template < class Slots, class Number >
bool holds( const Slots & slots, Number key ) {
   return slots.holds( slots.slot( key ), key );
}
// The position of `key`, or -1.
template < class Slots, class Number >
int position( const Slots & slots, Number key ) {
   return holds( slots, key ) ? static_cast< int >( slots.position( slots.slot( key ) ) ) : -1;
}

TEST( HomeSlotsTest, AreNoneAtFirst ) {
   EXPECT_TRUE( Narrow().empty() );
   EXPECT_FALSE( Narrow( 64 ).empty() );
   EXPECT_EQ( Narrow( 64 ).slots(), 64 );
}

TEST( HomeSlotsTest, AreFreeUntilAKeyComesAndWhenItHasGone ) {
   Narrow slots( 64 );
   EXPECT_TRUE( slots.isFree( slots.slot( 3 ) ) );
   put( slots, 3U, 0 );
   EXPECT_FALSE( slots.isFree( slots.slot( 3 ) ) );
   EXPECT_FALSE( slots.isFree( slots.slot( 3 + 64 ) ) );
   EXPECT_TRUE( slots.isFree( slots.slot( 4 ) ) );
   EXPECT_EQ( position( slots, 3U ), 0 );
   slots.remove( 3 );
   EXPECT_TRUE( slots.isFree( slots.slot( 3 ) ) );
   EXPECT_EQ( position( slots, 3U ), -1 );
}

TEST( HomeSlotsTest, EachHoldsOneKeyOfAllThatHaveTheirHomeThere ) {
   Narrow slots( 64 );
   put( slots, 3U + 64U * 5U, 9 );
   for ( std::uint32_t key = 3; key < 64 * 20; key += 64 ) {
      EXPECT_EQ( position( slots, key ), key == 3 + 64 * 5 ? 9 : -1 );
   }
}

TEST( HomeSlotsTest, AKeyMayGetAnotherPosition ) {
   Wide slots( 64 );
   put( slots, lag( 7 ) | 5, 1 );
   slots.put( lag( 7 ) | 5, 2 );
   EXPECT_EQ( position( slots, lag( 7 ) | 5 ), 2 );
   slots.move( lag( 7 ) | 5, 2, 127 );
   EXPECT_EQ( position( slots, lag( 7 ) | 5 ), 127 );
   slots.move( lag( 7 ) | 5, 127, 0 );
   EXPECT_EQ( position( slots, lag( 7 ) | 5 ), 0 );
}

TEST( HomeSlotsTest, AFreeHomeIsThatOfTheKeyAndATakenOneIsNotFree ) {
   Wide slots( 64 );
   std::uint64_t * const home = slots.freeHome( lag( 7 ) | 5 );
   ASSERT_NE( home, nullptr );
   EXPECT_EQ( slots.freeHome( 5 ), home );
   EXPECT_NE( slots.freeHome( 6 ), home );
   slots.put( *home, lag( 7 ) | 5, 9 );
   EXPECT_EQ( position( slots, lag( 7 ) | 5 ), 9 );
   EXPECT_EQ( position( slots, std::uint64_t{ 5 } ), -1 );
   EXPECT_EQ( slots.freeHome( 5 ), nullptr );
   EXPECT_EQ( slots.freeHome( lag( 7 ) | 5 ), nullptr );
}

TEST( HomeSlotsTest, HavePositionsForTwiceAsManyEntriesAsSlots ) {
   Narrow slots( 64 );
   EXPECT_TRUE( slots.hasPosition( 127 ) );
   EXPECT_FALSE( slots.hasPosition( 128 ) );
   put( slots, 65U, 127 );
   EXPECT_EQ( position( slots, 65U ), 127 );
   EXPECT_EQ( position( slots, 1U ), -1 );
   EXPECT_EQ( position( slots, 129U ), -1 );
}

TEST( HomeSlotsTest, TellTheHighestKeysApart ) {
   Wide wide( 64 );
   constexpr std::uint64_t highest = 0x7FFFFFFF'3FFFFFFF;
   put( wide, highest, 127 );
   EXPECT_EQ( position( wide, highest ), 127 );
   for ( int bit = 0; bit < 63; ++bit ) {
      if ( bit != 30 && bit != 31 ) {
         EXPECT_FALSE( holds( wide, highest ^ std::uint64_t{ 1 } << bit ) ) << bit;
      }
   }
   Narrow narrow( 64 );
   put( narrow, 0x3FFFFFFFU, 0 );
   EXPECT_EQ( position( narrow, 0x3FFFFFFFU ), 0 );
   for ( int bit = 0; bit < 30; ++bit ) {
      EXPECT_FALSE( holds( narrow, 0x3FFFFFFFU ^ 1U << bit ) ) << bit;
   }
}

TEST( HomeSlotsTest, AnEmptySlotHoldsNoKeyNotEvenZero ) {
   const Narrow slots( 64 );
   EXPECT_FALSE( holds( slots, 0U ) );
   Wide grown( 64 );
   grown.grow();
   EXPECT_FALSE( holds( grown, std::uint64_t{ 0 } ) );
   EXPECT_FALSE( holds( grown, std::uint64_t{ 64 } ) );
}

TEST( HomeSlotsTest, KeepTheirKeysWhenTheyGrow ) {
   Wide slots( 64 );
   std::map< std::uint64_t, std::uint32_t > model;
   for ( std::uint64_t home = 0; home < 64; home += 3 ) {
      const std::uint64_t key = lag( home ) | ( 64 * ( home % 5 ) + home );
      model[ key ] = static_cast< std::uint32_t >( 2 * home );
      put( slots, key, model[ key ] );
   }
   while ( slots.slots() < 8 * Wide::segmentLength ) {
      slots.grow();
      for ( const auto & [ key, at ] : model ) {
         ASSERT_EQ( position( slots, key ), static_cast< int >( at ) ) << slots.slots();
         ASSERT_EQ( position( slots, key + 320 ), -1 );
      }
      EXPECT_TRUE( slots.hasPosition( 2 * slots.slots() - 1 ) );
   }
}

TEST( HomeSlotsTest, HaveMemoryOnlyWhereKeysAre ) {
   Narrow slots( 64 );
   put( slots, 5U, 0 );
   put( slots, 6U + Narrow::segmentLength, 1 );
   while ( slots.slots() < 8 * Narrow::segmentLength ) {
      slots.grow();
   }
   for ( std::uint32_t segment = 0; segment < 8; ++segment ) {
      EXPECT_EQ( slots.freeHome( segment * Narrow::segmentLength ) != nullptr, segment <= 1 )
         << segment;
      EXPECT_TRUE( slots.isFree( slots.slot( segment * Narrow::segmentLength ) ) );
   }
   slots.makeRoom( 3 * Narrow::segmentLength + 1 );
   slots.makeRoom( 3 * Narrow::segmentLength + 1 );
   EXPECT_NE( slots.freeHome( 3 * Narrow::segmentLength ), nullptr );
   EXPECT_EQ( slots.freeHome( 4 * Narrow::segmentLength ), nullptr );
}

TEST( HomeSlotsTest, AgreeWithAMapWhileTheyGrow ) {
   SCOPED_TRACE( seedNote( 9 ) );
   std::mt19937_64 random( seed( 9 ) );
   Wide slots( 64 );
   std::map< std::uint64_t, std::uint32_t > model; // by key
   std::map< std::uint64_t, std::uint64_t > homes; // the key in each home
   for ( int step = 0; step < 60'000; ++step ) {
      const std::uint64_t key = lag( random() % 3 ) | random() % 40'000;
      const auto known = model.find( key );
      ASSERT_EQ( position( slots, key ),
                 known != model.end() ? static_cast< int >( known->second ) : -1 );
      if ( known != model.end() ) {
         slots.remove( key );
         model.erase( known );
         homes.erase( key % slots.slots() );
      } else if ( slots.isFree( slots.slot( key ) ) ) {
         const auto at = static_cast< std::uint32_t >( random() % ( 2 * slots.slots() ) );
         put( slots, key, at );
         model[ key ] = at;
         ASSERT_TRUE( homes.emplace( key % slots.slots(), key ).second );
      } else {
         ASSERT_TRUE( homes.contains( key % slots.slots() ) );
         if ( random() % 300 == 0 && slots.slots() < 8 * Wide::segmentLength ) {
            slots.grow();
            homes.clear();
            for ( const auto & [ other, at ] : model ) {
               homes[ other % slots.slots() ] = other;
            }
         }
      }
   }
   EXPECT_GT( slots.slots(), 2 * Wide::segmentLength );
   for ( const auto & [ key, at ] : model ) {
      EXPECT_EQ( position( slots, key ), static_cast< int >( at ) );
   }
}

} // namespace
