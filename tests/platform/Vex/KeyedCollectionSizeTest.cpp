// Sizes, holes and kinds of keys of keyed collections.

#include "platform/Vex/KeyedCollection.h"
#include "tests/platform/Vex/TestKey.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>

namespace {

using Key = TestKey< Numbers::dense >;

template < class KeyType >
void growAndShrink( int size ) {
   SCOPED_TRACE( size );
   Vex::KeyMap< KeyType, int > map;
   for ( int key = 0; key < size; ++key ) {
      ASSERT_TRUE( map.put( { key }, key + 1 ) );
   }
   for ( int key = 0; key < size; ++key ) {
      ASSERT_EQ( map.get( { key } ), key + 1 );
   }
   ASSERT_FALSE( map.has( { size } ) );
   for ( int key = 0; key < size; key += 2 ) {
      ASSERT_EQ( map.take( { key } ), key + 1 );
   }
   ASSERT_EQ( map.size(), static_cast< std::size_t >( size / 2 ) );
   for ( int key = 0; key < size; ++key ) {
      ASSERT_EQ( map.has( { key } ), key % 2 == 1 ) << key;
   }
   for ( int key = 0; key < size; key += 2 ) {
      ASSERT_TRUE( map.put( { key }, 0 ) );
   }
   int at = 0; // the odd ones have kept their order, the even ones came after them
   for ( const KeyType key : map.keys() ) {
      ASSERT_EQ( key.number, at < size / 2 ? 2 * at + 1 : 2 * ( at - size / 2 ) );
      ++at;
   }
   ASSERT_EQ( at, size );
   for ( int key = 0; key < size; ++key ) {
      ASSERT_TRUE( map.erase( { key } ) );
   }
   ASSERT_TRUE( map.empty() );
}

TEST( KeyMapSizeTest, EverySizeAroundTheStepsOfItsGrowthWorks ) {
   for ( int size = 0; size <= 40; ++size ) {
      growAndShrink< Key >( size );
   }
   for ( const int size : { 63, 64, 65, 100, 127, 128, 129 } ) {
      growAndShrink< Key >( size );
   }
}

TEST( KeyMapSizeTest, KeysThatWantTheSameHomeAreToldApart ) {
   for ( const int size : { 4, 5, 16, 17, 18, 33, 200 } ) {
      growAndShrink< TestKey< Numbers::oneHome > >( size );
      growAndShrink< TestKey< Numbers::fewHomes > >( size );
   }
}

TEST( KeyMapSizeTest, KeysFarApartAreToldApart ) {
   for ( const int size : { 4, 5, 16, 17, 18, 33, 200, 5'000 } ) {
      growAndShrink< TestKey< Numbers::strided > >( size );
   }
}

TEST( KeyMapSizeTest, AHundredThousandEntriesAreFound ) {
   growAndShrink< Key >( 100'000 );
   growAndShrink< TestKey< Numbers::oneHome > >( 100'000 );
}

TEST( KeyMapSizeTest, TheLowestAndTheHighestKeysAreLikeOthers ) {
   Vex::KeySet< NumberKey > set;
   const NumberKey lowest{};
   const NumberKey highest{ 0x7FFFFFFF'3FFFFFFF };
   for ( std::uint64_t key = 1; key < 5'000; ++key ) {
      ASSERT_TRUE( set.insert( { key << 32U | key % 3'000 } ) );
      if ( key % 3 == 0 ) {
         ASSERT_TRUE( set.erase( { key << 32U | key % 3'000 } ) );
      }
      ASSERT_TRUE( set.insert( lowest ) );
      ASSERT_TRUE( set.insert( highest ) );
      ASSERT_FALSE( set.has( { 0x3FFFFFFF } ) );
      ASSERT_TRUE( set.erase( highest ) );
      ASSERT_TRUE( set.erase( lowest ) );
   }
   std::uint64_t wanted = 0;
   for ( const NumberKey key : set.keys() ) {
      do {
         ++wanted;
      } while ( wanted % 3 == 0 );
      ASSERT_EQ( key.number, wanted << 32U | wanted % 3'000 );
   }
   EXPECT_EQ( set.size(), 3'333 );
}

TEST( KeyMapSizeTest, HolesAreClosedWhenThereAreMany ) {
   Vex::KeyMap< Key, int > map;
   for ( int key = 0; key < 10'000; ++key ) {
      map.put( { key }, key );
   }
   for ( int key = 0; key < 9'990; ++key ) {
      map.erase( { key } );
   }
   // A pass costs as much as there are entries, so many passes over ten cost little.
   const int * const first = map.find( { 9'990 } );
   const int * const last = map.find( { 9'999 } );
   EXPECT_LE( last - first, 9 * 2 * 3 );
   int visited = 0;
   for ( const Key key : map.keys() ) {
      EXPECT_GE( key.number, 9'990 );
      ++visited;
   }
   EXPECT_EQ( visited, 10 );
}

} // namespace
