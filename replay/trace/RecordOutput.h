#pragma once

// How records are shown: as interlock-replay shows those of the ring-buffer trace, as text or as
// JSON objects. An object here says more: sequence, level, function, and the pieces with their
// kinds.

#include "platform/Jotter/TraceReader.h"
#include "replay/Writer.h"

#include <cstdint>

namespace TraceTool {

enum class OutputKind : std::uint8_t { text, jsonLines };

/// Writes one line; of text with colours, if they are wanted.
void show( const Jotter::Record & record, OutputKind kind, bool colours, Replay::Writer & writer );

} // namespace TraceTool
