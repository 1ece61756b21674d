#pragma once

// What of a row has to be drawn where, so that it can be read: spans too short to be seen become
// one bar, and marks that would lie on each other one badge. So a row has never more to draw than
// it has pixels, however much has happened.

#include "replay/timeline/Chart.h"
#include "replay/timeline/TimeAxis.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace Replay::Timeline {

/// One or more spans, as they follow each other.
struct Bar {
   double left;
   double right;
   std::span< const Span > spans;
};

/// `tail`: how far what lasts goes on behind the end of the axis.
std::vector< Bar > bars( std::span< const Span > spans, const TimeAxis & axis, double tail );

/// One or more marks, as they follow each other. The most important of them gives the kind.
struct Badge {
   double x; // its middle
   MarkKind kind;
   std::span< const Mark * const > marks;
};

constexpr double symbolWidth = 9; // of one mark
/// Of a badge that says how many marks there are.
double badgeWidth( std::size_t marks ) noexcept;

std::vector< Badge > badges( std::span< const Mark * const > marks, const TimeAxis & axis );

} // namespace Replay::Timeline
