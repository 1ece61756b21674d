#pragma once

// Keyed collections of entities and state machines: KeyMap (key to value) and KeySet (keys only).
//
// Order: of insertion. Overwriting a value keeps the place; what is deleted and inserted again goes
// to the end. Never by address or hash.
// Passes: `for ( auto key : collection.keys() )` visits the entries that were there when the pass
// began and still are when it gets to them, in order. Any mutation during a pass is safe, nested
// passes included; elements are handed out by value. Whoever runs a pass keeps the collection alive
// until the pass ends (asserted): hold a reference to the entity that it belongs to.
// A place in the order is not used again while a pass is under way: what comes and goes meanwhile
// takes memory until it ends.
// Ownership: a collection owns its values. A value that is taken out or overwritten is released
// after the collection is in order again, so that its destructor may come back here; so may those
// of the values that go with the collection, one after the other.
// Errors: out of memory throws and leaves the collection as it was; more than 2^30 places are an
// assertion; nothing else fails.
// Layout: entries lie in the order of insertion (platform/Vex/EntryStore.h), with their keys in few
// bytes (platform/Vex/StoredKey.h); removed ones leave a hole, and the holes are closed when there
// are many and no pass is under way. Up to 32 entries, holes among them, are compared all at once
// (platform/Vex/KeyScan.h). From then on an index finds a key (platform/Vex/PositionIndex.h); it
// stays, so that a collection that empties and fills again finds it there.

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

