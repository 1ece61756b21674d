#include "replay/timeline/Picture.h"

#include "replay/timeline/Labels.h"
#include "replay/timeline/Layout.h"
#include "replay/timeline/Painter.h"
#include "replay/timeline/TimeAxis.h"

#include <algorithm>
#include <vector>

namespace Replay::Timeline {

namespace {

// All moments at which something begins, ends or happens, from 0 to the end.
std::vector< Vex::Seconds > momentsOf( const Chart & chart ) {
   std::vector< Vex::Seconds > moments{ Vex::Seconds( 0 ), chart.end };
   const auto addMarks = [ & ]( const std::vector< Mark > & marks ) {
      for ( const Mark & mark : marks ) {
         moments.push_back( mark.time );
      }
   };
   const auto addSpans = [ & ]( const std::vector< Span > & spans ) {
      for ( const Span & span : spans ) {
         moments.push_back( span.from );
         moments.push_back( span.to );
      }
   };
   for ( const SwitchRows & one : chart.switches ) {
      addMarks( one.marks );
      for ( const LagRow & lag : one.lags ) {
         addMarks( lag.marks );
         addSpans( lag.links );
         for ( const MemberRow & member : lag.members ) {
            addSpans( member.spans );
         }
      }
   }
   std::ranges::sort( moments );
   const auto rest = std::ranges::unique( moments );
   moments.erase( rest.begin(), rest.end() );
   return moments;
}

double labelWidth( const Chart & chart ) {
   constexpr double least = 96;
   constexpr double most = 260;
   double width = least;
   for ( const SwitchRows & one : chart.switches ) {
      for ( const LagRow & lag : one.lags ) {
         width = std::max( width, textWidth( lag.lag.stringValue(), boldSize ) );
         for ( const MemberRow & member : lag.members ) {
            width =
               std::max( width, textWidth( member.member.stringValue(), textSize ) + memberIndent );
         }
      }
   }
   return std::min( width, most );
}

} // namespace

void appendPicture( std::string & out, const Chart & chart ) {
   const auto moments = momentsOf( chart );
   const double labels = labelWidth( chart );
   constexpr double axisWidth = 960;
   const TimeAxis axis( moments, margin + labels + margin, axisWidth );
   std::string body;
   constexpr double least = 720;
   const double width = std::max( least, axis.right() + tailWidth + margin );
   const double height = Painter( body, axis, labels, width ).paint( chart );
   appendPage( out, chart.title, width, height, body );
}

} // namespace Replay::Timeline
