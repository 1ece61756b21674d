#pragma once

#include "platform/Vex/Export.h"
#include "platform/Vex/String.h"

#include <stdexcept>

namespace Jotter {

/// A trace file cannot be made or read; one line that says which and why.
class VEX_EXPORT TraceFileError : public std::runtime_error {
 public:
   explicit TraceFileError( const Vex::String & what ) : std::runtime_error( what ) {}
   TraceFileError( const TraceFileError & ) = default;
   TraceFileError & operator=( const TraceFileError & ) = default;
   TraceFileError( TraceFileError && ) = default;
   TraceFileError & operator=( TraceFileError && ) = default;
   ~TraceFileError() override;
};

} // namespace Jotter
