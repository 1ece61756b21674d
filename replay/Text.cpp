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

void appendHex( std::string & out, char c ) {
   constexpr std::string_view digits = "0123456789abcdef";
   const auto byte = static_cast< unsigned char >( c );
   out += "\\x";
   out += digits[ byte >> 4U ];
   out += digits[ byte & 0xFU ];
}

// The characters that are not seen, by their bytes: UTF-8 sorts like the code points.
struct Unseen {
   std::string_view first;
   std::string_view last;
};
constexpr std::array unseen{
   Unseen{ "\xC2\xA0", "\xC2\xA0" }, // U+00A0
   Unseen{ "\xE2\x80\x8B", "\xE2\x80\x8F" }, // U+200B to U+200F
   Unseen{ "\xE2\x80\xAA", "\xE2\x80\xAE" }, // U+202A to U+202E
   Unseen{ "\xE2\x81\xA0", "\xE2\x81\xA0" }, // U+2060
   Unseen{ "\xEF\xBB\xBF", "\xEF\xBB\xBF" }, // U+FEFF
};

// U+0080 to U+009F: control characters, too.
bool isSecondControlSet( std::string_view character ) noexcept {
   return character.size() == 2 && character[ 0 ] == '\xC2' &&
          static_cast< unsigned char >( character[ 1 ] ) < 0xA0U;
}

} // namespace

Character firstCharacter( std::string_view text ) noexcept {
   const auto first = static_cast< std::uint8_t >( text.front() );
   if ( first < 0x80U ) {
      return { 1, true };
   }
   const auto * const lead = std::ranges::find_if( leads, [ first ]( const Lead & candidate ) {
      return candidate.first <= first && first <= candidate.last;
   } );
   if ( lead == leads.end() || text.size() == 1 ) {
      return { 1, false };
   }
   const auto second = static_cast< std::uint8_t >( text[ 1 ] );
   if ( second < lead->secondFrom || lead->secondTo < second ) {
      return { 1, false };
   }
   const std::size_t most = std::min< std::size_t >( lead->length, text.size() );
   std::size_t length = 2;
   while ( length < most && isContinuation( text[ length ] ) ) {
      ++length;
   }
   return { length, length == lead->length };
}

std::size_t firstMalformed( std::string_view text ) noexcept {
   for ( std::size_t at = 0; at < text.size(); ) {
      const Character character = firstCharacter( text.substr( at ) );
      if ( !character.wellFormed ) {
         return at;
      }
      at += character.length;
   }
   return std::string_view::npos;
}

bool isUnseen( std::string_view character ) noexcept {
   return std::ranges::any_of( unseen, [ character ]( const Unseen & range ) {
      return range.first <= character && character <= range.last;
   } );
}

std::string_view withoutByteOrderMark( std::string_view text ) noexcept {
   constexpr std::string_view mark = "\xEF\xBB\xBF";
   return text.starts_with( mark ) ? text.substr( mark.size() ) : text;
}

std::string asBytes( std::string_view text ) {
   std::string bytes;
   for ( const char c : text ) {
      appendHex( bytes, c );
   }
   return bytes;
}

void appendPrintable( std::string & out, std::string_view text ) {
   for ( std::size_t at = 0; at < text.size(); ) {
      const auto [ length, wellFormed ] = firstCharacter( text.substr( at ) );
      const std::string_view character = text.substr( at, length );
      if ( !wellFormed || isControl( character[ 0 ] ) || isSecondControlSet( character ) ) {
         out += asBytes( character );
      } else {
         out += character;
      }
      at += length;
   }
}

std::string inQuotes( std::string_view word ) {
   std::size_t end = 0;
   for ( std::size_t shown = 0; end < word.size() && shown < longestShown; ++shown ) {
      end += firstCharacter( word.substr( end ) ).length;
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
