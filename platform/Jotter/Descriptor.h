#pragma once

// Message descriptors: what a call site says besides its arguments. A site registers its descriptor
// once; from then on its records carry the descriptor's number.
//
// Ownership: descriptors live once in the process, and as long as it. Equal ones share a number, so
// that a library that is loaded again adds none.
// Threading: registration takes a lock; it happens once a call site.

#include "platform/Vex/Export.h"
#include "platform/Vex/String.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace Jotter {

/// Numbered from 1; 0 is none.
using DescriptorId = std::uint32_t;

/// What stands at one place of a message: a literal text, or a placeholder for an argument.
enum class PieceKind : std::uint8_t { literal, text, boolean, number, time };

/// One place of a message.
struct Piece {
   PieceKind kind;
   Vex::String literal; // empty for a placeholder

   friend bool operator==( const Piece &, const Piece & ) = default;
};

struct Descriptor {
   Vex::String source;
   std::uint32_t line = 0;
   Vex::String function;
   std::uint8_t level = 0;
   std::vector< Piece > pieces;

   friend bool operator==( const Descriptor &, const Descriptor & ) = default;
};

class TraceFile;

/// The number of this descriptor; a new one is written into the default trace file as well.
VEX_EXPORT DescriptorId registerDescriptor( const Descriptor & descriptor );

/// Makes every descriptor that is registered by now known to readers of `file`.
VEX_EXPORT void describeKnown( TraceFile & file );

namespace Detail {
// Read for every message, so it is no function. Set when the library is loaded.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
VEX_EXPORT extern std::atomic< TraceFile * > defaultTraceFile;
} // namespace Detail

/// The trace file that Duplog messages go to. At first it is a built-in one in plain memory.
/// Null: nothing is recorded.
inline TraceFile * defaultTraceFile() noexcept {
   return Detail::defaultTraceFile.load( std::memory_order_acquire );
}

/// Puts `file` in place of the current one and returns that. The caller keeps a file that it puts
/// in place until it takes it back.
VEX_EXPORT TraceFile * defaultTraceFileIs( TraceFile * file );

} // namespace Jotter
