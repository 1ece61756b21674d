// Keyed collections against a plain list of pairs, with passes within passes.

#include "platform/Vex/KeyedCollection.h"
#include "tests/platform/Seed.h"
#include "tests/platform/Vex/TestKey.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <utility>
#include <vector>

namespace {

// The same in the most simple way. Each insertion has a number, by which a pass knows what was
// there when it began.
class Model {
 public:
   struct Entry {
      int key;
      int value;
      std::uint64_t insertion;
   };

   Entry * find( int key ) {
      const auto found = std::ranges::find( entries, key, &Entry::key );
      return found != entries.end() ? &*found : nullptr;
   }

   bool put( int key, int value ) {
      if ( Entry * const entry = find( key ) ) {
         return std::exchange( entry->value, value ) != value;
      }
      entries.push_back( { key, value, ++insertions } );
      return true;
   }

   std::optional< int > take( int key ) {
      const auto found = std::ranges::find( entries, key, &Entry::key );
      if ( found == entries.end() ) {
         return std::nullopt;
      }
      const int value = found->value;
      entries.erase( found );
      return value;
   }

   // The first entry after the insertion `after` that is no later than `last`.
   const Entry * next( std::uint64_t after, std::uint64_t last ) const {
      const auto found = std::ranges::find_if( entries, [ & ]( const Entry & entry ) {
         return entry.insertion > after && entry.insertion <= last;
      } );
      return found != entries.end() ? &*found : nullptr;
   }

   std::vector< Entry > entries;
   std::uint64_t insertions = 0;
};

template < Numbers numbers >
class Play {
 public:
   Play( std::uint64_t seed, int keys ) : random_( seed ), keys_( keys ) {}

   void run( int steps ) {
      for ( left_ = steps; left_ > 0 && !testing::Test::HasFailure(); ) {
         step( 0 );
      }
      pass( 3 ); // a last one over what is left, without a step
   }

 private:
   int upTo( int limit ) { return std::uniform_int_distribution< int >( 0, limit - 1 )( random_ ); }

   void step( int depth ) {
      --left_;
      const int key = upTo( keys_ );
      switch ( upTo( 12 ) ) {
      case 0:
         if ( depth < 3 ) {
            pass( depth );
         }
         break;
      case 1:
         if ( upTo( 20 ) == 0 ) {
            clear();
         }
         break;
      case 2:
      case 3:
      case 4:
      case 5:
         EXPECT_EQ( map_.take( { key } ), model_.take( key ) );
         break;
      case 6:
         EXPECT_EQ( map_.has( { key } ), model_.find( key ) != nullptr );
         break;
      case 7:
         EXPECT_EQ( map_.get( { key } ), model_.find( key ) ? model_.find( key )->value : 0 );
         break;
      case 8:
         growing_ = upTo( 2 ) == 0;
         break;
      case 9:
         if ( !growing_ ) {
            EXPECT_EQ( map_.erase( { key } ), model_.take( key ).has_value() );
            break;
         }
         [[fallthrough]];
      case 10:
      case 11: {
         const int value = upTo( 3 );
         EXPECT_EQ( map_.put( { key }, value ), model_.put( key, value ) );
         break;
      }
      }
      EXPECT_EQ( map_.size(), model_.entries.size() );
   }

   void clear() {
      for ( int key = 0; key < keys_; ++key ) {
         EXPECT_EQ( map_.take( { key } ), model_.take( key ) );
      }
   }

   void pass( int depth ) {
      const std::uint64_t last = model_.insertions;
      std::uint64_t at = 0;
      for ( const auto & entry : map_.entries() ) {
         const Model::Entry * const wanted = model_.next( at, last );
         ASSERT_NE( wanted, nullptr ) << "key " << entry.key.number << " visited";
         ASSERT_EQ( entry.key.number, wanted->key );
         ASSERT_EQ( entry.value, wanted->value );
         at = wanted->insertion;
         for ( int steps = upTo( 4 ); steps > 0 && left_ > 0 && depth < 3; --steps ) {
            step( depth + 1 );
         }
         if ( upTo( 200 ) == 0 && depth < 3 ) {
            return; // left early
         }
      }
      const Model::Entry * const missed = model_.next( at, last );
      ASSERT_EQ( missed, nullptr ) << "key " << missed->key << " not visited";
   }

   std::mt19937_64 random_;
   int keys_;
   int left_ = 0;
   bool growing_ = true;
   Vex::KeyMap< TestKey< numbers >, int > map_;
   Model model_;
};

template < Numbers numbers >
void play( std::uint64_t usualSeed, int keys, int steps ) {
   SCOPED_TRACE( seedNote( usualSeed ) );
   Play< numbers >( seed( usualSeed ), keys ).run( steps );
}

TEST( KeyMapRandomTest, AgreesWithAListOfPairsWhileItIsScanned ) {
   play< Numbers::dense >( 1, 8, 20'000 );
}

TEST( KeyMapRandomTest, AgreesWithAListOfPairsAroundTheFirstIndex ) {
   play< Numbers::dense >( 2, 24, 20'000 );
}

TEST( KeyMapRandomTest, AgreesWithAListOfPairsOfManyKeys ) {
   play< Numbers::dense >( 3, 300, 30'000 );
}

TEST( KeyMapRandomTest, AgreesWithAListOfPairsOfThousandsOfKeys ) {
   play< Numbers::dense >( 8, 6'000, 60'000 );
   play< Numbers::oneHome >( 9, 3'000, 40'000 );
}

TEST( KeyMapRandomTest, AgreesWithAListOfPairsOfCollidingKeys ) {
   play< Numbers::fewHomes >( 4, 60, 20'000 );
   play< Numbers::oneHome >( 5, 60, 10'000 );
}

TEST( KeyMapRandomTest, AgreesWithAListOfPairsOfKeysFarApart ) {
   play< Numbers::strided >( 6, 24, 20'000 );
   play< Numbers::strided >( 7, 300, 30'000 );
}

} // namespace
