#pragma once

// The keys of an index whose homes are taken (platform/Vex/PositionIndex.h): the positions of their
// entries, by a hash. The entries tell the keys apart.
//
// Layout: open addressing in a power of two of slots; where one is removed, those behind it on
// their ways move up, so that coming and going takes no memory. A quarter of the slots stays free,
// which keeps the ways short.
// Errors: makeRoom() throws when there is no memory and has changed nothing then; nothing else
// fails.

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace Vex {

/// `keyAt( position )`, as its functions take it, is the key of an entry.
template < std::unsigned_integral Number >
class AwayKeys {
 public:
   /// In the place of a slot where there is none.
   static constexpr std::uint32_t none = std::numeric_limits< std::uint32_t >::max();

   std::uint32_t size() const noexcept { return size_; }

   /// The slot of `key`, or none.
   template < class KeyAt >
   std::uint32_t find( Number key, const KeyAt & keyAt ) const noexcept {
      return slotOf( key, [ & ]( std::uint32_t position ) { return keyAt( position ) == key; } );
   }
   /// The slot of the key whose entry is at `position`, which is there.
   std::uint32_t find( Number key, std::uint32_t position ) const noexcept {
      return slotOf( key, [ & ]( std::uint32_t other ) { return other == position; } );
   }
   std::uint32_t position( std::uint32_t slot ) const noexcept { return slots_[ slot ] - 1; }
   void positionIs( std::uint32_t slot, std::uint32_t position ) noexcept {
      slots_[ slot ] = position + 1;
   }

   /// Makes room for one more key.
   template < class KeyAt >
   void makeRoom( const KeyAt & keyAt ) {
      if ( 4 * ( std::size_t{ size_ } + 1 ) <= 3 * slots_.size() ) {
         return;
      }
      AwayKeys roomy;
      roomy.slots_.resize( std::max( fewest, 2 * slots_.size() ) );
      for ( std::uint32_t slot = 0; slot < slots_.size(); ++slot ) {
         if ( slots_[ slot ] != free ) {
            roomy.add( keyAt( position( slot ) ), position( slot ) );
         }
      }
      std::swap( *this, roomy );
   }
   /// Adds a key that is not there, and for which there is room.
   void add( Number key, std::uint32_t position ) noexcept {
      std::size_t at = home( key );
      while ( slots_[ at ] != free ) {
         at = next( at );
      }
      slots_[ at ] = position + 1;
      ++size_;
   }
   /// Removes the key of `slot`. Others may have other slots then.
   template < class KeyAt >
   void remove( std::uint32_t slot, const KeyAt & keyAt ) noexcept {
      std::size_t hole = slot;
      for ( std::size_t at = next( hole ); slots_[ at ] != free; at = next( at ) ) {
         // One whose way begins behind the hole stays.
         if ( distance( home( keyAt( slots_[ at ] - 1 ) ), at ) >= distance( hole, at ) ) {
            slots_[ hole ] = slots_[ at ];
            hole = at;
         }
      }
      slots_[ hole ] = free;
      --size_;
   }
   /// Removes each key of which `leaves( position )` holds; it may be asked twice.
   template < class Leaves, class KeyAt >
   void removeIf( const Leaves & leaves, const KeyAt & keyAt ) {
      for ( std::uint32_t slot = 0; slot < slots_.size(); ) {
         if ( slots_[ slot ] != free && leaves( position( slot ) ) ) {
            remove( slot, keyAt ); // and looks at what moved up
         } else {
            ++slot;
         }
      }
   }

 private:
   static constexpr std::size_t fewest = 8; // slots
   static constexpr std::uint32_t free = 0; // others: the position and 1

   // The highest bits of the product with 2^64 / golden ratio depend on all bits of the key.
   std::size_t home( Number key ) const noexcept {
      return key * 0x9E3779B97F4A7C15ULL >> ( 64 - std::countr_zero( slots_.size() ) );
   }
   std::size_t next( std::size_t at ) const noexcept { return ( at + 1 ) & ( slots_.size() - 1 ); }
   std::size_t distance( std::size_t from, std::size_t to ) const noexcept {
      return ( to - from ) & ( slots_.size() - 1 );
   }

   template < class IsIt >
   std::uint32_t slotOf( Number key, const IsIt & isIt ) const noexcept {
      if ( slots_.empty() ) {
         return none;
      }
      for ( std::size_t at = home( key );; at = next( at ) ) {
         if ( slots_[ at ] == free ) {
            return none;
         }
         if ( isIt( slots_[ at ] - 1 ) ) {
            return static_cast< std::uint32_t >( at );
         }
      }
   }

   std::vector< std::uint32_t > slots_;
   std::uint32_t size_ = 0;
};

} // namespace Vex
