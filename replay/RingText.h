#pragma once

// How times and records of the ring-buffer trace are shown to people, by every program that does.

#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/Seconds.h"

#include <string>
#include <string_view>

namespace Replay {

/// "12.345", or "12.345678" where it takes that, with the points below each other.
std::string timeText( Vex::Seconds time );

/// Appends a trace message and the blanks up to where its origin stands.
void appendMessage( std::string & line, std::string_view message );

/// One line, without its end: time, sequence number, message, and SOURCE:LINE FUNCTION LEVEL where
/// the call site is known.
std::string ringLine( const Jotter::Record & record );

/// False for a record whose call site the trace file does not describe.
bool callSiteKnown( const Jotter::Record & record ) noexcept;

} // namespace Replay
