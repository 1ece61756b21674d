#pragma once

// Reads a trace file back, from its bytes alone: the ring of this process, the file of another one
// that is writing it (mapped, not copied), or of one that died.
//
// Errors: bytes that are no trace file, or one of another version, or whose header is damaged, are
// an exception. Whatever else is wrong is told in words, and the whole records are there. Takes
// time and memory in proportion to the file, whatever its bytes are.
//
// A live file: records that are overwritten while they are read are left out, which is no problem.
// A record that is being written all the while is told as begun and not finished; the next reading
// finds it.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFileError.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/String.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Jotter {

/// One record, read back.
struct Record {
   std::uint64_t sequence; // from 1, without gaps where no record was lost
   Vex::Seconds time; // on the framework's clock
   std::shared_ptr< const Descriptor > descriptor;
   std::vector< Vex::String > arguments; // as text; a cut one ends with "…"

   /// The pieces and arguments, nothing between.
   VEX_EXPORT Vex::String message() const;
};

/// What could be read of a trace file.
struct TraceFileContents {
   std::vector< Record > records; // whole ones only, oldest first
   std::vector< Vex::String > problems; // one line each: what is damaged or missing
   std::uint64_t lastSequence = 0; // of the newest record claimed; 0: none was written yet
};

/// The records with a sequence above `after`, and what is wrong with the file. Never returns a
/// record that was not written as such.
VEX_EXPORT TraceFileContents readTraceFile( std::span< const std::byte > file,
                                            std::uint64_t after = 0 );

/// The records that the file still holds, oldest first.
VEX_EXPORT std::vector< Record > readRecords( std::span< const std::byte > file );

} // namespace Jotter
