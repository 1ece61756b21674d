#include "platform/Kel/Deadlines.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Kel {

namespace {

constexpr auto never = Vex::Seconds::infinity();

Vex::Seconds earlier( Vex::Seconds deadline, Vex::Seconds least ) noexcept {
   return deadline < least ? deadline : least;
}

// Eight minima side by side, because one that waits for the one before takes many times as long.
Vex::Seconds least( const Vex::Seconds * at, const Vex::Seconds * end ) noexcept {
   Vex::Seconds a = never;
   Vex::Seconds b = never;
   Vex::Seconds c = never;
   Vex::Seconds d = never;
   Vex::Seconds e = never;
   Vex::Seconds f = never;
   Vex::Seconds g = never;
   Vex::Seconds h = never;
   while ( end - at >= 8 ) {
      a = earlier( at[ 0 ], a );
      b = earlier( at[ 1 ], b );
      c = earlier( at[ 2 ], c );
      d = earlier( at[ 3 ], d );
      e = earlier( at[ 4 ], e );
      f = earlier( at[ 5 ], f );
      g = earlier( at[ 6 ], g );
      h = earlier( at[ 7 ], h );
      at += 8;
   }
   while ( at != end ) {
      a = earlier( *at, a );
      ++at;
   }
   for ( const Vex::Seconds other : { b, c, d, e, f, g, h } ) {
      a = earlier( other, a );
   }
   return a;
}

} // namespace

// All that can throw comes before the first change that shows.
bool Deadlines::put( Nodo::IntfId intf, Vex::Seconds deadline ) {
   if ( const std::uint32_t * const place = places_.find( intf ) ) {
      if ( due_[ *place ] == deadline ) {
         return false;
      }
      due_[ *place ] = deadline;
      first_ = std::min( first_, *place );
      searched_ = false;
      return true;
   }
   const auto place = static_cast< std::uint32_t >( due_.size() );
   if ( due_.capacity() == due_.size() ) {
      due_.reserve( 2 * due_.size() + 1 );
   }
   if ( intfs_.capacity() == intfs_.size() ) {
      intfs_.reserve( 2 * intfs_.size() + 1 );
   }
   places_.put( intf, place );
   due_.push_back( deadline );
   intfs_.push_back( intf );
   if ( searched_ && deadline < ( earliest_ != none ? due_[ earliest_ ] : never ) ) {
      earliest_ = place;
   }
   return true;
}

bool Deadlines::erase( Nodo::IntfId intf ) {
   const auto place = places_.take( intf );
   if ( !place ) {
      return false;
   }
   due_[ *place ] = never;
   if ( *place == earliest_ ) {
      searched_ = false;
   }
   closeHoles();
   return true;
}

std::vector< Deadlines::Entry > Deadlines::entries() const {
   std::vector< Entry > all;
   for ( const auto entry : places_.entries() ) {
      all.push_back( { entry.key, due_[ entry.value ] } );
   }
   return all;
}

Deadlines::Entry Deadlines::earliest() const noexcept {
   if ( !searched_ ) {
      search();
   }
   return earliest_ != none ? Entry{ intfs_[ earliest_ ], due_[ earliest_ ] }
                            : Entry{ Nodo::IntfId(), never };
}

void Deadlines::search() const noexcept {
   const auto used = static_cast< std::uint32_t >( due_.size() );
   while ( first_ != used && due_[ first_ ] == never ) {
      ++first_;
   }
   const Vex::Seconds found = least( due_.data() + first_, due_.data() + used );
   earliest_ = none;
   if ( found != never ) {
      earliest_ = first_;
      while ( due_[ earliest_ ] != found ) {
         ++earliest_;
      }
   }
   searched_ = true;
}

// As many holes as deadlines are enough to pay for it.
void Deadlines::closeHoles() noexcept {
   constexpr std::size_t few = 16;
   const std::size_t holes = due_.size() - places_.size();
   if ( holes <= few || holes <= places_.size() ) {
      return;
   }
   std::uint32_t to = 0;
   for ( const auto entry : places_.entries() ) {
      if ( entry.value == earliest_ ) {
         earliest_ = to;
      }
      due_[ to ] = due_[ entry.value ];
      intfs_[ to ] = entry.key;
      places_.put( entry.key, to );
      ++to;
   }
   due_.resize( to );
   intfs_.resize( to );
   first_ = 0;
}

} // namespace Kel
