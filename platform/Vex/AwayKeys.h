#pragma once

// The keys of an index whose homes are taken (platform/Vex/PositionIndex.h): the positions of their
// entries, by a hash. The entries tell the keys apart.
//
// Layout: open addressing in a power of two of slots; what is removed leaves a mark, so that the
// ways to others stay whole. A quarter of the slots stays free, which keeps the ways short.
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
   std::uint32_t position( std::uint32_t slot ) const noexcept { return slots_[ slot ] - used; }
   void positionIs( std::uint32_t slot, std::uint32_t position ) noexcept {
      slots_[ slot ] = position + used;
   }

   /// Makes room for one more key.
   template < class KeyAt >
   void makeRoom( const KeyAt & keyAt ) {
      if ( 4 * ( std::size_t{ inUse_ } + 1 ) <= 3 * slots_.size() ) {
         return;
      }
      AwayKeys roomy;
      const bool mostAreLive = 2 * ( std::size_t{ size_ } + 1 ) > slots_.size();
      roomy.slots_.resize( mostAreLive ? std::max( fewest, 2 * slots_.size() ) : slots_.size() );
      for ( const std::uint32_t slot : slots_ ) {
         if ( slot >= used ) {
            roomy.add( keyAt( slot - used ), slot - used );
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
      slots_[ at ] = position + used;
      ++inUse_;
      ++size_;
   }
   void remove( std::uint32_t slot ) noexcept {
      slots_[ slot ] = removed;
      --size_;
   }
   /// Calls `visit( slot, position )` for each key.
   template < class Visit >
   void forEach( const Visit & visit ) const {
      for ( std::uint32_t at = 0; at < slots_.size(); ++at ) {
         if ( slots_[ at ] >= used ) {
            visit( at, slots_[ at ] - used );
         }
      }
   }

 private:
   static constexpr std::size_t fewest = 8; // slots
   static constexpr std::uint32_t free = 0;
   static constexpr std::uint32_t removed = 1;
   static constexpr std::uint32_t used = 2; // and the position

   // The highest bits of the product with 2^64 / golden ratio depend on all bits of the key.
   std::size_t home( Number key ) const noexcept {
      return key * 0x9E3779B97F4A7C15ULL >> ( 64 - std::countr_zero( slots_.size() ) );
   }
   std::size_t next( std::size_t at ) const noexcept { return ( at + 1 ) & ( slots_.size() - 1 ); }

   template < class IsIt >
   std::uint32_t slotOf( Number key, const IsIt & isIt ) const noexcept {
      if ( slots_.empty() ) {
         return none;
      }
      for ( std::size_t at = home( key );; at = next( at ) ) {
         if ( slots_[ at ] >= used && isIt( slots_[ at ] - used ) ) {
            return static_cast< std::uint32_t >( at );
         }
         if ( slots_[ at ] == free ) {
            return none;
         }
      }
   }

   std::vector< std::uint32_t > slots_;
   std::uint32_t inUse_ = 0; // slots that are not free
   std::uint32_t size_ = 0;
};

} // namespace Vex
