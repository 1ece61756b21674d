#include "platform/Vex/KeyedCollection.h"

#include "platform/Vex/Ptr.h"
#include "tests/platform/Vex/TestKey.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Key = TestKey< Numbers::dense >;
using Map = Vex::KeyMap< Key, std::string >;

template < class Collection >
std::vector< int > keysOf( const Collection & collection ) {
   std::vector< int > keys;
   for ( const auto key : collection.keys() ) {
      keys.push_back( key.number );
   }
   return keys;
}

// A map of these keys, each with its number as its value.
class KeyMapTest : public testing::Test {
 protected:
   void fill( int count ) {
      for ( int key = 1; key <= count; ++key ) {
         map.put( { key }, std::to_string( key ) );
      }
   }

   // Runs a pass and does `visit` at each key; returns the keys visited.
   std::vector< int > passed( const std::function< void( int key ) > & visit ) {
      std::vector< int > visited;
      for ( const Key key : map.keys() ) {
         visited.push_back( key.number );
         visit( key.number );
      }
      return visited;
   }

   Map map;
};

TEST_F( KeyMapTest, IsEmptyAtFirst ) {
   EXPECT_TRUE( map.empty() );
   EXPECT_EQ( map.size(), 0 );
   EXPECT_FALSE( map.has( { 1 } ) );
   EXPECT_EQ( map.find( { 1 } ), nullptr );
   EXPECT_THAT( keysOf( map ), IsEmpty() );
}

TEST_F( KeyMapTest, FindsWhatWasPutAndADefaultForWhatWasNot ) {
   EXPECT_TRUE( map.put( { 7 }, "seven" ) );
   EXPECT_TRUE( map.has( { 7 } ) );
   ASSERT_NE( map.find( { 7 } ), nullptr );
   EXPECT_EQ( *map.find( { 7 } ), "seven" );
   EXPECT_EQ( map.get( { 7 } ), "seven" );
   EXPECT_EQ( map.get( { 8 } ), "" );
   EXPECT_EQ( map.size(), 1 );
}

TEST_F( KeyMapTest, ADefaultKeyAndADefaultValueAreAnEntryLikeAnyOther ) {
   EXPECT_TRUE( map.put( {}, "" ) );
   EXPECT_TRUE( map.has( {} ) );
   EXPECT_EQ( map.take( {} ), "" );
   EXPECT_FALSE( map.has( {} ) );
}

TEST_F( KeyMapTest, IteratesInTheOrderOfInsertion ) {
   for ( const int key : { 30, 10, 20 } ) {
      map.put( { key }, "" );
   }
   EXPECT_THAT( keysOf( map ), ElementsAre( 30, 10, 20 ) );
}

TEST_F( KeyMapTest, OverwritingKeepsThePlace ) {
   fill( 3 );
   EXPECT_TRUE( map.put( { 2 }, "two" ) );
   EXPECT_THAT( keysOf( map ), ElementsAre( 1, 2, 3 ) );
   EXPECT_EQ( map.get( { 2 } ), "two" );
   EXPECT_EQ( map.size(), 3 );
}

TEST_F( KeyMapTest, PuttingAnEqualValueChangesNothing ) {
   fill( 3 );
   EXPECT_FALSE( map.put( { 2 }, "2" ) );
   EXPECT_EQ( map.size(), 3 );
}

TEST_F( KeyMapTest, DeletedAndInsertedAgainGoesToTheEnd ) {
   fill( 3 );
   EXPECT_TRUE( map.erase( { 1 } ) );
   EXPECT_TRUE( map.put( { 1 }, "1" ) );
   EXPECT_THAT( keysOf( map ), ElementsAre( 2, 3, 1 ) );
}

TEST_F( KeyMapTest, TakeReturnsTheValueAndRemovesTheKey ) {
   fill( 3 );
   EXPECT_EQ( map.take( { 2 } ), "2" );
   EXPECT_FALSE( map.has( { 2 } ) );
   EXPECT_EQ( map.size(), 2 );
   EXPECT_THAT( keysOf( map ), ElementsAre( 1, 3 ) );
}

TEST_F( KeyMapTest, TakingAnAbsentKeyIsANoOp ) {
   fill( 2 );
   EXPECT_EQ( map.take( { 3 } ), std::nullopt );
   EXPECT_FALSE( map.erase( { 3 } ) );
   map.erase( { 1 } );
   EXPECT_FALSE( map.erase( { 1 } ) );
   EXPECT_EQ( map.size(), 1 );
}

TEST_F( KeyMapTest, EntriesHandOutKeyAndValue ) {
   fill( 2 );
   std::string seen;
   for ( const auto & [ key, value ] : map.entries() ) {
      seen += std::to_string( key.number ) + "=" + value + " ";
   }
   EXPECT_EQ( seen, "1=1 2=2 " );
}

