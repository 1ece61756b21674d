#pragma once

// Texts of the picture: times, and how much room a text takes.

#include "platform/Vex/Seconds.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Replay::Timeline {

/// Exact to the microsecond, without unit; very long ones with an exponent.
std::string timeLabel( Vex::Seconds time );
/// As exact as multiples of `step` are.
std::string tickLabel( Vex::Seconds time, double step );

/// About how wide a text is, in the font of the picture, at this size. Rather too wide.
double textWidth( std::string_view text, double size ) noexcept;
/// As much of a text as has room, with "…" where that is not all.
std::string shortened( std::string_view text, double size, double room );

} // namespace Replay::Timeline
