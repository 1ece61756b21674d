#pragma once

#include "replay/Lexer.h"
#include "replay/Statement.h"

#include <cstdint>
#include <span>

namespace Replay {

/// Who is told what to do; errors name only what this one takes.
enum class Listener : std::uint8_t {
   story, // that is played: every statement
   agent, // that runs: what changes entities, and `start`
};

/// The statement that the words of a line make; there is at least one. A StatementError when they
/// make none, or none for this listener. An agent may be told to start what it does not run: it
/// says itself why it does not.
Statement parseStatement( std::span< const Word > line, Listener listener = Listener::story );

/// The StatementError of an agent that is told a statement of a story.
[[noreturn]] void throwPlayed( std::span< const Word > line );

} // namespace Replay
