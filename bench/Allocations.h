#pragma once

// What this program and the libraries that it loads allocate by operator new.

#include <cstddef>
#include <cstdint>

namespace Bench {

/// Calls of operator new since the program began.
std::uint64_t allocations() noexcept;

/// Counts the bytes that are allocated and not freed again, as the allocator rounds them, from its
/// construction on. One at a time.
class LiveBytes {
 public:
   LiveBytes() noexcept;
   LiveBytes( const LiveBytes & ) = delete;
   LiveBytes & operator=( const LiveBytes & ) = delete;
   LiveBytes( LiveBytes && ) = delete;
   LiveBytes & operator=( LiveBytes && ) = delete;
   ~LiveBytes();

   static std::int64_t count() noexcept;
};

} // namespace Bench
