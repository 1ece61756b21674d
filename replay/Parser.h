#pragma once

#include "replay/Scenario.h"

#include <string_view>

namespace Replay {

/// Reads a whole scenario. A ScenarioError for the first line that is wrong.
Scenario parseScenario( std::string_view text );

} // namespace Replay
