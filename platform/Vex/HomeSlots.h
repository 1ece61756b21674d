#pragma once

// The slots of an index in which keys are at home (platform/Vex/PositionIndex.h).
//
// Layout: a power of two of slots as wide as a key, of which the low bits of a key choose one: its
// home. A slot holds the position of the key's entry in place of those bits, which the home tells,
// and of one bit more, beside the rest of the key, which lies one bit to the left for that; so a
// key is found without a look at its entry. Bit 31 marks a slot that is used.
// Slots lie in segments of 16 KiB, which are made when the first key comes into them: where no keys
// are there is no memory, and growing asks for little and moves no key that stays in its segment.
// Errors: makeRoom() and grow() throw when there is no memory and have changed nothing then;
// nothing else fails.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

namespace Vex {

/// Of keys as isStoredKey() wants them (platform/Vex/StoredKey.h).
template < std::unsigned_integral Number >
class HomeSlots {
 public:
   static constexpr std::uint32_t segmentLength = std::uint32_t{ 16 * 1024 } / sizeof( Number );

   /// None.
   HomeSlots() noexcept = default;
   /// So many, a power of two and at most a segment.
   explicit HomeSlots( std::uint32_t slots ) : mask_( slots - 1 ), first_( newSegment( slots ) ) {}

   bool empty() const noexcept { return mask_ == 0; }
   std::uint32_t slots() const noexcept { return mask_ + 1; }
   /// Positions are below twice as many as slots.
   bool hasPosition( std::uint32_t position ) const noexcept { return position <= positionMask(); }

   /// What is in the home of `key`.
   Number slot( Number key ) const noexcept {
      const std::uint32_t home = homeOf( key );
      if ( home < segmentLength ) [[likely]] {
         return first_[ home ];
      }
      const Number * const segment = more_[ home / segmentLength - 1 ].get();
      return segment != nullptr ? segment[ home % segmentLength ] : free;
   }
   static bool isFree( Number slot ) noexcept { return slot == free; }
   /// It is `key`.
   bool holds( Number slot, Number key ) const noexcept {
      // No bit differs but those of the position.
      return ( slot ^ ( key << 1U | used ) ) <= positionMask();
   }
   /// The position of the key that is there.
   std::uint32_t position( Number slot ) const noexcept {
      return static_cast< std::uint32_t >( slot ) & positionMask();
   }

   /// Makes memory for the home of `key`.
   void makeRoom( Number key ) {
      Segment & segment = segmentAt( homeOf( key ) / segmentLength );
      if ( !segment ) {
         segment = newSegment( segmentLength );
      }
   }
   /// The home of `key`, if there is memory for it and it is free; null otherwise.
   Number * freeHome( Number key ) noexcept {
      const std::uint32_t home = homeOf( key );
      Number * slot = &first_[ home ];
      if ( home >= segmentLength ) [[unlikely]] {
         Number * const segment = more_[ home / segmentLength - 1 ].get();
         if ( segment == nullptr ) {
            return nullptr;
         }
         slot = &segment[ home % segmentLength ];
      }
      return *slot == free ? slot : nullptr;
   }
   /// Enters `key` in its home, which is free or its own.
   void put( Number & home, Number key, std::uint32_t position ) noexcept {
      home = restOf( key ) | used | position;
   }
   /// The same, where there is memory for it.
   void put( Number key, std::uint32_t position ) noexcept { put( home( key ), key, position ); }
   /// The entry of `key`, which is in its home, has moved.
   void move( Number key, std::uint32_t from, std::uint32_t to ) noexcept {
      home( key ) ^= from ^ to;
   }
   /// Removes `key` from its home.
   void remove( Number key ) noexcept { home( key ) = free; }

   /// Makes twice as many of them; the keys stay.
   void grow() {
      HomeSlots twice;
      twice.mask_ = 2 * mask_ + 1;
      if ( slots() < segmentLength ) {
         twice.first_ = newSegment( twice.slots() );
         std::copy_n( first_.get(), slots(), twice.first_.get() );
         moveUp( twice.first_.get(), twice.first_.get() + slots(), slots() );
      } else {
         // A segment stays the lower of two; the upper one is made where keys go there.
         twice.more_ = std::make_unique< Segment[] >( 2 * segments() - 1 ); // NOLINT(*-c-arrays)
         for ( std::uint32_t at = 0; at < segments(); ++at ) {
            if ( anyGoesUp( at ) ) {
               twice.segmentAt( segments() + at ) = newSegment( segmentLength );
            }
         }
         for ( std::uint32_t at = 0; at < segments(); ++at ) { // from here on nothing fails
            twice.segmentAt( at ) = std::move( segmentAt( at ) );
            if ( const Segment & upper = twice.segmentAt( segments() + at ); upper ) {
               moveUp( twice.segmentAt( at ).get(), upper.get(), segmentLength );
            }
         }
      }
      first_ = std::move( twice.first_ );
      more_ = std::move( twice.more_ );
      mask_ = twice.mask_;
   }

 private:
   using Segment =
      std::unique_ptr< Number[] >; // NOLINT(modernize-avoid-c-arrays): sized at run time

   static constexpr Number free = 0;
   static constexpr Number used = Number{ 1 } << 31U;

   static Segment newSegment( std::uint32_t length ) {
      return std::make_unique< Number[] >( length ); // NOLINT(modernize-avoid-c-arrays)
   }

   std::uint32_t homeOf( Number key ) const noexcept {
      return static_cast< std::uint32_t >( key ) & mask_;
   }
   Number & home( Number key ) noexcept {
      const std::uint32_t home = homeOf( key );
      return home < segmentLength ? first_[ home ]
                                  : more_[ home / segmentLength - 1 ][ home % segmentLength ];
   }
   std::uint32_t segments() const noexcept { return mask_ / segmentLength + 1; }
   Segment & segmentAt( std::uint32_t at ) noexcept { return at == 0 ? first_ : more_[ at - 1 ]; }
   const Segment & segmentAt( std::uint32_t at ) const noexcept {
      return at == 0 ? first_ : more_[ at - 1 ];
   }
   // What a slot holds of a key, one bit to the left.
   Number restOf( Number key ) const noexcept { return ( key & ~Number{ mask_ } ) << 1U; }
   std::uint32_t positionMask() const noexcept { return 2 * mask_ + 1; }

   // The bit of a key that becomes part of its home when there are twice as many slots, where a
   // slot has it. From then on the home tells it, and a position may have one bit more.
   Number nextBit() const noexcept { return Number{ slots() } << 1U; }
   // Some key of this segment goes to the upper half then.
   bool anyGoesUp( std::uint32_t segment ) const noexcept {
      const Number * const slots = segmentAt( segment ).get();
      return slots != nullptr &&
             std::any_of( slots, slots + segmentLength,
                          [ bit = nextBit() ]( Number slot ) { return ( slot & bit ) != 0; } );
   }
   void moveUp( Number * lower, Number * upper, std::uint32_t length ) const noexcept {
      const Number bit = nextBit();
      for ( std::uint32_t at = 0; at < length; ++at ) {
         if ( ( lower[ at ] & bit ) != 0 ) {
            upper[ at ] = std::exchange( lower[ at ], free ) ^ bit;
         }
      }
   }

   std::uint32_t mask_ = 0;
   Segment first_;
   std::unique_ptr< Segment[] > more_; // NOLINT(modernize-avoid-c-arrays): null where no key is
};

} // namespace Vex
