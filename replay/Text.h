#pragma once

// UTF-8 text as it comes in and as it is shown.

#include <cstddef>
#include <string>
#include <string_view>

namespace Replay {

/// The bytes at the beginning of a text that belong together.
struct Character {
   std::size_t length;
   bool wellFormed; // else as much of a character as is there, or one byte that begins none
};

/// Of a text that is not empty.
Character firstCharacter( std::string_view text ) noexcept;

/// The place of the first byte that is no UTF-8; npos when all of it is.
std::size_t firstMalformed( std::string_view text ) noexcept;

/// True for the characters that move a terminal's cursor, or worse: U+0000 to U+001F and U+007F.
constexpr bool isControl( char c ) noexcept {
   const auto byte = static_cast< unsigned char >( c );
   return byte < 0x20U || byte == 0x7FU;
}

/// True for a character that a reader does not see, or takes for an ordinary blank: the no-break
/// space, marks of no width, and those that turn the direction of what follows. Of a character that
/// is well-formed.
bool isUnseen( std::string_view character ) noexcept;

/// What of a file's text is meant: some editors begin one with a byte order mark.
std::string_view withoutByteOrderMark( std::string_view text ) noexcept;

/// Each byte of `text` as \xNN, whatever it is.
std::string asBytes( std::string_view text );

/// Appends `text` as it may be shown to people: control characters and malformed bytes as \xNN.
void appendPrintable( std::string & out, std::string_view text );

/// For messages: printable, in single quotes, and shortened when it is long.
std::string inQuotes( std::string_view word );

/// How many characters a text has, which is how many columns it takes, near enough for aligning.
std::size_t columns( std::string_view text ) noexcept;

} // namespace Replay
