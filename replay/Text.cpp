#include "replay/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace Replay {

namespace {

constexpr std::size_t longestShown = 48; // characters of a word in a message

// Of a lead byte: the length of its sequence, and the range of the byte that follows it, which is
// what leaves out overlong forms, surrogates and what is beyond U+10FFFF.
struct Lead {
   std::uint8_t first;
   std::uint8_t last;
   std::uint8_t length;
   std::uint8_t secondFrom;
   std::uint8_t secondTo;
};
constexpr std::array leads{
   Lead{ 0xC2, 0xDF, 2, 0x80, 0xBF }, Lead{ 0xE0, 0xE0, 3, 0xA0, 0xBF },
   Lead{ 0xE1, 0xEC, 3, 0x80, 0xBF }, Lead{ 0xED, 0xED, 3, 0x80, 0x9F },
   Lead{ 0xEE, 0xEF, 3, 0x80, 0xBF }, Lead{ 0xF0, 0xF0, 4, 0x90, 0xBF },
   Lead{ 0xF1, 0xF3, 4, 0x80, 0xBF }, Lead{ 0xF4, 0xF4, 4, 0x80, 0x8F },
};

constexpr bool isContinuation( char c ) noexcept {
   return ( static_cast< unsigned char >( c ) & 0xC0U ) == 0x80U;
}

// The length of the character that begins at `at`; 0 when it is malformed.
std::size_t characterLength( std::string_view text, std::size_t at ) noexcept {
   const auto byte = static_cast< std::uint8_t >( text[ at ] );
   if ( byte < 0x80U ) {
      return 1;
   }
   const auto * const lead = std::ranges::find_if( leads, [ byte ]( const Lead & candidate ) {
      return candidate.first <= byte && byte <= candidate.last;
   } );
   if ( lead == leads.end() || text.size() - at < lead->length ) {
      return 0;
   }
   const auto second = static_cast< std::uint8_t >( text[ at + 1 ] );
   const bool whole =
      lead->secondFrom <= second && second <= lead->secondTo &&
      std::ranges::all_of( text.substr( at + 2, lead->length - 2U ), isContinuation );
   return whole ? lead->length : 0;
}

void appendHex( std::string & out, char c ) {
   constexpr std::string_view digits = "0123456789abcdef";
   const auto byte = static_cast< unsigned char >( c );
   out += "\\x";
   out += digits[ byte >> 4U ];
   out += digits[ byte & 0xFU ];
}

// U+0080 to U+009F: control characters, too.
bool isSecondControlSet( std::string_view character ) noexcept {
   return character.size() == 2 && character[ 0 ] == '\xC2' &&
          static_cast< unsigned char >( character[ 1 ] ) < 0xA0U;
}

} // namespace

std::size_t firstMalformed( std::string_view text ) noexcept {
   for ( std::size_t at = 0; at < text.size(); ) {
      const std::size_t length = characterLength( text, at );
      if ( length == 0 ) {
         return at;
      }
      at += length;
   }
   return std::string_view::npos;
}

void appendPrintable( std::string & out, std::string_view text ) {
   for ( std::size_t at = 0; at < text.size(); ) {
      const std::size_t length = characterLength( text, at );
      const std::string_view character = text.substr( at, std::max< std::size_t >( length, 1 ) );
      if ( length == 0 || isControl( character[ 0 ] ) || isSecondControlSet( character ) ) {
         for ( const char c : character ) {
            appendHex( out, c );
         }
      } else {
         out += character;
      }
      at += character.size();
   }
}

std::string inQuotes( std::string_view word ) {
   std::size_t end = 0;
   for ( std::size_t shown = 0; end < word.size() && shown < longestShown; ++shown ) {
      end += std::max< std::size_t >( characterLength( word, end ), 1 );
   }
   std::string text = "'";
   appendPrintable( text, word.substr( 0, end ) );
   if ( end < word.size() ) {
      text += "…";
   }
   text += '\'';
   return text;
}

std::size_t columns( std::string_view text ) noexcept {
   return text.size() - static_cast< std::size_t >( std::ranges::count_if( text, isContinuation ) );
}

} // namespace Replay
