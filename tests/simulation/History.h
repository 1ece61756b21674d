#pragma once

// What was done to the two switches of a pair, as the statements of a scenario that
// interlock-replay plays again, and a number that stands for all of it.

#include "replay/pair/Side.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Simulation {

class History {
 public:
   /// A statement for one of the switches, at `time`.
   void add( double time, Replay::Peering::Side side, std::string statement );
   /// What happened of itself: no statement, but for people, and for the digest.
   void note( double time, Replay::Peering::Side side, std::string_view what );

   /// The last events in words.
   std::string last( std::size_t count ) const;
   /// All of it. The messages are there as the responses that arrived, so that the wire is off.
   std::string scenario() const;
   std::uint64_t digest() const noexcept { return digest_; }

 private:
   struct Entry {
      double time;
      Replay::Peering::Side side;
      bool statement;
      std::string text;
   };

   void enter( Entry entry );

   std::vector< Entry > entries_;
   std::uint64_t digest_ = 0xCBF29CE484222325ULL;
};

} // namespace Simulation
