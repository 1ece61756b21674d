#pragma once

// How the picture looks: colours, light and dark, patterns and symbols. The colours are told apart
// by people who see colours differently, too; what fails open is hatched as well, and what is held
// is hollow.

#include <string_view>

namespace Replay::Timeline {

inline constexpr std::string_view styleSheet = R"(<style>
text { font-family: sans-serif; font-size: 12px; fill: #1f2328; }
.title { font-size: 15px; font-weight: bold; }
.switch { font-size: 14px; font-weight: bold; }
.lag { font-weight: bold; }
.small, .small text { font-size: 10px; fill: #59636e; }
.count { font-size: 10px; font-weight: bold; text-anchor: middle; fill: #ffffff; }
.middle { text-anchor: middle; }
.page { fill: #ffffff; }
.band { fill: #f3f5f7; }
.row { fill: #ffffff; fill-opacity: 0; }
.row:hover { fill: #1f6feb; fill-opacity: 0.08; }
.grid { stroke: #dde1e6; stroke-width: 1; }
.end { stroke: #8c959f; stroke-width: 1; stroke-dasharray: 3 2; }
.cut { stroke: #8c959f; stroke-width: 1; fill: none; }
.on { font-size: 10px; pointer-events: none; }
.held { fill: #fff3dc; stroke: #b35900; }
.on-held { fill: #6b3600; }
.admitted { fill: #2a6fbb; stroke: #2a6fbb; }
.on-admitted { fill: #ffffff; }
.exempt { fill: url(#exempt); stroke: #2a6fbb; }
.on-exempt { fill: #10365e; }
.open { fill: url(#open); stroke: #8f0f43; }
.on-open { fill: #ffffff; font-weight: bold; }
.linkDown { fill: #e6e9ed; stroke: #8c959f; }
.on-linkDown { fill: #3d444d; }
.linkRequesting { fill: #fff3dc; stroke: #b35900; }
.on-linkRequesting { fill: #6b3600; }
.linkUp { fill: #1d7f63; stroke: #1d7f63; }
.on-linkUp { fill: #ffffff; }
.linkFail { fill: url(#open); stroke: #8f0f43; }
.on-linkFail { fill: #ffffff; font-weight: bold; }
.exempt1 { fill: #d6e6f7; }
.exempt2 { stroke: #a9cbee; }
.open1 { fill: #b8175a; }
.open2 { stroke: #d1447f; }
.change { fill: #6e7781; stroke: none; }
.request { fill: #2a6fbb; stroke: none; }
.answer { fill: #1d7f63; stroke: none; }
.lost { fill: none; stroke: #b8175a; stroke-width: 2; }
.timeOut { fill: #b8175a; stroke: none; }
.failedExpect { fill: #cf222e; stroke: none; }
rect.lost { fill: #b8175a; stroke: none; }
.bar { stroke-width: 1; }
rect.share { stroke: none; }
g:hover > .bar, g:hover > .symbol { stroke-width: 2; stroke: #1f2328; }
@media (prefers-color-scheme: dark) {
text { fill: #e6edf3; }
.small, .small text { fill: #9aa4af; }
.page { fill: #0d1117; }
.band { fill: #161b22; }
.row { fill: #0d1117; }
.row:hover { fill: #58a6ff; }
.grid { stroke: #272d35; }
.end, .cut { stroke: #7d8590; }
.count { fill: #0d1117; }
.held, .linkRequesting { fill: #33240b; stroke: #e39a3b; }
.on-held, .on-linkRequesting { fill: #f5c885; }
.admitted { fill: #4f94de; stroke: #4f94de; }
.on-admitted { fill: #04162a; }
.exempt { stroke: #4f94de; }
.on-exempt { fill: #d3e6fb; }
.open, .linkFail { stroke: #ff9cc4; }
.on-open, .on-linkFail { fill: #ffffff; }
.linkDown { fill: #2a3038; stroke: #7d8590; }
.on-linkDown { fill: #c3cad2; }
.linkUp { fill: #3fb08d; stroke: #3fb08d; }
.on-linkUp { fill: #03231a; }
.exempt1 { fill: #13304f; }
.exempt2 { stroke: #214c7a; }
.open1 { fill: #b8175a; }
.open2 { stroke: #8a0f42; }
.change { fill: #9aa4af; }
.request { fill: #79b4f2; }
.answer { fill: #4fc9a3; }
.lost { stroke: #ff86b6; }
.timeOut { fill: #ff86b6; }
.failedExpect { fill: #ff7b72; }
rect.lost { fill: #ff86b6; }
g:hover > .bar, g:hover > .symbol { stroke: #ffffff; }
}
</style>
)";

inline constexpr std::string_view definitions = R"(<defs>
<pattern id="exempt" width="6" height="6" patternUnits="userSpaceOnUse">
<rect class="exempt1" width="6" height="6"/>
<path class="exempt2" d="M-1,7 L7,-1 M-1,1 L1,-1 M5,7 L7,5" stroke-width="1.5"/>
</pattern>
<pattern id="open" width="6" height="6" patternUnits="userSpaceOnUse">
<rect class="open1" width="6" height="6"/>
<path class="open2" d="M-1,-1 L7,7 M-1,5 L1,7 M5,-1 L7,1" stroke-width="1.5"/>
</pattern>
<path id="s-change" d="M-1.5,-4.5 H1.5 V4.5 H-1.5 Z"/>
<path id="s-request" d="M0,-4.5 L4.5,4 H-4.5 Z"/>
<path id="s-answer" d="M0,4.5 L4.5,-4 H-4.5 Z"/>
<path id="s-lost" d="M-3.5,-3.5 L3.5,3.5 M-3.5,3.5 L3.5,-3.5"/>
<path id="s-timeOut" d="M0,-5 L5,0 L0,5 L-5,0 Z"/>
<path id="s-failedExpect" d="M-4.5,-4.5 H4.5 V4.5 H-4.5 Z"/>
</defs>
)";

} // namespace Replay::Timeline
