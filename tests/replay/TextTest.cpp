#include "replay/Text.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using Replay::columns;
using Replay::firstMalformed;
using Replay::inQuotes;

constexpr std::size_t none = std::string_view::npos;

std::string printable( std::string_view text ) {
   std::string out;
   Replay::appendPrintable( out, text );
   return out;
}

TEST( FirstMalformed, FindsNothingInUtf8 ) {
   EXPECT_EQ( firstMalformed( "" ), none );
   EXPECT_EQ( firstMalformed( "Ethernet1" ), none );
   EXPECT_EQ( firstMalformed( "Büro, 東京, 😀" ), none );
   EXPECT_EQ( firstMalformed( "\xF4\x8F\xBF\xBF" ), none ); // U+10FFFF
}

TEST( FirstMalformed, FindsBytesThatMakeNoCharacter ) {
   EXPECT_EQ( firstMalformed( "ab\xFF" ), 2U );
   EXPECT_EQ( firstMalformed( "M\xFCller" ), 1U ); // Latin-1
   EXPECT_EQ( firstMalformed( "\x80" ), 0U );
   EXPECT_EQ( firstMalformed( "\xE2\x82" ), 0U ); // cut
   EXPECT_EQ( firstMalformed( "\xE2\x82x" ), 0U );
   EXPECT_EQ( firstMalformed( "\xC0\xAF" ), 0U ); // overlong
   EXPECT_EQ( firstMalformed( "\xE0\x80\xAF" ), 0U ); // overlong
   EXPECT_EQ( firstMalformed( "\xED\xA0\x80" ), 0U ); // surrogate
   EXPECT_EQ( firstMalformed( "\xF4\x90\x80\x80" ), 0U ); // beyond U+10FFFF
}

TEST( FirstCharacter, SaysHowMuchOfAMalformedOneIsThere ) {
   const auto malformed = []( std::string_view text ) {
      const Replay::Character character = Replay::firstCharacter( text );
      EXPECT_FALSE( character.wellFormed ) << text;
      return character.length;
   };
   EXPECT_EQ( malformed( "\x80" ), 1U );
   EXPECT_EQ( malformed( "\xC2" ), 1U );
   EXPECT_EQ( malformed( "\xC2z" ), 1U );
   EXPECT_EQ( malformed( "\xE2\x82" ), 2U );
   EXPECT_EQ( malformed( "\xE2\x82z" ), 2U );
   EXPECT_EQ( malformed( "\xF0\x9F\x98\xC2" ), 3U );
   EXPECT_EQ( malformed( "\xE0\x80\x80" ), 1U ); // overlong from its second byte on
   EXPECT_EQ( malformed( "\xFF\x80" ), 1U );
}

TEST( FirstCharacter, TakesAWholeOneAndNoMore ) {
   const auto whole = []( std::string_view text ) {
      const Replay::Character character = Replay::firstCharacter( text );
      EXPECT_TRUE( character.wellFormed ) << text;
      return character.length;
   };
   EXPECT_EQ( whole( "ab" ), 1U );
   EXPECT_EQ( whole( "ü" ), 2U );
   EXPECT_EQ( whole( "€\x80" ), 3U );
   EXPECT_EQ( whole( "😀" ), 4U );
}

TEST( AppendPrintable, EscapesWhatMovesATerminal ) {
   EXPECT_EQ( printable( "a\x1b[31m\r\n\tb\x7f" ), "a\\x1b[31m\\x0d\\x0a\\x09b\\x7f" );
   EXPECT_EQ( printable( std::string( "a\0b", 3 ) ), "a\\x00b" );
   EXPECT_EQ( printable( "\xC2\x9B" ), "\\xc2\\x9b" ); // U+009B begins a terminal sequence, too
}

TEST( AppendPrintable, EscapesMalformedBytesAndKeepsOtherText ) {
   EXPECT_EQ( printable( "é\xFF\xE2\x82" ), "é\\xff\\xe2\\x82" );
   EXPECT_EQ( printable( "\xC2\xA0" ), "\xC2\xA0" );
}

TEST( WithoutByteOrderMark, TakesOneFromTheBeginning ) {
   EXPECT_EQ( Replay::withoutByteOrderMark( "\uFEFFa\uFEFF" ), "a\uFEFF" );
   EXPECT_EQ( Replay::withoutByteOrderMark( "\uFEFF\uFEFF" ), "\uFEFF" );
   EXPECT_EQ( Replay::withoutByteOrderMark( "a\uFEFF" ), "a\uFEFF" );
   EXPECT_EQ( Replay::withoutByteOrderMark( "\xEF\xBB" ), "\xEF\xBB" );
   EXPECT_EQ( Replay::withoutByteOrderMark( "" ), "" );
}

TEST( AsBytes, ShowsEachByteWhateverItIs ) {
   EXPECT_EQ( Replay::asBytes( "a\u00A0" ), "\\x61\\xc2\\xa0" );
}

TEST( InQuotes, ShortensALongWordAtACharacter ) {
   EXPECT_EQ( inQuotes( "Ethernet1" ), "'Ethernet1'" );
   EXPECT_EQ( inQuotes( std::string( 48, 'x' ) ), "'" + std::string( 48, 'x' ) + "'" );
   EXPECT_EQ( inQuotes( std::string( 1'000'000, 'x' ) ), "'" + std::string( 48, 'x' ) + "…'" );
   std::string umlauts;
   for ( int i = 0; i < 50; ++i ) {
      umlauts += "ü";
   }
   EXPECT_EQ( inQuotes( umlauts ), "'" + umlauts.substr( 0, 96 ) + "…'" );
}

TEST( Columns, CountsCharacters ) {
   EXPECT_EQ( columns( "" ), 0U );
   EXPECT_EQ( columns( "Büro" ), 4U );
}

} // namespace
