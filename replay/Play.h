#pragma once

#include "platform/Vex/Seconds.h"
#include "replay/CommandLine.h"
#include "replay/Writer.h"

#include <cstdint>
#include <functional>

namespace Replay {

/// Exit statuses of the program.
enum ExitStatus : std::uint8_t { allHeld = 0, someFailed = 1, somethingWrong = 2 };

/// The terminal on which people wait for the end of a long run.
struct Watched {
   int terminal = -1; // standard error, where it is one; else nobody waits
   std::function< Vex::Seconds() > realTime;
};

/// Reads and runs the scenarios one after the other, up to the first that is wrong; its error goes
/// to standard error.
ExitStatus play( const Options & options, Writer & writer, const Watched & watched );

} // namespace Replay
