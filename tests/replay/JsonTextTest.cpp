// JSON as the programs write it: each kind of value, and any text and number.

#include "replay/JsonText.h"

#include "tests/platform/Seed.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Replay::JsonText;

template < class Value >
std::string json( const Value & value ) {
   std::string out;
   JsonText( out ).value( value );
   return out;
}

// What another writer makes of a text, malformed bytes replaced.
std::string reference( const std::string & text ) {
   using Json = nlohmann::json;
   return Json( text ).dump( -1, ' ', false, Json::error_handler_t::replace );
}

// --- values ---

TEST( JsonText, ElementsAndMembersAreSeparatedAtEachDepth ) {
   std::string out = "before\n";
   JsonText text( out );
   text.beginObject();
   text.key( "none" );
   text.value( std::vector< std::string >() );
   text.key( "lists" );
   text.value( std::vector< std::vector< unsigned > >{ { 1, 2 }, {}, { 3 } } );
   text.key( "object" );
   text.value( []( JsonText & inner ) {
      inner.beginObject();
      inner.endObject();
   } );
   text.key( "last" );
   text.value( true );
   text.endObject();
   EXPECT_EQ( out, "before\n"
                   R"({"none":[],"lists":[[1,2],[],[3]],"object":{},"last":true})" );
}

TEST( JsonText, KeysAreEscapedAsTextsAre ) {
   std::string out;
   JsonText text( out );
   text.beginObject();
   text.key( "a\"\n\xFF" );
   text.value( 1U );
   text.endObject();
   EXPECT_EQ( out, "{\"a\\\"\\n\xEF\xBF\xBD\":1}" );
}

TEST( JsonText, NothingIsNull ) {
   EXPECT_EQ( json( std::optional< unsigned >() ), "null" );
   EXPECT_EQ( json( std::optional( 7U ) ), "7" );
   EXPECT_EQ( json( std::vector< std::optional< double > >{ {}, 0.5, {} } ), "[null,0.5,null]" );
}

TEST( JsonText, WholeNumbersAreWrittenInFull ) {
   EXPECT_EQ( json( std::uint8_t{ 0 } ), "0" );
   EXPECT_EQ( json( std::numeric_limits< std::uint64_t >::max() ), "18446744073709551615" );
}

TEST( JsonText, ALiteralIsATextAndATruthValueIsOne ) {
   EXPECT_EQ( json( "false" ), "\"false\"" );
   EXPECT_EQ( json( false ), "false" );
   EXPECT_EQ( json( true ), "true" );
}

// --- numbers ---

TEST( JsonText, NumbersHaveAPointOrAnExponent ) {
   EXPECT_EQ( json( 0.0 ), "0.0" );
   EXPECT_EQ( json( -0.0 ), "-0.0" );
   EXPECT_EQ( json( 1.0 ), "1.0" );
   EXPECT_EQ( json( -2.5 ), "-2.5" );
   EXPECT_EQ( json( 0.1 ), "0.1" );
   EXPECT_EQ( json( 1234567.890123 ), "1234567.890123" );
   EXPECT_EQ( json( 0.000649 ), "0.000649" );
   EXPECT_EQ( json( 1e-9 ), "1e-09" );
   EXPECT_EQ( json( 1.5e-7 ), "1.5e-07" );
   EXPECT_EQ( json( 1e22 ), "1e+22" );
   EXPECT_EQ( json( 5e-324 ), "5e-324" );
   EXPECT_EQ( json( std::numeric_limits< double >::max() ), "1.7976931348623157e+308" );
}

TEST( JsonText, ExponentsBeginWhereNumbersWithoutThemWouldBeLong ) {
   EXPECT_EQ( json( 0.0001 ), "0.0001" );
   EXPECT_EQ( json( std::nextafter( 0.0001, 0 ) ), "9.999999999999999e-05" );
   EXPECT_EQ( json( 999999999999999.0 ), "999999999999999.0" );
   EXPECT_EQ( json( 999999999999999.9 ), "999999999999999.9" );
   EXPECT_EQ( json( 1e15 ), "1e+15" );
   EXPECT_EQ( json( 1234567890123456.0 ), "1.234567890123456e+15" );
}

TEST( JsonText, WhatIsNotFiniteIsNull ) {
   EXPECT_EQ( json( std::numeric_limits< double >::infinity() ), "null" );
   EXPECT_EQ( json( -std::numeric_limits< double >::infinity() ), "null" );
   EXPECT_EQ( json( std::numeric_limits< double >::quiet_NaN() ), "null" );
}

