#pragma once

// The entries of a keyed collection by position, in the order of insertion, each live or a hole.
//
// Layout: chunks of 16 KiB, so that growing neither copies what is there nor asks for much memory
// at once, however many entries there are. The first chunk begins small and doubles; small
// collections are that chunk alone. One bit a position tells live entries from holes; the first 64
// are in the store itself.
// Errors: makeRoom() throws when there is no memory and has changed nothing then; nothing else
// fails.

#include "platform/Vex/Assert.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

namespace Vex {

template < class Entry >
class EntryStore {
 public:
   static_assert( std::is_nothrow_move_assignable_v< Entry > );

   EntryStore() = default;
   EntryStore( const EntryStore & ) = delete;
   EntryStore & operator=( const EntryStore & ) = delete;
   EntryStore( EntryStore && ) = delete;
   EntryStore & operator=( EntryStore && ) = delete;
   /// The entries go in order, the first one first.
   ~EntryStore() { forget( 0 ); }

   /// Positions in use, holes included: 0 up to this.
   std::uint32_t used() const noexcept { return used_; }

   Entry & operator[]( std::uint32_t at ) noexcept {
      return at < chunkEntries ? first_[ at ] : more_[ at / chunkEntries - 1 ][ at % chunkEntries ];
   }
   const Entry & operator[]( std::uint32_t at ) const noexcept {
      return at < chunkEntries ? first_[ at ] : more_[ at / chunkEntries - 1 ][ at % chunkEntries ];
   }

   bool live( std::uint32_t at ) const noexcept {
      return ( marks()[ at / wordBits ] >> at % wordBits & 1U ) != 0;
   }
   /// The first live position from `at` on whose entry is `wanted`; `end` where there is none.
   /// Looks at 64 marks at a time, and runs over entries side by side at memory speed.
   template < class Wanted >
   std::uint32_t next( std::uint32_t at, std::uint32_t end, const Wanted & wanted ) const noexcept {
      const std::uint64_t * const marks = this->marks();
      while ( at < end ) {
         const std::uint64_t word = marks[ at / wordBits ] >> at % wordBits;
         if ( word == 0 ) {
            at = ( at / wordBits + 1 ) * wordBits;
            continue;
         }
         const auto holes = static_cast< std::uint32_t >( std::countr_zero( word ) );
         const auto run = static_cast< std::uint32_t >( std::countr_one( word >> holes ) );
         at += holes;
         const std::uint32_t endOfRun = std::min( end, at + run );
         for ( const Entry * entry = &( *this )[ at ]; at < endOfRun; ++at, ++entry ) {
            if ( wanted( *entry ) ) {
               return at;
            }
         }
      }
      return end;
   }
   /// The same from the beginning, in the first chunk: looks at the marks only of those wanted.
   template < class Wanted >
   std::uint32_t scan( const Wanted & wanted ) const noexcept {
      const Entry * const entries = first_.get();
      const std::uint32_t end = std::min( used_, chunkEntries );
      for ( std::uint32_t at = 0; at < end; ++at ) {
         if ( wanted( entries[ at ] ) && live( at ) ) {
            return at;
         }
      }
      return used_;
   }
   /// Calls `visit( position, entry )` for each live one, in order.
   template < class Visit >
   void forEachLive( const Visit & visit ) const noexcept {
      const std::uint64_t * const marks = this->marks();
      for ( std::uint32_t begin = 0; begin < used_; begin += wordBits ) {
         const Entry * const entries = &( *this )[ begin ]; // no word spans two chunks
         for ( std::uint64_t word = marks[ begin / wordBits ]; word != 0; word &= word - 1 ) {
            const auto at = static_cast< std::uint32_t >( std::countr_zero( word ) );
            visit( begin + at, entries[ at ] );
         }
      }
   }

   void makeHole( std::uint32_t at ) noexcept {
      marks()[ at / wordBits ] &= ~( std::uint64_t{ 1 } << at % wordBits );
   }

   /// Makes room for one more entry.
   void makeRoom() {
      if ( used_ < capacity_ ) {
         return;
      }
      if ( capacity_ < chunkEntries ) {
         growFirstChunk();
      } else {
         addChunk();
      }
   }
   /// Adds a live entry, for which there is room, behind the others.
   void add( Entry && entry ) noexcept {
      ( *this )[ used_ ] = std::move( entry );
      marks()[ used_ / wordBits ] |= std::uint64_t{ 1 } << used_ % wordBits;
      ++used_;
   }

