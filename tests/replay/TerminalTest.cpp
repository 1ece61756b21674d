// What is a terminal, and what the built program shows at one.

#include "replay/Terminal.h"

#include "tests/replay/Terminals.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using TestSupport::Terminal;
using TestSupport::Variable;

using TerminalTest = TestSupport::WithTerminals;

TEST_F( TerminalTest, IsOneThatSaysWhatItKnows ) {
   const Terminal terminal;
   for ( const char * const kind : { "xterm", "xterm-256color", "linux", "dumber" } ) {
      const Variable term( "TERM", kind );
      EXPECT_TRUE( Replay::isTerminal( terminal.descriptor() ) ) << kind;
   }
   for ( const char * const kind : std::initializer_list< const char * >{ "dumb", "", nullptr } ) {
      const Variable term( "TERM", kind );
      EXPECT_FALSE( Replay::isTerminal( terminal.descriptor() ) );
   }
}

TEST_F( TerminalTest, IsNoPipeAndNothingClosed ) {
   const Variable term( "TERM", "xterm" );
   std::array< int, 2 > ends{};
   ASSERT_EQ( pipe( ends.data() ), 0 );
   EXPECT_FALSE( Replay::isTerminal( ends[ 1 ] ) );
   close( ends[ 0 ] );
   close( ends[ 1 ] );
   EXPECT_FALSE( Replay::isTerminal( ends[ 1 ] ) );
   EXPECT_FALSE( Replay::isTerminal( -1 ) );
}

TEST_F( TerminalTest, SaysHowWideItIs ) {
   EXPECT_EQ( Replay::columnsOf( Terminal( 132 ).descriptor() ), 132U );
   EXPECT_EQ( Replay::columnsOf( Terminal( 0 ).descriptor() ), 80U );
   EXPECT_EQ( Replay::columnsOf( -1 ), 80U );
}

class AtTerminalTest : public TestSupport::WithTerminals {
 protected:
   AtTerminalTest() {
      std::string pattern = ( std::filesystem::temp_directory_path() / "replay-XXXXXX" ).string();
      folder_ = mkdtemp( pattern.data() );
      scenario_ = ( folder_ / "a.scenario" ).string();
      std::ofstream( scenario_ ) << "expect held E P\nexpect joined E P\n";
   }
   ~AtTerminalTest() override { std::filesystem::remove_all( folder_ ); }

   std::string shown( std::vector< std::string > options = {} ) const {
      options.insert( options.begin(), INTERLOCK_REPLAY );
      options.push_back( scenario_ );
      Terminal terminal;
      std::string text = terminal.run( options );
      EXPECT_EQ( terminal.exitStatus(), 1 );
      return text;
   }

 private:
   std::filesystem::path folder_;
   std::string scenario_;
   // As a person's terminal is, whatever the test runs in.
   Variable term_{ "TERM", "xterm" };
   Variable noColour_{ "NO_COLOR", nullptr };
};

TEST_F( AtTerminalTest, TextHasColours ) {
   EXPECT_THAT( shown(), HasSubstr( "\x1b[1;31mFAILED\x1b[0m\n" ) );
}

TEST_F( AtTerminalTest, NoColoursAreShownToWhoWantsNone ) {
   const std::string plain = shown( { "--color", "never" } );
   EXPECT_THAT( plain, HasSubstr( " FAILED\n" ) );
   EXPECT_THAT( plain, Not( HasSubstr( "\x1b" ) ) );
   {
      const Variable noColour( "NO_COLOR", "0" ); // whatever it says
      EXPECT_EQ( shown(), plain );
      EXPECT_THAT( shown( { "--color", "always" } ), HasSubstr( "\x1b[" ) );
   }
   {
      const Variable noColour( "NO_COLOR", "" ); // says nothing
      EXPECT_THAT( shown(), HasSubstr( "\x1b[" ) );
   }
   const Variable term( "TERM", "dumb" );
   EXPECT_EQ( shown(), plain );
}

TEST_F( AtTerminalTest, JsonLinesHaveNoColours ) {
   const std::string plain = shown( { "--output", "jsonl" } );
   EXPECT_THAT( plain, HasSubstr( "\"failed\":1}\n" ) );
   EXPECT_THAT( plain, Not( HasSubstr( "\x1b" ) ) );
   EXPECT_EQ( shown( { "--output", "jsonl", "--color", "always" } ), plain );
}

TEST_F( AtTerminalTest, AShortRunShowsNoProgress ) {
   EXPECT_THAT( shown(), Not( HasSubstr( "\r" ) ) );
}

} // namespace
