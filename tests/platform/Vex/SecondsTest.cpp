#include "platform/Vex/Seconds.h"

#include <gtest/gtest.h>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace {

using Vex::Seconds;

std::string streamed( Seconds seconds ) {
   std::ostringstream out;
   out << seconds;
   return out.str();
}

TEST( SecondsTest, StreamsWithSixDigitsAfterThePoint ) {
   EXPECT_EQ( streamed( Seconds( 12.345678 ) ), "12.345678" );
   EXPECT_EQ( streamed( Seconds( 0 ) ), "0.000000" );
   EXPECT_EQ( streamed( Seconds( 0.1 ) ), "0.100000" );
   EXPECT_EQ( streamed( Seconds( -2.5 ) ), "-2.500000" );
}

TEST( SecondsTest, StreamsTheNearestMicrosecond ) {
   EXPECT_EQ( streamed( Seconds( 0.0000004 ) ), "0.000000" );
   EXPECT_EQ( streamed( Seconds( 0.0000006 ) ), "0.000001" );
   EXPECT_EQ( streamed( Seconds( 0.9999999 ) ), "1.000000" );
}

TEST( SecondsTest, StreamsInfinityAsInf ) {
   EXPECT_EQ( streamed( Seconds::infinity() ), "inf" );
   EXPECT_EQ( streamed( Seconds( 0 ) - Seconds::infinity() ), "-inf" );
}

TEST( SecondsTest, StreamsTheLargestMomentWhole ) {
   const std::string longest = streamed( Seconds( std::numeric_limits< double >::lowest() ) );
   EXPECT_EQ( longest.size(), 1 + 309 + 7 );
   EXPECT_TRUE( longest.starts_with( "-17976931348623157" ) ) << longest;
   EXPECT_TRUE( longest.ends_with( ".000000" ) ) << longest;
}

TEST( SecondsTest, StreamsTheSameWhateverTheStreamIsSetTo ) {
   struct Comma : std::numpunct< char > {
      char do_decimal_point() const override { return ','; }
   };
   std::ostringstream out;
   out.imbue( std::locale( std::locale::classic(), new Comma ) );
   out.precision( 1 );
   out << std::scientific << std::showpos << Seconds( 1.5 );
   EXPECT_EQ( out.str(), "1.500000" );
}

TEST( SecondsTest, AddsSubtractsAndCompares ) {
   EXPECT_EQ( Seconds( 1.5 ) + Seconds( 0.25 ), Seconds( 1.75 ) );
   EXPECT_EQ( Seconds( 1.5 ) - Seconds( 2 ), Seconds( -0.5 ) );
   EXPECT_LT( Seconds( 1 ), Seconds( 2 ) );
   EXPECT_GT( Seconds::infinity(), Seconds( std::numeric_limits< double >::max() ) );
   EXPECT_EQ( Seconds(), Seconds( 0 ) );
}

} // namespace
