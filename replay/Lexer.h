#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Replay {

/// One word of a statement; a view into its line.
struct Word {
   std::string_view text; // without the quotes
   bool quoted;
};

/// Splits a line, without its end, into words, which replace those in `words`; a comment is left
/// out. A StatementError when a quote is out of place, when the line is no UTF-8 text, or when a
/// word without quotes has a control character in it, or one that is not seen.
void splitWords( std::string_view line, std::vector< Word > & words );

/// Appends the words as a line that splits into the same ones, with one blank between two.
void appendWords( std::string & out, std::span< const Word > words );

} // namespace Replay
