#pragma once

// What each message of the interlocks means: one table, in which every message has its entry. A
// test compares it with the sources of the interlocks; whoever adds a message adds its entry.
//
// An entry is found by the handler that wrote the message and by its text, with {} in the place of
// each argument. It says what the message does to the picture that a reader has (Says), which
// argument names what, and in words what an interlock has seen.

#include "replay/explain/Reason.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Explain {

/// What a message tells.
enum class Says : std::uint8_t {
   event, // something has changed, and is looked at
   start, // an interlock begins its life, and looks at everything
   switchover, // the controller runs another interlock
   lagEvent, // a whole LAG is looked at; as a part of something else, or by itself
   timeout, // a LAG's time-out has come
   decides, // a decision over a pair begins
   verdict, // and ends
   asksForAcl, // the local egress ACL is part of the decision
   looksForMember, // the port in its LAG
   check, // something was looked at
   namesLag, // whose the next message is
   lagEmpty, // of a LAG without members; only who stands in the output is looked at
   requestSent,
   requestWithdrawn,
   mlagEnded, // the LAG is no MLAG interface: its request and its link state go
   linkDown,
   linkRequesting,
   linkUp,
   linkFailed,
   timedOut,
   deadlineSet,
   deadlineGone,
   cleanup, // all requests and link states go
   nothing, // only where the program is
};

enum class Seen : std::uint8_t { yes, no, done };

/// A check and what it saw.
struct Saw {
   Check check;
   Seen seen;
   std::string_view words;
};

constexpr std::size_t mostSaws = 4;

struct Meaning {
   Gate gate = Gate::egressAcl;
   std::string_view function;
   std::string_view message; // {}: an argument
   Says says = Says::nothing;
   std::int8_t member = -1; // which argument names the member, the LAG
   std::int8_t lag = -1;
   std::optional< Reason > reason; // of a verdict
   std::span< const Saw > saws;
   std::string_view words; // of what sets a decision off; {0}: its first argument
};

/// All of them.
std::span< const Meaning > meanings() noexcept;

/// The gate whose interlocks write under this source name; nothing for any other.
std::optional< Gate > gateOfSource( std::string_view source ) noexcept;

/// Of a message whose text has {} in the place of each argument; null when there is no entry.
const Meaning * meaningOf( Gate gate, std::string_view function, std::string_view message );

/// The same for a message as it was written, and its arguments.
struct Read {
   const Meaning * meaning = nullptr;
   std::vector< std::string > arguments;
};
Read readMessage( Gate gate, std::string_view function, std::string_view message );

/// Replaces {0}, {1} ... by the arguments.
std::string filled( std::string_view words, std::span< const std::string > arguments );

} // namespace Explain
