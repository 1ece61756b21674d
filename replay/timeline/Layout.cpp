#include "replay/timeline/Layout.h"

#include <algorithm>

namespace Replay::Timeline {

namespace {

constexpr double narrow = 3; // what is less is hard to see, and to point at

} // namespace

std::vector< Bar > bars( std::span< const Span > spans, const TimeAxis & axis, double tail ) {
   std::vector< Bar > all;
   bool open = false; // the last bar takes up further narrow spans
   for ( const Span & span : spans ) {
      const double left = axis.at( span.from );
      const double right = axis.at( span.to ) + ( span.lasts ? tail : 0 );
      const bool isNarrow = right - left < narrow;
      if ( isNarrow && open && right - all.back().left < 2 * narrow ) {
         Bar & bar = all.back();
         bar.right = std::max( bar.right, right );
         bar.spans = { bar.spans.data(), bar.spans.size() + 1 };
         continue;
      }
      all.push_back(
         { left, isNarrow ? std::max( right, left + narrow / 2 ) : right, std::span( &span, 1 ) } );
      open = isNarrow;
   }
   return all;
}

double badgeWidth( std::size_t marks ) noexcept {
   constexpr std::size_t twoDigits = 10;
   constexpr std::size_t threeDigits = 100;
   if ( marks == 1 ) {
      return symbolWidth;
   }
   if ( marks < twoDigits ) {
      return 14;
   }
   return marks < threeDigits ? 20 : 28;
}

std::vector< Badge > badges( std::span< const Mark * const > marks, const TimeAxis & axis ) {
   struct Heap {
      std::size_t first;
      std::size_t count;
      double from;
      double to;

      double middle() const { return ( from + to ) / 2; }
      double left() const { return middle() - badgeWidth( count ) / 2; }
      double right() const { return middle() + badgeWidth( count ) / 2; }
   };
   std::vector< Heap > heaps;
   for ( std::size_t at = 0; at < marks.size(); ++at ) {
      const double x = axis.at( marks[ at ]->time );
      heaps.push_back( { at, 1, x, x } );
      // A badge is wider than a symbol, so that the one before may be in its way, too.
      while ( heaps.size() > 1 && heaps[ heaps.size() - 2 ].right() > heaps.back().left() ) {
         const Heap last = heaps.back();
         heaps.pop_back();
         heaps.back().count += last.count;
         heaps.back().to = last.to;
      }
   }
   std::vector< Badge > all;
   for ( const Heap & heap : heaps ) {
      const auto some = marks.subspan( heap.first, heap.count );
      MarkKind kind = MarkKind::change;
      for ( const Mark * const mark : some ) {
         kind = std::max( kind, mark->kind );
      }
      all.push_back( { heap.middle(), kind, some } );
   }
   return all;
}

} // namespace Replay::Timeline
