#pragma once

#include "replay/Output.h"

#include <memory>

namespace Replay {

/// A timeline for people.
std::unique_ptr< Output > textOutput( Writer & writer );

/// The same with colours.
std::unique_ptr< Output > colouredTextOutput( Writer & writer );

} // namespace Replay
