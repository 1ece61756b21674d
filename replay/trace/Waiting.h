#pragma once

// Waiting for the next look at a file that is followed, for as long as anybody wants one.

#include <functional>

namespace TraceTool {

/// Passes the time to the next look; false: nobody wants one.
using Waiting = std::function< bool() >;

/// Waits of a tenth of a second. It is the end when SIGINT or SIGTERM has come since this call, or
/// when nobody reads any more what is written to the descriptor `out`. For one in the process.
Waiting waitingFor( int out );

} // namespace TraceTool
