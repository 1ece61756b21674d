#pragma once

#include "replay/CommandLine.h"
#include "replay/Writer.h"

#include <cstdint>

namespace Replay {

/// Exit statuses of the program.
enum ExitStatus : std::uint8_t { allHeld = 0, someFailed = 1, somethingWrong = 2 };

/// Reads and runs the scenarios one after the other, up to the first that is wrong; its error goes
/// to standard error.
ExitStatus play( const Options & options, Writer & writer );

} // namespace Replay
