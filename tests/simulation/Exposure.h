#pragma once

// What the rules cost: for how long members were admitted while an egress ACL was not in place,
// here or on the peer, and for how long they were held although both were, by cause. In
// member-seconds, over the members of MLAG LAGs.

#include "replay/pair/Admission.h"
#include "tests/simulation/Ledger.h"

#include <array>
#include <string>

namespace Simulation {

class Exposure {
 public:
   /// Things stood as they stand for `seconds`.
   void pass( const Ledger & here, const Ledger & peer, double seconds );

   std::string report() const;

 private:
   void add( const Ledger & here, const Ledger & peer, PortInLag pair, double seconds );

   double members_ = 0; // all of them, whatever their verdict
   std::array< double, Replay::Peering::openCauses > open_{};
   std::array< double, Replay::Peering::heldCauses > held_{};
};

} // namespace Simulation
