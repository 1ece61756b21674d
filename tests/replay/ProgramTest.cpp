// The built program, from outside: files in, exit status, standard output and standard error out.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Outcome {
   int status;
   std::string out;
   std::string err;
};

class ProgramTest : public ::testing::Test {
 protected:
   ProgramTest() {
      std::string pattern = ( std::filesystem::temp_directory_path() / "replay-XXXXXX" ).string();
      folder_ = mkdtemp( pattern.data() );
   }
   ~ProgramTest() override { std::filesystem::remove_all( folder_ ); }

   std::string write( const std::string & name, const std::string & text ) const {
      std::ofstream( folder_ / name, std::ios::binary ) << text;
      return name;
   }
   std::string read( const std::string & name ) const {
      std::ifstream file( folder_ / name, std::ios::binary );
      return { std::istreambuf_iterator( file ), {} };
   }
   // In the test's folder.
   int shell( const std::string & command ) const {
      const int status = std::system( ( "cd '" + folder_.string() + "' && " + command ).c_str() );
      EXPECT_TRUE( WIFEXITED( status ) ) << command;
      return WEXITSTATUS( status );
   }
   // `arguments` as a shell takes them.
   Outcome run( const std::string & arguments, const std::string & input = {} ) const {
      write( "in", input );
      const int status = shell( "'" INTERLOCK_REPLAY "' <in >out 2>err " + arguments );
      return { status, read( "out" ), read( "err" ) };
   }
   // A scenario that is wrong: one line on standard error, exit status 2.
   std::string error( const std::string & text ) const {
      write( "x.scenario", text );
      const Outcome outcome = run( "x.scenario" );
      EXPECT_EQ( outcome.status, 2 );
      EXPECT_EQ( outcome.out, "" );
      return outcome.err;
   }

   std::filesystem::path folder_;
};

TEST_F( ProgramTest, ExitsWithZeroWhenEveryExpectHeld ) {
   write( "a.scenario", "lag P E\nstart basic\nexpect joined E P\n" );
   const Outcome outcome = run( "a.scenario" );
   EXPECT_EQ( outcome.status, 0 );
   EXPECT_EQ( outcome.err, "" );
   EXPECT_THAT( outcome.out, HasSubstr( "1 held" ) );
}

TEST_F( ProgramTest, ExitsWithOneWhenSomeExpectDidNotHold ) {
   write( "a.scenario", "expect joined E P\n" );
   write( "b.scenario", "expect held E P\n" );
   const Outcome outcome = run( "--output jsonl a.scenario b.scenario" );
   EXPECT_EQ( outcome.status, 1 );
   EXPECT_EQ( outcome.err, "" );
   EXPECT_THAT( outcome.out, HasSubstr( "\"failed\":1}" ) );
   EXPECT_THAT( outcome.out, EndsWith( "\"failed\":0}\n" ) );
}

TEST_F( ProgramTest, NamesFileAndLineOfASyntaxErrorAndRunsNothing ) {
   EXPECT_EQ( error( "mlag state 3\nmlag state x\n" ),
              "x.scenario:2: 'x' is no N; wanted: a number from 0 to 255\n" );
}

TEST_F( ProgramTest, KeepsWhatWasShownBeforeAnErrorOfAReachedStatement ) {
   write( "a.scenario", "at 2\nat 1\n" );
   const Outcome outcome = run( "--output jsonl a.scenario" );
   EXPECT_EQ( outcome.status, 2 );
   EXPECT_EQ( outcome.err, "a.scenario:2: '1' is in the past; wanted: 2 or later\n" );
   EXPECT_EQ( outcome.out, "{\"kind\":\"statement\",\"t\":0.0,\"line\":1,\"text\":\"at 2\"}\n"
                           "{\"kind\":\"statement\",\"t\":2.0,\"line\":2,\"text\":\"at 1\"}\n" );
}

TEST_F( ProgramTest, RunsScenariosOneAfterTheOtherEachAfresh ) {
   write( "a.scenario", "lag P E\nstart basic\nat 5\n" );
   write( "b.scenario", "expect held E P\nat 1\nstart basic\n" );
   const Outcome outcome = run( "--output jsonl a.scenario b.scenario a.scenario" );
   EXPECT_EQ( outcome.status, 0 );
   EXPECT_EQ( outcome.err, "" );
   EXPECT_THAT( outcome.out, EndsWith( run( "--output jsonl a.scenario" ).out ) );
}

