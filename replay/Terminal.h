#pragma once

// What standard output or standard error leads to.

#include <cstddef>

namespace Replay {

/// A terminal that knows the usual control sequences, by what the environment says of it.
bool isTerminal( int descriptor ) noexcept;

/// How many columns it has now; those of the usual one where it does not say.
std::size_t columnsOf( int terminal ) noexcept;

} // namespace Replay
