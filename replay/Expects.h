#pragma once

#include "replay/Output.h"
#include "replay/Statement.h"
#include "replay/Switch.h"
#include "replay/TraceCapture.h"

namespace Replay {

/// What an `expect` asks for, held against how things stand.
Finding find( const ExpectOutput & expect, const Switch & device );
Finding find( const ExpectJoined & expect, const Switch & device );
Finding find( const ExpectRequest & expect, const Switch & device );
Finding find( const ExpectTrace & expect, const TraceCapture & traces );

} // namespace Replay
