#pragma once

// Which records are wanted. A record must pass every condition that is set; where a condition names
// several things, one of them is enough.

#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/Seconds.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace TraceTool {

struct Filter {
   std::optional< std::uint32_t > levels; // as a bit mask
   std::vector< std::string > functions; // empty: any
   std::vector< std::string > intfs; // empty: any; else some text argument is one of these
   std::optional< Vex::Seconds > since; // both ends belong to the span, in whole microseconds,
   std::optional< Vex::Seconds > until; // as times are shown
};

/// Whether some text argument of the record is this interface.
bool namesIntf( const Jotter::Record & record, const std::string & intf );

/// A record whose call site is not known passes no condition but those about time.
bool matches( const Filter & filter, const Jotter::Record & record );

} // namespace TraceTool
