// Colours come on top of a text and change nothing of it.

#include "replay/Colours.h"

#include "tests/replay/Playing.h"
#include "tests/replay/Terminals.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <string>

namespace {

using Replay::Line;
using Replay::Tone;
using Replay::UseColours;
using Replay::wantsColours;
using ::testing::HasSubstr;
using TestSupport::playAsText;
using TestSupport::playInColours;
using TestSupport::Variable;

constexpr std::uint32_t allLevels = std::numeric_limits< std::uint32_t >::max();

std::string withoutColours( const std::string & text ) {
   std::string plain;
   bool inSequence = false; // from the escape character to the letter that ends it
   for ( const char c : text ) {
      inSequence = inSequence || c == '\x1b';
      if ( !inSequence ) {
         plain += c;
      }
      inSequence = inSequence && c != 'm';
   }
   return plain;
}

TEST( ColouredLine, HasEachPartInItsColourAndTheRestPlain ) {
   Line line;
   line.text = "a ";
   line.append( Tone::good, "b" );
   line.append( Tone::bad, "c" );
   line.text += " d";
   EXPECT_EQ( line.text, "a bc d" );
   EXPECT_EQ( line.coloured(), "a \x1b[32mb\x1b[0m\x1b[1;31mc\x1b[0m d" );
}

TEST( ColouredLine, IsPlainWhereNoPartHasATone ) {
   Line line;
   EXPECT_EQ( line.coloured(), "" );
   line.append( Tone::time, "" );
   line.text += "text";
   EXPECT_EQ( line.coloured(), "text" );
   line.append( Tone::time, "1" );
   line.clear();
   line.text = "again";
   EXPECT_EQ( line.coloured(), "again" );
}

TEST( ColouredLine, MayLoseItsEnd ) {
   Line line;
   line.append( Tone::time, "12  " );
   line.append( Tone::aside, "  " );
   line.text.resize( 2 );
   EXPECT_EQ( line.coloured(), "\x1b[36m12\x1b[0m" );
}

using WantsColours = TestSupport::WithTerminals;

TEST_F( WantsColours, AsToldElseAtATerminalOnly ) {
   const TestSupport::Terminal terminal;
   const Variable term( "TERM", "xterm" );
   const Variable noColour( "NO_COLOR", nullptr );
   EXPECT_TRUE( wantsColours( UseColours::always, -1 ) );
   EXPECT_FALSE( wantsColours( UseColours::never, terminal.descriptor() ) );
   EXPECT_TRUE( wantsColours( UseColours::automatically, terminal.descriptor() ) );
   EXPECT_FALSE( wantsColours( UseColours::automatically, -1 ) );
}

TEST( Colours, OfAFailedExpectItsResultIsBadAndOfOneThatHeldGood ) {
   const std::string shown = playInColours( "expect held E P\nexpect joined E P" ).shown;
   EXPECT_THAT( shown, HasSubstr( " \x1b[32mok\x1b[0m\n" ) );
   EXPECT_THAT( shown, HasSubstr( " \x1b[1;31mFAILED\x1b[0m\n" ) );
   EXPECT_THAT( shown, HasSubstr( "\x1b[32m1 held\x1b[0m, \x1b[1;31m1 FAILED\x1b[0m, first in" ) );
}

TEST( Colours, OfAVerdictTellWhetherThePortIsHeld ) {
   const std::string shown =
      playInColours( "output egress-acl E P\nno output egress-acl E P" ).shown;
   EXPECT_THAT( shown, HasSubstr( " \x1b[32madmitted\x1b[0m\n" ) );
   EXPECT_THAT( shown, HasSubstr( " \x1b[33mheld\x1b[0m\n" ) );
}

TEST( Colours, OfATraceMessageTellItsLevel ) {
   const std::string shown =
      playInColours( TestSupport::aclNeeded + "mlag peer-interlock on\nstart controller\n"
                                              "acl Ethernet1 PortChannel10\nwait 1\n",
                     { allLevels, false } )
         .shown;
   EXPECT_THAT( shown, HasSubstr( "\x1b[1;31mSyslog: Timeout has occurred" ) );
   EXPECT_THAT( shown,
                HasSubstr( " \x1b[2mMlagEgressAclIntfPeerInterlockSm::handleAllLags\x1b[0m " ) );
   EXPECT_THAT( shown, HasSubstr( "  Transitioning link state" ) );
}

TEST( Colours, ChangeNothingOfTheTextOfAnyScenario ) {
   int scenarios = 0;
   for ( const auto & entry : std::filesystem::directory_iterator( INTERLOCK_SCENARIOS ) ) {
      std::ifstream file( entry.path() );
      const std::string scenario{ std::istreambuf_iterator< char >( file ), {} };
      const std::string coloured = playInColours( scenario, { allLevels, true } ).shown;
      EXPECT_THAT( coloured, HasSubstr( "\x1b[" ) );
      EXPECT_EQ( withoutColours( coloured ), playAsText( scenario, { allLevels, true } ).shown )
         << entry.path();
      ++scenarios;
   }
   EXPECT_GT( scenarios, 10 );
}

TEST( Colours, EndWithTheLine ) {
   const std::string shown = playInColours( "expect joined E P\nwait 1\nmlag state 3" ).shown;
   for ( std::size_t at = shown.find( '\n' ); at != std::string::npos;
         at = shown.find( '\n', at + 1 ) ) {
      const std::size_t last = shown.rfind( "\x1b[", at );
      EXPECT_EQ( shown.substr( last, 4 ), "\x1b[0m" ) << shown.substr( 0, at );
   }
}

TEST( Colours, AreNoneThatANameBringsAlong ) {
   EXPECT_THAT( playInColours( "lag \"\x1b[31mP\"" ).shown, HasSubstr( "lag \"\\x1b[31mP\"" ) );
}

} // namespace
