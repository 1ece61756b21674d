// Files that are printed once: what a record looks like, and what the exit status says.

#include "tests/replay/Terminals.h"
#include "tests/replay/trace/TraceTool.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace {

using ::testing::HasSubstr;
using TestSupport::Agent;
using TestSupport::run;
using TestSupport::sequences;

class PrintTraceTest : public ::testing::Test {
 protected:
   std::string save() {
      agent.save( file );
      return file;
   }
   // The only record as an object.
   nlohmann::json object() {
      save();
      return nlohmann::json::parse( run( { "--output", "jsonl", file } ).out );
   }

   TestSupport::TemporaryFolder folder;
   std::string file = folder / "trace";
   Agent agent;
};

TEST_F( PrintTraceTest, ShowsARecordALineAsTheReplayToolDoes ) {
   agent.member( "Ethernet1", "PortChannel10" );
   agent.clock().jumpTo( Vex::Seconds( 12.25 ) );
   agent.lag( "PortChannel10", true, 7, Vex::Seconds( 0.1 ) );
   agent.clock().jumpTo( Vex::Seconds( 12.345678 ) );
   agent.timeout();
   const TestSupport::Shown shown = run( { save() } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.err, "" );
   EXPECT_EQ(
      shown.out,
      "    0.000       1  memberIntf : Ethernet1 lag : PortChannel10      Velo/A:10 handleMember "
      "0\n"
      "   12.250       2  PortChannel10 active true token 7 after 0.100000  Velo/B:200 handleLag "
      "3\n"
      "   12.345678    3  timeout                                         Velo/A:30 handleTimeout "
      "4\n" );
}

TEST_F( PrintTraceTest, ShowsAnObjectALineWithThePiecesAndTheirKinds ) {
   agent.clock().jumpTo( Vex::Seconds( 12.3456781 ) );
   agent.lag( "PortChannel10", true, 4294967295U, Vex::Seconds( 0.1 ) );
   save();
   const std::string line = "{\"kind\":\"jotter\",\"t\":12.345678,\"sequence\":1,\"level\":3,"
                            "\"source\":\"Velo/B\",\"line\":200,\"function\":\"handleLag\","
                            "\"message\":\"PortChannel10 active true token 4294967295 after "
                            "0.100000\","
                            "\"args\":[\"PortChannel10\",\"true\",\"4294967295\",\"0.100000\"],"
                            "\"pieces\":[{\"text\":\"PortChannel10\"},{\"literal\":\" active \"},"
                            "{\"boolean\":true},{\"literal\":\" token \"},{\"number\":4294967295},"
                            "{\"literal\":\" after \"},{\"time\":0.1}]}\n";
   EXPECT_EQ( run( { "--output", "jsonl", file } ).out, line );
   EXPECT_EQ( run( { "--jsonl", file } ).out, line );
}

TEST_F( PrintTraceTest, WhatJsonHasNoNumberForStaysText ) {
   agent.clock().jumpTo( Vex::Seconds::infinity() );
   agent.lag( "P", false, 0, Vex::Seconds::infinity() );
   const nlohmann::json object = this->object();
   EXPECT_EQ( object.at( "t" ), nullptr );
   EXPECT_EQ( object.at( "pieces" ).at( 6 ), ( nlohmann::json{ { "time", "inf" } } ) );
   EXPECT_EQ( object.at( "pieces" ).at( 2 ), ( nlohmann::json{ { "boolean", false } } ) );
}

TEST_F( PrintTraceTest, LetsNoNameMoveTheTerminalOrBreakALine ) {
   agent.member( "E\x1b[2J\n1", "L\xff" );
   EXPECT_THAT( run( { save() } ).out, HasSubstr( "E\\x1b[2J\\x0a1 lag : L\\xff " ) );
   EXPECT_EQ( object().at( "args" ).at( 0 ), "E\x1b[2J\n1" );
   EXPECT_EQ( object().at( "args" ).at( 1 ), "L\xEF\xBF\xBD" ); // JSON is UTF-8
}

TEST_F( PrintTraceTest, ColoursTellTimesLevelsAndOriginsApart ) {
   agent.member( "Ethernet1", "PortChannel10" );
   agent.lag( "PortChannel10", true, 7, Vex::Seconds( 0.1 ) );
   agent.timeout();
   EXPECT_EQ(
      run( { "--color", "always", save() } ).out,
      "\x1b[36m    0.000   \x1b[0m    \x1b[2m1\x1b[0m  \x1b[2mmemberIntf : Ethernet1 lag : "
      "PortChannel10\x1b[0m      \x1b[2mVelo/A:10 handleMember 0\x1b[0m\n"
      "\x1b[36m    0.000   \x1b[0m    \x1b[2m2\x1b[0m  PortChannel10 active true token 7 after "
      "0.100000  \x1b[2mVelo/B:200 handleLag 3\x1b[0m\n"
      "\x1b[36m    0.000   \x1b[0m    \x1b[2m3\x1b[0m  \x1b[1;31mtimeout\x1b[0m                  "
      "                       \x1b[2mVelo/A:30 handleTimeout 4\x1b[0m\n" );
}

