#pragma once

// How times and records of the ring-buffer trace are shown to people, by every program that does.

#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/Seconds.h"
#include "replay/Colours.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Replay {

/// "12.345", or "12.345678" where it takes that, with the points below each other.
std::string timeText( Vex::Seconds time );

/// What a trace message says, and where it comes from.
struct Origin {
   std::string_view source;
   std::uint32_t line;
   std::string_view function;
   unsigned level;
};

/// Appends a trace message, and SOURCE:LINE FUNCTION LEVEL where that is known.
void appendTrace( Line & line, std::string_view message, const std::optional< Origin > & origin );

/// Time, sequence number, message and origin.
Line ringLine( const Jotter::Record & record );

/// False for a record whose call site the trace file does not describe.
bool callSiteKnown( const Jotter::Record & record ) noexcept;

} // namespace Replay
