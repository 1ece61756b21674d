#pragma once

// Numbers as scenarios write them: plain decimal digits, no sign, no exponent.

#include "platform/Vex/Seconds.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Replay {

/// A whole number from `least` to `most`; nothing when `word` is none.
std::optional< std::uint32_t > parseNumber( std::string_view word,
                                            std::uint32_t least,
                                            std::uint32_t most ) noexcept;

/// Seconds such as 2, 0.25 or .5: the double nearest to the decimal number. Nothing when `word` is
/// no such number, or larger than every double.
std::optional< Vex::Seconds > parseSeconds( std::string_view word ) noexcept;

/// A decimal number that is read back as the same time, as short as can be; never an exponent.
std::string decimal( Vex::Seconds seconds );

/// The nearest whole microsecond, in seconds.
double roundedToMicroseconds( Vex::Seconds seconds ) noexcept;

} // namespace Replay
