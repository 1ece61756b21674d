#pragma once

#include "replay/Output.h"

#include <memory>

namespace Replay {

/// A timeline for people.
std::unique_ptr< Output > textOutput( Writer & writer );

} // namespace Replay
