#pragma once

// What a run looked like over time, ready to be drawn: for each switch, its LAGs in natural order,
// and for each LAG its members, in natural order, too. Values only; knows nothing of the run.

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Seconds.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Replay::Timeline {

enum class SpanKind : std::uint8_t {
   // Of a member of a LAG.
   held,
   admitted,
   exempt, // admitted while an egress ACL is missing, because none is asked for
   open, // admitted while an egress ACL is missing: fails open
   // Of a LAG, with the peer-coordinated interlock.
   linkDown,
   linkRequesting,
   linkUp,
   linkFail,
};
inline constexpr std::size_t spanKinds = 8;

constexpr std::size_t indexOf( SpanKind kind ) noexcept {
   return static_cast< std::size_t >( kind );
}

/// How people call it.
constexpr std::string_view nameOf( SpanKind kind ) noexcept {
   constexpr std::array< std::string_view, spanKinds > names{
      "held",   "admitted", "admitted without ACL", "fails open", "linkDown", "linkRequesting",
      "linkUp", "linkFail" };
   return names[ indexOf( kind ) ];
}

/// For so long it was like this. Spans of one row follow each other and do not overlap.
struct Span {
   Vex::Seconds from;
   Vex::Seconds to;
   SpanKind kind = SpanKind::held;
   std::string why;
   bool lasts = false; // it was still so at the end of the run; it may have begun there, too
};

// From the least to the most important: where marks lie on each other, the last one gives the
// colour.
enum class MarkKind : std::uint8_t { change, request, answer, lost, timeOut, failedExpect };
inline constexpr std::size_t markKinds = 6;

constexpr std::size_t indexOf( MarkKind kind ) noexcept {
   return static_cast< std::size_t >( kind );
}

/// Something that happened at one moment. The marks of a row are in order of time.
struct Mark {
   Vex::Seconds time;
   MarkKind kind = MarkKind::change;
   std::string what;
};

struct MemberRow {
   Nodo::IntfId member;
   std::vector< Span > spans;
};
struct LagRow {
   Nodo::IntfId lag;
   std::vector< Span > links;
   std::vector< Mark > marks;
   std::vector< MemberRow > members;
};
struct SwitchRows {
   std::string_view name; // empty: there is only one
   std::vector< Mark > marks; // of what is no single LAG's business
   std::vector< LagRow > lags;
};
struct Chart {
   std::string title;
   Vex::Seconds end; // where the clock stood at last
   std::vector< SwitchRows > switches;
};

} // namespace Replay::Timeline
