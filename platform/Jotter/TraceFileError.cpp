#include "platform/Jotter/TraceFileError.h"

namespace Jotter {

TraceFileError::~TraceFileError() = default;

} // namespace Jotter
