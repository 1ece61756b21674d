#pragma once

// The flight recorder: the default trace file as a file on disk, which is there, and complete up to
// the last record, when the process has been killed. See docs/trace.md.
//
// Ownership: the file belongs to the library and stays in use until the process ends or the library
// is unloaded; then its lock is released and it stays on disk.
// Threading: call it once, early, from the thread that owns the objects, before others trace.
// Fork: parent and child would write into one ring at once, each counting for itself. A child that
// lives on without exec must say `Jotter::defaultTraceFileIs( nullptr )` before it traces anything,
// and keeps the file locked for as long as it lives. An agent that becomes a daemon does so first.

#include "platform/Vex/Export.h"
#include "platform/Vex/String.h"

#include <cstddef>

namespace Jotter {

/// From now on what is traced goes into the file `path`, which takes at most `bytes` on disk (80
/// KiB at least). The records of before that find room, and all descriptors, are carried over. A
/// trace file that an earlier run has left at `path` is kept as `path`.previous.
///
/// Empty: done. Otherwise the reason why not, in one line; then nothing has changed, on disk or
/// here, and what was recorded into before goes on.
[[nodiscard]] VEX_EXPORT Vex::String defaultTraceFileInto( const Vex::String & path,
                                                           std::size_t bytes ) noexcept;

} // namespace Jotter
