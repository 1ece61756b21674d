#pragma once

#include "replay/Writer.h"
#include "replay/trace/Program.h"

namespace TraceTool {

/// The whole of `interlock-trace explain MEMBER LAG FILE`: the answer goes to `out`, what is wrong
/// to `err`. The exit status: allRead where there is an answer, damaged where nothing is known of
/// the member, unusable as ever.
ExitStatus explainTrace( int argc,
                         const char * const * argv,
                         Replay::Writer & out,
                         Replay::Writer & err );

} // namespace TraceTool
