#include "replay/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace Replay {

namespace {

constexpr bool isDigit( char c ) noexcept {
   return '0' <= c && c <= '9';
}

} // namespace

std::optional< std::uint32_t > parseNumber( std::string_view word,
                                            std::uint32_t least,
                                            std::uint32_t most ) noexcept {
   std::uint32_t value = 0;
   const auto [ end, error ] = std::from_chars( word.data(), word.data() + word.size(), value );
   const bool whole = error == std::errc() && end == word.data() + word.size();
   return whole && least <= value && value <= most ? std::optional( value ) : std::nullopt;
}

std::optional< Vex::Seconds > parseSeconds( std::string_view word ) noexcept {
   const std::size_t point = std::min( word.find( '.' ), word.size() );
   const std::string_view whole = word.substr( 0, point );
   const std::string_view part = word.substr( std::min( point + 1, word.size() ) );
   const bool someDigit = !whole.empty() || !part.empty();
   if ( !someDigit || !std::ranges::all_of( whole, isDigit ) ||
        !std::ranges::all_of( part, isDigit ) ) {
      return std::nullopt;
   }
   double value = 0;
   const auto [ end, error ] =
      std::from_chars( word.data(), word.data() + word.size(), value, std::chars_format::fixed );
   if ( error == std::errc::result_out_of_range ) {
      // Too large, or so small that it is nothing.
      const bool tooLarge = std::ranges::any_of( whole, []( char c ) { return c != '0'; } );
      return tooLarge ? std::nullopt : std::optional( Vex::Seconds( 0 ) );
   }
   return Vex::Seconds( value );
}

std::string decimal( Vex::Seconds seconds ) {
   // The largest double has 309 digits before the point, the smallest 1074 behind it.
   std::array< char, 1100 > digits{};
   const auto [ end, error ] = std::to_chars( digits.data(), digits.data() + digits.size(),
                                              seconds.value(), std::chars_format::fixed );
   return { digits.data(), end };
}

double roundedToMicroseconds( Vex::Seconds seconds ) noexcept {
   constexpr double microseconds = 1e6;
   // From here on neighbouring doubles are a microsecond apart, or more.
   constexpr double exact = 4503599627.370496;
   const double value = seconds.value();
   return value < exact ? std::round( value * microseconds ) / microseconds : value;
}

} // namespace Replay
