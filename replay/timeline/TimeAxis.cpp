#include "replay/timeline/TimeAxis.h"

#include "replay/timeline/Labels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <iterator>

namespace Replay::Timeline {

namespace {

constexpr std::size_t mostCuts = 8;
constexpr double cutWidth = 52;
constexpr double cutMargin = 12; // of that, on both sides, the axis still shows
constexpr double tickDistance = 84; // at least, but for rounding
constexpr double worthIt = 3; // what each cut has to enlarge the rest by

// Quiet times at least as long as this are cut; infinite: none.
//
// To cut the k longest of all enlarges what is left by total/rest. The best k is that where each of
// its cuts brings most, which is where the quiet times differ most from what lies between them.
double shortestCut( std::span< const Vex::Seconds > moments, double width ) {
   std::vector< double > gaps;
   for ( std::size_t at = 1; at < moments.size(); ++at ) {
      gaps.push_back( ( moments[ at ] - moments[ at - 1 ] ).value() );
   }
   std::ranges::sort( gaps, std::greater() );
   const double total = moments.back().value() - moments.front().value();
   const auto room = static_cast< std::size_t >( width / 2 / cutWidth );
   double rest = total;
   double best = worthIt;
   double shortest = HUGE_VAL;
   for ( std::size_t k = 1; k < std::min( { gaps.size(), mostCuts + 1, room + 1 } ); ++k ) {
      rest = std::max( rest - gaps[ k - 1 ], gaps[ k ] );
      const double gain = std::pow( total / rest, 1 / static_cast< double >( k ) );
      if ( gain > best && gaps[ k ] < gaps[ k - 1 ] ) { // equal ones are cut together, or not
         best = gain;
         shortest = gaps[ k - 1 ];
      }
   }
   return shortest;
}

// 1, 2 or 5 times a power of ten, not below `least`.
double roundStep( double least ) {
   const double power = std::pow( 10, std::floor( std::log10( least ) ) );
   for ( const double factor : std::array{ 1.0, 2.0, 5.0 } ) {
      if ( factor * power >= least ) {
         return factor * power;
      }
   }
   return 10 * power;
}

} // namespace

TimeAxis::TimeAxis( std::span< const Vex::Seconds > moments, double left, double width )
    : left_( left ) {
   const double shortest = shortestCut( moments, width );
   double shown = 0; // seconds
   double room = width;
   for ( std::size_t at = 1; at < moments.size(); ++at ) {
      const double gap = ( moments[ at ] - moments[ at - 1 ] ).value();
      if ( gap >= shortest ) {
         room -= cutWidth;
      } else {
         shown += gap;
      }
   }
   scale_ = shown > 0 ? room / shown : 0;
   pieces_.push_back( { moments.front(), moments.front(), left, left, false } );
   for ( std::size_t at = 1; at < moments.size(); ++at ) {
      const double gap = ( moments[ at ] - moments[ at - 1 ] ).value();
      const double x = pieces_.back().right;
      if ( gap >= shortest ) {
         pieces_.push_back( { moments[ at - 1 ], moments[ at ], x, x + cutWidth, true } );
         pieces_.push_back( { moments[ at ], moments[ at ], x + cutWidth, x + cutWidth, false } );
         cuts_.push_back(
            { x + cutMargin, x + cutWidth - cutMargin, moments[ at - 1 ], moments[ at ] } );
      } else {
         pieces_.back().to = moments[ at ];
         pieces_.back().right =
            pieces_.back().left + ( pieces_.back().to - pieces_.back().from ).value() * scale_;
      }
   }
}

double TimeAxis::at( Vex::Seconds moment ) const noexcept {
   const auto found = std::ranges::lower_bound( pieces_, moment, {}, &Piece::to );
   const Piece & piece = found != pieces_.end() ? *found : pieces_.back();
   const double span = ( piece.to - piece.from ).value();
   const double share = span > 0 ? ( moment - piece.from ).value() / span : 0;
   return piece.left + std::clamp( share, 0.0, 1.0 ) * ( piece.right - piece.left );
}

std::vector< TimeAxis::Tick > TimeAxis::ticks() const {
   constexpr int mostOfPiece = 1000; // where doubles are too coarse for the step
   std::vector< Tick > ticks;
   const double step = scale_ > 0 ? roundStep( tickDistance / scale_ ) : 0;
   for ( const Piece & piece : pieces_ ) {
      if ( piece.cut ) {
         continue;
      }
      const std::size_t before = ticks.size();
      if ( step > 0 ) {
         const double first = std::ceil( piece.from.value() / step );
         for ( int count = 0; count < mostOfPiece; ++count ) {
            const Vex::Seconds moment( ( first + count ) * step );
            if ( moment > piece.to ) {
               break;
            }
            ticks.push_back( { at( moment ), tickLabel( moment, step ) } );
         }
      }
      if ( ticks.size() == before ) {
         ticks.push_back( { piece.left, timeLabel( piece.from ) } );
      }
   }
   return ticks;
}

} // namespace Replay::Timeline
