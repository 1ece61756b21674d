#pragma once

// Keys for the tests of keyed collections, whose hash is chosen by the test; or which collections
// keep as a number.

#include <cstddef>
#include <cstdint>

enum class Hashing : std::uint8_t { spread, few, one, packed };

template < Hashing hashing >
struct TestKey {
   int number = 0;

   std::size_t hash() const noexcept {
      const auto value = static_cast< std::size_t >( number );
      switch ( hashing ) {
      case Hashing::spread:
         return value * 0x9E3779B97F4A7C15ULL >> 32U;
      case Hashing::few:
         return value % 3;
      case Hashing::one:
         return ~std::size_t{ 0 }; // the probe wraps round at once
      case Hashing::packed:
         break;
      }
      return 0;
   }

   friend bool operator==( TestKey a, TestKey b ) noexcept {
      ++comparisons;
      return a.number == b.number;
   }

   inline static std::uint64_t comparisons = 0;
};

/// As it is kept, only some of its bits are used, and none of them is the lowest.
template <>
struct TestKey< Hashing::packed > {
   int number = 0;

   std::uint32_t packed() const noexcept { return static_cast< std::uint32_t >( number ) << 4U; }
   static TestKey unpacked( std::uint32_t packed ) noexcept {
      return { static_cast< int >( packed >> 4U ) };
   }

   friend bool operator==( TestKey, TestKey ) = default;
};
