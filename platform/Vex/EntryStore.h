#pragma once

// The entries of a keyed collection by position, in the order of insertion, each live or a hole.
//
// Layout: chunks of 16 KiB, so that growing neither copies what is there nor asks for much memory
// at once, however many entries there are. The first chunk begins small and doubles; small
// collections are that chunk alone.
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
      return ( live_[ at / wordBits ] >> at % wordBits & 1U ) != 0;
   }
   /// The first live position from `at` on whose entry is `wanted`; `end` where there is none.
   /// Looks at 64 marks at a time, and runs over entries side by side at memory speed.
   template < class Wanted >
   std::uint32_t next( std::uint32_t at, std::uint32_t end, const Wanted & wanted ) const noexcept {
      while ( at < end ) {
         const std::uint64_t marks = live_[ at / wordBits ] >> at % wordBits;
         if ( marks == 0 ) {
            at = ( at / wordBits + 1 ) * wordBits;
            continue;
         }
         const auto holes = static_cast< std::uint32_t >( std::countr_zero( marks ) );
         const auto run = static_cast< std::uint32_t >( std::countr_one( marks >> holes ) );
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
   void makeHole( std::uint32_t at ) noexcept {
      live_[ at / wordBits ] &= ~( std::uint64_t{ 1 } << at % wordBits );
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
      live_[ used_ / wordBits ] |= std::uint64_t{ 1 } << used_ % wordBits;
      ++used_;
   }

   /// Moves the live entries together, in order, and gives back chunks that are not needed soon.
   void closeHoles() noexcept {
      std::uint32_t to = 0;
      for ( std::uint32_t from = 0; from < used_; ++from ) {
         if ( live( from ) ) {
            if ( to != from ) {
               ( *this )[ to ] = std::move( ( *this )[ from ] );
            }
            ++to;
         }
      }
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

   Words liveMarks( std::uint32_t capacity ) const {
      auto marks = std::make_unique< std::uint64_t[] >( wordsFor( capacity ) ); // NOLINT: see Words
      std::copy_n( live_.get(), wordsFor( used_ ), marks.get() );
      return marks;
   }

   void growFirstChunk() {
      const std::uint32_t capacity =
         std::min( chunkEntries, std::max( firstCapacity, 2 * capacity_ ) );
      auto first = std::make_unique< Entry[] >( capacity ); // NOLINT(modernize-avoid-c-arrays)
      if ( !live_ || wordsFor( capacity ) != wordsFor( capacity_ ) ) {
         live_ = liveMarks( capacity );
      }
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
         live_ = liveMarks( 2 * chunks * chunkEntries );
         std::move( more_.get(), more_.get() + ( chunks - 1 ), more.get() );
         more_ = std::move( more );
      }
      more_[ chunks - 1 ] = std::move( chunk );
      capacity_ += chunkEntries;
   }

   // Lets go of the values from position `from` on, so that none lives on in a place that is not in
   // use.
   void forget( std::uint32_t from ) noexcept {
      for ( std::uint32_t at = from; at < used_; ++at ) {
         ( *this )[ at ] = Entry();
      }
   }

   // Keeps the first `used` entries; the others have been moved away.
   void truncate( std::uint32_t used ) noexcept {
      forget( used );
      std::fill_n( live_.get(), wordsFor( used_ ), 0 );
      std::fill_n( live_.get(), used / wordBits, ~std::uint64_t{ 0 } );
      if ( used % wordBits != 0 ) {
         live_[ used / wordBits ] = ( std::uint64_t{ 1 } << used % wordBits ) - 1;
      }
      used_ = used;
      while ( capacity_ > chunkEntries && capacity_ - used_ > 2 * chunkEntries ) {
         more_[ capacity_ / chunkEntries - 2 ] = nullptr;
         capacity_ -= chunkEntries;
      }
   }

   Chunk first_;
   std::unique_ptr< Chunk[] >
      more_; // NOLINT(modernize-avoid-c-arrays): the chunks behind the first
   Words live_; // one bit a position; 0: a hole
   std::uint32_t capacity_ = 0;
   std::uint32_t used_ = 0;
};

} // namespace Vex
