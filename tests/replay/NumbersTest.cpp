#include "replay/Numbers.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace {

using Replay::decimal;
using Replay::parseNumber;
using Replay::parseSeconds;
using Replay::roundedToMicroseconds;
using Vex::Seconds;

TEST( ParseNumber, TakesTheEndsOfItsRange ) {
   EXPECT_EQ( parseNumber( "0", 0, 255 ), 0U );
   EXPECT_EQ( parseNumber( "255", 0, 255 ), 255U );
   EXPECT_EQ( parseNumber( "4294967295", 0, 4294967295U ), 4294967295U );
   EXPECT_EQ( parseNumber( "007", 0, 255 ), 7U );
}

TEST( ParseNumber, RefusesWhatIsOutOfItsRange ) {
   EXPECT_FALSE( parseNumber( "256", 0, 255 ) );
   EXPECT_FALSE( parseNumber( "0", 1, 4094 ) );
   EXPECT_FALSE( parseNumber( "4294967296", 0, 4294967295U ) );
   EXPECT_FALSE( parseNumber( "99999999999999999999999", 0, 255 ) );
}

TEST( ParseNumber, RefusesWhatIsNoPlainNumber ) {
   for ( const char * word : { "", "-1", "+1", "1.0", "0x10", "1e2", " 1", "1 ", "one", "١" } ) {
      EXPECT_FALSE( parseNumber( word, 0, 255 ) ) << word;
   }
}

TEST( ParseSeconds, GivesTheNearestDouble ) {
   EXPECT_EQ( parseSeconds( "0" ), Seconds( 0 ) );
   EXPECT_EQ( parseSeconds( "0.1" ), Seconds( 0.1 ) );
   EXPECT_EQ( parseSeconds( "12.345678" ), Seconds( 12.345678 ) );
   EXPECT_EQ( parseSeconds( ".5" ), Seconds( 0.5 ) );
   EXPECT_EQ( parseSeconds( "5." ), Seconds( 5 ) );
   EXPECT_EQ( parseSeconds( "0.30000000000000004" ), Seconds( 0.1 + 0.2 ) );
}

TEST( ParseSeconds, RefusesSignsExponentsAndNames ) {
   for ( const char * word : { "", ".", "-1", "+1", "1e3", "1E3", "inf", "nan", "infinity", "1.2.3",
                               "0x1", "1,5", "1s" } ) {
      EXPECT_FALSE( parseSeconds( word ) ) << word;
   }
}

TEST( ParseSeconds, RefusesWhatNoDoubleHolds ) {
   EXPECT_FALSE( parseSeconds( std::string( 400, '9' ) ) );
   EXPECT_TRUE( parseSeconds( std::string( 300, '9' ) ) );
}

TEST( ParseSeconds, TakesWhatIsTooSmallForADoubleAsNothing ) {
   EXPECT_EQ( parseSeconds( "0." + std::string( 400, '0' ) + "1" ), Seconds( 0 ) );
}

TEST( Decimal, IsTheShortestTextWithoutExponent ) {
   EXPECT_EQ( decimal( Seconds( 0 ) ), "0" );
   EXPECT_EQ( decimal( Seconds( 0.1 ) ), "0.1" );
   EXPECT_EQ( decimal( Seconds( 1e21 ) ), "1000000000000000000000" );
   EXPECT_EQ( decimal( Seconds( 1e-7 ) ), "0.0000001" );
   EXPECT_EQ( decimal( Seconds( std::numeric_limits< double >::max() ) ).size(), 309U );
}

TEST( RoundedToMicroseconds, GoesToTheNearestOne ) {
   EXPECT_EQ( roundedToMicroseconds( Seconds( 0.1 + 0.2 ) ), 0.3 );
   EXPECT_EQ( roundedToMicroseconds( Seconds( 0.00000049 ) ), 0.0 );
   EXPECT_EQ( roundedToMicroseconds( Seconds( 0.0000005 ) ), 0.000001 );
}

TEST( RoundedToMicroseconds, KeepsWhatIsTooLargeToHaveThem ) {
   EXPECT_EQ( roundedToMicroseconds( Seconds( 1e300 ) ), 1e300 );
   EXPECT_EQ( roundedToMicroseconds( Seconds( 1e308 ) ), 1e308 );
}

} // namespace
