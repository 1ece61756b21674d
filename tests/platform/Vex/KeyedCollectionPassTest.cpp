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

} // namespace
