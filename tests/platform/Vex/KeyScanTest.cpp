#include "platform/Vex/KeyScan.h"

#include "tests/platform/Seed.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

template < class Number >
class KeyScanTest : public testing::Test {};

using KeyNumbers = testing::Types< std::uint32_t, std::uint64_t >;
TYPED_TEST_SUITE( KeyScanTest, KeyNumbers );

TYPED_TEST( KeyScanTest, EachPlaceHasItsBit ) {
   for ( std::uint32_t place = 0; place < Vex::keysScanned; ++place ) {
      std::array< TypeParam, Vex::keysScanned > keys{};
      keys.at( place ) = 7;
      EXPECT_EQ( Vex::matchesOfSixteen( keys.data(), TypeParam{ 7 } ), 1U << place );
      EXPECT_EQ( Vex::matchesOfSixteen( keys.data(), TypeParam{ 0 } ), 0xFFFFU ^ 1U << place );
   }
}

TYPED_TEST( KeyScanTest, EveryBitOfAKeyCounts ) {
   for ( int bit = 0; bit < std::numeric_limits< TypeParam >::digits; ++bit ) {
      std::array< TypeParam, Vex::keysScanned > keys{};
      keys.fill( 5 );
      keys[ 9 ] ^= TypeParam{ 1 } << bit;
      EXPECT_EQ( Vex::matchesOfSixteen( keys.data(), TypeParam{ 5 } ), 0xFFFFU ^ 1U << 9U ) << bit;
   }
}

TYPED_TEST( KeyScanTest, AgreesWithOneComparisonAfterTheOther ) {
   SCOPED_TRACE( seedNote( 8 ) );
   std::mt19937_64 random( seed( 8 ) );
   for ( int round = 0; round < 10'000; ++round ) {
      std::array< TypeParam, Vex::keysScanned > keys{};
      for ( TypeParam & key : keys ) {
         key = static_cast< TypeParam >( ( random() & 0x8000000180000001U ) | ( random() & 1U ) );
      }
      const TypeParam wanted = keys.at( random() % Vex::keysScanned );
      std::uint32_t matches = 0;
      for ( std::uint32_t at = 0; at < Vex::keysScanned; ++at ) {
         matches += keys.at( at ) == wanted ? 1U << at : 0U;
      }
      ASSERT_EQ( Vex::matchesOfSixteen( keys.data(), wanted ), matches );
      ASSERT_EQ( Vex::matchesOneByOne( keys.data(), wanted ), matches );
   }
}

TYPED_TEST( KeyScanTest, KeysNeedNotLieOnAnyBoundary ) {
   std::array< TypeParam, Vex::keysScanned + 3 > keys{};
   keys[ 18 ] = 1;
   for ( std::uint32_t first = 0; first <= 3; ++first ) {
      EXPECT_EQ( Vex::matchesOfSixteen( keys.data() + first, TypeParam{ 1 } ),
                 first == 3 ? 1U << 15U : 0U );
   }
}

} // namespace
