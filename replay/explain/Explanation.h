#pragma once

// Why a member is held out of its LAG, or in it: what a story knows of one pair, put in order for
// an operator. As text for one screen, or as one JSON object.

#include "platform/Vex/Seconds.h"
#include "replay/Writer.h"
#include "replay/explain/Story.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Explain {

/// Where the records come from, and so what they cannot tell.
enum class Source : std::uint8_t {
   ring, // of a trace file: what goes to the text trace alone is not there
   run, // of a scenario: all messages are
};

struct Asked {
   PairName pair;
   Source source = Source::run;
   Vex::Seconds at; // how things stand then
   std::string_view switchName; // of a pair of switches; empty: there is only one
   // The time that was asked for, where it is later than all that is known.
   std::optional< Vex::Seconds > beyond;
};

/// A check on the way to a verdict, and what it saw.
struct Looked {
   std::string check;
   std::string saw;
   std::optional< bool > passed; // nothing: something was done, or it is not known what it means
   bool decisive = false; // this is what holds, or admits
};

/// What is known of one gate.
struct AtGate {
   Gate gate = Gate::egressAcl;
   bool admitted = false;
   std::optional< Vex::Seconds > since; // nothing: always
   bool orEarlier = false; // older records are lost
   std::optional< Decision > decision; // nothing: no interlock has decided
   // Then its LAG was removed or replaced, so that the verdict is over others; nothing: it is of
   // now, or the records do not tell.
   std::optional< Vex::Seconds > outdatedSince;
   std::string because; // what set it off
   std::vector< Looked > looked;
   std::string exchange; // how far that with the peer has come
   std::optional< Vex::Seconds > deadline; // at which the wait for the peer ends
   std::vector< std::string > again; // what makes it look again; what it waits for comes first
   std::vector< Span > before; // the latest last
   std::size_t beforeThat = 0; // so many more
};

struct Explanation {
   Asked asked;
   bool admitted = false; // by every gate of which something is known
   // The port is in the LAG, without which no verdict makes it join; nothing: records do not tell.
   std::optional< bool > isMember;
   std::vector< AtGate > gates;
   std::vector< std::string > remarks; // what else an operator must know
   std::size_t remarksAbove = 0; // so many of them change what the rest means
};

/// What is known; or, where there is nothing to explain, what was seen instead.
struct Answer {
   std::optional< Explanation > explanation;
   std::string error;
};

Answer explain( const Story & story, const Asked & asked );

void showAsText( const Explanation & explanation, Replay::Writer & writer );
void showAsJson( const Explanation & explanation, Replay::Writer & writer );

} // namespace Explain
