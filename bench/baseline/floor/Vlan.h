#pragma once

// The floor of the VLAN-translation interlock. What it leaves out: Basic.h. Its mappings are two
// numbers a LAG, because only whether there are any is asked; their owner keeps them.

#include "bench/baseline/floor/Output.h"

#include <cstdint>
#include <vector>

namespace Bench::Floor {

struct Mappings {
   std::uint32_t ingress = 0;
   std::uint32_t egress = 0;
   friend bool operator==( const Mappings &, const Mappings & ) = default;
};

class Vlan {
 public:
   Vlan( PairSet & input, Members & members, std::vector< Mappings > & mappings, Output & output );

   void inputIs( const Pair & pair );
   void inputDel( const Pair & pair );
   void memberIs( const Pair & pair );
   void memberDel( const Pair & pair );
   void mappingsAre( Intf lag, Mappings mappings );
   static std::uint64_t records() noexcept { return 0; }

 private:
   void update( const Pair & pair, bool active );
   void handleIntfConfig( Intf lag );

   PairSet & input_;
   Members & members_;
   std::vector< Mappings > & mappings_; // by LAG
   Output & output_;
};

} // namespace Bench::Floor
