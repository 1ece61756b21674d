#pragma once

// The floor of the basic egress-ACL interlock: what the decision itself costs. No framework:
// whoever changes an input calls the handler, tables are arrays by interface number, and the
// records are written by the shortest code (Ring.h).
//
// It is the same job: the same inputs, each one table, so that their owners could still write them
// apart; the same decision from the inputs as they stand; the output in the order of insertion, and
// told to its listener; the same records in the same cells. It leaves out: names that are not dense
// numbers, more than one listener, changes by a handler in the middle of a pass, text trace, and
// objects that live as long as somebody needs them.

#include "bench/baseline/floor/Output.h"
#include "bench/baseline/floor/Ring.h"

#include <cstdint>
#include <vector>

namespace Bench::Floor {

/// MLAG as it is published.
struct MlagInputs {
   std::uint8_t state = 0; // 3 and 4 are active
   bool peerLinkExists = false;
   std::uint8_t linkStatus = 0; // 2 is up
   std::vector< std::uint8_t > known; // by LAG: it is an MLAG interface
   std::vector< std::uint8_t > peerState; // by LAG; 2 is active
   std::vector< std::uint8_t > localState; // by LAG
};

template < class RingType >
class Basic {
 public:
   Basic( PairSet & input, Members & members, MlagInputs & mlag, Output & output );

   void inputIs( const Pair & pair );
   void inputDel( const Pair & pair );
   void memberIs( const Pair & pair );
   void memberDel( const Pair & pair );
   void mlagStateIs( std::uint8_t state );
   std::uint64_t records() const noexcept { return ring_.written(); }

 private:
   void handleIntfFeature( const Pair & pair );
   void handleMember( const Pair & pair );
   bool shouldInstallEgressAcl( Intf lag ) const;
   void handleAllLags();

   PairSet & input_;
   Members & members_;
   MlagInputs & mlag_;
   Output & output_;
   RingType ring_;
};

} // namespace Bench::Floor
