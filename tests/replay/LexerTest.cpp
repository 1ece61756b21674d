#include "replay/Lexer.h"

#include "replay/ScenarioError.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

// The words in brackets, those that were quoted in quotes.
std::string wordsOf( std::string_view line ) {
   std::vector< Replay::Word > words;
   Replay::splitWords( line, words );
   std::string text;
   for ( const Replay::Word & word : words ) {
      text += '[';
      text += word.quoted ? "\"" : "";
      text += word.text;
      text += word.quoted ? "\"" : "";
      text += ']';
   }
   return text;
}

std::string errorOf( std::string_view line ) {
   try {
      return "no error, but " + wordsOf( line );
   } catch ( const Replay::StatementError & error ) {
      return error.what();
   }
}

TEST( Lexer, SplitsAtBlanksAndTabs ) {
   EXPECT_EQ( wordsOf( "lag PortChannel10 Ethernet1" ), "[lag][PortChannel10][Ethernet1]" );
   EXPECT_EQ( wordsOf( "  \tlag\t \tP  " ), "[lag][P]" );
   EXPECT_EQ( wordsOf( "" ), "" );
   EXPECT_EQ( wordsOf( " \t " ), "" );
}

TEST( Lexer, LeavesACommentOutAlsoDirectlyBehindAWord ) {
   EXPECT_EQ( wordsOf( "# all of it" ), "" );
   EXPECT_EQ( wordsOf( "lag P # comment" ), "[lag][P]" );
   EXPECT_EQ( wordsOf( "lag P#comment \" with a quote" ), "[lag][P]" );
   EXPECT_EQ( wordsOf( "lag \"P\"#comment" ), "[lag][\"P\"]" );
}

