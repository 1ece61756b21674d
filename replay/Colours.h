#pragma once

// Colours for people who read at a terminal. They come on top of a finished line: its text is the
// same without them.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Replay {

enum class UseColours : std::uint8_t { automatically, always, never };

/// As command lines say it: auto, always or never; nothing for any other word.
std::optional< UseColours > parseUseColours( std::string_view word ) noexcept;

/// What was asked for; automatically: where `descriptor` is a terminal and nothing in the
/// environment speaks against it (NO_COLOR, TERM).
bool wantsColours( UseColours use, int descriptor ) noexcept;

/// What a part of a line is to its reader.
enum class Tone : std::uint8_t {
   heading,
   time,
   aside, // where it comes from: numbers, source lines
   good, // a port may join, an expect held
   waiting, // a port is held, a message is lost
   bad // what somebody must look at
};

/// A line on its way out, without its end, and the tones of its parts.
class Line {
 public:
   std::string text;

   /// The text from `begin` on, as far as it goes now. In order, and no part twice.
   void toneFrom( std::size_t begin, Tone tone ) {
      marks_.push_back( { begin, text.size(), tone } );
   }
   void append( Tone tone, std::string_view words ) {
      const std::size_t begin = text.size();
      text += words;
      toneFrom( begin, tone );
   }
   void clear() noexcept {
      text.clear();
      marks_.clear();
   }
   /// Its text, with colours.
   std::string coloured() const;

 private:
   struct Mark {
      std::size_t begin;
      std::size_t end;
      Tone tone;
   };
   std::vector< Mark > marks_;
};

} // namespace Replay
