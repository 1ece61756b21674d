#pragma once

// A message of an interlock, as it is read: out of the ring, where its arguments are known as such,
// or out of the text trace, which has messages that the ring has not.

#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/Trace.h"
#include "replay/explain/Meaning.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Explain {

struct Note {
   Vex::Seconds time;
   std::uint64_t sequence = 0; // in the ring; 0: it is in the text trace alone
   const Meaning * meaning = nullptr; // null: this message is not known
   std::vector< std::string > arguments;
   std::string asWritten; // of a message that is not known
};

Note noteOf( const Jotter::Record & record );
Note noteOf( const Vex::TraceRecord & record, Vex::Seconds time );

} // namespace Explain
