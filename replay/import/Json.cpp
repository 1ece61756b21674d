#include "replay/import/Json.h"

#include "replay/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <utility>

namespace Import {

using Replay::inQuotes;

namespace {

constexpr std::size_t deepest = 100; // no configuration nests like this, and each level takes stack

constexpr bool isBlank( char c ) noexcept {
   return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
constexpr bool isDigit( char c ) noexcept {
   return '0' <= c && c <= '9';
}

std::optional< std::uint32_t > hexDigit( char c ) noexcept {
   constexpr std::string_view digits = "0123456789abcdef";
   const char lower = 'A' <= c && c <= 'F' ? static_cast< char >( c - 'A' + 'a' ) : c;
   const std::size_t at = digits.find( lower );
   return at == std::string_view::npos ? std::nullopt
                                       : std::optional( static_cast< std::uint32_t >( at ) );
}

void appendUtf8( std::string & out, std::uint32_t point ) {
   const auto put = [ & ]( std::uint32_t byte ) { out += static_cast< char >( byte ); };
   const auto tail = [ & ]( unsigned shift ) { put( 0x80U | ( point >> shift & 0x3FU ) ); };
   if ( point < 0x80U ) {
      put( point );
   } else if ( point < 0x800U ) {
      put( 0xC0U | point >> 6U );
      tail( 0 );
   } else if ( point < 0x10000U ) {
      put( 0xE0U | point >> 12U );
      tail( 6 );
      tail( 0 );
   } else {
      put( 0xF0U | point >> 18U );
      tail( 12 );
      tail( 6 );
      tail( 0 );
   }
}

class Reader {
 public:
   // Places are those in the whole text, a byte order mark included.
   explicit Reader( std::string_view text ) noexcept
       : text_( text ), at_( text.size() - Replay::withoutByteOrderMark( text ).size() ) {}

   JsonValue whole() {
      skipBlanks();
      if ( !more() ) {
         throw JsonError( at_, "the file is empty; wanted: a JSON object" );
      }
      JsonValue result = value( 0 );
      skipBlanks();
      if ( more() ) {
         fail( "the end of the file" );
      }
      return result;
   }

 private:
   bool more() const noexcept { return at_ < text_.size(); }
   bool next( char c ) const noexcept { return more() && text_[ at_ ] == c; }
   bool takeIf( char c ) noexcept {
      const bool taken = next( c );
      at_ += taken ? 1 : 0;
      return taken;
   }
   void skipBlanks() noexcept {
      while ( more() && isBlank( text_[ at_ ] ) ) {
         ++at_;
      }
   }
   // The word here, for messages.
   std::string here() const {
      if ( !more() ) {
         return "the end of the file";
      }
      constexpr std::string_view ends = " \t\n\r,:[]{}\"";
      const std::size_t end = std::min( text_.find_first_of( ends, at_ + 1 ), text_.size() );
      const bool single = ends.find( text_[ at_ ] ) != std::string_view::npos;
      return inQuotes( text_.substr( at_, single ? 1 : end - at_ ) );
   }
   [[noreturn]] void fail( std::string_view wanted ) const {
      throw JsonError( at_, here() + "; wanted: " + std::string( wanted ) );
   }

   // Recursion ends at the deepest level.
   // NOLINTNEXTLINE(misc-no-recursion)
   JsonValue value( std::size_t depth ) {
      if ( depth > deepest ) {
         throw JsonError( at_, "nested more than " + std::to_string( deepest ) +
                                  " levels deep; wanted: less" );
      }
      JsonValue result;
      result.at = at_;
      if ( next( '{' ) ) {
         result.kind = JsonKind::object;
         result.members = members( depth );
      } else if ( next( '[' ) ) {
         result.kind = JsonKind::array;
         result.items = items( depth );
      } else if ( next( '"' ) ) {
         result.kind = JsonKind::string;
         result.text = string();
      } else if ( next( '-' ) || ( more() && isDigit( text_[ at_ ] ) ) ) {
         result.kind = JsonKind::number;
         result.text = number();
      } else {
         result.kind = literal();
         result.text = text_.substr( result.at, at_ - result.at );
      }
      return result;
   }

   // NOLINTNEXTLINE(misc-no-recursion)
   std::vector< JsonMember > members( std::size_t depth ) {
      std::vector< JsonMember > all;
      std::unordered_set< std::string > keys;
      ++at_;
      skipBlanks();
      if ( takeIf( '}' ) ) {
         return all;
      }
      do {
         skipBlanks();
         JsonMember member;
         member.at = at_;
         if ( !next( '"' ) ) {
            fail( "a key in double quotes" );
         }
         member.key = string();
         if ( !keys.insert( member.key ).second ) {
            throw JsonError( member.at, "the key " + inQuotes( member.key ) +
                                           " stands here twice; wanted: each key once" );
         }
         skipBlanks();
         if ( !takeIf( ':' ) ) {
            fail( "':' behind the key" );
         }
         skipBlanks();
         member.value = value( depth + 1 );
         all.push_back( std::move( member ) );
         skipBlanks();
      } while ( takeIf( ',' ) );
      if ( !takeIf( '}' ) ) {
         fail( "',' or '}'" );
      }
      return all;
   }

   // NOLINTNEXTLINE(misc-no-recursion)
   std::vector< JsonValue > items( std::size_t depth ) {
      std::vector< JsonValue > all;
      ++at_;
      skipBlanks();
      if ( takeIf( ']' ) ) {
         return all;
      }
      do {
         skipBlanks();
         all.push_back( value( depth + 1 ) );
         skipBlanks();
      } while ( takeIf( ',' ) );
      if ( !takeIf( ']' ) ) {
         fail( "',' or ']'" );
      }
      return all;
   }

   std::string string() {
      const std::size_t begin = at_++;
      std::string out;
      while ( !takeIf( '"' ) ) {
         if ( !more() ) {
            throw JsonError( begin, "a text that does not end; wanted: '\"' behind it" );
         }
         const char c = text_[ at_ ];
         if ( static_cast< unsigned char >( c ) < 0x20U ) {
            fail( "no control character in a text" );
         }
         if ( c == '\\' ) {
            escape( out );
         } else {
            out += c;
            ++at_;
         }
      }
      return out;
   }

   void escape( std::string & out ) {
      constexpr std::string_view escapes = "\"\\/bfnrt";
      constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
      const std::size_t begin = at_++;
      const std::size_t found = more() ? escapes.find( text_[ at_ ] ) : std::string_view::npos;
      if ( found != std::string_view::npos ) {
         out += meanings[ found ];
         ++at_;
         return;
      }
      if ( !takeIf( 'u' ) ) {
         throw JsonError( begin, "an escape that there is not; wanted: one of \\\" \\\\ \\/ \\b "
                                 "\\f \\n \\r \\t \\uXXXX" );
      }
      std::uint32_t point = hex( begin );
      if ( 0xD800U <= point && point < 0xDC00U && takeIf( '\\' ) && takeIf( 'u' ) ) {
         const std::uint32_t low = hex( begin );
         if ( 0xDC00U <= low && low < 0xE000U ) {
            point = 0x10000U + ( ( point - 0xD800U ) << 10U ) + ( low - 0xDC00U );
         }
      }
      if ( 0xD800U <= point && point < 0xE000U ) {
         throw JsonError( begin, "half a surrogate pair; wanted: both halves" );
      }
      appendUtf8( out, point );
   }

   std::uint32_t hex( std::size_t begin ) {
      constexpr int digits = 4;
      std::uint32_t value = 0;
      for ( int count = 0; count < digits; ++count, ++at_ ) {
         const auto digit = more() ? hexDigit( text_[ at_ ] ) : std::nullopt;
         if ( !digit ) {
            throw JsonError( begin, "\\u without four hexadecimal digits; wanted: \\uXXXX" );
         }
         value = value << 4U | *digit;
      }
      return value;
   }

   std::string number() {
      const std::size_t begin = at_;
      takeIf( '-' );
      const std::size_t whole = digits();
      const bool leadingZero = whole > 1 && text_[ at_ - whole ] == '0';
      bool right = whole > 0 && !leadingZero;
      if ( takeIf( '.' ) ) {
         right = digits() > 0 && right;
      }
      if ( takeIf( 'e' ) || takeIf( 'E' ) ) {
         if ( !takeIf( '+' ) ) {
            takeIf( '-' );
         }
         right = digits() > 0 && right;
      }
      if ( !right ) {
         at_ = begin;
         fail( "a number" );
      }
      return std::string( text_.substr( begin, at_ - begin ) );
   }
   std::size_t digits() noexcept {
      const std::size_t begin = at_;
      while ( more() && isDigit( text_[ at_ ] ) ) {
         ++at_;
      }
      return at_ - begin;
   }

   JsonKind literal() {
      constexpr std::array< std::pair< std::string_view, JsonKind >, 3 > literals{
         { { "true", JsonKind::boolean },
           { "false", JsonKind::boolean },
           { "null", JsonKind::null } } };
      for ( const auto & [ word, kind ] : literals ) {
         if ( text_.substr( at_ ).starts_with( word ) ) {
            at_ += word.size();
            return kind;
         }
      }
      fail( "a value" );
   }

   std::string_view text_;
   std::size_t at_;
};

} // namespace

std::string_view nameOf( JsonKind kind ) noexcept {
   static constexpr std::array< std::string_view, 6 > names{ "null",   "a boolean", "a number",
                                                             "a text", "a list",    "an object" };
   return names[ static_cast< std::size_t >( kind ) ];
}

JsonValue parseJson( std::string_view text ) {
   const std::size_t malformed = Replay::firstMalformed( text );
   if ( malformed != std::string_view::npos ) {
      throw JsonError( malformed, "a byte that is no UTF-8; wanted: UTF-8 text" );
   }
   return Reader( text ).whole();
}

Place placeOf( std::string_view text, std::size_t at ) noexcept {
   const std::string_view before = text.substr( 0, at );
   const auto lines = std::ranges::count( before, '\n' );
   const std::size_t begin = before.rfind( '\n' );
   const std::string_view line = begin == std::string_view::npos
                                    ? Replay::withoutByteOrderMark( before )
                                    : before.substr( begin + 1 );
   return { 1 + static_cast< std::size_t >( lines ), 1 + Replay::columns( line ) };
}

} // namespace Import
