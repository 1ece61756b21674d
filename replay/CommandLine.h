#pragma once

#include "replay/Colours.h"
#include "replay/Runner.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Replay {

enum class OutputKind : std::uint8_t { text, jsonLines };
enum class ClockKind : std::uint8_t { virtualTime, realTime };

struct Options {
   OutputKind output = OutputKind::text;
   ClockKind clock = ClockKind::virtualTime;
   UseColours colours = UseColours::automatically;
   bool quiet = false; // only what failed is shown
   RunOptions run;
   std::optional< std::string > traceFile; // to be made, for the records of the only scenario
   std::optional< std::string > timeline; // to be written: the picture of the only scenario
   bool summary = false; // at the end: how long each member was held, and by what
   std::vector< std::string > scenarios;
};

/// What the command line says: options to run with, or a text for standard output (help, version),
/// or what is wrong with it.
struct CommandLine {
   std::optional< Options > options;
   std::string text;
   std::string error;
};

CommandLine parseCommandLine( int argc, const char * const * argv );

} // namespace Replay
