#pragma once

// The command line of `explain`, which interlock-replay and interlock-trace share.

#include "platform/Vex/Seconds.h"
#include "replay/explain/Standing.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Explain {

struct Question {
   PairName pair;
   std::string file; // a scenario or a trace file
   std::optional< Vex::Seconds > at; // how things stood then; nothing: at the end
   std::optional< std::string > switchName; // of a pair of switches
   bool json = false;
};

/// A question, or a text for standard output (help), or what is wrong with the command line.
struct ExplainCommandLine {
   std::optional< Question > question;
   std::string text;
   std::string error;
};

enum class Asks : std::uint8_t { scenario, traceFile };

/// The first argument is `explain`.
ExplainCommandLine parseExplainCommandLine( Asks asks, int argc, const char * const * argv );

/// What is wrong with a command line that has these words too many, in their order. The library
/// that takes command lines apart tells them the other way round.
std::string notExpected( const std::vector< std::string > & words );

/// Whether this is such a command line.
bool isExplain( int argc, const char * const * argv ) noexcept;

} // namespace Explain
