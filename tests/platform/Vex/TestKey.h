#pragma once

// Keys for the tests of keyed collections, by how the numbers lie that collections keep for them.

#include <cstdint>

enum class Numbers : std::uint8_t {
   dense, // one after the other
   strided, // every sixteenth
   fewHomes, // all alike in their low bits but for three kinds
   oneHome, // of 64 bits, which differ in their upper half alone
};

template < Numbers numbers >
struct TestKey {
   int number = 0; // -1 and more

   std::uint32_t packed() const noexcept {
      const auto value = static_cast< std::uint32_t >( number + 1 );
      switch ( numbers ) {
      case Numbers::dense:
         return value;
      case Numbers::strided:
         return value << 4U;
      case Numbers::fewHomes:
      case Numbers::oneHome: // is another one, below
         break;
      }
      return value % 3 | value / 3 << 20U;
   }
   static TestKey unpacked( std::uint32_t packed ) noexcept {
      std::uint32_t value = packed;
      switch ( numbers ) {
      case Numbers::dense:
         break;
      case Numbers::strided:
         value = packed >> 4U;
         break;
      case Numbers::fewHomes:
      case Numbers::oneHome:
         value = 3 * ( packed >> 20U ) + packed % 4;
         break;
      }
      return { static_cast< int >( value ) - 1 };
   }

   friend bool operator==( TestKey, TestKey ) = default;
};

template <>
struct TestKey< Numbers::oneHome > {
   int number = 0;

   static constexpr std::uint64_t home = 0x3FFFFFFF;

   std::uint64_t packed() const noexcept {
      return static_cast< std::uint64_t >( static_cast< std::uint32_t >( number ) ) << 32U | home;
   }
   static TestKey unpacked( std::uint64_t packed ) noexcept {
      return { static_cast< int >( packed >> 32U ) };
   }

   friend bool operator==( TestKey, TestKey ) = default;
};

/// A key that is a number.
struct NumberKey {
   std::uint64_t number = 0;

   std::uint64_t packed() const noexcept { return number; }
   static NumberKey unpacked( std::uint64_t packed ) noexcept { return { packed }; }

   friend bool operator==( NumberKey, NumberKey ) = default;
};
