#pragma once

// How keyed collections keep a key: in as few bytes as it needs, because what a collection costs is
// the cache lines that it touches.
//
// A key that stands for a whole number of at most 64 bits says so: packed() gives the number, and
// unpacked() the key again. Other keys are kept as they are, and bring a hash() of their own.

#include <concepts>
#include <cstddef>
#include <cstdint>

namespace Vex {

/// A key that stands for a number.
template < class Key >
concept PackedKey = requires( const Key & key ) {
   { key.packed() } -> std::unsigned_integral;
   { Key::unpacked( key.packed() ) } -> std::same_as< Key >;
};

/// What a collection keeps of a key, and how it finds it: the key as it is.
template < class Key >
struct StoredKey {
   using Type = Key;
   static Key from( const Key & key ) noexcept { return key; }
   static Key to( const Key & stored ) noexcept { return stored; }
   static std::size_t hash( const Key & stored ) noexcept { return stored.hash(); }
};

/// The number that the key stands for.
template < PackedKey Key >
struct StoredKey< Key > {
   using Type = decltype( Key().packed() );
   static Type from( const Key & key ) noexcept { return key.packed(); }
   static Key to( Type stored ) noexcept { return Key::unpacked( stored ); }
   // The multiplication (2^64 / golden ratio) spreads numbers that follow each other, also where
   // two of them make up the halves of a key; the shift brings the well-mixed upper half down to
   // where tables look.
   static std::size_t hash( Type stored ) noexcept {
      return static_cast< std::size_t >( stored * 0x9E3779B97F4A7C15ULL >> 32U );
   }
};

} // namespace Vex