TEST_F( KeyMapTest, WhatWasFoundIsNotFoundOnceItIsGone ) {
   fill( 3 );
   ASSERT_NE( map.find( { 2 } ), nullptr );
   map.erase( { 2 } );
   EXPECT_EQ( map.find( { 2 } ), nullptr );
}

TEST_F( KeyMapTest, WhatWasFoundIsFoundWhereItHasMovedTo ) {
   for ( const int size : { 20, 17, 100 } ) { // scanned, about to get an index, and with one
      Vex::KeyMap< Key, int > moving;
      for ( int key = 0; key < size; ++key ) {
         moving.put( { key }, key );
         if ( key % 3 != 0 ) {
            moving.erase( { key - 1 } );
         }
         const int * const found = moving.find( { key } );
         ASSERT_NE( found, nullptr );
         ASSERT_EQ( *found, key );
         ASSERT_EQ( moving.find( { key } ), found );
      }
      for ( int key = 0; key < 10 * size; ++key ) { // moves what stays to the front
         moving.put( { -1 }, key );
         ASSERT_EQ( moving.get( { size - 1 } ), size - 1 );
         moving.erase( { -1 } );
      }
   }
}

TEST_F( KeyMapTest, AKeyMayBePartOfTheValueThatItTakes ) {
   for ( const int size : { 20, 100 } ) { // scanned, and with an index
      Vex::KeyMap< Key, Key > keys;
      for ( int key = 0; key < size; ++key ) {
         keys.put( { key }, { key } );
      }
      EXPECT_TRUE( keys.erase( *keys.find( { 5 } ) ) );
      for ( int key = -1; key < size; ++key ) {
         EXPECT_EQ( keys.has( { key } ), key >= 0 && key != 5 ) << key;
      }
   }
}

TEST_F( KeyMapTest, APointerToAValueSeesItOverwritten ) {
   fill( 1 );
   const std::string * const value = map.find( { 1 } );
   map.put( { 1 }, "one" );
   EXPECT_EQ( map.find( { 1 } ), value );
   EXPECT_EQ( *value, "one" );
}

TEST( KeySetTest, KnowsItsKeysOnce ) {
   Vex::KeySet< Key > set;
   EXPECT_TRUE( set.insert( { 2 } ) );
   EXPECT_TRUE( set.insert( { 1 } ) );
   EXPECT_FALSE( set.insert( { 2 } ) );
   EXPECT_EQ( set.size(), 2 );
   EXPECT_THAT( keysOf( set ), ElementsAre( 2, 1 ) );
   EXPECT_TRUE( set.erase( { 2 } ) );
   EXPECT_FALSE( set.has( { 2 } ) );
   EXPECT_TRUE( set.has( { 1 } ) );
}

TEST( KeySetTest, AnEntryWithoutAValueTakesNoMoreRoomThanItsKey ) {
   EXPECT_EQ( sizeof( Vex::KeySet< Key >::Entry ), sizeof( Key ) );
}

// --- passes ---

TEST_F( KeyMapTest, APassMayDeleteTheCurrentEntry ) {
   fill( 5 );
   EXPECT_THAT( passed( [ & ]( int key ) { map.erase( { key } ); } ),
                ElementsAre( 1, 2, 3, 4, 5 ) );
   EXPECT_TRUE( map.empty() );
}

TEST_F( KeyMapTest, APassDoesNotVisitALaterEntryThatWasDeleted ) {
   fill( 5 );
   EXPECT_THAT( passed( [ & ]( int key ) {
                   map.erase( { key + 1 } );
                   map.erase( { key + 2 } );
                } ),
                ElementsAre( 1, 4 ) );
   EXPECT_THAT( keysOf( map ), ElementsAre( 1, 4 ) );
}

TEST_F( KeyMapTest, DeletingAnEarlierEntryDoesNotDisturbAPass ) {
   fill( 5 );
   EXPECT_THAT( passed( [ & ]( int key ) { map.erase( { key - 1 } ); } ),
                ElementsAre( 1, 2, 3, 4, 5 ) );
   EXPECT_THAT( keysOf( map ), ElementsAre( 5 ) );
}

TEST_F( KeyMapTest, APassDoesNotVisitWhatIsInsertedMeanwhile ) {
   fill( 3 );
   EXPECT_THAT( passed( [ & ]( int key ) {
                   for ( int more = 1; more <= 100; ++more ) {
                      map.put( { key * 1000 + more }, "new" );
                   }
                } ),
                ElementsAre( 1, 2, 3 ) );
   EXPECT_EQ( map.size(), 303 );
   EXPECT_EQ( keysOf( map )[ 3 ], 1001 );
}

