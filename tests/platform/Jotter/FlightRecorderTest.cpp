// The trace file on disk: how it takes its path, and every reason why it cannot.

#include "platform/Jotter/FlightRecorder.h"

#include "platform/Jotter/RingLayout.h"
#include "tests/platform/Jotter/Rings.h"
#include "tests/platform/Jotter/TraceFolder.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Jotter::PieceKind;
using Jotter::TraceFile;
using Nodo::IntfId;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::size_t small = TraceFile::fewestBytes;

class FlightRecorderTest : public testing::Test {
 protected:
   // Why there is no file; "" if there is one.
   static std::string reasonAt( const std::string & path, std::size_t bytes = small ) {
      try {
         const TraceFile file( path, bytes );
         return "";
      } catch ( const Jotter::TraceFileError & error ) {
         return error.what();
      }
   }
   std::string reason( std::size_t bytes = small ) const {
      return reasonAt( folder.path(), bytes );
   }

   void recordRun( const std::string & what ) const {
      TraceFile file( folder.path(), small );
      file.write( oneText, IntfId( what ) );
   }

   const TraceFolder folder;
   const std::string path = folder.path();
   // A file on disk knows the call sites of this process from its start, so that no test may give
   // them numbers of its own.
   const Jotter::DescriptorId oneText =
      Jotter::registerDescriptor( describedBy( { placeholder( PieceKind::text ) } ) );
};

TEST_F( FlightRecorderTest, TheFileIsReadableOnDiskWhileItIsWrittenAndAfterwards ) {
   TraceFile file( path, small );
   file.write( oneText, IntfId( "Ethernet1" ) );
   EXPECT_THAT( messagesOf( folder.bytes() ), ElementsAre( "Ethernet1" ) );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace" ) );
}

TEST_F( FlightRecorderTest, TheFileStaysWhenItsOwnerGoes ) {
   recordRun( "Ethernet1" );
   EXPECT_THAT( messagesOf( folder.bytes() ), ElementsAre( "Ethernet1" ) );
}

TEST_F( FlightRecorderTest, TheFileTakesAtMostTheBytesThatItWasGiven ) {
   const auto sizeFor = [ & ]( std::size_t bytes ) {
      return TraceFile( path, bytes ).bytes().size();
   };
   EXPECT_EQ( sizeFor( small ), small );
   EXPECT_EQ( sizeFor( 2 * small ), std::size_t{ 64 * 1024 + 1024 * 64 } );
   EXPECT_EQ( sizeFor( 64 * 1024 + 512 * 64 - 1 ), small );
   EXPECT_EQ( std::filesystem::file_size( path ), small );
}

TEST_F( FlightRecorderTest, TheFileOfTheRunBeforeIsKept ) {
   recordRun( "first" );
   recordRun( "second" );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace", "agent.trace.previous" ) );
   EXPECT_THAT( messagesOf( folder.bytes( "agent.trace.previous" ) ), ElementsAre( "first" ) );
   recordRun( "third" );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace", "agent.trace.previous" ) );
   EXPECT_THAT( messagesOf( folder.bytes( "agent.trace.previous" ) ), ElementsAre( "second" ) );
   EXPECT_THAT( messagesOf( folder.bytes() ), ElementsAre( "third" ) );
}

