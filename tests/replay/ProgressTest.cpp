// The line that tells how far a long run is, with real time that the test owns.

#include "replay/Progress.h"

#include "platform/Vex/Clock.h"
#include "replay/Play.h"
#include "tests/replay/Playing.h"
#include "tests/replay/Terminals.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using Replay::ProgressLine;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using TestSupport::Captured;
using TestSupport::Terminal;
using TestSupport::Variable;
using Vex::Seconds;

const std::string wiped = "\r\x1b[K";

std::string lineOf( const std::string & text ) {
   return '\r' + text + "\x1b[K";
}

class ProgressTest : public ::testing::Test {
 protected:
   ProgressLine::RealTime realTime() {
      return [ this ] { return now; };
   }
   // Real time that takes so much for each look at it.
   ProgressLine::RealTime passing( double seconds ) {
      return [ this, seconds ] {
         now = now + Seconds( seconds );
         return now;
      };
   }

   Seconds now{ 1000 };
   Captured terminal;
};

// --- the line ---

TEST_F( ProgressTest, TheLineIsDueAfterMoreThanTwoSecondsAndThenTenTimesASecond ) {
   ProgressLine line( terminal.writer().descriptor(), realTime() );
   const auto dueAt = [ & ]( double moment ) {
      now = Seconds( 1000 + moment );
      return line.isDue();
   };
   EXPECT_FALSE( dueAt( 0 ) );
   EXPECT_FALSE( dueAt( 2 ) );
   EXPECT_TRUE( dueAt( 2.01 ) );
   EXPECT_FALSE( dueAt( 2.01 ) );
   EXPECT_FALSE( dueAt( 2.1 ) );
   EXPECT_TRUE( dueAt( 2.2 ) );
   EXPECT_TRUE( dueAt( 60 ) );
   EXPECT_FALSE( dueAt( 60.05 ) );
}

TEST_F( ProgressTest, TheLineOverwritesItselfAndIsWipedOnceAtItsEnd ) {
   {
      ProgressLine line( terminal.writer().descriptor(), realTime() );
      line.show( "1 of 10" );
      line.show( "2 of 10" );
      line.wipe();
      line.wipe();
      line.show( "3 of 10" );
   }
   EXPECT_EQ( terminal.text(),
              lineOf( "1 of 10" ) + lineOf( "2 of 10" ) + wiped + lineOf( "3 of 10" ) + wiped );
}

TEST_F( ProgressTest, ALineThatWasNeverShownIsNotWiped ) {
   { const ProgressLine line( terminal.writer().descriptor(), realTime() ); }
   EXPECT_EQ( terminal.text(), "" );
}

TEST_F( ProgressTest, TheLineIsCutAtACharacterBeforeTheLastColumn ) {
   Terminal narrow( 9 );
   if ( narrow.descriptor() < 0 ) {
      GTEST_SKIP() << TestSupport::noTerminals;
   }
   {
      ProgressLine line( narrow.descriptor(), realTime() );
      line.show( "Büro 東京 and more" );
      line.show( "12345678" );
   }
   EXPECT_EQ( narrow.takeText(), lineOf( "Büro 東京 " ) + lineOf( "12345678" ) + wiped );
}

// --- of a run ---

TEST_F( ProgressTest, TellsStatementsPlayedAndScenarioTime ) {
   Vex::VirtualClock clock;
   const Vex::ClockScope scope( clock );
   {
      ProgressLine line( terminal.writer().descriptor(), passing( 3 ) );
      Replay::Progress progress( line, "a\x1b.scenario", 200 );
      progress.statementsDone( 1 );
      clock.jumpTo( Seconds( 12.5 ) );
      progress.goesOn();
   }
   EXPECT_EQ( terminal.text(), lineOf( "1 of 200 statements, at 0.000 s: a\\x1b.scenario" ) +
                                  lineOf( "1 of 200 statements, at 12.500 s: a\\x1b.scenario" ) +
                                  wiped );
}

TEST_F( ProgressTest, AWatchedClockTellsOfEachDueMomentAndEachStepBetween ) {
   Replay::VirtualHostClock clock;
   const Vex::ClockScope scope( clock.clock() );
   const auto scheduler = Vex::make< Kel::TaskScheduler >();
   {
      ProgressLine line( terminal.writer().descriptor(), passing( 3 ) );
      Replay::Progress progress( line, "s", 1 );
      Replay::WatchedHostClock watched( clock, progress, Seconds( 0.5 ) );
      EXPECT_EQ( &watched.clock(), &clock.clock() );
      watched.advanceTo( *scheduler, Seconds( 1.25 ) );
      EXPECT_EQ( Vex::now(), Seconds( 1.25 ) );
      watched.advanceTo( *scheduler, Seconds( 1.25 ) );
   }
   EXPECT_EQ( terminal.text(), lineOf( "0 of 1 statements, at 0.500 s: s" ) +
                                  lineOf( "0 of 1 statements, at 1.000 s: s" ) +
                                  lineOf( "0 of 1 statements, at 1.250 s: s" ) +
                                  lineOf( "0 of 1 statements, at 1.250 s: s" ) + wiped );
}

