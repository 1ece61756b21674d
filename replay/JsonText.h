#pragma once

// JSON, written value by value onto the end of a text. It needs no memory but the text's own: where
// that runs out there is std::bad_alloc, and the text ends somewhere in a value.

#include <concepts>
#include <cstdint>
#include <functional>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>

namespace Replay {

/// Borrows the text, which outlives it. Commas come by themselves: values that follow each other
/// are the elements of a list, or the members of an object where each has its key in front of it.
class JsonText {
 public:
   explicit JsonText( std::string & out ) noexcept : out_( out ) {}

   void beginObject() { begin( '{' ); }
   void endObject() { end( '}' ); }
   void beginList() { begin( '[' ); }
   void endList() { end( ']' ); }
   void key( std::string_view name ) {
      value( name );
      out_ += ':';
      comma_ = false;
   }

   /// Malformed UTF-8 becomes U+FFFD.
   void value( std::string_view text );
   /// As short as is read back as the same double, with a point or an exponent; null when it is not
   /// finite, for which JSON has no number.
   void value( double number );
   /// A whole number, or a truth value: nothing is converted to bool on its way here.
   template < std::unsigned_integral Value >
   void value( Value number ) {
      if constexpr ( std::same_as< Value, bool > ) {
         word( number ? "true" : "false" );
      } else {
         wholeNumber( number );
      }
   }
   /// Nothing is null.
   template < class Value >
   void value( const std::optional< Value > & perhaps ) {
      if ( perhaps ) {
         value( *perhaps );
      } else {
         word( "null" );
      }
   }
   /// A list.
   template < std::ranges::input_range Range >
      requires( !std::convertible_to< const Range &, std::string_view > )
   void value( const Range & elements ) {
      beginList();
      for ( const auto & element : elements ) {
         value( element );
      }
      endList();
   }
   /// What `write` writes, which is one value.
   template < std::invocable< JsonText & > Write >
   void value( const Write & write ) {
      std::invoke( write, *this );
   }

 private:
   void wholeNumber( std::uint64_t number );
   void separate() {
      if ( comma_ ) {
         out_ += ',';
      }
      comma_ = true;
   }
   void word( std::string_view text ) {
      separate();
      out_ += text;
   }
   void begin( char bracket ) {
      separate();
      out_ += bracket;
      comma_ = false;
   }
   void end( char bracket ) {
      out_ += bracket;
      comma_ = true;
   }

   std::string & out_;
   bool comma_ = false; // before the next value
};

} // namespace Replay