TEST_F( ProgramTest, RunsNoLaterScenarioAfterAnError ) {
   write( "good.scenario", "mlag state 1\n" );
   write( "reached.scenario", "stop egress-acl\n" );
   write( "syntax.scenario", "nonsense\n" );
   const std::string once = run( "--output jsonl good.scenario" ).out;
   for ( const std::string wrong : { "reached.scenario", "syntax.scenario", "none.scenario" } ) {
      const Outcome outcome = run( "--output jsonl good.scenario " + wrong + " good.scenario" );
      EXPECT_EQ( outcome.status, 2 );
      EXPECT_THAT( outcome.out, StartsWith( once ) );
      EXPECT_EQ( outcome.out.find( "\"end\"", once.size() ), std::string::npos ) << wrong;
      EXPECT_THAT( outcome.err, StartsWith( wrong + ':' ) );
   }
}

TEST_F( ProgramTest, AnErrorCountsForMoreThanAFailedExpect ) {
   write( "a.scenario", "expect joined E P\n" );
   write( "b.scenario", "nonsense\n" );
   EXPECT_EQ( run( "a.scenario b.scenario" ).status, 2 );
}

TEST_F( ProgramTest, ReadsStandardInput ) {
   const Outcome good = run( "-", "expect held E P\n" );
   EXPECT_EQ( good.status, 0 );
   EXPECT_THAT( good.out, StartsWith( "<stdin>\n" ) );
   const Outcome wrong = run( "-", "nonsense" );
   EXPECT_EQ( wrong.status, 2 );
   EXPECT_THAT( wrong.err, StartsWith( "<stdin>:1: 'nonsense' is no statement" ) );
}

TEST_F( ProgramTest, PlaysAnEmptyFile ) {
   write( "a.scenario", "" );
   const Outcome outcome = run( "--output jsonl a.scenario" );
   EXPECT_EQ( outcome.status, 0 );
   EXPECT_EQ( outcome.out,
              "{\"kind\":\"end\",\"t\":0.0,\"egress-acl\":[],\"vlan-xlate\":[],\"requests\":{},"
              "\"failed\":0}\n" );
}

TEST_F( ProgramTest, PlaysAFileWhateverItsLineEnds ) {
   write( "unix.scenario", "lag P E\nexpect joined E P\n" );
   write( "dos.scenario", "lag P E\r\nexpect joined E P\r\n" );
   write( "cut.scenario", "lag P E\nexpect joined E P" );
   const Outcome unixEnds = run( "--output jsonl unix.scenario" );
   EXPECT_EQ( unixEnds.status, 0 );
   EXPECT_EQ( run( "--output jsonl dos.scenario" ).out, unixEnds.out );
   EXPECT_EQ( run( "--output jsonl cut.scenario" ).out, unixEnds.out );
}

TEST_F( ProgramTest, RefusesBinaryGarbage ) {
   EXPECT_THAT( error( std::string( "\x7f"
                                    "ELF\x02\x01\x01\0\0\0\xff\xfe\n",
                                    13 ) ),
                StartsWith( "x.scenario:1: " ) );
   std::string bytes;
   for ( int i = 0; i < 4096; ++i ) {
      bytes += static_cast< char >( i * 167 >> 3 );
   }
   const std::string line = error( bytes );
   EXPECT_THAT( line, StartsWith( "x.scenario:1: " ) );
   EXPECT_EQ( line.find( '\n' ), line.size() - 1 );
}

TEST_F( ProgramTest, RefusesTextThatIsNoUtf8 ) {
   EXPECT_EQ( error( "mlag state 3\nlag M\xFCller\n" ),
              "x.scenario:2: '\\xfc' is a byte that is no UTF-8; wanted: UTF-8 text\n" );
}

TEST_F( ProgramTest, RefusesANumberOutOfItsRange ) {
   EXPECT_EQ( error( "request P 4294967296" ),
              "x.scenario:1: '4294967296' is no TOKEN; wanted: a number from 0 to 4294967295\n" );
}

TEST_F( ProgramTest, PlaysALineOfAMegabyte ) {
   std::string line = "lag P";
   for ( int port = 0; line.size() < 1'000'000; ++port ) {
      line += " Ethernet" + std::to_string( port );
   }
   write( "a.scenario", line + "\nstart basic\nexpect joined Ethernet9999 P\n" );
   const Outcome outcome = run( "--output jsonl a.scenario" );
   EXPECT_EQ( outcome.status, 0 );
   EXPECT_EQ( outcome.err, "" );
}

TEST_F( ProgramTest, AnErrorInALineOfAMegabyteIsShort ) {
   EXPECT_LT( error( "lag \"" + std::string( 1'000'000, 'x' ) ).size(), 200U );
}

