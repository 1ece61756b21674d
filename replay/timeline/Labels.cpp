#include "replay/timeline/Labels.h"

#include "replay/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace Replay::Timeline {

namespace {

constexpr double longest = 1e9; // seconds that are written out
// Widths of characters as parts of the font's size.
constexpr double letterWidth = 0.62;
constexpr double wideWidth = 1.05; // not ASCII: perhaps an ideogram

constexpr bool isLead( char c ) noexcept {
   return ( static_cast< unsigned char >( c ) & 0xC0U ) != 0x80U;
}

constexpr double widthOf( char lead ) noexcept {
   return static_cast< unsigned char >( lead ) < 0x80U ? letterWidth : wideWidth;
}

std::string written( double value, std::chars_format format, int precision ) {
   std::array< char, 64 > digits{};
   const auto [ end, error ] =
      std::to_chars( digits.data(), digits.data() + digits.size(), value, format, precision );
   return { digits.data(), end };
}

} // namespace

std::string timeLabel( Vex::Seconds time ) {
   return time.value() >= longest ? written( time.value(), std::chars_format::general, 9 )
                                  : decimal( Vex::Seconds( roundedToMicroseconds( time ) ) );
}

std::string tickLabel( Vex::Seconds time, double step ) {
   if ( time.value() >= longest ) {
      return timeLabel( time );
   }
   constexpr int finest = 12;
   const int decimals = static_cast< int >( -std::floor( std::log10( step ) + 1e-9 ) );
   return written( time.value(), std::chars_format::fixed, std::clamp( decimals, 0, finest ) );
}

double textWidth( std::string_view text, double size ) noexcept {
   double width = 0;
   for ( const char c : text ) {
      width += isLead( c ) ? widthOf( c ) : 0;
   }
   return width * size;
}

std::string shortened( std::string_view text, double size, double room ) {
   if ( textWidth( text, size ) <= room ) {
      return std::string( text );
   }
   double left = room / size - wideWidth; // for the dots
   std::size_t end = 0;
   while ( end < text.size() && left >= widthOf( text[ end ] ) ) {
      left -= widthOf( text[ end ] );
      ++end;
      while ( end < text.size() && !isLead( text[ end ] ) ) {
         ++end;
      }
   }
   return std::string( text.substr( 0, end ) ) + "…";
}

} // namespace Replay::Timeline
