#pragma once

#include <string>
#include <string_view>

namespace Replay {

/// The name of standard input on the command line.
inline constexpr const char * standardInput = "-";

/// The whole file, or standard input. When it cannot be read, a ScenarioError without a line, that
/// says which file is wanted.
std::string readScenarioFile( const std::string & name,
                              std::string_view wanted = "a scenario file" );

} // namespace Replay
