#pragma once

// Which of sixteen keys side by side are equal to one: how a collection that is too small for an
// index finds a key.
//
//    const std::uint32_t matches = Vex::matchesOfSixteen( keys, key ); // bit n: keys[ n ] == key
//
// All sixteen are compared, whatever they hold, because a scan that ends at the first match costs a
// branch that no processor foresees. A port is looked for among the members of its LAG in each
// decision, so this is written for the vector instructions where they are sure to be there.

#include <concepts>
#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Vex {

inline constexpr std::uint32_t keysScanned = 16;

/// What the functions below do, key by key.
template < std::unsigned_integral Number >
std::uint32_t matchesOneByOne( const Number * keys, Number key ) noexcept {
   std::uint32_t matches = 0;
   for ( std::uint32_t at = 0; at < keysScanned; ++at ) {
      matches |= static_cast< std::uint32_t >( keys[ at ] == key ) << at;
   }
   return matches;
}

#ifdef __SSE2__

namespace Detail {

inline __m128i keysAt( const void * keys ) noexcept {
   return _mm_loadu_si128( static_cast< const __m128i * >( keys ) );
}
// Of four results of four keys each, a bit a key.
inline std::uint32_t bitsOf( __m128i a, __m128i b, __m128i c, __m128i d ) noexcept {
   return static_cast< std::uint32_t >(
      _mm_movemask_epi8( _mm_packs_epi16( _mm_packs_epi32( a, b ), _mm_packs_epi32( c, d ) ) ) );
}

} // namespace Detail

inline std::uint32_t matchesOfSixteen( const std::uint32_t * keys, std::uint32_t key ) noexcept {
   const __m128i wanted = _mm_set1_epi32( static_cast< int >( key ) );
   const auto four = [ & ]( std::size_t at ) {
      return _mm_cmpeq_epi32( Detail::keysAt( keys + at ), wanted );
   };
   return Detail::bitsOf( four( 0 ), four( 4 ), four( 8 ), four( 12 ) );
}

inline std::uint32_t matchesOfSixteen( const std::uint64_t * keys, std::uint64_t key ) noexcept {
   const __m128i wanted = _mm_set1_epi64x( static_cast< long long >( key ) );
   const auto halves = [ & ]( std::size_t at ) { // of two keys, each half for itself
      return _mm_castsi128_ps( _mm_cmpeq_epi32( Detail::keysAt( keys + at ), wanted ) );
   };
   const auto four = [ & ]( std::size_t at ) {
      const __m128 a = halves( at );
      const __m128 b = halves( at + 2 );
      const __m128 lower = _mm_shuffle_ps( a, b, _MM_SHUFFLE( 2, 0, 2, 0 ) );
      const __m128 upper = _mm_shuffle_ps( a, b, _MM_SHUFFLE( 3, 1, 3, 1 ) );
      return _mm_castps_si128( _mm_and_ps( lower, upper ) );
   };
   return Detail::bitsOf( four( 0 ), four( 4 ), four( 8 ), four( 12 ) );
}

#else

template < std::unsigned_integral Number >
std::uint32_t matchesOfSixteen( const Number * keys, Number key ) noexcept {
   return matchesOneByOne( keys, key );
}

#endif

} // namespace Vex
