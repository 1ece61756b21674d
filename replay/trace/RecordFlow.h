#pragma once

// The records of one trace file, each once and in order, from looks at it while it is written.
//
// Numbers that are missing are told of. One that is missing in the middle may still come: with
// several threads, a record may be complete before its predecessor is. So what lies behind a gap is
// held back for one look, unless the ring has gone past the gap.

#include "platform/Jotter/TraceReader.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace TraceTool {

enum class LastLook : std::uint8_t { no, yes };

/// What a look has brought: records to show, and lines about what is damaged or missing.
struct Look {
   std::vector< Jotter::Record > records;
   std::vector< std::string > complaints;
   std::optional< std::size_t > newFile; // from this record on they are of another file
};

class RecordFlow {
 public:
   /// What to read next: the records above this one. The last one that was read is read again, to
   /// see whether it is still there.
   std::uint64_t after() const noexcept { return last_ == 0 ? 0 : last_ - 1; }

   /// There are records, as far as is known, that have not been given out.
   bool expectsSome() const noexcept { return !started_ || last_ < claimed_ || !held_.empty(); }

   /// Takes what was read, and gives what is new. Nothing is held back on the last look.
   Look take( Jotter::TraceFileContents contents, LastLook lastLook );

 private:
   void release( Look & look, bool lastIsThere, LastLook lastLook );
   void startAnew();

   std::map< std::uint64_t, Jotter::Record > held_;
   std::uint64_t last_ = 0; // that was given out
   std::uint64_t claimed_ = 0; // how far the writer was
   std::uint64_t toldUpTo_ = 0; // the reader itself has told of what is missing up to here
   std::uint64_t waitingFor_ = 0; // the record behind the gap that was seen on the look before
   bool started_ = false;
   bool fromAnywhere_ = false; // the ring had gone on before the first look: so may its numbers
};

} // namespace TraceTool
