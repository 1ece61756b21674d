#pragma once

// Keyed collections of entities and state machines: KeyMap (key to value) and KeySet (keys only).
//
// Order: of insertion. Overwriting a value keeps the place; what is deleted and inserted again goes
// to the end. Never by address or hash.
// Passes: `for ( auto key : collection.keys() )` visits the entries that were there when the pass
// began and still are when it gets to them, in order. Any mutation during a pass is safe, nested
// passes included; elements are handed out by value. Whoever runs a pass keeps the collection alive
// until the pass ends (asserted): hold a reference to the entity that it belongs to.
// Ownership: a collection owns its values. A value that is taken out or overwritten is released
// after the collection is in order again, so that its destructor may come back here.
// Errors: out of memory throws and leaves the collection as it was; nothing else fails.
// Layout: entries lie dense in the order of insertion; removed ones leave a hole, and the holes are
// closed when there are many and no pass is under way. With room for more than 16 entries, an
// open-addressing index of 32-bit positions finds a key; below that a scan of two cache lines is
// faster.

#include "platform/Vex/Assert.h"
#include "platform/Vex/CollectionPass.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vex {

struct NoValue {
   friend bool operator==( NoValue, NoValue ) = default;
};

/// Key needs ==, a default constructor and hash(); Value needs == and a default constructor.
template < class Key, class Value >
class KeyMap {
 public:
   struct Entry {
      Key key{};
      [[no_unique_address]] Value value{};
   };

   KeyMap() = default;
   KeyMap( const KeyMap & ) = delete;
   KeyMap & operator=( const KeyMap & ) = delete;
   KeyMap( KeyMap && ) = delete;
   KeyMap & operator=( KeyMap && ) = delete;
   ~KeyMap() { VEX_ASSERT( passes_ == 0 ); }

   std::size_t size() const noexcept { return liveCount_; }
   bool empty() const noexcept { return liveCount_ == 0; }
   bool has( const Key & key ) const noexcept { return position( key ) != none; }

   /// The value under `key`, or null; valid until the next mutation.
   const Value * find( const Key & key ) const noexcept {
      const std::uint32_t found = position( key );
      return found != none ? &entries_[ found ].value : nullptr;
   }
   /// A copy of the value under `key`, or a default one.
   Value get( const Key & key ) const {
      const Value * const found = find( key );
      return found != nullptr ? *found : Value();
   }

   /// Inserts or overwrites; false when `key` holds an equal value already.
   bool put( const Key & key, Value value ) {
      const std::uint32_t found = position( key );
      if ( found == none ) {
         append( key, std::move( value ) );
         return true;
      }
      if ( entries_[ found ].value == value ) {
         return false;
      }
      std::swap( entries_[ found ].value, value ); // the old value dies with the argument
      return true;
   }

   /// Inserts a key that carries no value; false when it is there already.
   bool insert( const Key & key )
      requires std::is_same_v< Value, NoValue >
   {
      return put( key, NoValue() );
   }

   /// Removes `key` and returns its value; nothing when it is absent.
   std::optional< Value > take( const Key & key ) {
      const std::uint32_t found = position( key );
      if ( found == none ) {
         return std::nullopt;
      }
      std::optional< Value > taken( std::exchange( entries_[ found ].value, Value() ) );
      live_[ found ] = false;
      --liveCount_;
      closeHoles();
      return taken;
   }
   /// Removes `key`; false when it is absent.
   bool erase( const Key & key ) { return take( key ).has_value(); }

   struct ToKey {
      Key operator()( const Entry & entry ) const { return entry.key; }
   };
   struct ToEntry {
      Entry operator()( const Entry & entry ) const { return entry; }
   };
   /// One pass, for range-for; see the head of this file.
   CollectionPass< KeyMap, ToKey > keys() const noexcept {
      return CollectionPass< KeyMap, ToKey >( *this );
   }
   CollectionPass< KeyMap, ToEntry > entries() const noexcept {
      return CollectionPass< KeyMap, ToEntry >( *this );
   }

 private:
   template < class Collection, class Projection >
   friend class CollectionPass;

