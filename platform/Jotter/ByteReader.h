#pragma once

// Reads numbers and texts off the front of a byte sequence, and never past its end.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

namespace Jotter {

class ByteReader {
 public:
   explicit ByteReader( std::span< const std::byte > bytes ) noexcept : left_( bytes ) {}

   template < class T >
      requires std::is_arithmetic_v< T >
   std::optional< T > number() noexcept {
      if ( left_.size() < sizeof( T ) ) {
         return std::nullopt;
      }
      T value{};
      std::memcpy( &value, left_.data(), sizeof value );
      left_ = left_.subspan( sizeof value );
      return value;
   }

   std::optional< std::string_view > text( std::size_t length ) noexcept {
      if ( left_.size() < length ) {
         return std::nullopt;
      }
      const std::string_view text( reinterpret_cast< const char * >( left_.data() ), length );
      left_ = left_.subspan( length );
      return text;
   }

   /// A text behind its length of two bytes.
   std::optional< std::string_view > text() noexcept {
      const auto length = number< std::uint16_t >();
      return length ? text( *length ) : std::nullopt;
   }

 private:
   std::span< const std::byte > left_;
};

} // namespace Jotter
