#pragma once

// Interfaces of the floor: dense numbers, ports from 1 and LAGs from 1, so that every table is an
// array. Names are looked up only for a record, and lie ready for that as the library's do.

#include "bench/World.h"
#include "platform/Nodo/InternedName.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Bench::Floor {

/// A port is an even number, a LAG an odd one; 0 is none.
struct Intf {
   std::uint32_t number = 0;
   friend bool operator==( Intf, Intf ) = default;

   static Intf port( std::size_t at ) { return { static_cast< std::uint32_t >( 2 * at + 2 ) }; }
   static Intf lag( std::size_t at ) { return { static_cast< std::uint32_t >( 2 * at + 1 ) }; }
   std::size_t index() const { return ( number - 1 ) / 2; }
};

struct Pair {
   Intf member;
   Intf lag;
   friend bool operator==( const Pair &, const Pair & ) = default;
};

class Names {
 public:
   static Names & instance() noexcept { return names; }
   void reserve( std::size_t pairs ) {
      for ( std::size_t at = ports_.size(); at < pairs; ++at ) {
         ports_.emplace_back().textIs( memberName( at ) );
      }
      for ( std::size_t at = lags_.size(); at * membersPerLag < pairs; ++at ) {
         lags_.emplace_back().textIs( lagName( at ) );
      }
   }
   const Nodo::InternedName & of( Intf intf ) const noexcept {
      return ( intf.number % 2 == 0 ? ports_ : lags_ )[ intf.index() ];
   }

 private:
   static Names names;

   std::vector< Nodo::InternedName > ports_;
   std::vector< Nodo::InternedName > lags_;
};

inline Names Names::names;

inline const std::string & nameOf( Intf intf ) noexcept {
   return Names::instance().of( intf ).text;
}

} // namespace Bench::Floor