void expectReadBack( double number ) {
   const std::string text = json( number );
   ASSERT_EQ( std::bit_cast< std::uint64_t >( std::strtod( text.c_str(), nullptr ) ),
              std::bit_cast< std::uint64_t >( number ) )
      << text;
   ASSERT_EQ( nlohmann::json::parse( text ).get< double >(), number ) << text;
}

TEST( JsonText, EveryNumberIsReadBackAsItself ) {
   SCOPED_TRACE( seedNote( 7 ) );
   std::mt19937_64 random( seed( 7 ) );
   for ( int round = 0; round < 100'000; ++round ) {
      const auto number = std::bit_cast< double >( random() );
      if ( std::isfinite( number ) ) {
         ASSERT_NO_FATAL_FAILURE( expectReadBack( number ) );
      }
   }
}

TEST( JsonText, WholeMicrosecondsTakeNoMoreThanTheirSixDigits ) {
   SCOPED_TRACE( seedNote( 9 ) );
   std::mt19937_64 random( seed( 9 ) );
   for ( int round = 0; round < 100'000; ++round ) {
      const double number = static_cast< double >( random() % 100'000'000'000 ) / 1e6;
      ASSERT_NO_FATAL_FAILURE( expectReadBack( number ) );
      const std::string text = json( number );
      // Less than that is written with an exponent.
      ASSERT_LE( text.size() - text.find( '.' ), number < 1e-4 ? 99U : 7U ) << text;
   }
}

// --- texts ---

TEST( JsonText, TextsAreEscapedOnlyWhereTheyMustBe ) {
   EXPECT_EQ( json( "" ), "\"\"" );
   EXPECT_EQ( json( "\b\f\n\r\t\"\\/" ), R"("\b\f\n\r\t\"\\/")" );
   EXPECT_EQ( json( std::string_view( "a\0\x1f\x7f", 4 ) ), "\"a\\u0000\\u001f\x7f\"" );
   EXPECT_EQ( json( "Büro, 東京, 😀" ), "\"Büro, 東京, 😀\"" );
   EXPECT_EQ( json( "\xC2\x9B" ), "\"\xC2\x9B\"" );
}

TEST( JsonText, MalformedBytesAreReplacedOncePerCharacterBegun ) {
   const std::string mark = "\xEF\xBF\xBD";
   EXPECT_EQ( json( "M\xFCller" ), "\"M" + mark + "ller\"" );
   EXPECT_EQ( json( "\xE2\x82" ), '"' + mark + '"' ); // cut at the end
   EXPECT_EQ( json( "\xE2\x82x" ), '"' + mark + "x\"" );
   EXPECT_EQ( json( "\xE2\x82\xE2\x82\xAC" ), '"' + mark + "€\"" );
   EXPECT_EQ( json( "\xF0\x9F\x98\"" ), '"' + mark + "\\\"\"" );
   EXPECT_EQ( json( "\xC0\xAF" ), '"' + mark + mark + '"' );
   EXPECT_EQ( json( "\xED\xA0\x80" ), '"' + mark + mark + mark + '"' ); // a surrogate
}

TEST( JsonText, EveryTextOfUpToTwoBytesIsAsAnotherWriterHasIt ) {
   for ( unsigned first = 0; first < 256; ++first ) {
      const std::string one( 1, static_cast< char >( first ) );
      ASSERT_EQ( json( one ), reference( one ) ) << first;
      for ( unsigned second = 0; second < 256; ++second ) {
         const std::string two = one + static_cast< char >( second );
         ASSERT_EQ( json( two ), reference( two ) ) << first << ' ' << second;
      }
   }
}

TEST( JsonText, RandomTextsAreAsAnotherWriterHasThem ) {
   SCOPED_TRACE( seedNote( 8 ) );
   std::mt19937_64 random( seed( 8 ) );
   // At the borders of what may follow what, with plain characters between.
   constexpr std::string_view bytes = "\x01\x1f\"\\ a\x7f\x80\x8f\x90\x9f\xa0\xbf\xc0\xc1\xc2\xdf"
                                      "\xe0\xe1\xec\xed\xee\xef\xf0\xf1\xf3\xf4\xf5\xff";
   for ( int round = 0; round < 100'000; ++round ) {
      std::string text;
      for ( std::size_t left = random() % 8; left > 0; --left ) {
         text += bytes[ random() % bytes.size() ];
      }
      ASSERT_EQ( json( text ), reference( text ) );
   }
}

} // namespace
