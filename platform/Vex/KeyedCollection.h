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
// Layout: entries lie in the order of insertion (platform/Vex/EntryStore.h), with their keys in few
// bytes (platform/Vex/StoredKey.h); removed ones leave a hole, and the holes are closed when there
// are many and no pass is under way. Beyond 16 entries an index finds a key
// (platform/Vex/PositionIndex.h); below that a scan of a few cache lines is faster.

#include "platform/Vex/Assert.h"
#include "platform/Vex/CollectionPass.h"
#include "platform/Vex/EntryStore.h"
#include "platform/Vex/PositionIndex.h"
#include "platform/Vex/StoredKey.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>

namespace Vex {

/// The value of a set's entries.
struct NoValue {
   friend bool operator==( NoValue, NoValue ) = default;
};

/// Key needs ==, a default constructor, and hash() unless it is packed (platform/Vex/StoredKey.h);
/// Value needs == and a default constructor.
template < class Key, class Value >
class KeyMap {
 public:
   /// What a pass over entries visits.
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
   bool has( const Key & key ) const noexcept { return place( key ).position != none; }

   /// The value under `key`, or null; valid until the next mutation. Whoever decides about one key
   /// asks for it several times in a row, so the entry that was found last is looked at first.
   const Value * find( const Key & key ) const noexcept {
      if ( foundLast_ != none && entries_[ foundLast_ ].key == Stored::from( key ) ) {
         return &entries_[ foundLast_ ].value;
      }
      const Place found = place( key );
      if ( found.position == none ) {
         return nullptr;
      }
      foundLast_ = found.position;
      return &entries_[ found.position ].value;
   }
   /// A copy of the value under `key`, or a default one.
   Value get( const Key & key ) const {
      const Value * const found = find( key );
      return found != nullptr ? *found : Value();
   }

   /// Inserts or overwrites; false when `key` holds an equal value already.
   bool put( const Key & key, Value value ) {
      const Place found = place( key );
      if ( found.position == none ) {
         append( Stored::from( key ), std::move( value ) );
         return true;
      }
      Value & present = entries_[ found.position ].value;
      if ( present == value ) {
         return false;
      }
      std::swap( present, value ); // the old value dies with the argument
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
      const Place found = place( key );
      if ( found.position == none ) {
         return std::nullopt;
      }
      std::optional< Value > taken( std::exchange( entries_[ found.position ].value, Value() ) );
      entries_.makeHole( found.position );
      foundLast_ = none;
      if ( !index_.empty() ) {
         index_.remove( found.slot );
      }
      --liveCount_;
      closeHoles();
      return taken;
   }
   /// Removes `key`; false when it is absent.
   bool erase( const Key & key ) { return take( key ).has_value(); }

   /// Of an entry, what a pass over keys visits.
   struct ToKey {
      Key operator()( const auto & kept ) const { return Stored::to( kept.key ); }
   };
   /// Of an entry, what a pass over entries visits.
   struct ToEntry {
      Entry operator()( const auto & kept ) const { return { Stored::to( kept.key ), kept.value }; }
   };
   /// One pass, for range-for; see the head of this file.
   CollectionPass< KeyMap, ToKey > keys() const noexcept {
      return CollectionPass< KeyMap, ToKey >( *this );
   }
   /// One pass over the keys that `wanted` accepts, which sees keys and changes nothing.
   template < class Wanted >
   auto keysWhere( Wanted wanted ) const noexcept {
      const auto accepts = [ wanted ]( const Kept & kept ) {
         return wanted( Stored::to( kept.key ) );
      };
      return CollectionPass< KeyMap, ToKey, decltype( accepts ) >( *this, accepts );
   }
   CollectionPass< KeyMap, ToEntry > entries() const noexcept {
      return CollectionPass< KeyMap, ToEntry >( *this );
   }

 private:
   template < class Collection, class Projection, class Wanted >
   friend class CollectionPass;

   using Stored = StoredKey< Key >;
   struct Kept {
      typename Stored::Type key{};
      [[no_unique_address]] Value value{};
   };

   static constexpr std::uint32_t none = PositionIndex::none;
   static constexpr std::uint32_t scanLimit = 16;
   static constexpr std::uint32_t firstSlots = 64;

   using Place = PositionIndex::Place;

   Place place( const Key & key ) const noexcept {
      const auto stored = Stored::from( key );
      if ( index_.empty() ) {
         const std::uint32_t at =
            entries_.scan( [ & ]( const Kept & kept ) { return kept.key == stored; } );
         return { at != entries_.used() ? at : none, none };
      }
      return index_.find( Stored::hash( stored ), [ & ]( std::uint32_t position ) {
         return entries_[ position ].key == stored;
      } );
   }

   // All that can throw comes before the first change that shows.
   void append( const typename Stored::Type & key, Value && value ) {
      if ( index_.empty() ? entries_.used() >= scanLimit : index_.full( entries_.used() ) ) {
         makeIndexRoom();
      }
      entries_.makeRoom();
      if ( !index_.empty() ) {
         index_.add( Stored::hash( key ), entries_.used() );
      }
      entries_.add( Kept{ key, std::move( value ) } );
      ++liveCount_;
   }

   // Closing the holes gives room enough where the index would not be three quarters full of live
   // entries, or where it costs a scan only; otherwise the index is doubled.
   void makeIndexRoom() {
      const std::uint32_t enough =
         index_.empty() ? scanLimit - 1 : index_.load() - index_.load() / 4;
      if ( passes_ == 0 && liveCount_ <= enough ) {
         squeeze();
         return;
      }
      index_ = PositionIndex( index_.empty() ? firstSlots : 2 * index_.slots() );
      if ( passes_ == 0 ) {
         foundLast_ = none;
         entries_.closeHoles( enter() );
      } else {
         entries_.forEachLive( enter() );
      }
   }

   // Only while no pass is under way, because a pass counts on positions.
   void squeeze() noexcept {
      foundLast_ = none;
      if ( index_.empty() ) {
         entries_.closeHoles( []( std::uint32_t /* at */, const Kept & /* kept */ ) {} );
      } else {
         index_.clear();
         entries_.closeHoles( enter() );
      }
   }

   auto enter() noexcept {
      return [ this ]( std::uint32_t at, const Kept & kept ) {
         index_.add( Stored::hash( kept.key ), at );
      };
   }

   // As many holes as live entries are enough to pay for closing them.
   void closeHoles() const noexcept {
      const std::uint32_t holes = entries_.used() - liveCount_;
      if ( passes_ == 0 && holes > scanLimit && holes > liveCount_ ) {
         // Order and content stay the same: what a reader sees is not changed.
         // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
         const_cast< KeyMap & >( *this ).squeeze();
      }
   }

   EntryStore< Kept > entries_;
   PositionIndex index_; // empty: scan
   std::uint32_t liveCount_ = 0;
   mutable std::uint32_t passes_ = 0;
   mutable std::uint32_t foundLast_ = none; // by find(), and still at that position
};

template < class Key >
using KeySet = KeyMap< Key, NoValue >;

} // namespace Vex
