#pragma once

#include "replay/Writer.h"
#include "replay/trace/Waiting.h"

#include <cstdint>
#include <functional>

namespace TraceTool {

/// Exit statuses of the program.
enum ExitStatus : std::uint8_t { allRead = 0, damaged = 1, unusable = 2 };

/// The whole program, but for the process around it: records go to `out`, what is wrong to `err`,
/// one line each, in the order in which they belong. `startWaiting` is called before the first look
/// at a file that is followed, and what it gives between two looks.
ExitStatus run( int argc,
                const char * const * argv,
                Replay::Writer & out,
                Replay::Writer & err,
                const std::function< Waiting() > & startWaiting );

} // namespace TraceTool
