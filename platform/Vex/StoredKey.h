#pragma once

// How keyed collections keep a key: as the number that it stands for, in as few bytes as that
// needs, because what a collection costs is the cache lines that it touches.
//
// packed() gives the number, in 32 or 64 bits, and unpacked() the key again. Bits 30 and 31, and
// the highest, are 0: an index needs them. Keys that are numbered one after the other in their low
// bits are found fastest (platform/Vex/HomeSlots.h).

#include <concepts>
#include <cstdint>

namespace Vex {

/// A key that stands for a number.
template < class Key >
concept PackedKey =
   requires( const Key & key ) {
      { Key::unpacked( key.packed() ) } -> std::same_as< Key >;
   } && ( std::same_as< decltype( Key().packed() ), std::uint32_t > ||
          std::same_as< decltype( Key().packed() ), std::uint64_t > );

/// What a collection keeps of a key.
template < PackedKey Key >
using StoredKey = decltype( Key().packed() );

/// The bits that are to be 0 are.
template < std::unsigned_integral Number >
constexpr bool isStoredKey( Number number ) noexcept {
   constexpr Number lowOnes = Number{ 3 } << 30U;
   constexpr Number highest = Number{ 1 } << ( 8 * sizeof( Number ) - 1 );
   return ( number & ( lowOnes | highest ) ) == 0;
}

} // namespace Vex
