#pragma once

// Writes SVG 1.1, element by element. Numbers are written to a hundredth of a pixel, and so is the
// same text everywhere; texts are escaped, and what XML cannot hold is shown as \xNN.

#include <string>
#include <string_view>

namespace Replay::Timeline {

class Svg {
 public:
   explicit Svg( std::string & out ) noexcept : out_( out ) {}

   /// Opens <name; attributes follow, then content() or close().
   Svg & open( std::string_view name );
   Svg & attribute( std::string_view name, std::string_view value );
   Svg & attribute( std::string_view name, double value );
   /// Ends an element that has no content.
   void close();
   /// Begins the content of an element, which end() ends.
   void content();
   void end( std::string_view name );
   /// Ends an element, whose content is this text. Where `name` is empty, it is no element.
   void text( std::string_view name, std::string_view text );
   /// As it is; for styles and definitions, which are constants.
   void raw( std::string_view text ) { out_ += text; }

   Svg & box( double x, double y, double width, double height ) {
      return open( "rect" )
         .attribute( "x", x )
         .attribute( "y", y )
         .attribute( "width", width )
         .attribute( "height", height );
   }
   /// A line from here to there.
   Svg & line( double fromX, double fromY, double toX, double toY );
   /// A text at this place.
   void label( double x, double y, std::string_view style, std::string_view text );

 private:
   void escaped( std::string_view text );

   std::string & out_;
};

} // namespace Replay::Timeline