// --- of the program ---

class PlayProgressTest : public ProgressTest {
 protected:
   PlayProgressTest() {
      std::string pattern = ( std::filesystem::temp_directory_path() / "replay-XXXXXX" ).string();
      folder_ = mkdtemp( pattern.data() );
   }
   ~PlayProgressTest() override { std::filesystem::remove_all( folder_ ); }

   std::string write( const std::string & name, const std::string & text ) const {
      std::ofstream( folder_ / name ) << text;
      return ( folder_ / name ).string();
   }
   // Standard error is a terminal; each look at the time takes so long.
   int play( double each, Replay::Options options ) {
      options.colours = Replay::UseColours::never;
      return Replay::play( options, out.writer(),
                           { terminal.writer().descriptor(), passing( each ) } );
   }

   Captured out;

 private:
   std::filesystem::path folder_;
};

TEST_F( PlayProgressTest, ARunOfTwoSecondsOrLessShowsNone ) {
   Replay::Options options;
   options.scenarios = { write( "a", "mlag state 3\nmlag state 4\n" ) }; // looks: 1 + 2
   EXPECT_EQ( play( 1, options ), 0 );
   EXPECT_EQ( now, Seconds( 1003 ) );
   EXPECT_EQ( terminal.text(), "" );
}

TEST_F( PlayProgressTest, ALongRunShowsAndWipesItAndItsOutputIsTheSame ) {
   const std::string scenario = TestSupport::aclNeeded +
                                "mlag peer-interlock on\nstart controller\n"
                                "acl Ethernet1 PortChannel10\nwait 100\npeer echo 0.5\n"
                                "request PortChannel30 1\nwait 50\n";
   Replay::Options options;
   options.run = { 0xFFFFFFFF, true };
   options.scenarios = { write( "a", scenario ) };
   EXPECT_EQ( play( 1, options ), 0 );
   const std::string shown = terminal.text();
   EXPECT_THAT( shown, StartsWith( lineOf( "3 of 12 statements, at 0.000 s: " +
                                           options.scenarios.front() ) ) );
   EXPECT_THAT( shown, HasSubstr( "8 of 12 statements, at 0.100 s: " ) ); // its time-out
   EXPECT_THAT( shown, HasSubstr( "8 of 12 statements, at 100.000 s: " ) );
   EXPECT_THAT( shown, HasSubstr( "12 of 12 statements, at 150.000 s: " ) );
   EXPECT_THAT( shown, EndsWith( "\x1b[K" + wiped ) );
   Captured unwatched;
   EXPECT_EQ( Replay::play( options, unwatched.writer(), {} ), 0 );
   EXPECT_EQ( out.text(), unwatched.text() );
}

TEST_F( PlayProgressTest, TimeCountsFromTheFirstScenarioOn ) {
   Replay::Options options;
   options.scenarios = { write( "a", "mlag state 3\n" ), write( "b", "mlag state 3\n" ),
                         write( "c", "mlag state 3\n" ) };
   EXPECT_EQ( play( 0.9, options ), 0 );
   EXPECT_EQ( terminal.text(),
              lineOf( "1 of 1 statements, at 0.000 s: " + options.scenarios[ 2 ] ) + wiped );
}

TEST_F( PlayProgressTest, AQuietRunShowsNone ) {
   Replay::Options options;
   options.quiet = true;
   options.scenarios = { write( "a", "mlag state 3\nwait 100\n" ) };
   EXPECT_EQ( play( 10, options ), 0 );
   EXPECT_EQ( terminal.text(), "" );
}

TEST_F( PlayProgressTest, AnErrorFindsTheLineWiped ) {
   Replay::Options options;
   options.scenarios = { write( "a", "at 1\nat 0.5\n" ) };
   testing::internal::CaptureStderr();
   EXPECT_EQ( play( 10, options ), 2 );
   EXPECT_THAT( testing::internal::GetCapturedStderr(), HasSubstr( ":2: '0.5' is in the past" ) );
   EXPECT_THAT( terminal.text(), EndsWith( wiped ) );
}

TEST_F( PlayProgressTest, WhatIsWrittenToTheSameTerminalFindsTheLineWiped ) {
   const Variable term( "TERM", "xterm" );
   Terminal both( 200 );
   if ( both.descriptor() < 0 ) {
      GTEST_SKIP() << TestSupport::noTerminals;
   }
   Replay::Options options;
   options.colours = Replay::UseColours::never;
   options.scenarios = { write( "a", "mlag state 3\nmlag state 4\n" ) };
   {
      Replay::Writer writer( both.descriptor() );
      EXPECT_EQ( Replay::play( options, writer, { both.descriptor(), passing( 2 ) } ), 0 );
      writer.buffer() += "end\n"; // when the line is gone
   }
   const std::string line = lineOf( "2 of 2 statements, at 0.000 s: " + options.scenarios[ 0 ] );
   const std::string shown = both.takeText();
   EXPECT_THAT( shown, HasSubstr( line + wiped + options.scenarios[ 0 ] + "\n\n   seconds" ) );
   EXPECT_THAT( shown, EndsWith( "nobody\nend\n" ) );
}

} // namespace