TEST( Lexer, KeepsBlanksAndHashesOfAQuotedWord ) {
   EXPECT_EQ( wordsOf( R"(lag "Port  Channel # 1" x)" ), "[lag][\"Port  Channel # 1\"][x]" );
   EXPECT_EQ( wordsOf( R"("")" ), R"([""])" );
   EXPECT_EQ( wordsOf( "\"a\tb\"\t\"c\"" ), "[\"a\tb\"][\"c\"]" );
   EXPECT_EQ( wordsOf( R"("a\" b)" ), R"(["a\"][b])" ); // there are no escapes
}

TEST( Lexer, KeepsAnyUtf8 ) {
   EXPECT_EQ( wordsOf( "lag Büro-東京" ), "[lag][Büro-東京]" );
   EXPECT_EQ( wordsOf( "lag P # Büro" ), "[lag][P]" );
}

TEST( Lexer, ForgetsTheWordsOfTheLineBefore ) {
   std::vector< Replay::Word > words;
   Replay::splitWords( "a b c", words );
   Replay::splitWords( "d", words );
   ASSERT_EQ( words.size(), 1U );
   EXPECT_EQ( words[ 0 ].text, "d" );
}

TEST( Lexer, WritesWordsAsALineThatSplitsIntoTheSameOnes ) {
   std::vector< Replay::Word > words;
   Replay::splitWords( "\tlag  \"Po  10 #\" \"\"   Ethernet1# comment", words );
   std::string line = "x";
   Replay::appendWords( line, words );
   EXPECT_EQ( line, "xlag \"Po  10 #\" \"\" Ethernet1" );
   EXPECT_EQ( wordsOf( line.substr( 1 ) ), "[lag][\"Po  10 #\"][\"\"][Ethernet1]" );
}

TEST( Lexer, RefusesAQuoteInTheMiddleOfAWord ) {
   EXPECT_EQ( errorOf( "lag Po\"rt\" x" ),
              "'Po\"rt\"' has a quote in its middle; wanted: quotes around the whole word" );
   EXPECT_EQ( errorOf( "lag Po\"" ),
              "'Po\"' has a quote in its middle; wanted: quotes around the whole word" );
   EXPECT_EQ( errorOf( "lag \"Po\"rt x" ),
              "'\"Po\"rt' goes on after its closing quote; wanted: quotes around the whole word" );
   EXPECT_EQ( errorOf( R"(lag "a""b" x)" ),
              R"('"a""b"' goes on after its closing quote; wanted: quotes around the whole word)" );
}

TEST( Lexer, RefusesAQuoteWithoutItsFellow ) {
   EXPECT_EQ( errorOf( "lag \"Po rt # x" ),
              "'\"Po rt # x' has no closing quote; wanted: a second \" in the same line" );
   EXPECT_EQ( errorOf( "\"" ), "'\"' has no closing quote; wanted: a second \" in the same line" );
}

TEST( Lexer, RefusesBytesThatAreNoUtf8AlsoInAComment ) {
   EXPECT_EQ( errorOf( "lag P\xFF" ), "'\\xff' is a byte that is no UTF-8; wanted: UTF-8 text" );
   EXPECT_EQ( errorOf( "lag P # M\xFCller" ),
              "'\\xfc' is a byte that is no UTF-8; wanted: UTF-8 text" );
}

TEST( Lexer, RefusesControlCharactersOutsideQuotes ) {
   EXPECT_EQ( errorOf( std::string_view( "lag a\0b", 7 ) ),
              "'a\\x00b' has a control character; wanted: text, or the word in quotes" );
   EXPECT_EQ( wordsOf( "lag \"a\x01\"" ), "[lag][\"a\x01\"]" );
}

// ---- Characters that are not seen ---------------------------------------------------------------

std::string notSeen( const std::string & bytes, int column ) {
   return "'" + bytes + "' in column " + std::to_string( column ) +
          " is a character that is not seen; wanted: text, or the word in quotes";
}

TEST( Lexer, NoBreakSpaceIsRefused ) {
   EXPECT_EQ( errorOf( "lag\xC2\xA0PortChannel10" ), notSeen( "\\xc2\\xa0", 4 ) );
   EXPECT_EQ( errorOf( "lag P \xC2\xA0 # blank" ), notSeen( "\\xc2\\xa0", 7 ) );
}

TEST( Lexer, MarksOfNoWidthAreRefused ) {
   EXPECT_EQ( errorOf( "lag P\u200B" ), notSeen( "\\xe2\\x80\\x8b", 6 ) );
   EXPECT_EQ( errorOf( "lag P\u200Fx" ), notSeen( "\\xe2\\x80\\x8f", 6 ) );
   EXPECT_EQ( errorOf( "lag P\u2060x" ), notSeen( "\\xe2\\x81\\xa0", 6 ) );
   EXPECT_EQ( errorOf( "\uFEFFlag P" ), notSeen( "\\xef\\xbb\\xbf", 1 ) );
}

TEST( Lexer, MarksThatTurnTheDirectionAreRefused ) {
   EXPECT_EQ( errorOf( "lag \u202AP" ), notSeen( "\\xe2\\x80\\xaa", 5 ) );
   EXPECT_EQ( errorOf( "lag P\u202E" ), notSeen( "\\xe2\\x80\\xae", 6 ) );
}

TEST( Lexer, CountsColumnsInCharacters ) {
   EXPECT_EQ( errorOf( "lag Büro-東京\u200B" ), notSeen( "\\xe2\\x80\\x8b", 12 ) );
}

TEST( Lexer, NamesACharacterThatIsNotSeenAlsoBesideAQuote ) {
   EXPECT_EQ( errorOf( "lag \u200B\"P\"" ), notSeen( "\\xe2\\x80\\x8b", 5 ) );
   EXPECT_EQ( errorOf( "lag \"P\"\u200B" ), notSeen( "\\xe2\\x80\\x8b", 8 ) );
}

TEST( Lexer, TakesCharactersThatAreSeenBesideThoseThatAreNot ) {
   EXPECT_EQ( wordsOf( "lag \u00A1\u00BF\u2010\u2027\u2030\uFF01" ),
              "[lag][\u00A1\u00BF\u2010\u2027\u2030\uFF01]" );
}

TEST( Lexer, KeepsWhatIsNotSeenInQuotesAndInComments ) {
   EXPECT_EQ( wordsOf( "lag \"P\u200B\" # \u202E" ), "[lag][\"P\u200B\"]" );
}

TEST( Lexer, RefusesACarriageReturnInsideALineEvenInAComment ) {
   const std::string message = "'\\x0d' is a carriage return inside a line; wanted: lines that end "
                               "with a line feed";
   EXPECT_EQ( errorOf( "# old\rlag P" ), message );
   EXPECT_EQ( errorOf( "lag \"a\rb\"" ), message );
}

} // namespace
