#pragma once

// The index of a keyed collection: from the hash of a key to the position of its entry.
//
// Layout: open addressing with linear probing over 32-bit slots, a power of two of them. The low
// bits of a slot are a position, the high bits those of the hash that did not choose the slot, so
// that nearly every slot that does not belong to a key is told from the slot alone, without a look
// at the entry.
// Errors: the constructor throws when there is no memory; nothing else fails.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

namespace Vex {

class PositionIndex {
 public:
   static constexpr std::uint32_t none = std::numeric_limits< std::uint32_t >::max();

   /// Without slots.
   PositionIndex() noexcept = default;
   /// For at least `positions` positions; a quarter of the slots stays free.
   explicit PositionIndex( std::uint32_t positions )
       : mask_( std::bit_ceil( positions + ( positions + 2 ) / 3 ) - 1 ),
         slots_( std::make_unique< std::uint32_t[] >( std::size_t{ mask_ } + 1 ) ) {} // NOLINT

   bool empty() const noexcept { return mask_ == 0; }
   /// Positions from this on have no place.
   std::uint32_t room() const noexcept { return mask_ - mask_ / 4; }

   /// The slot of the position for which `holds( position )`, among those of this hash, or none.
   template < class Holds >
   std::uint32_t find( std::size_t hash, const Holds & holds ) const noexcept {
      for ( std::uint32_t at = home( hash );; at = ( at + 1 ) & mask_ ) {
         const std::uint32_t slot = slots_[ at ];
         if ( slot == free ) {
            return none;
         }
         if ( ( ( slot ^ hash ) & tagBits() ) == 0 && slot != removed &&
              holds( positionOf( slot ) ) ) {
            return at;
         }
      }
   }
   std::uint32_t position( std::uint32_t slot ) const noexcept {
      return positionOf( slots_[ slot ] );
   }

   /// Enters a position below room() that is not there yet.
   void add( std::size_t hash, std::uint32_t position ) noexcept {
      std::uint32_t at = home( hash );
      while ( slots_[ at ] != free && slots_[ at ] != removed ) {
         at = ( at + 1 ) & mask_;
      }
      slots_[ at ] = ( static_cast< std::uint32_t >( hash ) & tagBits() ) | ( position + marks );
   }
   void remove( std::uint32_t slot ) noexcept { slots_[ slot ] = removed; }
   void clear() noexcept { std::fill_n( slots_.get(), std::size_t{ mask_ } + 1, free ); }

 private:
   // Positions are entered above the two marks; room() leaves the space for that.
   static constexpr std::uint32_t free = 0;
   static constexpr std::uint32_t removed = 1;
   static constexpr std::uint32_t marks = 2;

   std::uint32_t home( std::size_t hash ) const noexcept {
      return static_cast< std::uint32_t >( hash ) & mask_;
   }
   std::uint32_t tagBits() const noexcept { return ~mask_; }
   std::uint32_t positionOf( std::uint32_t slot ) const noexcept {
      return ( slot & mask_ ) - marks;
   }

   std::uint32_t mask_ = 0;
   std::unique_ptr< std::uint32_t[] > slots_; // NOLINT(modernize-avoid-c-arrays): sized at run time
};

} // namespace Vex