TEST_F( KeyMapTest, APassDoesNotVisitWhatIsDeletedAndInsertedAgainAheadOfIt ) {
   fill( 4 );
   EXPECT_THAT( passed( [ & ]( int key ) {
                   if ( key == 1 ) {
                      map.erase( { 3 } );
                      map.put( { 3 }, "3" );
                   }
                } ),
                ElementsAre( 1, 2, 4 ) );
   EXPECT_THAT( keysOf( map ), ElementsAre( 1, 2, 4, 3 ) );
}

TEST_F( KeyMapTest, APassVisitsAnEntryOnceThoughItIsDeletedAndInsertedAgainBehindIt ) {
   fill( 3 );
   EXPECT_THAT( passed( [ & ]( int key ) {
                   map.erase( { key } );
                   map.put( { key }, "again" );
                } ),
                ElementsAre( 1, 2, 3 ) );
   EXPECT_THAT( keysOf( map ), ElementsAre( 1, 2, 3 ) );
}

TEST_F( KeyMapTest, APassSeesAValueThatIsOverwrittenAheadOfIt ) {
   fill( 3 );
   std::string seen;
   for ( const auto & [ key, value ] : map.entries() ) {
      map.put( { key.number + 1 }, "new" );
      seen += value + " ";
   }
   EXPECT_EQ( seen, "1 new new " );
}

TEST_F( KeyMapTest, APassKeepsTheEntryThatItHasHandedOut ) {
   fill( 1 );
   for ( const auto & entry : map.entries() ) {
      map.erase( { 1 } );
      for ( int key = 2; key < 100; ++key ) {
         map.put( { key }, "new" );
      }
      EXPECT_EQ( entry.value, "1" );
   }
}

TEST_F( KeyMapTest, ACollectionMayBeEmptiedAndFilledAgainDuringAPass ) {
   fill( 50 );
   EXPECT_THAT( passed( [ & ]( int ) {
                   for ( int key = 1; key <= 50; ++key ) {
                      map.erase( { key } );
                   }
                   fill( 50 );
                } ),
                ElementsAre( 1 ) );
   EXPECT_EQ( map.size(), 50 );
   EXPECT_EQ( keysOf( map ).front(), 1 );
   EXPECT_EQ( keysOf( map ).back(), 50 );
}

TEST_F( KeyMapTest, AnInnerPassMayChangeWhatTheOuterOneHasYetToVisit ) {
   fill( 6 );
   std::string seen;
   for ( const Key outer : map.keys() ) {
      seen += std::to_string( outer.number ) + ":";
      for ( const Key inner : map.keys() ) {
         seen += std::to_string( inner.number );
         if ( inner.number == outer.number + 1 ) {
            map.erase( inner );
            map.put( { outer.number + 10 }, "new" );
         }
      }
      seen += " ";
   }
   EXPECT_EQ( seen, "1:123456 3:1345611 5:13561113 " );
   EXPECT_THAT( keysOf( map ), ElementsAre( 1, 3, 5, 11, 13, 15 ) );
}

TEST_F( KeyMapTest, APassThatIsLeftEarlyLetsTheCollectionCloseItsHolesAgain ) {
   fill( 1000 );
   for ( const Key key : map.keys() ) {
      for ( int erased = key.number; erased < 990; ++erased ) {
         map.erase( { erased } );
      }
      break;
   }
   EXPECT_EQ( map.size(), 11 );
   EXPECT_FALSE( map.has( { 5 } ) );
   // Side by side again, as far apart as there are others between.
   EXPECT_EQ( map.find( { 1000 } ) - map.find( { 990 } ), 10 );
}

