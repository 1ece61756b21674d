#pragma once

#include "replay/timeline/Chart.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Replay::Timeline {

/// What a row shows at a moment.
struct Showing {
   SpanKind kind = SpanKind::held;
   std::string why;

   friend bool operator==( const Showing &, const Showing & ) = default;
};

/// Makes the spans of one row from what it shows from moment to moment. What was so for no time at
/// all leaves no span.
class Track {
 public:
   /// From `now` on; nothing: the row is empty. `now` never goes back.
   void show( Vex::Seconds now, std::optional< Showing > showing ) {
      if ( showing == current_ ) {
         return;
      }
      close( now );
      current_ = std::move( showing );
      since_ = now;
   }

   /// The run ends; what is shown then is the last span, even where it has just begun.
   std::vector< Span > finish( Vex::Seconds end ) {
      if ( current_ ) {
         spans_.push_back( { since_, end, current_->kind, std::move( current_->why ), true } );
         current_.reset();
      }
      return std::move( spans_ );
   }

 private:
   void close( Vex::Seconds now ) {
      if ( !current_ || now == since_ ) {
         return;
      }
      spans_.push_back( { since_, now, current_->kind, std::move( current_->why ), false } );
   }

   std::vector< Span > spans_;
   std::optional< Showing > current_;
   Vex::Seconds since_;
};

} // namespace Replay::Timeline
