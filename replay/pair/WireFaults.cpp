#include "replay/pair/WireFaults.h"

#include <algorithm>

namespace Replay::Peering {

namespace {

bool takeOne( std::uint32_t & count ) noexcept {
   const bool some = count > 0;
   count -= some ? 1 : 0;
   return some;
}

} // namespace

Fate WireFaults::next() {
   Fate fate;
   // Each of them is drawn for every message, so that one fault more or less does not shift the
   // rest.
   const bool loses = random_.percent( loss_ );
   const bool repeats = random_.percent( repetition_.percent );
   const bool holds = random_.percent( holding_.percent );
   const Vex::Seconds later = some( repetition_.upTo );
   const Vex::Seconds longer = some( holding_.upTo );
   const bool lost = takeOne( lose_ );
   if ( !on_ || lost || loses ) {
      return fate;
   }
   const bool held = takeOne( hold_.count );
   fate.heldUp = held || holds;
   const Vex::Seconds extra = held ? hold_.span : longer;
   fate.delays.push_back( fate.heldUp ? delay_ + extra : delay_ );
   const bool repeated = takeOne( repeat_.count );
   if ( repeated || repeats ) {
      fate.delays.push_back( fate.delays.front() + ( repeated ? repeat_.span : later ) );
   }
   return fate;
}

// Whole microseconds, at least one.
Vex::Seconds WireFaults::some( Vex::Seconds upTo ) noexcept {
   constexpr double microsecondsInOne = 1e6;
   constexpr double longest = 4e9; // that a number of 32 bits holds: more than an hour
   const auto most =
      static_cast< std::uint32_t >( std::min( upTo.value() * microsecondsInOne, longest ) );
   const std::uint32_t drawn = random_.below( std::max( most, 1U ) ) + 1;
   return Vex::Seconds( drawn / microsecondsInOne );
}

} // namespace Replay::Peering
