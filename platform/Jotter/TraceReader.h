#pragma once

// Reads a trace file back, from its bytes alone: the ring of this process, or of one that died.
//
// Errors: bytes that are no trace file, or one of another version, are an exception; records that
// are damaged or being overwritten are left out.

#include "platform/Jotter/Descriptor.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/String.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

namespace Jotter {

class VEX_EXPORT TraceFileError : public std::runtime_error {
 public:
   explicit TraceFileError( const Vex::String & what ) : std::runtime_error( what ) {}
   TraceFileError( const TraceFileError & ) = default;
   TraceFileError & operator=( const TraceFileError & ) = default;
   TraceFileError( TraceFileError && ) = default;
   TraceFileError & operator=( TraceFileError && ) = default;
   ~TraceFileError() override;
};

struct Record {
   std::uint64_t sequence; // from 1, without gaps where no record was lost
   Vex::Seconds time; // on the framework's clock
   std::shared_ptr< const Descriptor > descriptor;
   std::vector< Vex::String > arguments; // as text; a cut one ends with "…"

   /// The pieces and arguments, nothing between.
   VEX_EXPORT Vex::String message() const;
};

/// The records that the file still holds, oldest first.
VEX_EXPORT std::vector< Record > readRecords( std::span< const std::byte > file );

} // namespace Jotter
