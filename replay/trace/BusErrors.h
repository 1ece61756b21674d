#pragma once

// Reading mapped memory whose file may be cut, or fail to be read, at any moment: then the system
// sends SIGBUS, which would end the program.

#include <cstddef>
#include <functional>
#include <span>

namespace TraceTool {

/// Calls `read`, which reads `mapping`. A page of it that is not there any more reads as zeros, and
/// then the result is false. For one thread at a time; `mapping` begins at a page.
bool readMapped( std::span< std::byte > mapping, const std::function< void() > & read );

} // namespace TraceTool
