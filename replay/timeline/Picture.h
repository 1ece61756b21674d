#pragma once

#include "replay/timeline/Chart.h"

#include <string>

namespace Replay::Timeline {

/// Appends the chart as an SVG document, that browsers show by themselves: light or dark as the
/// reader has it, times and reasons where the mouse is. The same chart gives the same bytes.
void appendPicture( std::string & out, const Chart & chart );

} // namespace Replay::Timeline
