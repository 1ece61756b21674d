#pragma once

#include "platform/Vex/Seconds.h"
#include "replay/Numbers.h"

#include <string>

namespace Explain {

/// "1.25 s", to the microsecond.
inline std::string moment( Vex::Seconds time ) {
   return Replay::decimal( Vex::Seconds( Replay::roundedToMicroseconds( time ) ) ) + " s";
}

} // namespace Explain
