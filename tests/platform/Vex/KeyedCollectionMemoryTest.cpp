// Out of memory leaves a keyed collection as it was.

#include "platform/Vex/KeyedCollection.h"
#include "tests/platform/Memory.h"
#include "tests/platform/Vex/TestKey.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <vector>

namespace {

using Key = TestKey< Numbers::dense >;
using Map = Vex::KeyMap< Key, int >;

template < class MapType >
std::vector< int > keysOf( const MapType & map ) {
   std::vector< int > keys;
   keys.reserve( map.size() );
   for ( const auto key : map.keys() ) {
      keys.push_back( key.number );
   }
   return keys;
}

template < class KeyType >
void insertWithoutMemory( int keys, int wantedFailures ) {
   Vex::KeyMap< KeyType, int > map;
   std::vector< int > wanted;
   int failed = 0;
   for ( int key = 0; key < keys; ++key ) {
      failed += Memory::attemptsUntilSuccess< std::bad_alloc >(
         [ & ] { map.put( { key }, key + 1 ); },
         [ & ] {
            ASSERT_EQ( keysOf( map ), wanted );
            ASSERT_FALSE( map.has( { key } ) );
            for ( int other = 0; other < key; ++other ) {
               ASSERT_EQ( map.get( { other } ), other + 1 );
            }
         } );
      wanted.push_back( key );
   }
   EXPECT_GT( failed, wantedFailures );
   EXPECT_EQ( keysOf( map ), wanted );
}

TEST( KeyMapMemoryTest, AnInsertionWithoutMemoryLeavesItAsItWas ) {
   insertWithoutMemory< Key >( 200, 10 );
   insertWithoutMemory< Key >( 20'000, 30 ); // in many pieces of memory
}

TEST( KeyMapMemoryTest, AnInsertionWithoutMemoryAmongKeysFarApartLeavesItAsItWas ) {
   insertWithoutMemory< TestKey< Numbers::strided > >( 5'000, 30 );
}

TEST( KeyMapMemoryTest, AnInsertionWithoutMemoryAmongKeysThatWantTheSameHomeLeavesItAsItWas ) {
   insertWithoutMemory< TestKey< Numbers::fewHomes > >( 200, 10 );
   insertWithoutMemory< TestKey< Numbers::oneHome > >( 5'000, 30 );
}

TEST( KeyMapMemoryTest, AnInsertionWithoutMemoryDuringAPassLeavesItAsItWas ) {
   Map map;
   for ( int key = 0; key < 40; ++key ) {
      map.put( { key }, key );
   }
   int visited = 0;
   int failed = 0;
   for ( const Key key : map.keys() ) {
      ++visited;
      map.erase( key );
      for ( int more = 1; more <= 10; ++more ) {
         const std::size_t size = map.size();
         failed += Memory::attemptsUntilSuccess< std::bad_alloc >(
            [ & ] { map.put( { key.number * 100 + more + 1'000 }, 0 ); },
            [ & ] { ASSERT_EQ( map.size(), size ); } );
      }
   }
   EXPECT_GT( failed, 0 );
   EXPECT_EQ( visited, 40 );
   EXPECT_EQ( map.size(), 400 );
}

TEST( KeyMapMemoryTest, LookingUpOverwritingRemovingAndPassingNeedNoMemory ) {
   Map map;
   for ( int key = 0; key < 1'000; ++key ) {
      map.put( { key }, key );
   }
   const std::uint64_t before = Memory::requests();
   int sum = 0;
   for ( const Key key : map.keys() ) {
      sum += map.get( key );
      map.put( key, -1 );
   }
   for ( int key = 0; key < 1'000; ++key ) {
      map.erase( { key } );
   }
   EXPECT_EQ( Memory::requests() - before, 0 );
   EXPECT_EQ( sum, 999 * 1'000 / 2 );
   EXPECT_TRUE( map.empty() );
}

TEST( KeyMapMemoryTest, AKeyThatComesAndGoesDoesNotLetItGrow ) {
   Map map;
   for ( int key = 0; key < 100; ++key ) {
      map.put( { key }, key );
   }
   std::uint64_t requests = Memory::requests();
   for ( int round = 0; round < 10'000; ++round ) {
      map.erase( { 50 } );
      map.put( { 50 }, round );
   }
   requests = Memory::requests() - requests;
   EXPECT_EQ( requests, 2 ); // for keys and for values, once
   EXPECT_EQ( map.size(), 100 );
   EXPECT_EQ( map.get( { 50 } ), 9'999 );
}

// Once there is room for the entries and as many holes, nothing is asked for or given back.
TEST( KeyMapMemoryTest, KeysOfALargeOneComeAndGoWithoutMemory ) {
   constexpr int size = 30'000;
   Map map;
   const auto allComeAndGo = [ & ] {
      for ( int key = 0; key < size; ++key ) {
         map.erase( { key } );
         map.put( { key }, key );
      }
   };
   allComeAndGo();
   allComeAndGo();
   const std::uint64_t before = Memory::requests();
   for ( int round = 0; round < 5; ++round ) {
      allComeAndGo();
   }
   EXPECT_EQ( Memory::requests() - before, 0 );
   EXPECT_EQ( map.size(), size );
}

TEST( KeyMapMemoryTest, KeysThatWantTheSameHomeComeAndGoWithoutMemory ) {
   constexpr int size = 1'000;
   Vex::KeyMap< TestKey< Numbers::oneHome >, int > map;
   const auto allComeAndGo = [ & ] {
      for ( int key = 0; key < size; ++key ) {
         map.erase( { key } );
         map.put( { key }, key );
      }
   };
   for ( int round = 0; round < 4; ++round ) {
      allComeAndGo();
   }
   const std::uint64_t before = Memory::requests();
   for ( int round = 0; round < 20; ++round ) {
      allComeAndGo();
   }
   EXPECT_EQ( Memory::requests() - before, 0 );
   EXPECT_EQ( map.size(), size );
}

TEST( KeyMapMemoryTest, AKeyThatComesAndGoesAmongFewNeedsNoMemory ) {
   Map map;
   for ( int key = 0; key < 20; ++key ) {
      map.put( { key }, key );
   }
   const std::uint64_t before = Memory::requests();
   for ( int round = 0; round < 5'000; ++round ) {
      map.erase( { 10 } );
      map.put( { 10 }, round );
   }
   EXPECT_EQ( Memory::requests() - before, 0 );
   EXPECT_EQ( map.get( { 10 } ), 4'999 );
}

// As many keys as slots, so that the positions are used up before there are as many holes as keys.
TEST( KeyMapMemoryTest, KeysThatUseUpThePositionsOfTheirSlotsNeedNoMemory ) {
   Vex::KeyMap< NumberKey, int > map;
   for ( std::uint64_t key = 0; key < 16; ++key ) {
      map.put( { key }, 0 );
      map.put( { std::uint64_t{ 1 } << 32U | key }, 0 );
   }
   for ( std::uint64_t key = 16; key < 64; ++key ) {
      map.put( { key }, 0 );
   }
   const auto comeAndGo = [ & ]( int rounds ) {
      for ( int round = 0; round < rounds; ++round ) {
         const std::uint64_t key = 16 + static_cast< std::uint64_t >( round ) % 48;
         map.erase( { key } );
         map.put( { key }, round );
      }
   };
   comeAndGo( 200 );
   const std::uint64_t before = Memory::requests();
   comeAndGo( 5'000 );
   EXPECT_EQ( Memory::requests() - before, 0 );
   EXPECT_EQ( map.size(), 80 );
}

TEST( KeyMapMemoryTest, WhatIsFarTooMuchIsGivenBack ) {
   Map map;
   for ( int key = 0; key < 100'000; ++key ) {
      map.put( { key }, key );
   }
   const std::uint64_t full = Memory::held();
   for ( int key = 10; key < 100'000; ++key ) {
      map.erase( { key } );
   }
   EXPECT_LT( Memory::held(), full - 40 ); // keys and values lie in chunks of 16 KiB
   EXPECT_EQ( keysOf( map ).size(), 10 );
}

} // namespace
