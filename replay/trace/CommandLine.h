#pragma once

#include "replay/Colours.h"
#include "replay/trace/Filter.h"
#include "replay/trace/RecordOutput.h"

#include <cstdint>
#include <optional>
#include <string>

namespace TraceTool {

struct Options {
   std::string file;
   OutputKind output = OutputKind::text;
   Replay::UseColours colours = Replay::UseColours::automatically;
   Filter filter;
   std::optional< std::uint32_t > last; // so many of those that match
   bool follow = false;
};

/// What the command line says: options to run with, or a text for standard output (help, version),
/// or what is wrong with it.
struct CommandLine {
   std::optional< Options > options;
   std::string text;
   std::string error;
};

CommandLine parseCommandLine( int argc, const char * const * argv );

} // namespace TraceTool
