#pragma once

// Keys for the tests of keyed collections, whose hash is chosen by the test.

#include <cstddef>
#include <cstdint>

enum class Hashing : std::uint8_t { spread, few, one };

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
      }
      return 0;
   }

   friend bool operator==( TestKey a, TestKey b ) noexcept {
      ++comparisons;
      return a.number == b.number;
   }

   inline static std::uint64_t comparisons = 0;
};
