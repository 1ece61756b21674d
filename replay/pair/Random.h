#pragma once

#include <cstdint>

namespace Replay::Peering {

/// Numbers by chance, the same on every machine and from every compiler: a counter of 64 bits,
/// mixed.
class Random {
 public:
   explicit Random( std::uint64_t seed ) noexcept : state_( seed ) {}

   std::uint64_t next() noexcept {
      state_ += 0x9E3779B97F4A7C15ULL;
      return mixed( state_ );
   }
   /// 0 to `end` - 1; `end` is not 0. The bias of the remainder is below 2^-32 for a small `end`.
   std::uint32_t below( std::uint32_t end ) noexcept {
      return static_cast< std::uint32_t >( next() % end );
   }
   bool percent( std::uint32_t chance ) noexcept { return below( 100 ) < chance; }

   /// A seed of its own for the `at`-th of many.
   static std::uint64_t derived( std::uint64_t seed, std::uint64_t at ) noexcept {
      return mixed( mixed( seed ) + at );
   }

 private:
   static constexpr std::uint64_t mixed( std::uint64_t value ) noexcept {
      value = ( value ^ value >> 30U ) * 0xBF58476D1CE4E5B9ULL;
      value = ( value ^ value >> 27U ) * 0x94D049BB133111EBULL;
      return value ^ value >> 31U;
   }

   std::uint64_t state_;
};

} // namespace Replay::Peering