   /// Moves the live entries together, in order, calls `moved( position, entry )` for each, and
   /// gives back chunks that are not needed soon.
   template < class Moved >
   void closeHoles( const Moved & moved ) noexcept {
      std::uint32_t to = 0;
      forEachLive( [ & ]( std::uint32_t from, const Entry & /* entry */ ) {
         Entry & entry = ( *this )[ to ];
         if ( to != from ) {
            entry = std::move( ( *this )[ from ] );
         }
         moved( to, entry );
         ++to;
      } );
      truncate( to );
   }

 private:
   using Chunk = std::unique_ptr< Entry[] >; // NOLINT(modernize-avoid-c-arrays): sized at run time
   using Words = std::unique_ptr< std::uint64_t[] >; // NOLINT(modernize-avoid-c-arrays): likewise

   static constexpr std::uint32_t chunkBytes = 16 * 1024;
   static constexpr std::uint32_t wordBits = 64;
   // At least a word of marks, whatever an entry takes, so that no word spans two chunks.
   static constexpr std::uint32_t chunkEntries = std::max< std::uint32_t >(
      wordBits, std::bit_floor( static_cast< std::uint32_t >( chunkBytes / sizeof( Entry ) ) ) );
   static constexpr std::uint32_t firstCapacity = 4;

   static constexpr std::uint32_t wordsFor( std::uint32_t entries ) noexcept {
      return ( entries + wordBits - 1 ) / wordBits;
   }

   const std::uint64_t * marks() const noexcept {
      return farMarks_ ? farMarks_.get() : &nearMarks_;
   }
   std::uint64_t * marks() noexcept { return farMarks_ ? farMarks_.get() : &nearMarks_; }

   void makeMarks( std::uint32_t capacity ) {
      if ( wordsFor( capacity ) > 1 ) {
         auto marks =
            std::make_unique< std::uint64_t[] >( wordsFor( capacity ) ); // NOLINT: see Words
         std::copy_n( this->marks(), wordsFor( used_ ), marks.get() );
         farMarks_ = std::move( marks );
      }
   }

   void growFirstChunk() {
      const std::uint32_t capacity =
         std::min( chunkEntries, std::max( firstCapacity, 2 * capacity_ ) );
      auto first = std::make_unique< Entry[] >( capacity ); // NOLINT(modernize-avoid-c-arrays)
      makeMarks( capacity );
      std::move( first_.get(), first_.get() + used_, first.get() );
      first_ = std::move( first );
      capacity_ = capacity;
   }

   // The tables hold as many chunks as the next power of two.
   void addChunk() {
      const std::uint32_t chunks = capacity_ / chunkEntries;
      VEX_ASSERT( capacity_ < std::numeric_limits< std::uint32_t >::max() / 4 );
      auto chunk = std::make_unique< Entry[] >( chunkEntries ); // NOLINT(modernize-avoid-c-arrays)
      if ( std::has_single_bit( chunks ) ) {
         auto more = std::make_unique< Chunk[] >( 2 * chunks ); // NOLINT(modernize-avoid-c-arrays)
         makeMarks( 2 * chunks * chunkEntries );
         std::move( more_.get(), more_.get() + ( chunks - 1 ), more.get() );
         more_ = std::move( more );
      }
      more_[ chunks - 1 ] = std::move( chunk );
      capacity_ += chunkEntries;
   }

   // Lets go of the values from position `from` on, so that none lives on in a place that is not in
   // use.
   void forget( std::uint32_t from ) noexcept {
      if constexpr ( !std::is_trivially_destructible_v< Entry > ) {
         for ( std::uint32_t at = from; at < used_; ++at ) {
            ( *this )[ at ] = Entry();
         }
      }
   }

   // Keeps the first `used` entries; the others have been moved away. Keeps room for as many again,
   // so that a collection that comes and goes does not ask for memory each time.
   void truncate( std::uint32_t used ) noexcept {
      forget( used );
      std::fill_n( marks(), wordsFor( used_ ), 0 );
      std::fill_n( marks(), used / wordBits, ~std::uint64_t{ 0 } );
      if ( used % wordBits != 0 ) {
         marks()[ used / wordBits ] = ( std::uint64_t{ 1 } << used % wordBits ) - 1;
      }
      used_ = used;
      while ( capacity_ > chunkEntries && capacity_ - used_ > used_ + 2 * chunkEntries ) {
         more_[ capacity_ / chunkEntries - 2 ] = nullptr;
         capacity_ -= chunkEntries;
      }
   }

   Chunk first_;
   std::unique_ptr< Chunk[] >
      more_; // NOLINT(modernize-avoid-c-arrays): the chunks behind the first
   // One bit a position; 0: a hole. The far ones, where there are any, stand for all positions.
   std::uint64_t nearMarks_ = 0;
   Words farMarks_;
   std::uint32_t capacity_ = 0;
   std::uint32_t used_ = 0;
};

} // namespace Vex
