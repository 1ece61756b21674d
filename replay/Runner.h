#pragma once

#include "platform/Jotter/TraceFile.h"
#include "replay/HostClock.h"
#include "replay/Output.h"
#include "replay/Scenario.h"

#include <cstddef>
#include <cstdint>

namespace Replay {

class Progress;

struct RunOptions {
   std::uint32_t traceLevels = 0; // shown, as a bit mask
   bool ring = false;
   Jotter::TraceFile * traceFile = nullptr; // an empty one that the ring's records go to, if any
   Progress * progress = nullptr; // is told of each statement, if any
};

/// Runs a scenario on a fresh set of entities and returns how many expects failed. A ScenarioError
/// when a statement cannot be done. Stops early when the output cannot be written.
std::size_t runScenario( const Scenario & scenario,
                         const RunOptions & options,
                         HostClock & clock,
                         Output & output );

} // namespace Replay
