#pragma once

// The entries of a keyed collection by position, in the order of insertion, each live or a hole.
//
// Layout: keys lie side by side (platform/Vex/EntryChunks.h). One bit a position tells live entries
// from holes; the first 64 are in the store itself.
// Errors: makeRoom() throws when there is no memory and has changed nothing then; nothing else
// fails.

#include "platform/Vex/EntryChunks.h"
#include "platform/Vex/KeyScan.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

namespace Vex {

/// The value of a set's entries.
struct NoValue {
   friend bool operator==( NoValue, NoValue ) = default;
};

/// Keys are kept as a Number (platform/Vex/StoredKey.h).
template < std::unsigned_integral Number, class Value >
class EntryStore {
 public:
   EntryStore() = default;
   EntryStore( const EntryStore & ) = delete;
   EntryStore & operator=( const EntryStore & ) = delete;
   EntryStore( EntryStore && ) = delete;
   EntryStore & operator=( EntryStore && ) = delete;
   ~EntryStore() { deleteMarks(); }

   /// Positions in use, holes included: 0 up to this.
   std::uint32_t used() const noexcept { return used_; }

   Number key( std::uint32_t at ) const noexcept { return chunks_.key( at ); }
   Value & value( std::uint32_t at ) noexcept { return chunks_.value( at ); }
   const Value & value( std::uint32_t at ) const noexcept { return chunks_.value( at ); }

   /// In the place of a position where there is none.
   static constexpr std::uint32_t none = std::numeric_limits< std::uint32_t >::max();

   /// So many are worth a scan.
   static constexpr std::uint32_t scanned = 2 * keysScanned;
   /// Where `key` is live, or none; where no more are in use, or ever were, than are worth it.
   std::uint32_t scan( Number key ) const noexcept {
      const Number * const keys = chunks_.firstKeys();
      for ( std::uint32_t at = 0; at < used_; at += keysScanned ) {
         const std::uint32_t matches = matchesOfSixteen( keys + at, key );
         const auto live = static_cast< std::uint32_t >( nearMarks_ >> at ) & matches;
         if ( live != 0 ) {
            return at + static_cast< std::uint32_t >( std::countr_zero( live ) );
         }
      }
      return none;
   }
   /// The first live position from `at` on whose key is `wanted`; `end` where there is none.
   /// Looks at 64 marks at a time, and runs over keys side by side at memory speed.
   template < class Wanted >
   std::uint32_t next( std::uint32_t at, std::uint32_t end, const Wanted & wanted ) const noexcept {
      while ( at < end ) {
         const std::uint64_t word = marks_[ at / wordBits ] >> at % wordBits;
         if ( word == 0 ) {
            at = ( at / wordBits + 1 ) * wordBits;
            continue;
         }
         const auto holes = static_cast< std::uint32_t >( std::countr_zero( word ) );
         const auto run = static_cast< std::uint32_t >( std::countr_one( word >> holes ) );
         at += holes;
         const std::uint32_t endOfRun = std::min( end, at + run );
         for ( const Number * key = &chunks_.key( at ); at < endOfRun; ++at, ++key ) {
            if ( wanted( *key ) ) {
               return at;
            }
         }
      }
      return end;
   }
   bool live( std::uint32_t at ) const noexcept {
      return ( marks_[ at / wordBits ] >> at % wordBits & 1U ) != 0;
   }
   /// Calls `visit( position, key )` for each live one, in order.
   template < class Visit >
   void forEachLive( const Visit & visit ) const noexcept {
      for ( std::uint32_t begin = 0; begin < used_; begin += wordBits ) {
         const Number * const keys = &chunks_.key( begin ); // no word spans two chunks
         for ( std::uint64_t word = marks_[ begin / wordBits ]; word != 0; word &= word - 1 ) {
            const auto at = static_cast< std::uint32_t >( std::countr_zero( word ) );
            visit( begin + at, keys[ at ] );
         }
      }
   }

   void makeHole( std::uint32_t at ) noexcept {
      marks_[ at / wordBits ] &= ~( std::uint64_t{ 1 } << at % wordBits );
   }

   /// Makes room for one more entry.
   void makeRoom() {
      if ( used_ == chunks_.capacity() ) [[unlikely]] {
         grow();
      }
   }
   /// Adds a live entry, for which there is room, behind the others.
   void add( Number key, Value && value ) noexcept {
      chunks_.key( used_ ) = key;
      chunks_.value( used_ ) = std::move( value );
      marks_[ used_ / wordBits ] |= std::uint64_t{ 1 } << used_ % wordBits;
      ++used_;
   }

   /// Moves the live entries together, in order, calls `moved( key, from, to )` for each that has
   /// another position now, and gives back chunks that are not needed soon.
   template < class Moved >
   void closeHoles( const Moved & moved ) noexcept {
      std::uint32_t to = 0;
      forEachLive( [ & ]( std::uint32_t from, Number key ) {
         if ( to != from ) {
            chunks_.key( to ) = key;
            chunks_.value( to ) = std::move( chunks_.value( from ) );
            moved( key, from, to );
         }
         ++to;
      } );
      truncate( to );
   }

 private:
   using Chunks = EntryChunks< Number, Value >;

   static constexpr std::uint32_t wordBits = 64;
   static_assert( wordBits <= Chunks::leastRun );

   static constexpr std::uint32_t wordsFor( std::uint32_t entries ) noexcept {
      return ( entries + wordBits - 1 ) / wordBits;
   }

   // Not inline, so that an insertion that finds room is short.
   [[gnu::noinline]] void grow() {
      makeMarks( chunks_.nextCapacity() );
      chunks_.grow();
   }

   // There are marks for the next power of two of what there is room for.
   void makeMarks( std::uint32_t capacity ) {
      const std::uint32_t words = wordsFor( std::bit_ceil( capacity ) );
      if ( words <= wordsFor( std::bit_ceil( chunks_.capacity() ) ) || words == 1 ) {
         return;
      }
      auto marks = std::make_unique< std::uint64_t[] >( words ); // NOLINT(modernize-avoid-c-arrays)
      std::copy_n( marks_, wordsFor( used_ ), marks.get() );
      deleteMarks();
      marks_ = marks.release();
   }
   void deleteMarks() noexcept {
      if ( marks_ != &nearMarks_ ) {
         delete[] marks_;
      }
   }

   // Lets go of the values from position `from` on, so that none lives on in a place that is not in
   // use.
   void forget( std::uint32_t from ) noexcept {
      if constexpr ( !std::is_trivially_destructible_v< Value > ) {
         for ( std::uint32_t at = from; at < used_; ++at ) {
            chunks_.value( at ) = Value();
         }
      }
   }

   // Keeps the first `used` entries; the others have been moved away.
   void truncate( std::uint32_t used ) noexcept {
      forget( used );
      std::fill_n( marks_, wordsFor( used_ ), 0 );
      std::fill_n( marks_, used / wordBits, ~std::uint64_t{ 0 } );
      if ( used % wordBits != 0 ) {
         marks_[ used / wordBits ] = ( std::uint64_t{ 1 } << used % wordBits ) - 1;
      }
      used_ = used;
      chunks_.giveBack( used );
   }

   std::uint64_t * marks_ = &nearMarks_; // one bit a position; 0: a hole. Owned unless near
   // What a scan looks at lies together.
   [[no_unique_address]] Chunks chunks_; // leaves room at its end for what follows
   std::uint32_t used_ = 0;
   std::uint64_t nearMarks_ = 0;
};

} // namespace Vex