TEST_F( PrintTraceTest, ColoursAreShownWhereTheyAreWantedAndNeverInObjects ) {
   agent.timeout();
   const std::string plain = run( { save() } ).out; // no terminal
   EXPECT_EQ( run( { "--color", "auto", file } ).out, plain );
   EXPECT_EQ( run( { "--color", "never", file } ).out, plain );
   EXPECT_EQ( plain.find( '\x1b' ), std::string::npos );
   EXPECT_EQ( run( { "--color", "always", "--jsonl", file } ).out, run( { "--jsonl", file } ).out );
   const TestSupport::Variable term( "TERM", "xterm" );
   const TestSupport::Variable noColour( "NO_COLOR", nullptr );
   TestSupport::Terminal terminal;
   if ( terminal.descriptor() < 0 ) {
      GTEST_SKIP() << TestSupport::noTerminals;
   }
   const TestSupport::OutputFile errFile;
   {
      Replay::Writer out( terminal.descriptor() );
      Replay::Writer err( errFile.descriptor() );
      EXPECT_EQ( TestSupport::runWith( { file }, {}, out, err ), 0 );
   }
   EXPECT_EQ( terminal.takeText(), run( { "--color", "always", file } ).out );
}

TEST_F( PrintTraceTest, ARecordOfAnUnknownCallSiteIsShownAsSuch ) {
   agent.ring().write( 99 );
   const TestSupport::Shown shown = run( { save() } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.out, "    0.000       1  (call site 99 unknown)\n" );
   EXPECT_EQ( shown.err, "interlock-trace: " + file + ": call site 99 is unknown\n" );
   const nlohmann::json object = this->object();
   for ( const char * const key : { "level", "source", "line", "function" } ) {
      EXPECT_EQ( object.at( key ), nullptr ) << key;
   }
}

TEST_F( PrintTraceTest, KeepsTheColumnsApartWhateverTheNumbers ) {
   agent.clock().jumpTo( Vex::Seconds( 1234567.890123 ) );
   for ( int i = 0; i < 12'345; ++i ) {
      agent.timeout();
   }
   EXPECT_THAT( run( { "--last", "1", save() } ).out, HasSubstr( "1234567.890123 12345 timeout" ) );
}

TEST_F( PrintTraceTest, AnEmptyRingShowsNothing ) {
   const TestSupport::Shown shown = run( { save() } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.out, "" );
   EXPECT_EQ( shown.err, "" );
}

TEST_F( PrintTraceTest, ARingThatHasGoneRoundIsNoFault ) {
   for ( int i = 0; i < 1'000; ++i ) {
      agent.timeout();
   }
   const TestSupport::Shown shown = run( { save() } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.err, "" );
   EXPECT_EQ( sequences( shown.out ).substr( 0, 8 ), "745 746 " );
   EXPECT_THAT( sequences( shown.out ), ::testing::EndsWith( " 1000" ) );
}

TEST_F( PrintTraceTest, WhatIsNoTraceFileIsAnErrorInOneLine ) {
   const auto error = [ & ]( const std::string & path ) {
      const TestSupport::Shown shown = run( { path } );
      EXPECT_EQ( shown.status, 2 );
      EXPECT_EQ( shown.out, "" );
      return shown.err;
   };
   EXPECT_EQ( error( file ), "interlock-trace: " + file +
                                ": cannot be opened: No such file or directory; wanted: a trace "
                                "file\n" );
   const std::string directory = folder / "";
   EXPECT_EQ( error( directory ),
              "interlock-trace: " + directory + ": is a directory; wanted: a trace file\n" );
   const std::string pipe = folder / "pipe";
   ASSERT_EQ( mkfifo( pipe.c_str(), 0600 ), 0 );
   EXPECT_EQ( error( pipe ),
              "interlock-trace: " + pipe + ": is no regular file; wanted: a trace file\n" );
   TestSupport::writeInPlace( file, "" );
   EXPECT_THAT( error( file ), HasSubstr( ": no trace file: shorter than its header" ) );
   TestSupport::writeInPlace( file, std::string( 4'096, 'x' ) );
   EXPECT_THAT( error( file ), HasSubstr( ": no trace file: " ) );
   EXPECT_EQ( error( "no\nsuch" ), "interlock-trace: no\\x0asuch: cannot be opened: No such file "
                                   "or directory; wanted: a trace file\n" );
}

TEST_F( PrintTraceTest, AWrongCommandLineIsOneLineAndExitStatusTwo ) {
   const TestSupport::Shown shown = run( { "--level", "x", "f" } );
   EXPECT_EQ( shown.status, 2 );
   EXPECT_EQ( shown.out, "" );
   EXPECT_EQ( shown.err, "interlock-trace: --level: 'x'; wanted: none, all, or a list of levels "
                         "such as 0,2-4; see --help\n" );
}

TEST_F( PrintTraceTest, OutputThatCannotBeWrittenIsAnError ) {
   agent.timeout();
   save();
   const int full = open( "/dev/full", O_WRONLY | O_CLOEXEC );
   const TestSupport::OutputFile errFile;
   Replay::Writer out( full );
   Replay::Writer err( errFile.descriptor() );
   EXPECT_EQ( TestSupport::runWith( { file }, {}, out, err ), 2 );
   EXPECT_EQ( errFile.text(), "interlock-trace: standard output: No space left on device\n" );
   close( full );
}

} // namespace
