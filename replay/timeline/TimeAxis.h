#pragma once

// Where a moment lies in the picture. The scale is the same all over, but for cuts: where a run has
// its events in a few bursts and long quiet times between them, the quiet ones are left out, so
// that the bursts can be told.

#include "platform/Vex/Seconds.h"

#include <span>
#include <string>
#include <vector>

namespace Replay::Timeline {

class TimeAxis {
 public:
   /// A quiet time that is left out; it is drawn as a gap.
   struct Cut {
      double left = 0;
      double right = 0;
      Vex::Seconds from;
      Vex::Seconds to;
   };
   struct Tick {
      double x = 0;
      std::string label;
   };

   /// `moments` at which something happens, in order, each once; the first is the beginning and the
   /// last is the end of the run.
   TimeAxis( std::span< const Vex::Seconds > moments, double left, double width );

   double at( Vex::Seconds moment ) const noexcept;
   double left() const noexcept { return left_; }
   double right() const noexcept { return pieces_.back().right; }
   std::span< const Cut > cuts() const noexcept { return cuts_; }
   /// At round times; where a piece of the axis has none, at its beginning.
   std::vector< Tick > ticks() const;

 private:
   struct Piece { // `right` is beyond `left` unless nothing lies between `from` and `to`
      Vex::Seconds from;
      Vex::Seconds to;
      double left = 0;
      double right = 0;
      bool cut = false;
   };

   double left_;
   double scale_ = 0; // per second; 0: there is nothing but moments
   std::vector< Piece > pieces_;
   std::vector< Cut > cuts_;
};

} // namespace Replay::Timeline
