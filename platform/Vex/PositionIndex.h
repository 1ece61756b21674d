#pragma once

// The index of a keyed collection: from a key to the position of its entry.
//
// Layout: handles are small consecutive numbers, so as a rule every key is at home, in the slot
// that its low bits choose (platform/Vex/HomeSlots.h); ports that follow each other share a cache
// line, and no key has to be mixed. Keys whose home is taken are kept apart
// (platform/Vex/AwayKeys.h), and when they become too many there are twice as many homes, which is
// when they come home.
// Errors: makeRoom() throws when there is no memory and has lost nothing then; nothing else fails.

#include "platform/Vex/AwayKeys.h"
#include "platform/Vex/HomeSlots.h"

#include <concepts>
#include <cstdint>
#include <limits>
#include <memory>

namespace Vex {

/// `keyAt( position )`, as its functions take it, is the key of an entry.
template < std::unsigned_integral Number >
class PositionIndex {
 public:
   /// In the place of a position where there is none.
   static constexpr std::uint32_t none = std::numeric_limits< std::uint32_t >::max();

   /// None.
   PositionIndex() noexcept = default;
   /// With so many homes, a power of two.
   explicit PositionIndex( std::uint32_t slots ) : homes_( slots ) {}
   /// With so many homes at first, and the keys of the live ones of `entries`.
   template < class Entries >
   PositionIndex( std::uint32_t slots, const Entries & entries ) : homes_( slots ) {
      const auto keyAt = [ & ]( std::uint32_t position ) { return entries.key( position ); };
      for ( std::uint32_t at = 0; at < entries.used(); ++at ) {
         if ( entries.live( at ) ) {
            makeRoom( entries.key( at ), at, keyAt );
            add( entries.key( at ), at );
         }
      }
   }

   bool empty() const noexcept { return homes_.empty(); }
   /// There is a number for this position without growing.
   bool hasPosition( std::uint32_t position ) const noexcept {
      return homes_.hasPosition( position );
   }

   /// What is in the home of `key`. There are homes.
   Number slot( Number key ) const noexcept { return homes_.slot( key ); }
   /// It is `key`, as it nearly always is where `key` is there at all.
   bool holds( Number slot, Number key ) const noexcept { return homes_.holds( slot, key ); }
   /// The position of the key that is in this home.
   std::uint32_t position( Number slot ) const noexcept { return homes_.position( slot ); }

   /// The position of `key`, which is not at home, or none.
   template < class KeyAt >
   std::uint32_t findAway( Number key, const KeyAt & keyAt ) const noexcept {
      if ( !away_ || away_->size() == 0 ) {
         return none;
      }
      const std::uint32_t slot = away_->find( key, keyAt );
      return slot != AwayKeys< Number >::none ? away_->position( slot ) : none;
   }
   /// The position of `key`, or none.
   template < class KeyAt >
   std::uint32_t find( Number key, const KeyAt & keyAt ) const noexcept {
      const Number there = slot( key );
      return holds( there, key ) ? position( there ) : findAway( key, keyAt );
   }

   /// The home of `key`, which is not there, if it can be entered there with this position; null
   /// otherwise.
   Number * freeHome( Number key, std::uint32_t position ) noexcept {
      return homes_.hasPosition( position ) ? homes_.freeHome( key ) : nullptr;
   }
   /// Enters `key` in its free home.
   void enter( Number & home, Number key, std::uint32_t position ) noexcept {
      homes_.put( home, key, position );
   }

   /// Makes room for `key`, which is not there, at `position`, wherever that may be.
   template < class KeyAt >
   void makeRoom( Number key, std::uint32_t position, const KeyAt & keyAt ) {
      while ( !homes_.hasPosition( position ) || crowded( key, position ) ) {
         homes_.grow();
         bringHome( keyAt );
      }
      if ( homes_.isFree( homes_.slot( key ) ) ) {
         homes_.makeRoom( key );
         return;
      }
      if ( !away_ ) {
         away_ = std::make_unique< AwayKeys< Number > >();
      }
      away_->makeRoom( keyAt );
   }
   /// Adds a key that is not there, and for which there is room.
   void add( Number key, std::uint32_t position ) noexcept {
      if ( homes_.isFree( homes_.slot( key ) ) ) {
         homes_.put( key, position );
      } else {
         away_->add( key, position );
      }
   }

   /// Removes `key`; the position that it had, or none where it was not there.
   template < class KeyAt >
   std::uint32_t take( Number key, const KeyAt & keyAt ) noexcept {
      if ( const Number there = slot( key ); holds( there, key ) ) [[likely]] {
         homes_.remove( key );
         return position( there );
      }
      return takeAway( key, keyAt );
   }
   /// The entry of `key` has moved.
   void move( Number key, std::uint32_t from, std::uint32_t to ) noexcept {
      if ( homes_.holds( homes_.slot( key ), key ) ) [[likely]] {
         homes_.move( key, from, to );
      } else {
         away_->positionIs( away_->find( key, from ), to );
      }
   }

 private:
   // Not inline, as it is rare.
   template < class KeyAt >
   [[gnu::noinline]] std::uint32_t takeAway( Number key, const KeyAt & keyAt ) noexcept {
      const std::uint32_t slot = away_ ? away_->find( key, keyAt ) : AwayKeys< Number >::none;
      if ( slot == AwayKeys< Number >::none ) {
         return none;
      }
      const std::uint32_t position = away_->position( slot );
      away_->remove( slot, keyAt );
      return position;
   }

   // One more key away would be too many: then there would be one for every fourth slot, or for
   // every sixty-fourth while there are fewer slots than twice the positions.
   bool crowded( Number key, std::uint32_t position ) const noexcept {
      const std::uint32_t share = homes_.slots() / 2 < position ? 64 : 4;
      return away_ && away_->size() >= homes_.slots() / share &&
             !homes_.isFree( homes_.slot( key ) );
   }

   // The homes are others now.
   template < class KeyAt >
   void bringHome( const KeyAt & keyAt ) {
      if ( !away_ ) {
         return;
      }
      const auto comesHome = [ & ]( std::uint32_t position ) {
         const Number key = keyAt( position );
         if ( !homes_.isFree( homes_.slot( key ) ) ) {
            return false;
         }
         homes_.makeRoom( key );
         homes_.put( key, position );
         return true;
      };
      away_->removeIf( comesHome, keyAt );
   }

   HomeSlots< Number > homes_;
   std::unique_ptr< AwayKeys< Number > > away_;
};

} // namespace Vex
