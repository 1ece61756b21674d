// Passes over some keys of a collection.

#include "platform/Vex/KeyedCollection.h"
#include "tests/platform/Vex/TestKey.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Key = TestKey< Numbers::dense >;
using Map = Vex::KeyMap< Key, std::string >;

TEST( KeyMapPassTest, APassOverSomeKeysVisitsThoseInOrder ) {
   // Around the 64 positions that are looked at together, with and without holes among them.
   for ( const int size : { 0, 1, 63, 64, 65, 128, 1'500 } ) {
      for ( const int hole : { 0, 3, 70, size } ) {
         Map map;
         std::vector< int > wanted;
         for ( int key = 0; key < size; ++key ) {
            map.put( { key }, "" );
         }
         for ( int key = 0; key < size; ++key ) {
            if ( hole != 0 && ( hole == size || key % hole == 1 ) && key % 5 != 0 ) {
               map.erase( { key } );
            } else if ( key % 5 < 2 ) {
               wanted.push_back( key );
            }
         }
         std::vector< int > visited;
         for ( const Key key :
               map.keysWhere( []( Key candidate ) { return candidate.number % 5 < 2; } ) ) {
            visited.push_back( key.number );
         }
         EXPECT_EQ( visited, wanted ) << size << " keys, holes " << hole;
      }
   }
}

TEST( KeyMapPassTest, APassOverSomeKeysVisitsNothingThatIsDeletedOrInsertedMeanwhile ) {
   Map map;
   for ( int key = 0; key < 200; ++key ) {
      map.put( { key }, "" );
   }
   std::vector< int > visited;
   for ( const Key key :
         map.keysWhere( []( Key candidate ) { return candidate.number % 2 == 0; } ) ) {
      visited.push_back( key.number );
      map.erase( { key.number + 2 } );
      map.put( { key.number + 1'000 }, "" );
   }
   std::vector< int > wanted;
   for ( int key = 0; key < 200; key += 4 ) {
      wanted.push_back( key );
   }
   EXPECT_EQ( visited, wanted );
}

TEST( KeyMapPassTest, APassOverSomeKeysMayFindNone ) {
   Map map;
   for ( int key = 0; key < 100; ++key ) {
      map.put( { key }, "" );
   }
   int visited = 0;
   for ( const Key key : map.keysWhere( []( Key ) { return false; } ) ) {
      visited += key.number + 1;
   }
   EXPECT_EQ( visited, 0 );
}

// No place is used twice during a pass, so positions go far beyond the slots of an index.
TEST( KeyMapPassTest, APassMayLastForManyChanges ) {
   Vex::KeyMap< TestKey< Numbers::fewHomes >, int > map;
   for ( int key = 0; key < 100; ++key ) {
      map.put( { key }, key );
   }
   int visited = 0;
   for ( const auto key : map.keys() ) {
      EXPECT_EQ( key.number, visited );
      ++visited;
      for ( int round = 0; round < 30'000; ++round ) {
         const int other = visited + round % ( 100 - visited + 1 ) - 1;
         const int value = map.get( { other } );
         ASSERT_TRUE( map.erase( { other } ) );
         ASSERT_FALSE( map.has( { other } ) );
         ASSERT_TRUE( map.put( { 100 + other }, value ) );
         ASSERT_TRUE( map.erase( { 100 + other } ) );
         ASSERT_TRUE( map.put( { other }, value ) );
      }
      break; // what was deleted and inserted again is not visited
   }
   EXPECT_EQ( visited, 1 );
   for ( int key = 0; key < 100; ++key ) {
      EXPECT_EQ( map.get( { key } ), key );
      EXPECT_FALSE( map.has( { 100 + key } ) );
   }
   EXPECT_EQ( map.size(), 100 );
}

} // namespace
