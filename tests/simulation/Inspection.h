#pragma once

#include "interlock-model/StateMachine.h"
#include "platform/Vex/Ptr.h"
#include "replay/Entities.h"
#include "tests/simulation/Observed.h"

namespace Simulation {

/// What is seen of a switch, the insides of its interlock included; `controller` may be null.
Observed inspect( const Replay::Entities & entities,
                  const Vex::Ptr< InterlockModel::StateMachine > & controller );

} // namespace Simulation
