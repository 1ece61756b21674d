#pragma once

// What is known of a member in a LAG, and of the exchange with the peer for a LAG.

#include "platform/Vex/Seconds.h"
#include "replay/explain/Note.h"
#include "replay/explain/Reason.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Explain {

struct PairName {
   std::string member;
   std::string lag;

   friend auto operator<=>( const PairName &, const PairName & ) = default;
};

/// An interlock has decided over a pair.
struct Decision {
   Vex::Seconds time;
   Decider decider = Decider::basic;
   Reason reason = Reason::notMember;

   bool admitted() const noexcept { return admits( reason ); }
};

/// How far the exchange with the peer has come for a LAG.
enum class Link : std::uint8_t { none, down, asking, answered, failed };
enum class Failure : std::uint8_t { timeOut, answerLost };

struct Exchange {
   Link link = Link::none;
   Vex::Seconds since; // of this link state
   std::optional< Failure > failure; // of a failed one
   std::string token; // of the last request, until it is withdrawn; empty: none is known
   Vex::Seconds sent; // that request
   std::optional< Vex::Seconds > deadline; // while asking, where its record is there
};

/// A stretch of time in which a pair stood for one reason.
struct Span {
   Vex::Seconds since;
   Reason reason = Reason::notMember;
};

/// What is known of a pair and one gate.
struct Standing {
   std::optional< Decision > last;
   Vex::Seconds verdictSince; // and not only its reason
   // Where a run of a scenario tells: the LAG was removed or replaced then, and nothing was decided
   // since.
   std::optional< Vex::Seconds > outdatedSince;
   // Where a run of a scenario tells: whether the pair is in the output, and since when.
   std::optional< bool > inOutput;
   Vex::Seconds inOutputSince;

   // Of the pair that is watched: the last spans, the current one included, and how many there were
   // before; and the messages of the last decision, what set it off first.
   std::vector< Span > spans;
   std::size_t spansBefore = 0;
   std::vector< Note > notes;
};

} // namespace Explain
