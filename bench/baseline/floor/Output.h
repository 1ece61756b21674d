#pragma once

// The output of the floor, and the one who hears of each verdict: called through a pointer, because
// the code that programs LAGs is elsewhere.

#include "bench/baseline/floor/Tables.h"

#include <cstdint>

namespace Bench::Floor {

class Output {
 public:
   using Heard = void ( * )( void * listener, const Pair & pair, bool admitted );

   Output( std::size_t ports, Heard heard, void * listener )
       : admitted_( ports ), heard_( heard ), listener_( listener ) {}

   void is( const Pair & pair ) {
      if ( admitted_.insert( pair ) ) {
         heard_( listener_, pair, true );
      }
   }
   void del( const Pair & pair ) {
      if ( admitted_.erase( pair ) ) {
         heard_( listener_, pair, false );
      }
   }
   const OrderedPairSet & admitted() const noexcept { return admitted_; }

 private:
   OrderedPairSet admitted_;
   Heard heard_;
   void * listener_;
};

} // namespace Bench::Floor