TEST_F( ProgramTest, RefusesADirectory ) {
   std::filesystem::create_directory( folder_ / "d" );
   const Outcome outcome = run( "d" );
   EXPECT_EQ( outcome.status, 2 );
   EXPECT_EQ(
      outcome.err,
      "d: cannot be read: Is a directory; wanted: a scenario file, or - for standard input\n" );
}

TEST_F( ProgramTest, RefusesAFileThatIsNotThere ) {
   const Outcome outcome = run( "none" );
   EXPECT_EQ( outcome.status, 2 );
   EXPECT_EQ( outcome.err, "none: cannot be read: No such file or directory; wanted: a scenario "
                           "file, or - for standard input\n" );
}

TEST_F( ProgramTest, AnImportOfAFileThatIsNotThereSaysWhichFileIsWanted ) {
   const Outcome outcome = run( "import none" );
   EXPECT_EQ( outcome.status, 2 );
   EXPECT_EQ( outcome.out, "" );
   EXPECT_EQ( outcome.err, "none: cannot be read: No such file or directory; wanted: the "
                           "config_db.json of a switch, or - for standard input\n" );
}

TEST_F( ProgramTest, RefusesAFileThatItMayNotRead ) {
   if ( geteuid() == 0 ) {
      GTEST_SKIP() << "root may read everything";
   }
   write( "a.scenario", "mlag state 3\n" );
   std::filesystem::permissions( folder_ / "a.scenario", std::filesystem::perms::none );
   const Outcome outcome = run( "a.scenario" );
   EXPECT_EQ( outcome.status, 2 );
   EXPECT_THAT( outcome.err, StartsWith( "a.scenario: cannot be read: Permission denied" ) );
}

TEST_F( ProgramTest, AWrongCommandLineIsOneLineAndExitStatusTwo ) {
   for ( const char * arguments : { "", "--bogus a", "--output xml a", "--trace x a", "- -" } ) {
      const Outcome outcome = run( arguments );
      EXPECT_EQ( outcome.status, 2 ) << arguments;
      EXPECT_EQ( outcome.out, "" );
      EXPECT_THAT( outcome.err, StartsWith( "interlock-replay: " ) );
      EXPECT_EQ( outcome.err.find( '\n' ), outcome.err.size() - 1 ) << outcome.err;
   }
}

TEST_F( ProgramTest, AnswersHelpAndVersionOnStandardOutput ) {
   const Outcome help = run( "--help" );
   EXPECT_EQ( help.status, 0 );
   EXPECT_EQ( help.err, "" );
   EXPECT_THAT( help.out, HasSubstr( "Usage: interlock-replay [OPTIONS] SCENARIO..." ) );
   const Outcome version = run( "--version" );
   EXPECT_EQ( version.status, 0 );
   EXPECT_EQ( version.out, "interlock-replay " INTERLOCK_VERSION "\n" );
}

TEST_F( ProgramTest, RunsInRealTimeWithTheSameEvents ) {
   write( "a.scenario", "peer echo 0.001\nrequest P 7\nwait 0.001\nno request P\nwait 0.001\n"
                        "peer echo 0\nrequest Q 1\nwait 0\n" );
   const Outcome real = run( "--clock real a.scenario" );
   EXPECT_EQ( real.status, 0 );
   EXPECT_THAT( real.out, testing::HasSubstr( "response    Q" ) );
   EXPECT_EQ( real.out, run( "a.scenario" ).out );
}

TEST_F( ProgramTest, WritesTheRingIntoATraceFileWhetherItIsShownOrNot ) {
   write( "a.scenario", "lag P E\nstart basic\n" );
   EXPECT_EQ( run( "--trace-file silent a.scenario" ).out, run( "a.scenario" ).out );
   EXPECT_EQ( run( "--trace-file shown --ring a.scenario" ).out, run( "--ring a.scenario" ).out );
   EXPECT_EQ( read( "silent" ), read( "shown" ) );
   EXPECT_THAT( read( "silent" ), HasSubstr( "handleMember" ) );
}

TEST_F( ProgramTest, KeepsTheTraceFileOfTheRunBefore ) {
   write( "a.scenario", "lag P E\nstart basic\n" );
   EXPECT_EQ( run( "--trace-file f a.scenario" ).status, 0 );
   const std::string first = read( "f" );
   write( "b.scenario", "at 1\nlag P E\nstart basic\n" );
   EXPECT_EQ( run( "--trace-file f b.scenario" ).status, 0 );
   EXPECT_EQ( read( "f.previous" ), first );
   EXPECT_NE( read( "f" ), first );
}

