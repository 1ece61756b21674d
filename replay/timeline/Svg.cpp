#include "replay/timeline/Svg.h"

#include "replay/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace Replay::Timeline {

namespace {

constexpr std::array< std::pair< char, std::string_view >, 4 > entities{
   { { '<', "&lt;" }, { '>', "&gt;" }, { '&', "&amp;" }, { '"', "&quot;" } } };

} // namespace

Svg & Svg::open( std::string_view name ) {
   out_ += '<';
   out_ += name;
   return *this;
}

Svg & Svg::attribute( std::string_view name, std::string_view value ) {
   out_ += ' ';
   out_ += name;
   out_ += "=\"";
   escaped( value );
   out_ += '"';
   return *this;
}

Svg & Svg::attribute( std::string_view name, double value ) {
   constexpr double hundredths = 100;
   std::array< char, 512 > digits{}; // the largest double has 309 before the point
   const double rounded = std::round( value * hundredths ) / hundredths;
   const auto [ end, error ] =
      std::to_chars( digits.data(), digits.data() + digits.size(), rounded + 0.0, // no -0
                     std::chars_format::fixed );
   return attribute( name, std::string_view( digits.data(), end ) );
}

void Svg::close() {
   out_ += "/>\n";
}

void Svg::content() {
   out_ += ">\n";
}

void Svg::end( std::string_view name ) {
   out_ += "</";
   out_ += name;
   out_ += ">\n";
}

void Svg::text( std::string_view name, std::string_view text ) {
   out_ += '>';
   escaped( text );
   end( name );
}

void Svg::label( double x, double y, std::string_view style, std::string_view text ) {
   open( "text" ).attribute( "x", x ).attribute( "y", y );
   if ( !style.empty() ) {
      attribute( "class", style );
   }
   this->text( "text", text );
}

Svg & Svg::line( double fromX, double fromY, double toX, double toY ) {
   return open( "line" )
      .attribute( "x1", fromX )
      .attribute( "y1", fromY )
      .attribute( "x2", toX )
      .attribute( "y2", toY );
}

// Ends of lines are kept: a hover text may have some. U+FFFE and U+FFFF are no characters of XML.
void Svg::escaped( std::string_view text ) {
   std::string shown;
   for ( std::size_t at = 0; at <= text.size(); ) {
      const std::size_t end = std::min( text.find( '\n', at ), text.size() );
      appendPrintable( shown, text.substr( at, end - at ) );
      shown += end < text.size() ? "\n" : "";
      at = end + 1;
   }
   for ( std::size_t at = 0; at < shown.size(); ++at ) {
      const std::string_view three = std::string_view( shown ).substr( at, 3 );
      if ( three == "\xEF\xBF\xBE" || three == "\xEF\xBF\xBF" ) {
         out_ += three.back() == '\xBE' ? "\\xef\\xbf\\xbe" : "\\xef\\xbf\\xbf";
         at += 2;
         continue;
      }
      const auto * const found =
         std::ranges::find( entities, shown[ at ], &std::pair< char, std::string_view >::first );
      if ( found != entities.end() ) {
         out_ += found->second;
      } else {
         out_ += shown[ at ];
      }
   }
}

} // namespace Replay::Timeline
