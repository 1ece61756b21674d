// JSON: what it says, and every error with its place.

#include "replay/import/Json.h"

#include "tests/platform/Seed.h"

#include <array>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

namespace {

using Import::JsonError;
using Import::JsonKind;
using Import::JsonValue;
using Import::parseJson;

std::string errorOf( std::string_view text ) {
   try {
      parseJson( text );
   } catch ( const JsonError & error ) {
      const Import::Place place = Import::placeOf( text, error.at() );
      return std::to_string( place.line ) + ":" + std::to_string( place.column ) + ": " +
             error.what();
   }
   return "no error";
}

// Written once more, without blanks, to be compared with what another reader has found.
nlohmann::json asOtherReader( const JsonValue & value ) {
   switch ( value.kind ) {
   case JsonKind::string:
      return value.text;
   case JsonKind::array: {
      auto list = nlohmann::json::array();
      for ( const JsonValue & item : value.items ) {
         list.push_back( asOtherReader( item ) );
      }
      return list;
   }
   case JsonKind::object: {
      auto object = nlohmann::json::object();
      for ( const auto & member : value.members ) {
         object[ member.key ] = asOtherReader( member.value );
      }
      return object;
   }
   case JsonKind::null:
   case JsonKind::boolean:
   case JsonKind::number:
      break;
   }
   return nlohmann::json::parse( value.text );
}

TEST( Json, ReadsEachKindOfValueAndWhereItStands ) {
   const JsonValue value = parseJson( " {\"a\" : [ 1, -2.5e+3, true, null ],\n\"b\":\"x\"}\r\n" );
   ASSERT_EQ( value.kind, JsonKind::object );
   ASSERT_EQ( value.members.size(), 2U );
   const JsonValue & list = value.members[ 0 ].value;
   ASSERT_EQ( list.items.size(), 4U );
   EXPECT_EQ( list.items[ 1 ].text, "-2.5e+3" );
   EXPECT_EQ( list.items[ 2 ].kind, JsonKind::boolean );
   EXPECT_EQ( list.items[ 3 ].kind, JsonKind::null );
   EXPECT_EQ( value.members[ 1 ].key, "b" );
   EXPECT_EQ( value.members[ 1 ].at, 36U );
   EXPECT_EQ( value.members[ 1 ].value.at, 40U );
   EXPECT_EQ( value.members[ 1 ].value.text, "x" );
}

TEST( Json, ReadsEscapes ) {
   EXPECT_EQ( parseJson( R"("\"\\\/\b\f\n\r\t\u0041\u00e9\u20AC\ud83d\ude00")" ).text,
              "\"\\/\b\f\n\r\tAé€😀" );
}

TEST( Json, TellsWhereItIsWrongAndWhatWasWanted ) {
   const std::array< std::array< const char *, 2 >, 30 > all{ {
      { "", "1:1: the file is empty; wanted: a JSON object" },
      { " \n ", "2:2: the file is empty; wanted: a JSON object" },
      { "{", "1:2: the end of the file; wanted: a key in double quotes" },
      { "{\n  \"é\": 1,\n}", "3:1: '}'; wanted: a key in double quotes" },
      { "{ \"é\" 1 }", "1:7: '1'; wanted: ':' behind the key" },
      { "{ \"a\": }", "1:8: '}'; wanted: a value" },
      { "{ \"a\": nothing }", "1:8: 'nothing'; wanted: a value" },
      { "{ \"a\": 1 \"b\": 2 }", "1:10: '\"'; wanted: ',' or '}'" },
      { "{ 'a': 1 }", "1:3: ''a''; wanted: a key in double quotes" },
      { "[ 1 2 ]", "1:5: '2'; wanted: ',' or ']'" },
      { "[ 1, ]", "1:6: ']'; wanted: a value" },
      { "1 2", "1:3: '2'; wanted: the end of the file" },
      { "01", "1:1: '01'; wanted: a number" },
      { "-", "1:1: '-'; wanted: a number" },
      { "1.", "1:1: '1.'; wanted: a number" },
      { "1e", "1:1: '1e'; wanted: a number" },
      { "+1", "1:1: '+1'; wanted: a value" },
      { "truefalse", "1:5: 'false'; wanted: the end of the file" },
      { "\"abc", "1:1: a text that does not end; wanted: '\"' behind it" },
      { "\"a\nb\"", "1:3: '\\x0a'; wanted: no control character in a text" },
      { "\"a\\x\"", "1:3: an escape that there is not; wanted: one of \\\" \\\\ \\/ \\b \\f \\n "
                    "\\r \\t \\uXXXX" },
      { "\"\\u12g4\"", "1:2: \\u without four hexadecimal digits; wanted: \\uXXXX" },
      { "\"\\ud800\"", "1:2: half a surrogate pair; wanted: both halves" },
      { "\"\\udc00\\ud800\"", "1:2: half a surrogate pair; wanted: both halves" },
      { "{ \"a\": 1,\n \"\\u0061\": 2 }",
        "2:2: the key 'a' stands here twice; wanted: each key once" },
      { "{ \"é\xff\": 1 }", "1:5: a byte that is no UTF-8; wanted: UTF-8 text" },
      { "\xEF\xBB\xBF", "1:1: the file is empty; wanted: a JSON object" },
      { "\xEF\xBB\xBF{ 1 }", "1:3: '1'; wanted: a key in double quotes" },
      { "\xEF\xBB\xBF{\n 1 }", "2:2: '1'; wanted: a key in double quotes" },
      { "\xEF\xBB\xBF\xEF\xBB\xBF{}", "1:1: '\xEF\xBB\xBF'; wanted: a value" },
   } };
   for ( const auto & [ text, message ] : all ) {
      EXPECT_EQ( errorOf( text ), message ) << text;
   }
}

TEST( Json, PassesAByteOrderMarkOver ) {
   EXPECT_EQ( errorOf( "\xEF\xBB\xBF{}" ), "no error" );
   EXPECT_EQ( asOtherReader( parseJson( "\xEF\xBB\xBF[ 1 ]" ) ), nlohmann::json::parse( "[1]" ) );
}

TEST( Json, NestingHasItsEnd ) {
   const auto nested = []( std::size_t levels ) {
      return std::string( levels, '[' ) + std::string( levels, ']' );
   };
   EXPECT_EQ( errorOf( nested( 101 ) ), "no error" );
   EXPECT_EQ( errorOf( nested( 102 ) ), "1:102: nested more than 100 levels deep; wanted: less" );
   EXPECT_EQ( errorOf( std::string( 1'000'000, '[' ) ),
              "1:102: nested more than 100 levels deep; wanted: less" );
}

// Pieces of JSON thrown together, whole documents changed a little, and any bytes: what is JSON and
// what it says is what another reader finds. Only what that takes and this does not is left out.
TEST( Json, TakesWhatAnotherReaderTakesAndReadsTheSame ) {
   std::mt19937_64 random( seed( 1 ) );
   SCOPED_TRACE( seedNote( 1 ) );
   const std::array< std::string, 22 > pieces{ "{",
                                               "}",
                                               "[",
                                               "]",
                                               ":",
                                               ",",
                                               "\"a\"",
                                               "\"b\\n\"",
                                               "\"\\u00e9\"",
                                               "1",
                                               "-0.5e2",
                                               "true",
                                               "false",
                                               "null",
                                               "\n ",
                                               "\t",
                                               "\"\"",
                                               "é",
                                               "\"\\ud83d\\ude00\"",
                                               "\"",
                                               "\\",
                                               "0" };
   const std::string document =
      R"({"a":{"x":["1",2,{"k":null}],"y":true},"b":"text \u20ac","c":[-1.5E-3,[],{}]})";
   int right = 0;
   for ( int round = 0; round < 60'000; ++round ) {
      std::string text;
      if ( round % 2 == 0 ) {
         for ( std::uint64_t left = 1 + random() % 8; left > 0; --left ) {
            text += pieces[ random() % pieces.size() ];
         }
      } else {
         text = document;
         for ( std::uint64_t left = random() % 3; left > 0; --left ) {
            const std::size_t at = random() % text.size();
            switch ( random() % 3 ) {
            case 0:
               text.erase( at, 1 + random() % 4 );
               break;
            case 1:
               text.insert( at, pieces[ random() % pieces.size() ] );
               break;
            default:
               text[ at ] = static_cast< char >( random() );
            }
         }
      }
      const std::string error = errorOf( text );
      const bool accepted = nlohmann::json::accept( text );
      if ( error.find( "stands here twice" ) != std::string::npos ) {
         continue;
      }
      ASSERT_EQ( error == "no error", accepted ) << text << "\n" << error;
      if ( accepted ) {
         ++right;
         ASSERT_EQ( asOtherReader( parseJson( text ) ), nlohmann::json::parse( text ) ) << text;
      }
   }
   EXPECT_GT( right, 5'000 );
}

} // namespace