TEST_F( ProgramTest, RefusesATraceFileThatCannotBeMadeAndRunsNothing ) {
   write( "a.scenario", "mlag state 3\n" );
   const Outcome outcome = run( "--trace-file a.scenario a.scenario" );
   EXPECT_EQ( outcome.status, 2 );
   EXPECT_EQ( outcome.out, "" );
   EXPECT_THAT( outcome.err, StartsWith( "interlock-replay: --trace-file: a.scenario: " ) );
   EXPECT_THAT( outcome.err, HasSubstr( "is no trace file\n" ) );
   EXPECT_EQ( read( "a.scenario" ), "mlag state 3\n" );
}

TEST_F( ProgramTest, APictureIsNotDrawnOverTheScenarioOrTheTrace ) {
   const std::string text = "mlag state 3\n";
   write( "a.scenario", text );
   std::filesystem::create_symlink( "a.scenario", folder_ / "link" );
   for ( const char * arguments :
         { "--timeline a.scenario a.scenario", "--timeline ./a.scenario a.scenario",
           "--timeline link a.scenario", "--timeline a.scenario - <a.scenario" } ) {
      const Outcome outcome = run( arguments );
      EXPECT_EQ( outcome.status, 2 ) << arguments;
      EXPECT_EQ( outcome.out, "" );
      EXPECT_THAT( outcome.err, StartsWith( "interlock-replay: --timeline: " ) );
      EXPECT_THAT( outcome.err, EndsWith( ": is the scenario; wanted: another file\n" ) );
      EXPECT_EQ( read( "a.scenario" ), text ) << arguments;
   }
   const Outcome outcome = run( "--trace-file both --timeline both a.scenario" );
   EXPECT_EQ( outcome.status, 2 );
   EXPECT_EQ( outcome.err,
              "interlock-replay: --timeline: both: is the trace file; wanted: another file\n" );
}

TEST_F( ProgramTest, APictureIsDrawnOverAnother ) {
   write( "a.scenario", "mlag state 3\n" );
   write( "b.svg", "what was there before" );
   EXPECT_EQ( run( "--timeline b.svg a.scenario" ).status, 0 );
   EXPECT_THAT( read( "b.svg" ), StartsWith( "<" ) );
}

TEST_F( ProgramTest, QuietlyShowsOnlyWhatFailedAndEndsAsEver ) {
   write( "good.scenario", "lag P E\nstart basic\nexpect joined E P\n" );
   write( "bad.scenario", "lag P E\nexpect held E P\n" );
   write( "wrong.scenario", "nonsense\n" );
   const Outcome good = run( "--quiet --trace all --ring good.scenario" );
   EXPECT_EQ( good.status, 0 );
   EXPECT_EQ( good.out + good.err, "" );
   const Outcome bad = run( "--quiet good.scenario bad.scenario" );
   EXPECT_EQ( bad.status, 1 );
   EXPECT_THAT( bad.out, StartsWith( "bad.scenario\n" ) );
   EXPECT_THAT( bad.out, EndsWith( "expect held E P                                          FAILED"
                                   "\n                      found       E -> P is joined\n" ) );
   const Outcome wrong = run( "--quiet good.scenario wrong.scenario" );
   EXPECT_EQ( wrong.status, 2 );
   EXPECT_EQ( wrong.out, "" );
   EXPECT_THAT( wrong.err, StartsWith( "wrong.scenario:1: " ) );
}

TEST_F( ProgramTest, HasColoursInAFileOnDemandOnly ) {
   write( "a.scenario", "expect held E P\n" );
   EXPECT_EQ( run( "a.scenario" ).out.find( '\x1b' ), std::string::npos );
   EXPECT_THAT( run( "--color always a.scenario" ).out, HasSubstr( "\x1b[32mok\x1b[0m" ) );
}

TEST_F( ProgramTest, SaysThatStandardOutputCannotBeWritten ) {
   write( "a.scenario", "mlag state 3\n" );
   const Outcome outcome = run( "a.scenario >/dev/full" );
   EXPECT_EQ( outcome.status, 2 );
   EXPECT_EQ( outcome.err, "interlock-replay: standard output: No space left on device\n" );
}

TEST_F( ProgramTest, EndsQuietlyWhenItsReaderHasSeenEnough ) {
   std::string scenario;
   for ( int i = 0; i < 20'000; ++i ) {
      scenario += "mlag state 3\n";
   }
   write( "a.scenario", scenario );
   shell( "{ '" INTERLOCK_REPLAY "' a.scenario 2>err; echo $? >status; } | head -1 >first" );
   EXPECT_EQ( read( "first" ), "a.scenario\n" );
   EXPECT_EQ( read( "err" ), "" );
   EXPECT_EQ( read( "status" ), "2\n" );
}

} // namespace
