#pragma once

// The index of a keyed collection: from the hash of a key to the position of its entry.
//
// Layout: open addressing with linear probing over 32-bit slots, a power of two of them. The low
// bits of a slot are a position, the high bits those of the hash that did not choose the slot, and
// the highest one tells that there is a position; so nearly every slot that does not belong to a
// key is told from the slot alone, without a look at the entry.
// Errors: the constructor throws when there is no memory; nothing else fails.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

namespace Vex {

class PositionIndex {
 public:
   static constexpr std::uint32_t none = std::numeric_limits< std::uint32_t >::max();

   /// What find() gives.
   struct Place {
      std::uint32_t position; // none: the key is absent
      std::uint32_t slot;
   };

   /// Without slots.
   PositionIndex() noexcept = default;
   /// With so many slots, a power of two.
   explicit PositionIndex( std::uint32_t slots )
       : mask_( slots - 1 ), slots_( std::make_unique< std::uint32_t[] >( slots ) ) {} // NOLINT

   bool empty() const noexcept { return mask_ == 0; }
   std::uint32_t slots() const noexcept { return mask_ + 1; }
   /// So many slots may be in use: a quarter stays free, which keeps the ways to a key short.
   std::uint32_t load() const noexcept { return mask_ - mask_ / 4; }
   /// There is no room for `position`, or none for any more entry.
   bool full( std::uint32_t position ) const noexcept {
      return position > mask_ || inUse_ >= load();
   }

   /// Where the entry is for which `holds( position )`, among those of this hash.
   template < class Holds >
   Place find( std::size_t hash, const Holds & holds ) const noexcept {
      const std::uint32_t tag = tagOf( hash );
      for ( std::uint32_t at = home( hash );; at = ( at + 1 ) & mask_ ) {
         const std::uint32_t slot = slots_[ at ];
         if ( ( slot & ~mask_ ) == tag ) [[likely]] {
            if ( const std::uint32_t position = slot & mask_; holds( position ) ) [[likely]] {
               return { position, at };
            }
         } else if ( slot == free ) {
            return { none, none };
         }
      }
   }

   /// Enters a position that is not there yet and for which it is not full.
   void add( std::size_t hash, std::uint32_t position ) noexcept {
      std::uint32_t at = home( hash );
      while ( slots_[ at ] > removed ) {
         at = ( at + 1 ) & mask_;
      }
      inUse_ += static_cast< std::uint32_t >( slots_[ at ] == free );
      slots_[ at ] = tagOf( hash ) | position;
   }
   void remove( std::uint32_t slot ) noexcept { slots_[ slot ] = removed; }
   void clear() noexcept {
      std::fill_n( slots_.get(), slots(), free );
      inUse_ = 0;
   }

 private:
   static constexpr std::uint32_t free = 0;
   static constexpr std::uint32_t removed = 1;
   static constexpr std::uint32_t hasPosition = std::uint32_t{ 1 } << 31U;

   std::uint32_t tagOf( std::size_t hash ) const noexcept {
      return ( static_cast< std::uint32_t >( hash ) & ~mask_ ) | hasPosition;
   }
   std::uint32_t home( std::size_t hash ) const noexcept {
      return static_cast< std::uint32_t >( hash ) & mask_;
   }

   std::uint32_t mask_ = 0;
   std::uint32_t inUse_ = 0; // slots that are not free, removed ones among them
   std::unique_ptr< std::uint32_t[] > slots_; // NOLINT(modernize-avoid-c-arrays): sized at run time
};

} // namespace Vex
