// Files that are followed, look by look.

#include "platform/Jotter/RingLayout.h"
#include "tests/replay/trace/TraceTool.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>

namespace {

using ::testing::HasSubstr;
using TestSupport::Agent;
using TestSupport::run;
using TestSupport::runIntoOne;
using TestSupport::Shown;

class FollowTraceTest : public ::testing::Test {
 protected:
   void timeouts( int count ) {
      for ( int i = 0; i < count; ++i ) {
         agent->timeout();
      }
   }
   void start() { agent = std::make_unique< Agent >( file ); }
   // Its file goes, too.
   void stop() {
      agent.reset();
      std::filesystem::rename( file, file + ".gone" );
   }
   void restart() {
      agent.reset();
      start();
   }
   std::string said( const std::string & what ) const {
      return "interlock-trace: " + file + ": " + what + "\n";
   }
   static std::string line( int sequence ) {
      const std::string number = std::to_string( sequence );
      return "    0.000   " + std::string( 5 - number.size(), ' ' ) + number +
             "  timeout                                         Velo/A:30 handleTimeout 4\n";
   }

   TestSupport::TemporaryFolder folder;
   std::string file = folder / "trace";
   std::string newFile = said( "there is a new file of this name; its records follow" );
   std::unique_ptr< Agent > agent = std::make_unique< Agent >( file );
};

TEST_F( FollowTraceTest, RecordsComeAsTheyAreWritten ) {
   timeouts( 1 );
   const Shown shown =
      run( { "--follow", file }, { [ & ] { timeouts( 1 ); }, [] {}, [ & ] { timeouts( 2 ); } } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.err, "" );
   EXPECT_EQ( shown.out, line( 1 ) + line( 2 ) + line( 3 ) + line( 4 ) );
}

TEST_F( FollowTraceTest, EachLookIsWrittenAtOnce ) {
   timeouts( 1 );
   const TestSupport::OutputFile outFile;
   Replay::Writer out( outFile.descriptor() );
   Replay::Writer err( -1 );
   TestSupport::runWith( { "--follow", file },
                         { [ & ] {
                             EXPECT_EQ( outFile.text(), line( 1 ) );
                             timeouts( 1 );
                          },
                           [ & ] { EXPECT_EQ( outFile.text(), line( 1 ) + line( 2 ) ); } },
                         out, err );
}

TEST_F( FollowTraceTest, FiltersHoldForWhatComes ) {
   timeouts( 3 );
   const Shown shown = run( { "--follow", "--last", "1", "--level", "4", file }, { [ & ] {
                               agent->member( "E", "P" );
                               timeouts( 2 );
                            } } );
   EXPECT_EQ( shown.out, line( 3 ) + line( 5 ) + line( 6 ) );
}

TEST_F( FollowTraceTest, NoLastOnesAreOnlyTheNewOnes ) {
   timeouts( 3 );
   EXPECT_EQ( run( { "--follow", "--last", "0", file }, { [ & ] { timeouts( 1 ); } } ).out,
              line( 4 ) );
}

TEST_F( FollowTraceTest, TellsWhatTheRingHasOverwrittenBeforeItCouldBeRead ) {
   timeouts( 1 );
   const std::string shown = runIntoOne( { "--follow", file }, { [ & ] { timeouts( 300 ); } } );
   EXPECT_THAT( shown,
                ::testing::StartsWith(
                   line( 1 ) + said( "records 2 to 45 overwritten before they could be read" ) +
                   line( 46 ) ) );
   EXPECT_THAT( shown, ::testing::EndsWith( line( 301 ) ) );
   EXPECT_EQ( run( { "--follow", file }, { [ & ] { timeouts( 300 ); } } ).status, 1 );
}

TEST_F( FollowTraceTest, ReadsTheFileOfAnAgentThatIsGoneToItsEndThenThatOfTheNewOne ) {
   timeouts( 1 );
   const std::string shown = runIntoOne( { "--follow", file }, { [ & ] {
                                                                   timeouts( 2 );
                                                                   restart();
                                                                   timeouts( 1 );
                                                                },
                                                                 [ & ] { timeouts( 1 ); } } );
   EXPECT_EQ( shown, line( 1 ) + line( 2 ) + line( 3 ) + newFile + line( 1 ) + line( 2 ) );
}

TEST_F( FollowTraceTest, ANewFileIsNoFault ) {
   timeouts( 1 );
   EXPECT_EQ( run( { "--follow", file }, { [ & ] {
                      restart();
                      timeouts( 1 );
                   } } )
                 .status,
              0 );
}

TEST_F( FollowTraceTest, WaitsWhileThereIsNoFileOfTheName ) {
   timeouts( 1 );
   const Shown shown = run( { "--follow", file }, { [ & ] {
                                                      timeouts( 1 );
                                                      stop();
                                                   },
                                                    [] {},
                                                    [ & ] {
                                                       start();
                                                       timeouts( 1 );
                                                    } } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.out, line( 1 ) + line( 2 ) + line( 1 ) );
}

TEST_F( FollowTraceTest, ANewFileIsGivenTheTimeToBecomeOne ) {
   timeouts( 1 );
   const Shown shown = run( { "--follow", file }, { [ & ] {
                                                      stop();
                                                      TestSupport::writeInPlace( file, "" );
                                                   },
                                                    [ & ] {
                                                       Agent other;
                                                       other.timeout();
                                                       other.save( file );
                                                    } } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.err, newFile );
   EXPECT_EQ( shown.out, line( 1 ) + line( 1 ) );
}

TEST_F( FollowTraceTest, ANewFileIsGivenTheTimeToBeFilled ) {
   timeouts( 1 );
   const Shown shown =
      run( { "--follow", file }, { [ & ] {
                                     stop();
                                     Agent other;
                                     other.timeout();
                                     const auto whole = other.ring().bytes();
                                     std::vector< std::byte > bytes( whole.begin(), whole.end() );
                                     constexpr std::size_t at =
                                        offsetof( Jotter::Layout::Header, nextCell );
                                     std::fill_n( bytes.begin() + at, 16, std::byte{ 0 } );
                                     TestSupport::writeInPlace( file, bytes );
                                  },
                                   [ & ] {
                                      Agent other;
                                      other.timeout();
                                      other.save( file );
                                   } } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.err, newFile );
   EXPECT_EQ( shown.out, line( 1 ) + line( 1 ) );
}

TEST_F( FollowTraceTest, ANewFileThatIsDamagedIsTold ) {
   timeouts( 1 );
   const Shown shown =
      run( { "--follow", file }, { [ & ] {
                                     stop();
                                     Agent other;
                                     other.timeout();
                                     other.timeout();
                                     other.save( file );
                                     const auto size = std::filesystem::file_size( file );
                                     std::filesystem::resize_file( file, size - 1 );
                                  },
                                   [] {} } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, said( "the file is cut: 255 of 256 cells are there" ) + newFile );
   EXPECT_EQ( shown.out, line( 1 ) + line( 1 ) + line( 2 ) );
}

TEST_F( FollowTraceTest, ANewFileThatIsNoneIsToldOnceAndTheNextOneIsRead ) {
   timeouts( 1 );
   const auto nothing = [] {};
   const Shown shown = run( { "--follow", file }, { [ & ] {
                                                      stop();
                                                      std::filesystem::create_directory( file );
                                                   },
                                                    nothing, nothing, nothing,
                                                    [ & ] {
                                                       std::filesystem::remove( file );
                                                       start();
                                                       timeouts( 1 );
                                                    } } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, said( "is a directory; wanted: a trace file" ) + newFile );
   EXPECT_EQ( shown.out, line( 1 ) + line( 1 ) );
}

TEST_F( FollowTraceTest, AFileThatIsCutMeanwhileIsToldOnceAndTheNextOneIsRead ) {
   timeouts( 1 );
   const auto nothing = [] {};
   const Shown shown = run( { "--follow", file },
                            { [ & ] { std::filesystem::resize_file( file, 10 ); }, nothing, nothing,
                              [ & ] {
                                 stop();
                                 start();
                                 timeouts( 1 );
                              } } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, said( "no trace file: shorter than its header" ) + newFile );
   EXPECT_EQ( shown.out, line( 1 ) + line( 1 ) );
}

TEST_F( FollowTraceTest, AFileThatIsOverwrittenInItsPlaceIsReadAnew ) {
   timeouts( 2 );
   const Shown shown = run( { "--follow", file }, { [ & ] {
                                                      agent.reset();
                                                      Agent other;
                                                      other.timeout();
                                                      other.save( file );
                                                   },
                                                    [] {} } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, said( "was overwritten with another trace; its records follow" ) );
   EXPECT_EQ( shown.out, line( 1 ) + line( 2 ) + line( 1 ) );
}

TEST_F( FollowTraceTest, AFileThatIsNotThereAtFirstIsAnError ) {
   const Shown shown = run( { "--follow", folder / "none" } );
   EXPECT_EQ( shown.status, 2 );
   EXPECT_THAT( shown.err, HasSubstr( "No such file or directory" ) );
}

TEST_F( FollowTraceTest, EndsWhenNobodyReadsItsOutputAnyMore ) {
   timeouts( 1 );
   std::array< int, 2 > pipe{};
   ASSERT_EQ( ::pipe( pipe.data() ), 0 );
   const auto ignored = std::signal( SIGPIPE, SIG_IGN );
   const TestSupport::OutputFile errFile;
   Replay::Writer out( pipe[ 1 ] );
   Replay::Writer err( errFile.descriptor() );
   int looks = 0;
   const int status = TestSupport::runWith( { "--follow", file },
                                            { [ & ] {
                                                ++looks;
                                                close( pipe[ 0 ] );
                                                timeouts( 1 );
                                             },
                                              [ & ] { ++looks; } },
                                            out, err );
   static_cast< void >( std::signal( SIGPIPE, ignored ) );
   close( pipe[ 1 ] );
   EXPECT_EQ( status, 0 );
   EXPECT_EQ( looks, 1 );
   EXPECT_EQ( errFile.text(), "" );
}

} // namespace
