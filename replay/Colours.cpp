#include "replay/Colours.h"

#include "replay/Terminal.h"

#include <algorithm>
#include <cstdlib>

namespace Replay {

namespace {

// Of the eight colours that every terminal has, and that its user has chosen to be readable.
std::string_view sequenceFor( Tone tone ) noexcept {
   switch ( tone ) {
   case Tone::heading:
      return "\x1b[1m";
   case Tone::time:
      return "\x1b[36m";
   case Tone::aside:
      return "\x1b[2m";
   case Tone::good:
      return "\x1b[32m";
   case Tone::waiting:
      return "\x1b[33m";
   case Tone::bad:
      return "\x1b[1;31m";
   }
   return {};
}

constexpr std::string_view plain = "\x1b[0m";

// NO_COLOR counts whatever it says, unless it says nothing.
bool environmentHasNoColours() noexcept {
   const char * const noColour = std::getenv( "NO_COLOR" );
   return noColour != nullptr && *noColour != '\0';
}

} // namespace

std::optional< UseColours > parseUseColours( std::string_view word ) noexcept {
   if ( word == "auto" ) {
      return UseColours::automatically;
   }
   if ( word == "always" ) {
      return UseColours::always;
   }
   return word == "never" ? std::optional( UseColours::never ) : std::nullopt;
}

bool wantsColours( UseColours use, int descriptor ) noexcept {
   switch ( use ) {
   case UseColours::automatically:
      return !environmentHasNoColours() && isTerminal( descriptor );
   case UseColours::always:
      return true;
   case UseColours::never:
      return false;
   }
   return false;
}

std::string Line::coloured() const {
   std::string out;
   std::size_t done = 0;
   const std::string_view all = text;
   for ( const Mark & mark : marks_ ) {
      const std::size_t end = std::min( mark.end, all.size() ); // blanks may have gone from its end
      if ( mark.begin < end ) {
         out += all.substr( done, mark.begin - done );
         out += sequenceFor( mark.tone );
         out += all.substr( mark.begin, end - mark.begin );
         out += plain;
         done = end;
      }
   }
   out += all.substr( done );
   return out;
}

} // namespace Replay
