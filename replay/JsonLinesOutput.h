#pragma once

#include "replay/Output.h"

#include <memory>

namespace Replay {

/// One JSON object a line, for programs.
std::unique_ptr< Output > jsonLinesOutput( Writer & writer );

} // namespace Replay
