#pragma once

#include <string>

namespace Replay {

/// The name of standard input on the command line.
inline constexpr const char * standardInput = "-";

/// The whole file, or standard input. A ScenarioError when it cannot be read.
std::string readScenarioFile( const std::string & name );

} // namespace Replay
