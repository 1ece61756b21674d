#pragma once

// What a wire does to the messages that are sent on it: how long they take, and which of them are
// lost, repeated or held up so that later ones overtake them. Either the next few, as a story wants
// it, or some by chance; the same seed and the same messages give the same faults on every machine.

#include "platform/Vex/Seconds.h"
#include "replay/pair/Random.h"

#include <cstdint>
#include <vector>

namespace Replay::Peering {

/// What becomes of one message.
struct Fate {
   std::vector< Vex::Seconds > delays; // of each copy that arrives; none: it is lost
   bool heldUp = false; // the first copy takes longer than the wire's delay
};

/// A fault that happens to some messages by chance.
struct Chance {
   std::uint32_t percent = 0;
   Vex::Seconds upTo; // how much longer the message, or its copy, takes at most
};

class WireFaults {
 public:
   explicit WireFaults( std::uint64_t seed ) noexcept : random_( seed ) {}

   /// False: every message is lost.
   void onIs( bool on ) noexcept { on_ = on; }
   void delayIs( Vex::Seconds delay ) noexcept { delay_ = delay; }
   Vex::Seconds delay() const noexcept { return delay_; }

   // The next messages; a count given later replaces the one before.
   void loseNext( std::uint32_t count ) noexcept { lose_ = count; }
   void repeatNext( std::uint32_t count, Vex::Seconds later ) noexcept {
      repeat_ = { count, later };
   }
   void holdNext( std::uint32_t count, Vex::Seconds longer ) noexcept { hold_ = { count, longer }; }

   // By chance.
   void lossIs( std::uint32_t percent ) noexcept { loss_ = percent; }
   void repetitionIs( Chance chance ) noexcept { repetition_ = chance; }
   void holdingIs( Chance chance ) noexcept { holding_ = chance; }
   /// Starts the numbers by chance anew.
   void seedIs( std::uint64_t seed ) noexcept { random_ = Random( seed ); }

   /// Decides over the next message.
   Fate next();

 private:
   struct Next {
      std::uint32_t count = 0;
      Vex::Seconds span;
   };

   Vex::Seconds some( Vex::Seconds upTo ) noexcept;

   Random random_;
   bool on_ = true;
   Vex::Seconds delay_;
   std::uint32_t lose_ = 0;
   Next repeat_;
   Next hold_;
   std::uint32_t loss_ = 0;
   Chance repetition_;
   Chance holding_;
};

} // namespace Replay::Peering