TEST( KeyMapDeathTest, AKeyThatUsesABitOfTheIndexIsAnAssertion ) {
   Vex::KeySet< NumberKey > set;
   for ( const int bit : { 30, 31, 63 } ) {
      EXPECT_DEATH( set.insert( { std::uint64_t{ 1 } << bit } ), "isStoredKey" );
   }
   EXPECT_TRUE( set.insert( { 0x7FFFFFFF'3FFFFFFF } ) );
}

TEST( KeyMapDeathTest, ACollectionThatIsDestroyedDuringAPassIsAnAssertion ) {
   EXPECT_DEATH(
      {
         auto map = std::make_unique< Map >();
         map->put( { 1 }, "" );
         const auto pass = map->keys();
         static_cast< void >( pass.begin() );
         map.reset();
         std::abort(); // so that nothing seems to use the pass after the collection has gone
      },
      "assertion failed: passes_ == 0" );
}

// --- values that come back ---

// Does something when it is destroyed.
class Visitor final : public Vex::Object {
 public:
   explicit Visitor( std::function< void() > onDeath ) : onDeath_( std::move( onDeath ) ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Visitor" };
      return type;
   }

 private:
   ~Visitor() override { onDeath_(); }

   std::function< void() > onDeath_;
};

class ComingBackTest : public testing::Test {
 protected:
   void put( int key, std::function< void() > onDeath ) {
      map.put( { key }, Vex::make< Visitor >( std::move( onDeath ) ) );
   }

   Vex::KeyMap< Key, Vex::Ptr< Visitor > > map;
};

TEST_F( ComingBackTest, ADeletedValueFindsTheCollectionInOrder ) {
   bool gone = false;
   put( 1, [ & ] { gone = !map.has( { 1 } ) && map.size() == 1; } );
   put( 2, [] {} );
   map.erase( { 1 } );
   EXPECT_TRUE( gone );
}

TEST_F( ComingBackTest, ADeletedValueMayInsertItsKeyAgain ) {
   put( 1, [ & ] { put( 1, [] {} ); } );
   put( 2, [] {} );
   EXPECT_TRUE( map.erase( { 1 } ) );
   EXPECT_THAT( keysOf( map ), ElementsAre( 2, 1 ) );
}

TEST_F( ComingBackTest, ADeletedValueMayDeleteAllTheOthersDuringAPass ) {
   for ( int key = 1; key <= 40; ++key ) {
      put( key, [ this, key ] {
         if ( key < 40 ) {
            map.erase( { key + 1 } );
         }
      } );
   }
   int visited = 0;
   for ( const Key key : map.keys() ) {
      ++visited;
      map.erase( key );
   }
   EXPECT_EQ( visited, 1 );
   EXPECT_TRUE( map.empty() );
}

TEST_F( ComingBackTest, AnOverwrittenValueFindsTheNewOneInItsPlace ) {
   const auto next = Vex::make< Visitor >( [] {} );
   bool found = false;
   put( 1, [ & ] { found = map.get( { 1 } ) == next; } );
   map.put( { 1 }, next );
   EXPECT_TRUE( found );
   map.erase( { 1 } );
}

TEST_F( ComingBackTest, AnOverwrittenValueMayFillTheCollection ) {
   put( 1, [ & ] {
      for ( int key = 2; key <= 100; ++key ) {
         put( key, [] {} );
      }
   } );
   EXPECT_TRUE( map.put( { 1 }, nullptr ) );
   EXPECT_EQ( map.size(), 100 );
   EXPECT_EQ( map.get( { 1 } ), nullptr );
}

// A value that does something when it goes.
using Last = std::shared_ptr< void >;

Last last( std::function< void() > act ) {
   return { nullptr, [ act = std::move( act ) ]( void * /* none */ ) { act(); } };
}

TEST( KeyMapReleaseTest, AValueThatGoesWithTheCollectionFindsItselfGone ) {
   int found = 0;
   {
      Vex::KeyMap< Key, Last > map;
      for ( int key = 0; key < 100; ++key ) {
         map.put( { key }, last( [ &map, &found, key ] {
                     found += map.has( { key } ) ? 1 : 0;
                     EXPECT_EQ( map.size(), static_cast< std::size_t >( 99 - key ) );
                  } ) );
      }
   }
   EXPECT_EQ( found, 0 );
}

TEST( KeyMapReleaseTest, AValueThatGoesWithTheCollectionMayChangeIt ) {
   int gone = 0;
   {
      Vex::KeyMap< Key, Last > map;
      const auto count = [ &gone ] { ++gone; };
      for ( int key = 0; key < 200; ++key ) {
         map.put( { key }, last( [ &map, &count, key ] {
                     count();
                     map.erase( { ( key + 7 ) % 200 } );
                     if ( key == 150 ) {
                        for ( int other = 0; other < 190; ++other ) {
                           map.erase( { other } );
                        }
                        map.put( { 1'000 }, last( count ) );
                     }
                  } ) );
      }
   }
   EXPECT_EQ( gone, 201 );
}

TEST( KeyMapReleaseTest, ValuesGoWithTheCollectionInTheOrderOfInsertion ) {
   std::vector< int > gone;
   std::vector< int > wanted;
   {
      Vex::KeyMap< Key, Vex::Ptr< Visitor > > map;
      for ( int key = 3'000; key > 0; --key ) {
         map.put( { key }, Vex::make< Visitor >( [ &gone, key ] { gone.push_back( key ); } ) );
         wanted.push_back( key );
      }
   }
   EXPECT_EQ( gone, wanted );
}

} // namespace
