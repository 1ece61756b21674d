#pragma once

// The keys and values of a keyed collection by position, in chunks of at most 16 KiB, or of 64
// large values, so that growing neither copies what is there nor asks for much memory at once,
// however many there are. The first chunk begins small and doubles; small collections are that
// chunk alone.
//
// Layout: a chunk is one piece of memory, its values before its keys, which lie side by side,
// because passes and scans look for keys alone. Values without content take no memory.
// Errors: grow() throws when there is no memory and has changed nothing then; nothing else
// fails.

#include "platform/Vex/Assert.h"
#include "platform/Vex/KeyScan.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace Vex {

template < std::unsigned_integral Number, class Value >
class EntryChunks {
 public:
   static_assert( std::is_nothrow_default_constructible_v< Value > );
   static_assert( std::is_nothrow_move_constructible_v< Value > );
   static_assert( std::is_nothrow_move_assignable_v< Value > );
   static_assert( std::is_nothrow_destructible_v< Value > );
   static_assert( alignof( Value ) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__ );

   static constexpr std::size_t chunkBytes = 16UL * 1024;
   static constexpr std::size_t valueBytes = std::is_empty_v< Value > ? 0 : sizeof( Value );
   /// At least so many keys lie side by side from each multiple of it on.
   static constexpr std::uint32_t leastRun = 64;
   static constexpr std::uint32_t chunkLength =
      std::max< std::uint32_t >( leastRun,
                                 std::bit_floor( static_cast< std::uint32_t >(
                                    chunkBytes / ( sizeof( Number ) + valueBytes ) ) ) );

   EntryChunks() = default;
   EntryChunks( const EntryChunks & ) = delete;
   EntryChunks & operator=( const EntryChunks & ) = delete;
   EntryChunks( EntryChunks && ) = delete;
   EntryChunks & operator=( EntryChunks && ) = delete;
   ~EntryChunks() {
      for ( std::uint32_t chunk = capacity_ / chunkLength; chunk > 1; --chunk ) {
         destroy( more_[ chunk - 2 ], chunkLength );
      }
      destroy( first_, std::min( capacity_, chunkLength ) );
   }

   /// The keys of the first chunk, sixteen at least; null as long as there was never room.
   const Number * firstKeys() const noexcept { return firstKeys_; }
   Number & key( std::uint32_t at ) noexcept {
      return at < chunkLength
                ? firstKeys_[ at ]
                : keysOf( more_[ at / chunkLength - 1 ], chunkLength )[ at % chunkLength ];
   }
   const Number & key( std::uint32_t at ) const noexcept {
      return const_cast< EntryChunks & >( *this ).key( at ); // NOLINT(*-const-cast): the same
   }
   Value & value( std::uint32_t at ) noexcept {
      if constexpr ( std::is_empty_v< Value > ) {
         return empty_;
      } else {
         return at < chunkLength ? valuesOf( first_ )[ at ]
                                 : valuesOf( more_[ at / chunkLength - 1 ] )[ at % chunkLength ];
      }
   }
   const Value & value( std::uint32_t at ) const noexcept {
      return const_cast< EntryChunks & >( *this ).value( at ); // NOLINT(*-const-cast): the same
   }

   /// There is room for so many.
   std::uint32_t capacity() const noexcept { return capacity_; }
   /// There will be, when they grow.
   std::uint32_t nextCapacity() const noexcept {
      return capacity_ < chunkLength
                ? std::min( chunkLength, std::max( keysScanned, 2 * capacity_ ) )
                : capacity_ + chunkLength;
   }
   void grow() {
      if ( capacity_ < chunkLength ) {
         growFirstChunk();
      } else {
         addChunk();
      }
   }
   /// Gives back chunks that the `used` first ones do not need soon: keeps room for as many again,
   /// so that one that comes and goes does not ask for memory each time.
   void giveBack( std::uint32_t used ) noexcept {
      while ( capacity_ > chunkLength && capacity_ - used > used + 2 * chunkLength ) {
         destroy( more_[ capacity_ / chunkLength - 2 ], chunkLength );
         capacity_ -= chunkLength;
      }
   }

 private:
   using Chunk = std::byte *; // null, or owned by this

   static Number * keysOf( Chunk chunk, std::uint32_t length ) noexcept {
      // NOLINTNEXTLINE(*-reinterpret-cast): made in create()
      return reinterpret_cast< Number * >( chunk + length * valueBytes );
   }
   static Value * valuesOf( Chunk chunk ) noexcept {
      return reinterpret_cast< Value * >( chunk ); // NOLINT(*-reinterpret-cast): made in create()
   }
   // Keys are 0, values as they are by default. `length` is a multiple of sixteen, so that the keys
   // behind the values lie as they have to.
   static Chunk create( std::uint32_t length ) {
      const std::size_t bytes = length * ( valueBytes + sizeof( Number ) );
      auto * const chunk = static_cast< Chunk >( ::operator new( bytes ) );
      if constexpr ( valueBytes != 0 ) {
         std::uninitialized_value_construct_n( valuesOf( chunk ), length );
      }
      std::uninitialized_value_construct_n( keysOf( chunk, length ), length );
      return chunk;
   }
   static void destroy( Chunk chunk, std::uint32_t length ) noexcept {
      if constexpr ( valueBytes != 0 ) {
         std::destroy_n( valuesOf( chunk ), length );
      }
      ::operator delete( chunk );
   }

   void growFirstChunk() {
      const std::uint32_t capacity = nextCapacity();
      Chunk first = create( capacity );
      std::copy_n( firstKeys_, capacity_, keysOf( first, capacity ) );
      if constexpr ( valueBytes != 0 ) {
         std::move( valuesOf( first_ ), valuesOf( first_ ) + capacity_, valuesOf( first ) );
      }
      destroy( first_, capacity_ );
      first_ = first;
      firstKeys_ = keysOf( first, capacity );
      capacity_ = capacity;
   }

   // The table holds as many chunks as the next power of two.
   void addChunk() {
      const std::uint32_t chunks = capacity_ / chunkLength;
      VEX_ASSERT( capacity_ < std::numeric_limits< std::uint32_t >::max() / 4 );
      if ( std::has_single_bit( chunks ) ) {
         auto more = std::make_unique< Chunk[] >( std::size_t{ 2 } * chunks ); // NOLINT(*-c-arrays)
         std::copy_n( more_.get(), chunks - 1, more.get() );
         more_ = std::move( more );
      }
      more_[ chunks - 1 ] = create( chunkLength );
      capacity_ += chunkLength;
   }

   std::unique_ptr< Chunk[] > more_; // NOLINT(modernize-avoid-c-arrays): chunks behind the first
   Chunk first_ = nullptr;
   Number * firstKeys_ = nullptr; // in it, because where depends on its length
   std::uint32_t capacity_ = 0;
   [[no_unique_address]] std::conditional_t< std::is_empty_v< Value >, Value, std::true_type >
      empty_;
};

} // namespace Vex
