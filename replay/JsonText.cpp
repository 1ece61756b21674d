#include "replay/JsonText.h"

#include "replay/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Replay {

namespace {

constexpr bool isPlain( char c ) noexcept {
   const auto byte = static_cast< unsigned char >( c );
   return 0x20U <= byte && byte < 0x80U && c != '"' && c != '\\';
}

// A character that may not stand in a JSON text as it is.
void appendEscaped( std::string & out, char c ) {
   constexpr std::string_view those = "\"\\\b\f\n\r\t";
   constexpr std::string_view letters = "\"\\bfnrt";
   out += '\\';
   if ( const std::size_t at = those.find( c ); at != std::string_view::npos ) {
      out += letters[ at ];
      return;
   }
   constexpr std::string_view digits = "0123456789abcdef";
   const auto byte = static_cast< unsigned char >( c );
   out += "u00";
   out += digits[ byte >> 4U ];
   out += digits[ byte & 0xFU ];
}

} // namespace

void JsonText::value( std::string_view text ) {
   constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD
   word( "\"" );
   while ( !text.empty() ) {
      const auto * const special = std::ranges::find_if_not( text, isPlain );
      const auto plain = static_cast< std::size_t >( special - text.begin() );
      out_ += text.substr( 0, plain );
      text.remove_prefix( plain );
      if ( text.empty() ) {
         break;
      }
      const Character character = firstCharacter( text );
      if ( !character.wellFormed ) {
         out_ += replacement;
      } else if ( character.length > 1 ) {
         out_ += text.substr( 0, character.length );
      } else {
         appendEscaped( out_, text.front() );
      }
      text.remove_prefix( character.length );
   }
   out_ += '"';
}

void JsonText::value( double number ) {
   if ( !std::isfinite( number ) ) {
      word( "null" );
      return;
   }
   // Between these a number is written without an exponent; all of its digits are exact there.
   constexpr double least = 1e-4;
   constexpr double beyond = 1e15;
   const double size = std::abs( number );
   const bool plain = number == 0 || ( least <= size && size < beyond );
   std::array< char, 32 > digits{};
   const auto [ end, error ] =
      std::to_chars( digits.data(), digits.data() + digits.size(), number,
                     plain ? std::chars_format::fixed : std::chars_format::scientific );
   const std::string_view text( digits.data(), end );
   word( text );
   if ( plain && text.find( '.' ) == std::string_view::npos ) {
      out_ += ".0";
   }
}

void JsonText::wholeNumber( std::uint64_t number ) {
   std::array< char, 20 > digits{}; // of 2^64
   const auto [ end, error ] =
      std::to_chars( digits.data(), digits.data() + digits.size(), number );
   word( { digits.data(), end } );
}

} // namespace Replay