/// Value needs == and a default constructor.
template < PackedKey Key, class Value >
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
   ~KeyMap() {
      VEX_ASSERT( passes_ == 0 );
      if constexpr ( !std::is_trivially_destructible_v< Value > ) {
         releaseAll();
      }
   }

   std::size_t size() const noexcept { return liveCount_; }
   bool empty() const noexcept { return liveCount_ == 0; }
   bool has( const Key & key ) const noexcept {
      const Stored stored = key.packed();
      const bool home = !index_.empty() && index_.holds( index_.slot( stored ), stored );
      return home || placeElsewhere( stored ) != none;
   }

   /// The value under `key`, or null; valid until the next mutation, or the end of a pass.
   const Value * find( const Key & key ) const noexcept {
      const Stored stored = key.packed();
      if ( !index_.empty() ) {
         if ( const Stored slot = index_.slot( stored ); index_.holds( slot, stored ) ) [[likely]] {
            return &entries_.value( index_.position( slot ) );
         }
      }
      const std::uint32_t found = placeElsewhere( stored );
      return found != none ? &entries_.value( found ) : nullptr;
   }
   /// A copy of the value under `key`, or a default one.
   Value get( const Key & key ) const {
      const Value * const found = find( key );
      return found != nullptr ? *found : Value();
   }

   /// Inserts or overwrites; false when `key` holds an equal value already.
   bool put( const Key & key, Value value ) {
      const Stored stored = key.packed();
      const std::uint32_t found =
         index_.empty() ? entries_.scan( stored ) : index_.find( stored, keyAt() );
      if ( found == none ) {
         append( stored, std::move( value ) );
         return true;
      }
      Value & present = entries_.value( found );
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
      const Stored stored = key.packed(); // first: the key may be part of the value
      const std::uint32_t found =
         index_.empty() ? entries_.scan( stored ) : index_.take( stored, keyAt() );
      if ( found == none ) {
         return std::nullopt;
      }
      std::optional< Value > taken( remove( found ) );
      closeHoles();
      return taken;
   }
   /// Removes `key`; false when it is absent.
   bool erase( const Key & key ) { return take( key ).has_value(); }

   /// One pass, for range-for; see the head of this file.
   CollectionPass< KeyMap, ToKey< Key > > keys() const noexcept {
      return CollectionPass< KeyMap, ToKey< Key > >( *this );
   }
   /// One pass over the keys that `wanted` accepts, which sees keys and changes nothing.
   template < class Wanted >
      requires std::is_nothrow_copy_constructible_v< Wanted >
   auto keysWhere( Wanted wanted ) const noexcept {
      const auto accepts = [ wanted ]( Stored key ) { return wanted( Key::unpacked( key ) ); };
      return CollectionPass< KeyMap, ToKey< Key >, decltype( accepts ) >( *this, accepts );
   }
   CollectionPass< KeyMap, ToEntry< Key, Entry > > entries() const noexcept {
      return CollectionPass< KeyMap, ToEntry< Key, Entry > >( *this );
   }

 private:
   template < class Collection, class Projection, class Wanted >
   friend class CollectionPass;

   using Stored = StoredKey< Key >;
   using Index = PositionIndex< Stored >;

   static constexpr std::uint32_t none = Index::none;
   static constexpr std::uint32_t scanLimit = EntryStore< Stored, Value >::scanned;
   static constexpr std::uint32_t firstSlots = 64;
   static constexpr std::uint32_t fewHoles = 16; // not worth closing

   // The place of a key that is not found at home. Not inline, so that finding one there is.
   [[gnu::noinline]] std::uint32_t placeElsewhere( Stored key ) const noexcept {
      return index_.empty() ? entries_.scan( key ) : index_.findAway( key, keyAt() );
   }
   auto keyAt() const noexcept {
      return [ this ]( std::uint32_t position ) { return entries_.key( position ); };
   }

   // Of an entry that the index has no more.
   Value remove( std::uint32_t position ) noexcept {
      entries_.makeHole( position );
      --liveCount_;
      return std::exchange( entries_.value( position ), Value() );
   }

   // The values go in order, each after its entry, and whatever their destructors do here.
   void releaseAll() noexcept {
      ++passes_; // so that nothing moves
      for ( std::uint32_t at = 0; at < entries_.used(); ++at ) {
         if ( entries_.live( at ) ) {
            if ( !index_.empty() ) {
               index_.take( entries_.key( at ), keyAt() );
            }
            static_cast< void >( remove( at ) );
         }
      }
   }

   // All that can throw comes before the first change that shows.
   void append( Stored key, Value && value ) {
      VEX_ASSERT( isStoredKey( key ) );
      Stored * const home = index_.empty() ? nullptr : index_.freeHome( key, entries_.used() );
      if ( home != nullptr ) [[likely]] {
         entries_.makeRoom();
         index_.enter( *home, key, entries_.used() );
      } else {
         makeRoom( key );
      }
      entries_.add( key, std::move( value ) );
      ++liveCount_;
   }

   // Makes room where there may be none in the index, and enters the key there.
   [[gnu::noinline]] void makeRoom( Stored key ) {
      if ( index_.empty() && entries_.used() >= scanLimit ) {
         endScanning();
      } else if ( !index_.empty() && passes_ == 0 && !index_.hasPosition( entries_.used() ) ) {
         squeeze();
      }
      if ( index_.empty() ) {
         entries_.makeRoom();
         return;
      }
      index_.makeRoom( key, entries_.used(), keyAt() );
      entries_.makeRoom();
      index_.add( key, entries_.used() );
   }

   // Closing the holes gives room enough where a quarter would be free; otherwise there will be an
   // index.
   [[gnu::noinline]] void endScanning() {
      if ( passes_ == 0 && liveCount_ <= scanLimit - scanLimit / 4 ) {
         squeeze();
         return;
      }
      index_ = Index( firstSlots, entries_ );
   }

   // Only while no pass is under way, because a pass counts on positions.
   [[gnu::noinline]] void squeeze() noexcept {
      entries_.closeHoles( [ this ]( Stored key, std::uint32_t from, std::uint32_t to ) {
         if ( !index_.empty() ) {
            index_.move( key, from, to );
         }
      } );
   }

   // Almost as many holes as live entries are enough to pay for closing them.
   void closeHoles() const noexcept {
      const std::uint32_t holes = entries_.used() - liveCount_;
      if ( passes_ == 0 && holes > fewHoles && holes > liveCount_ - liveCount_ / 8 ) [[unlikely]] {
         // Order and content stay the same: what a reader sees is not changed.
         // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
         const_cast< KeyMap & >( *this ).squeeze();
      }
   }

   // In this order what finding a key looks at fits one cache line: a switch has many small ones.
   EntryStore< Stored, Value > entries_;
   std::uint32_t liveCount_ = 0;
   mutable std::uint32_t passes_ = 0;
   Index index_; // empty: scan
};

template < PackedKey Key >
using KeySet = KeyMap< Key, NoValue >;

} // namespace Vex