   static constexpr std::uint32_t none = std::numeric_limits< std::uint32_t >::max();
   static constexpr std::size_t scanLimit = 16;

   std::uint32_t position( const Key & key ) const noexcept {
      if ( index_.empty() ) {
         for ( std::uint32_t at = 0; at < entries_.size(); ++at ) {
            if ( entries_[ at ].key == key && live_[ at ] ) {
               return at;
            }
         }
         return none;
      }
      const std::size_t mask = index_.size() - 1;
      for ( std::size_t at = key.hash() & mask; index_[ at ] != none; at = ( at + 1 ) & mask ) {
         const std::uint32_t candidate = index_[ at ];
         if ( entries_[ candidate ].key == key && live_[ candidate ] ) {
            return candidate;
         }
      }
      return none;
   }

   void append( const Key & key, Value && value ) {
      if ( entries_.size() == entries_.capacity() ) {
         grow();
      }
      entries_.push_back( Entry{ key, std::move( value ) } );
      live_.push_back( true );
      ++liveCount_;
      if ( !index_.empty() ) {
         indexEntry( static_cast< std::uint32_t >( entries_.size() - 1 ) );
      }
   }

   // Makes room for at least one more entry. All that can throw comes before the first change.
   void grow() {
      const std::size_t used = passes_ == 0 ? liveCount_ : entries_.size();
      const std::size_t room = std::max< std::size_t >( 4, used + used / 2 + 1 );
      VEX_ASSERT( room < none );
      std::vector< Entry > entries;
      entries.reserve( room );
      live_.reserve( entries.capacity() );
      std::vector< std::uint32_t > index;
      if ( room > scanLimit ) {
         index.assign( indexSize( room ), none );
      }
      if ( passes_ == 0 ) {
         squeeze();
      }
      std::move( entries_.begin(), entries_.end(), std::back_inserter( entries ) );
      entries_.swap( entries );
      index_.swap( index );
      indexAll();
   }

   // The smallest power of two that leaves a third of the index free.
   static std::size_t indexSize( std::size_t room ) noexcept {
      std::size_t size = 2 * scanLimit;
      while ( size * 2 < room * 3 ) {
         size *= 2;
      }
      return size;
   }

   // A hole's place is taken over: nobody looks for the hole, and a key that comes and goes among
   // many would leave one place after the other behind.
   void indexEntry( std::uint32_t entry ) noexcept {
      const std::size_t mask = index_.size() - 1;
      std::size_t at = entries_[ entry ].key.hash() & mask;
      while ( index_[ at ] != none && live_[ index_[ at ] ] ) {
         at = ( at + 1 ) & mask;
      }
      index_[ at ] = entry;
   }

   void indexAll() noexcept {
      for ( std::uint32_t at = 0; !index_.empty() && at < entries_.size(); ++at ) {
         indexEntry( at );
      }
   }

   // Moves the live entries together, in order. Invalidates the index; only while no pass is under
   // way, because a pass counts on positions.
   void squeeze() noexcept {
      std::size_t to = 0;
      for ( std::size_t from = 0; from < entries_.size(); ++from ) {
         if ( live_[ from ] ) {
            if ( to != from ) {
               entries_[ to ] = std::move( entries_[ from ] );
            }
            ++to;
         }
      }
      entries_.resize( to );
      live_.assign( to, true );
   }

   // Two holes for each live entry are enough to pay for closing them.
   void closeHoles() const noexcept {
      const std::size_t holes = entries_.size() - liveCount_;
      if ( passes_ == 0 && holes > scanLimit && holes > 2 * liveCount_ ) {
         // Order and content stay the same: what a reader sees is not changed.
         // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
         auto & self = const_cast< KeyMap & >( *this );
         self.squeeze();
         std::fill( self.index_.begin(), self.index_.end(), none );
         self.indexAll();
      }
   }

   std::vector< Entry > entries_;
   std::vector< bool > live_; // one bit an entry; false: a hole
   std::vector< std::uint32_t > index_; // positions in entries_, holes included; empty: scan
   std::size_t liveCount_ = 0;
   mutable std::uint32_t passes_ = 0;
};

template < class Key >
using KeySet = KeyMap< Key, NoValue >;

} // namespace Vex
