#include "replay/timeline/Painter.h"

#include "replay/timeline/Labels.h"
#include "replay/timeline/Style.h"

#include <algorithm>
#include <numeric>

namespace Replay::Timeline {

namespace {

constexpr double barHeight = 14;
constexpr double memberHeight = 20;
constexpr double laneHeight = 15; // of marks
constexpr double afterLag = 5;
constexpr std::size_t manyRows = 24; // that the times are shown below, too

// Of the styles, and of the legend.
struct MarkLook {
   std::string_view style;
   std::string_view name;
};
constexpr std::array< MarkLook, markKinds > markLooks{ {
   { "change", "change from outside" },
   { "request", "request to the peer" },
   { "answer", "answer of the peer" },
   { "lost", "lost on the wire" },
   { "timeOut", "time-out" },
   { "failedExpect", "failed expect" },
} };
struct SpanLook {
   std::string_view style;
   std::string_view onStyle; // of a text on it
};
constexpr std::array< SpanLook, spanKinds > spanLooks{ {
   { "bar held", "on on-held" },
   { "bar admitted", "on on-admitted" },
   { "bar exempt", "on on-exempt" },
   { "bar open", "on on-open" },
   { "bar linkDown", "on on-linkDown" },
   { "bar linkRequesting", "on on-linkRequesting" },
   { "bar linkUp", "on on-linkUp" },
   { "bar linkFail", "on on-linkFail" },
} };

// What the peer and the wire do; all other marks are changes by others.
bool isOfExchange( MarkKind kind ) noexcept {
   return kind != MarkKind::change && kind != MarkKind::failedExpect;
}

std::string seconds( Vex::Seconds time ) {
   return timeLabel( time ) + " s";
}

std::string period( Vex::Seconds from, Vex::Seconds to ) {
   return seconds( from ) + " to " + seconds( to ) + " (" + seconds( to - from ) + ")";
}

std::array< double, spanKinds > sumsOf( std::span< const Span > spans ) {
   std::array< double, spanKinds > sums{};
   for ( const Span & span : spans ) {
      sums[ indexOf( span.kind ) ] += ( span.to - span.from ).value();
   }
   return sums;
}

// How long each kind lasted, of those that occur.
std::string sums( std::span< const Span > spans ) {
   const auto times = sumsOf( spans );
   std::string text;
   for ( std::size_t at = 0; at < spanKinds; ++at ) {
      const bool occurs = std::ranges::any_of(
         spans, [ at ]( const Span & span ) { return indexOf( span.kind ) == at; } );
      if ( occurs ) {
         text += "\n" + std::string( nameOf( static_cast< SpanKind >( at ) ) ) + ": " +
                 seconds( Vex::Seconds( times[ at ] ) );
      }
   }
   return text;
}

std::string hoverText( const Bar & bar, std::string_view who ) {
   const Span & first = bar.spans.front();
   const Span & last = bar.spans.back();
   std::string text( who );
   if ( bar.spans.size() > 1 ) {
      return text + "\n" + std::to_string( bar.spans.size() ) + " states in " +
             period( first.from, last.to ) + sums( bar.spans );
   }
   text += "\n" + std::string( nameOf( first.kind ) ) + ", ";
   if ( first.lasts && first.from == first.to ) {
      text += "at the end, " + seconds( first.to );
   } else {
      text += period( first.from, first.to ) + ( first.lasts ? ", the end" : "" );
   }
   return text + "\n" + first.why;
}

std::string hoverText( const Badge & badge ) {
   constexpr std::size_t mostListed = 24;
   std::string text;
   for ( std::size_t at = 0; at < std::min( badge.marks.size(), mostListed ); ++at ) {
      const Mark & mark = *badge.marks[ at ];
      text += ( text.empty() ? "" : "\n" ) + seconds( mark.time ) + "  " + mark.what;
   }
   if ( badge.marks.size() > mostListed ) {
      text += "\nand " + std::to_string( badge.marks.size() - mostListed ) + " more, up to " +
              seconds( badge.marks.back()->time );
   }
   return text;
}

} // namespace

void appendPage(
   std::string & out, std::string_view title, double width, double height, std::string_view body ) {
   Svg svg( out );
   svg.raw( "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" );
   svg.open( "svg" )
      .attribute( "xmlns", "http://www.w3.org/2000/svg" )
      .attribute( "xmlns:xlink", "http://www.w3.org/1999/xlink" )
      .attribute( "version", "1.1" )
      .attribute( "width", width )
      .attribute( "height", height )
      .attribute( "role", "img" )
      .content();
   svg.open( "title" ).text( "title", title );
   svg.raw( styleSheet );
   svg.raw( definitions );
   svg.box( 0, 0, width, height ).attribute( "class", "page" ).close();
   svg.raw( body );
   svg.end( "svg" );
}

double Painter::paint( const Chart & chart ) {
   end_ = chart.end;
   title( chart );
   legend( chart );
   const double top = y_ + 22;
   std::string drawn; // the rows; what lies below them comes first, and needs their height
   Painter below( drawn, axis_, labels_, width_ );
   below.y_ = top;
   std::size_t count = 0;
   for ( const SwitchRows & one : chart.switches ) {
      below.rows( one );
      for ( const LagRow & lag : one.lags ) {
         count += 1 + lag.members.size();
      }
   }
   if ( drawn.empty() ) {
      svg_.label( margin, top + 14, "", "no LAG, and nothing that becomes of one" );
      return top + 2 * memberHeight;
   }
   const double bottom = below.y_;
   axis( top - 8, top - 4, bottom );
   svg_.raw( drawn );
   cuts( top - 4, bottom );
   y_ = bottom;
   if ( count > manyRows ) {
      tickLabels( bottom + 14 );
      y_ += 18;
   }
   return y_ + margin;
}

// ---- Above the rows -----------------------------------------------------------------------------

void Painter::title( const Chart & chart ) {
   const double room = width_ - 2 * margin;
   svg_.label( margin, 26, "title", shortened( chart.title, 17, room ) );
   y_ = 34;
}

void Painter::legend( const Chart & chart ) {
   std::array< bool, spanKinds > hasSpan{};
   std::array< bool, markKinds > hasMark{};
   const auto look = [ & ]( std::span< const Span > spans, std::span< const Mark > marks ) {
      for ( const Span & span : spans ) {
         hasSpan[ indexOf( span.kind ) ] = true;
      }
      for ( const Mark & mark : marks ) {
         hasMark[ indexOf( mark.kind ) ] = true;
      }
   };
   for ( const SwitchRows & one : chart.switches ) {
      look( {}, one.marks );
      for ( const LagRow & lag : one.lags ) {
         look( lag.links, lag.marks );
         for ( const MemberRow & member : lag.members ) {
            look( member.spans, {} );
         }
      }
   }
   constexpr double height = 18;
   constexpr double gap = 16;
   double x = margin;
   const auto place = [ & ]( double symbol, std::string_view name ) {
      const double width = symbol + 5 + textWidth( name, smallSize );
      if ( x > margin && x + width > width_ - margin ) {
         x = margin;
         y_ += height;
      }
      svg_.label( x + symbol + 5, y_ + 13, "small", name );
      x += width + gap;
      return x - width - gap;
   };
   for ( std::size_t at = 0; at < spanKinds; ++at ) {
      if ( hasSpan[ at ] ) {
         const double left = place( 22, nameOf( static_cast< SpanKind >( at ) ) );
         svg_.box( left + 0.5, y_ + 4.5, 21, 10 )
            .attribute( "class", spanLooks[ at ].style )
            .close();
      }
   }
   if ( x > margin ) {
      x = margin;
      y_ += height;
   }
   for ( std::size_t at = 0; at < markKinds; ++at ) {
      if ( hasMark[ at ] ) {
         const double left = place( 10, markLooks[ at ].name );
         symbol( static_cast< MarkKind >( at ), left + 5, y_ + 9.5 );
      }
   }
   y_ += height;
}

void Painter::axis( double textAt, double top, double bottom ) {
   svg_.label( margin, textAt, "small", "seconds" );
   tickLabels( textAt );
   for ( const TimeAxis::Tick & tick : axis_.ticks() ) {
      svg_.line( tick.x, top, tick.x, bottom ).attribute( "class", "grid" ).close();
   }
   svg_.line( axis_.right(), top, axis_.right(), bottom ).attribute( "class", "end" ).close();
}

void Painter::tickLabels( double y ) {
   const std::string end = timeLabel( end_ ) + ", the end";
   const double endLeft = axis_.right() + 6;
   double taken = 0;
   for ( const TimeAxis::Tick & tick : axis_.ticks() ) {
      const double half = textWidth( tick.label, smallSize ) / 2;
      if ( tick.x - half < taken || tick.x + half > endLeft - 4 ) {
         continue;
      }
      svg_.label( tick.x, y, "small middle", tick.label );
      taken = tick.x + half + 6;
   }
   svg_.label( endLeft, y, "small", end );
}

void Painter::cuts( double top, double bottom ) {
   for ( const TimeAxis::Cut & cut : axis_.cuts() ) {
      svg_.open( "g" ).content();
      svg_.box( cut.left, top, cut.right - cut.left, bottom - top )
         .attribute( "class", "page" )
         .content();
      svg_.open( "title" ).text( "title", "nothing happens from " + period( cut.from, cut.to ) );
      svg_.end( "rect" );
      for ( const double x : { cut.left, cut.right } ) {
         svg_.line( x, top, x, bottom )
            .attribute( "class", "cut" )
            .attribute( "stroke-dasharray", "4 3" )
            .close();
      }
      svg_.end( "g" );
   }
}

// ---- The rows -----------------------------------------------------------------------------------

void Painter::background( double height ) {
   svg_.box( margin / 2, y_, width_ - margin, height ).attribute( "class", "row" ).close();
}

void Painter::name(
   double x, double y, std::string_view style, std::string_view text, double room ) {
   const double size = style == "lag" ? boldSize : textSize;
   svg_.label( x, y, style, shortened( text, size, room ) );
}

void Painter::rows( const SwitchRows & one ) {
   if ( !one.name.empty() ) {
      y_ += 6;
      svg_.box( margin / 2, y_, width_ - margin, 22 ).attribute( "class", "band" ).close();
      svg_.label( margin, y_ + 16, "switch", one.name );
      y_ += 26;
   }
   if ( !one.marks.empty() ) {
      background( memberHeight );
      name( margin, y_ + 14, "lag", "the switch", labels_ );
      marks( one.marks, y_ + memberHeight / 2, []( MarkKind ) { return true; } );
      y_ += memberHeight + afterLag;
   }
   for ( const LagRow & row : one.lags ) {
      lag( row );
      for ( const MemberRow & member : row.members ) {
         this->member( row.lag, member );
      }
      y_ += afterLag;
   }
}

// Others' changes above, the link states, and the exchange with the peer below.
void Painter::lag( const LagRow & row ) {
   const bool exchanges =
      !row.links.empty() || std::ranges::any_of( row.marks, []( const Mark & mark ) {
         return isOfExchange( mark.kind );
      } );
   const double height = exchanges ? laneHeight + barHeight + laneHeight + 2 : memberHeight;
   const std::string & lag = row.lag.stringValue();
   background( height );
   name( margin, y_ + ( exchanges ? height / 2 + 4 : 14 ), "lag", lag, labels_ );
   marks( row.marks, y_ + ( exchanges ? laneHeight / 2 : memberHeight / 2 ),
          []( MarkKind kind ) { return !isOfExchange( kind ); } );
   if ( exchanges ) {
      spans( row.links, y_ + laneHeight + 1, lag );
      marks( row.marks, y_ + laneHeight + barHeight + 2 + laneHeight / 2, isOfExchange );
   }
   y_ += height;
}

void Painter::member( Nodo::IntfId lag, const MemberRow & row ) {
   const std::string who = row.member.stringValue() + " in " + lag.stringValue();
   svg_.open( "g" ).content();
   svg_.open( "title" ).text( "title", who + sums( row.spans ) );
   background( memberHeight );
   name( margin + memberIndent, y_ + 14, "", row.member.stringValue(), labels_ - memberIndent );
   svg_.end( "g" );
   spans( row.spans, y_ + ( memberHeight - barHeight ) / 2, who );
   y_ += memberHeight;
}

void Painter::spans( std::span< const Span > spans, double y, std::string_view who ) {
   for ( const Bar & bar : bars( spans, axis_, tailWidth - margin ) ) {
      this->bar( bar, y, who );
   }
}

void Painter::bar( const Bar & bar, double y, std::string_view who ) {
   svg_.open( "g" ).content();
   svg_.open( "title" ).text( "title", hoverText( bar, who ) );
   if ( bar.spans.size() > 1 ) {
      shares( bar, y );
   } else {
      svg_.box( bar.left + 0.5, y + 0.5, std::max( bar.right - bar.left - 1, 0.5 ), barHeight - 1 )
         .attribute( "class", spanLooks[ indexOf( bar.spans.front().kind ) ].style )
         .close();
      barLabel( bar, y );
   }
   svg_.end( "g" );
}

// How much of the time each of them took, one above the other.
void Painter::shares( const Bar & bar, double y ) {
   const auto times = sumsOf( bar.spans );
   const double all = std::accumulate( times.begin(), times.end(), 0.0 );
   double top = y;
   for ( std::size_t at = 0; at < spanKinds; ++at ) {
      const double height = all > 0 ? times[ at ] / all * barHeight : 0;
      if ( height > 0 ) {
         svg_.box( bar.left, top, bar.right - bar.left, height )
            .attribute( "class", std::string( spanLooks[ at ].style ) + " share" )
            .close();
      }
      top += height;
   }
}

// Where it has room beside the cuts.
void Painter::barLabel( const Bar & bar, double y ) {
   constexpr double inset = 5;
   const Span & span = bar.spans.front();
   const std::string text( nameOf( span.kind ) );
   const std::string longer = span.kind == SpanKind::open || span.kind == SpanKind::exempt
                                 ? text + ": " + span.why.substr( 0, span.why.find( ';' ) )
                                 : text;
   double left = bar.left;
   const std::array< std::string_view, 2 > labels{ longer, text };
   const auto place = [ & ]( double right ) {
      const double room = right - left - 2 * inset;
      const auto * const label = std::ranges::find_if( labels, [ room ]( std::string_view one ) {
         return textWidth( one, smallSize + 1 ) < room;
      } );
      if ( label != labels.end() ) {
         svg_.label( left + inset, y + barHeight - 3.5, spanLooks[ indexOf( span.kind ) ].onStyle,
                     *label );
      }
      return label != labels.end();
   };
   for ( const TimeAxis::Cut & cut : axis_.cuts() ) {
      if ( cut.right > left && cut.left < bar.right ) {
         if ( place( cut.left ) ) {
            return;
         }
         left = cut.right;
      }
   }
   place( bar.right );
}

// ---- Marks --------------------------------------------------------------------------------------

void Painter::marks( const std::vector< Mark > & marks, double y, const Pick & pick ) {
   std::vector< const Mark * > some;
   for ( const Mark & mark : marks ) {
      if ( pick( mark.kind ) ) {
         some.push_back( &mark );
      }
   }
   for ( const Badge & badge : badges( some, axis_ ) ) {
      this->badge( badge, y );
   }
}

void Painter::badge( const Badge & badge, double y ) {
   const std::size_t count = badge.marks.size();
   svg_.open( "g" ).content();
   svg_.open( "title" ).text( "title", hoverText( badge ) );
   if ( count == 1 ) {
      symbol( badge.kind, badge.x, y );
   } else {
      constexpr std::size_t most = 99;
      constexpr double height = 13;
      const double width = badgeWidth( count ) - 1;
      svg_.box( badge.x - width / 2, y - height / 2, width, height )
         .attribute( "rx", 4 )
         .attribute( "class", "symbol " + std::string( markLooks[ indexOf( badge.kind ) ].style ) )
         .close();
      svg_.label( badge.x, y + 3.5, "count", count > most ? "99+" : std::to_string( count ) );
   }
   svg_.end( "g" );
}

void Painter::symbol( MarkKind kind, double x, double y ) {
   const std::string_view style = markLooks[ indexOf( kind ) ].style;
   svg_.open( "use" )
      .attribute( "xlink:href", "#s-" + std::string( style ) )
      .attribute( "x", x )
      .attribute( "y", y )
      .attribute( "class", "symbol " + std::string( style ) )
      .close();
}

} // namespace Replay::Timeline
