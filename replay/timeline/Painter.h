#pragma once

// Draws a chart from the top down: title, legend, axis, and the rows of each switch.

#include "replay/timeline/Chart.h"
#include "replay/timeline/Layout.h"
#include "replay/timeline/Svg.h"
#include "replay/timeline/TimeAxis.h"

#include <array>
#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Replay::Timeline {

// Measures, in pixels.
inline constexpr double margin = 16;
inline constexpr double textSize = 12;
inline constexpr double boldSize = 13; // the same text, but bold, takes more room
inline constexpr double smallSize = 10;
inline constexpr double memberIndent = 14;
inline constexpr double tailWidth = 112; // behind the end: how things stood there

/// The document around what is drawn.
void appendPage(
   std::string & out, std::string_view title, double width, double height, std::string_view body );

class Painter {
 public:
   /// `labels`: how wide the names of the rows are; `width`: the picture is.
   Painter( std::string & out, const TimeAxis & axis, double labels, double width )
       : svg_( out ), axis_( axis ), labels_( labels ), width_( width ) {}

   /// Returns how high the picture is.
   double paint( const Chart & chart );

 private:
   using Pick = std::function< bool( MarkKind ) >;

   void title( const Chart & chart );
   void legend( const Chart & chart );
   void axis( double textAt, double top, double bottom );
   void tickLabels( double y );
   void cuts( double top, double bottom );
   void rows( const SwitchRows & one );
   void lag( const LagRow & row );
   void member( Nodo::IntfId lag, const MemberRow & row );
   void background( double height );
   void name( double x, double y, std::string_view style, std::string_view text, double room );
   void spans( std::span< const Span > spans, double y, std::string_view who );
   void bar( const Bar & bar, double y, std::string_view who );
   void shares( const Bar & bar, double y );
   void barLabel( const Bar & bar, double y );
   void marks( const std::vector< Mark > & marks, double y, const Pick & pick );
   void badge( const Badge & badge, double y );
   void symbol( MarkKind kind, double x, double y );

   Svg svg_;
   const TimeAxis & axis_;
   double labels_;
   double width_;
   Vex::Seconds end_;
   double y_ = 0;
};

} // namespace Replay::Timeline
