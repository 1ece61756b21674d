#pragma once

// What the rules cost: for how long members were admitted while an egress ACL was not in place,
// here or on the peer, and for how long they were held although both were. In member-seconds, over
// the members of MLAG LAGs.

#include "tests/simulation/Ledger.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Simulation {

enum class OpenCause : std::uint8_t {
   timeOut, // the peer has not answered in time
   answerWithdrawn, // the peer took its answer back, or another one came
   notNeeded, // no local ACL is asked for
   basicMode, // the peer is not asked at all
   newsUnderWay, // the peer has taken its answer back, and that has not arrived, or never does
   agentDown, // verdicts stand while nobody decides
   notDecided, // nothing has looked at the member since
};
inline constexpr std::size_t openCauses = 7;

enum class HeldCause : std::uint8_t {
   asking, // the answer is under way
   agentDown,
   notDecided,
};
inline constexpr std::size_t heldCauses = 3;

class Exposure {
 public:
   /// Things stood as they stand for `seconds`.
   void pass( const Ledger & here, const Ledger & peer, double seconds );

   std::string report() const;

 private:
   void add( const Ledger & here, const Ledger & peer, PortInLag pair, double seconds );

   double members_ = 0; // all of them, whatever their verdict
   std::array< double, openCauses > open_{};
   std::array< double, heldCauses > held_{};
};

} // namespace Simulation