TEST_F( FlightRecorderTest, ADamagedTraceFileIsKeptAsWell ) {
   recordRun( "first" );
   std::string damaged = folder.text();
   damaged[ 13 ] ^= 1;
   damaged.resize( 1'000 );
   folder.put( "agent.trace", damaged );
   recordRun( "second" );
   EXPECT_EQ( folder.text( "agent.trace.previous" ), damaged );
}

TEST_F( FlightRecorderTest, TheFileOfAKilledProcessIsFreeAndKept ) {
   const pid_t child = fork();
   ASSERT_GE( child, 0 );
   if ( child == 0 ) {
      TraceFile file( path, small );
      file.write( oneText, IntfId( "last words" ) );
      kill( getpid(), SIGKILL );
   }
   waitpid( child, nullptr, 0 );
   EXPECT_EQ( reason(), "" );
   EXPECT_THAT( messagesOf( folder.bytes( "agent.trace.previous" ) ), ElementsAre( "last words" ) );
}

// --- reasons why not ---

TEST_F( FlightRecorderTest, APathThatThisProcessUsesIsRefused ) {
   const TraceFile file( path, small );
   EXPECT_EQ( reason(), path + ": it is in use, by another process or by this one" );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace" ) );
}

TEST_F( FlightRecorderTest, APathThatAnotherProcessUsesIsRefused ) {
   std::array< int, 2 > ready{};
   std::array< int, 2 > enough{};
   ASSERT_EQ( pipe( ready.data() ) + pipe( enough.data() ), 0 );
   const pid_t child = fork();
   ASSERT_GE( child, 0 );
   char byte = 'x';
   if ( child == 0 ) {
      const TraceFile file( path, small );
      static_cast< void >( write( ready[ 1 ], &byte, 1 ) );
      static_cast< void >( read( enough[ 0 ], &byte, 1 ) );
      _exit( 0 );
   }
   ASSERT_EQ( read( ready[ 0 ], &byte, 1 ), 1 );
   EXPECT_EQ( reason(), path + ": it is in use, by another process or by this one" );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace" ) );
   ASSERT_EQ( write( enough[ 1 ], &byte, 1 ), 1 );
   waitpid( child, nullptr, 0 );
   EXPECT_EQ( reason(), "" );
   for ( const int end : { ready[ 0 ], ready[ 1 ], enough[ 0 ], enough[ 1 ] } ) {
      close( end );
   }
}

TEST_F( FlightRecorderTest, AFileThatIsNoTraceFileIsLeftAsItIs ) {
   for ( const std::string & text : { std::string(), std::string( "notes" ),
                                      std::string( 5'000, '\0' ), std::string( "JOTTER\n" ) } ) {
      folder.put( "agent.trace", text );
      EXPECT_EQ( reason(), path + ": " + path +
                              " is there already and is left as it is: it is no trace file" );
      EXPECT_EQ( folder.text(), text );
      EXPECT_THAT( folder.names(), ElementsAre( "agent.trace" ) );
   }
}

TEST_F( FlightRecorderTest, ATraceFileOfAnotherVersionIsLeftAsItIs ) {
   recordRun( "first" );
   std::string other = folder.text();
   other[ offsetof( Jotter::Layout::Header, version ) ] = 1;
   folder.put( "agent.trace", other );
   EXPECT_EQ( reason(), path + ": " + path +
                           " is there already and is left as it is: it is a trace file of "
                           "version 1, not 2" );
   EXPECT_EQ( folder.text(), other );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace" ) );
}

TEST_F( FlightRecorderTest, WhatIsNoRegularFileIsLeftAsItIs ) {
   std::filesystem::create_directory( path );
   EXPECT_EQ( reason(), path + ": " + path + " is a directory" );
   std::filesystem::remove( path );
   ASSERT_EQ( mkfifo( path.c_str(), 0600 ), 0 );
   EXPECT_EQ( reason(), path + ": " + path + " is no regular file" );
   std::filesystem::remove( path );
   std::filesystem::create_symlink( "elsewhere", path );
   EXPECT_EQ( reason(), path + ": " + path + " is no regular file" );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace" ) );
}

TEST_F( FlightRecorderTest, WhatIsInThePlaceOfThePreviousFileIsLeftAsItIs ) {
   recordRun( "first" );
   const std::string previous = path + ".previous";
   std::filesystem::create_directory( previous );
   EXPECT_EQ( reason(), path + ": " + previous + " is a directory" );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace", "agent.trace.previous/" ) );
   std::filesystem::remove( previous );
   folder.put( "agent.trace.previous", "notes" );
   EXPECT_EQ( reason(), path + ": " + previous +
                           " is there already and is left as it is: it is no trace file" );
   EXPECT_EQ( folder.text( "agent.trace.previous" ), "notes" );
   EXPECT_THAT( messagesOf( folder.bytes() ), ElementsAre( "first" ) );
}

TEST_F( FlightRecorderTest, AMissingFolderIsAReason ) {
   const std::string missing = folder.path( "missing" ) + "/agent.trace";
   EXPECT_EQ( reasonAt( missing ),
              missing + ": cannot make a file in its folder: No such file or directory" );
   EXPECT_EQ( reasonAt( "" ), "trace file: no path was given" );
   EXPECT_THAT( folder.names(), IsEmpty() );
}

TEST_F( FlightRecorderTest, AFolderThatMayOnlyBeReadIsAReason ) {
   chmod( folder.folder().c_str(), 0555 );
   const bool root = geteuid() == 0; // who may write everywhere
   ASSERT_EQ( root ? seteuid( 65'534 ) : 0, 0 );
   const std::string found = reason();
   ASSERT_EQ( root ? seteuid( 0 ) : 0, 0 );
   chmod( folder.folder().c_str(), 0700 );
   EXPECT_EQ( found, path + ": cannot make a file in its folder: Permission denied" );
   EXPECT_THAT( folder.names(), IsEmpty() );
}

TEST_F( FlightRecorderTest, TooFewBytesAreAReason ) {
   EXPECT_EQ( reason( small - 1 ), path + ": 81919 bytes are too few for a trace file, which takes "
                                          "81920 at least" );
   EXPECT_EQ( reason( 0 ), path + ": 0 bytes are too few for a trace file, which takes 81920 at "
                                  "least" );
   EXPECT_THAT( folder.names(), IsEmpty() );
}

TEST_F( FlightRecorderTest, ALimitOfTheSizeOfFilesIsAReason ) {
   recordRun( "first" );
   rlimit before{};
   getrlimit( RLIMIT_FSIZE, &before );
   const auto handler = std::signal( SIGXFSZ, SIG_IGN );
   const rlimit few{ small - 1, before.rlim_max };
   setrlimit( RLIMIT_FSIZE, &few );
   const std::string found = reason();
   setrlimit( RLIMIT_FSIZE, &before );
   std::signal( SIGXFSZ, handler );
   EXPECT_EQ( found, path + ": no room for 81920 bytes: File too large" );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace" ) );
   EXPECT_THAT( messagesOf( folder.bytes() ), ElementsAre( "first" ) );
}

TEST_F( FlightRecorderTest, AFullDiskIsAReason ) {
   const std::string disk = folder.path( "disk" );
   std::filesystem::create_directory( disk );
   if ( mount( "tmpfs", disk.c_str(), "tmpfs", 0, "size=65536" ) != 0 ) {
      GTEST_SKIP() << "no small disk may be mounted here";
   }
   const std::string found = reasonAt( disk + "/agent.trace" );
   const bool empty = std::filesystem::is_empty( disk );
   umount( disk.c_str() );
   EXPECT_EQ( found, disk + "/agent.trace: no room for 81920 bytes: No space left on device" );
   EXPECT_TRUE( empty );
}

// --- the default trace file ---

class DefaultIntoFileTest : public FlightRecorderTest {
 protected:
   void SetUp() override { before_ = Jotter::defaultTraceFileIs( &plain ); }
   void TearDown() override { Jotter::defaultTraceFileIs( before_ ); }

   TraceFile plain{ 1024 };

 private:
   TraceFile * before_ = nullptr;
};

TEST_F( DefaultIntoFileTest, RecordsAndDescriptorsOfBeforeAreInTheFile ) {
   const auto site = Jotter::registerDescriptor(
      describedBy( { literal( "carried over " ), placeholder( PieceKind::text ) } ) );
   plain.write( site, IntfId( "Ethernet1" ) );
   plain.write( site, IntfId( Vex::String( 100, 'x' ) ) );
   EXPECT_EQ( Jotter::defaultTraceFileInto( path, small ), "" );
   Jotter::defaultTraceFile()->write( site, IntfId( "Ethernet2" ) );
   const auto contents = Jotter::readTraceFile( folder.bytes() );
   EXPECT_THAT( contents.problems, IsEmpty() );
   EXPECT_EQ( contents.lastSequence, 3 );
   EXPECT_THAT( messagesOf( folder.bytes() ),
                ElementsAre( "carried over Ethernet1", "carried over " + Vex::String( 100, 'x' ),
                             "carried over Ethernet2" ) );
}

TEST_F( DefaultIntoFileTest, OfManyRecordsTheNewestAreCarriedOver ) {
   const auto site = Jotter::registerDescriptor(
      describedBy( { literal( "many " ), placeholder( PieceKind::number ) } ) );
   for ( unsigned at = 1; at <= 3'000; ++at ) {
      plain.write( site, at );
   }
   EXPECT_EQ( Jotter::defaultTraceFileInto( path, small ), "" );
   const auto contents = Jotter::readTraceFile( folder.bytes() );
   EXPECT_THAT( contents.problems, IsEmpty() );
   ASSERT_EQ( contents.records.size(), 256 );
   EXPECT_EQ( contents.records.back().message(), "many 3000" );
}

TEST_F( DefaultIntoFileTest, WithoutAFileBeforeTheNewOneIsPutInPlace ) {
   Jotter::defaultTraceFileIs( nullptr );
   EXPECT_EQ( Jotter::defaultTraceFileInto( path, small ), "" );
   ASSERT_NE( Jotter::defaultTraceFile(), nullptr );
   EXPECT_EQ( Jotter::defaultTraceFile()->written(), 0 );
}

TEST_F( DefaultIntoFileTest, WhenItCannotBeTheReasonIsToldAndWhatWasThereGoesOn ) {
   folder.put( "agent.trace", "notes" );
   EXPECT_THAT( Jotter::defaultTraceFileInto( path, small ), HasSubstr( "it is no trace file" ) );
   EXPECT_THAT( Jotter::defaultTraceFileInto( path, 1 ), StartsWith( path + ": 1 bytes" ) );
   EXPECT_EQ( Jotter::defaultTraceFile(), &plain );
   EXPECT_EQ( folder.text(), "notes" );
}

TEST_F( DefaultIntoFileTest, ASecondTimeForOnePathIsRefusedAndRecordingGoesOn ) {
   EXPECT_EQ( Jotter::defaultTraceFileInto( path, small ), "" );
   TraceFile * const file = Jotter::defaultTraceFile();
   EXPECT_THAT( Jotter::defaultTraceFileInto( path, small ), HasSubstr( "it is in use" ) );
   EXPECT_EQ( Jotter::defaultTraceFile(), file );
   EXPECT_EQ( Jotter::defaultTraceFileInto( folder.path( "other.trace" ), small ), "" );
   EXPECT_NE( Jotter::defaultTraceFile(), file );
}

TEST_F( DefaultIntoFileTest, TheFileIsCompleteAndFreeAfterTheProcessHasEnded ) {
   const auto site = Jotter::registerDescriptor( describedBy( { literal( "at the end" ) } ) );
   const pid_t child = fork();
   ASSERT_GE( child, 0 );
   if ( child == 0 ) {
      const bool done = Jotter::defaultTraceFileInto( path, small ).empty();
      Jotter::defaultTraceFile()->write( site );
      std::_Exit( done ? 0 : 1 );
   }
   int status = 0;
   waitpid( child, &status, 0 );
   EXPECT_EQ( status, 0 );
   EXPECT_THAT( messagesOf( folder.bytes() ), ElementsAre( "at the end" ) );
   EXPECT_EQ( reason(), "" );
}

} // namespace
