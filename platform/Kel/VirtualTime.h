#pragma once

// Time that its owner moves: a virtual clock and the schedulers that live on it. Moving in steps
// stops at each due moment on the way and runs what falls due there; VirtualClock::jumpTo moves at
// one stroke, as when a process was suspended.

#include "platform/Kel/TaskScheduler.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/Seconds.h"

namespace Kel {

/// Moves `clock` to `target` in steps. What is due at exactly `target` runs. `clock` must be the
/// framework's current clock; asserts that `target` is not in its past.
VEX_EXPORT void advanceTo( Vex::VirtualClock & clock,
                           TaskScheduler & scheduler,
                           Vex::Seconds target );

} // namespace Kel
