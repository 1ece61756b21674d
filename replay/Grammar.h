#pragma once

#include "replay/Lexer.h"
#include "replay/Statement.h"

#include <span>

namespace Replay {

/// The statement that the words of a line make; there is at least one. A StatementError when they
/// make none.
Statement parseStatement( std::span< const Word > line );

} // namespace Replay
