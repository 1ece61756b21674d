#pragma once

#include "replay/Writer.h"

namespace Explain {

/// The whole of `interlock-replay explain MEMBER LAG SCENARIO`: the answer goes to `out`, what is
/// wrong to `err`. The exit status: 0 answered, 1 nothing is known of the member, 2 the command
/// line or the scenario is wrong, or `out` cannot be written.
int explainScenario( int argc,
                     const char * const * argv,
                     Replay::Writer & out,
                     Replay::Writer & err );

} // namespace Explain
