#include "platform/Jotter/Duplog.h"
#include "platform/Jotter/FlightRecorder.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Trace.h"
#include "tests/platform/Jotter/Rings.h"
#include "tests/platform/Jotter/TraceFolder.h"
#include "tests/platform/Memory.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using Nodo::IntfId;
using testing::ElementsAre;

TEST( TraceFileMemoryTest, WritingNeedsNoMemory ) {
   Jotter::TraceFile file( 1 );
   const IntfId shortName( "Ethernet1" );
   const IntfId longName( Vex::String( 300, 'x' ) );
   const IntfId tooLongName( Vex::String( 5'000, 'y' ) );
   const std::uint64_t before = Memory::requests();
   for ( unsigned round = 0; round < 1'000; ++round ) {
      file.write( 1, " lag : ", shortName, true, round, Vex::Seconds( 1 ) );
      file.write( 2, longName, tooLongName, " lag : ", shortName );
   }
   EXPECT_EQ( Memory::requests(), before );
   EXPECT_EQ( file.written(), 2'000 );
}

class DuplogMemoryTest : public testing::Test {
 protected:
   void SetUp() override {
      Vex::traceHandle( "DuplogMemoryTest" ).levelMaskIs( 0 );
      before_ = Jotter::defaultTraceFileIs( &file );
   }
   void TearDown() override { Jotter::defaultTraceFileIs( before_ ); }

   const Vex::TextTrace trace{ "DuplogMemoryTest", "tests" };
   const Jotter::Duplog duplog{ trace };
   Jotter::TraceFile file{ 1 };
   const IntfId lag{ "PortChannel10" };

 private:
   Jotter::TraceFile * before_ = nullptr;
};

TEST_F( DuplogMemoryTest, ASiteAsksForMemoryOnlyWhenItIsReachedForTheFirstTime ) {
   const auto site = [ & ] { duplog( Vex::at< 0 >(), "handleLag", " lag : ", lag ); };
   std::uint64_t before = Memory::requests();
   site();
   EXPECT_GT( Memory::requests(), before );
   before = Memory::requests();
   for ( int round = 0; round < 100; ++round ) {
      site();
   }
   EXPECT_EQ( Memory::requests(), before );
   EXPECT_EQ( messagesOf( file.bytes() ).size(), 101 );
}

TEST_F( DuplogMemoryTest, ASiteThatFoundNoMemoryRegistersWithTheNextMessage ) {
   const auto site = [ & ] { duplog( Vex::at< 2 >(), "no memory for ", lag ); };
   {
      const Memory::RunsOut memory( 0 );
      site();
   }
   site();
   EXPECT_THAT( messagesOf( file.bytes() ),
                ElementsAre( "(call site 0 unknown)", "no memory for PortChannel10" ) );
}

TEST_F( DuplogMemoryTest, WhereverTheMemoryForADescriptorRunsOutLaterSitesAreKnown ) {
   const auto site = [ & ] { duplog( Vex::at< 2 >(), "first ", lag, " and more ", lag ); };
   for ( std::uint64_t granted = 0; granted < 30; ++granted ) {
      const Memory::RunsOut memory( granted );
      site();
   }
   site();
   duplog( Vex::at< 2 >(), "second ", lag );
   const auto messages = messagesOf( file.bytes() );
   ASSERT_GE( messages.size(), 2 );
   EXPECT_EQ( messages[ messages.size() - 2 ], "first PortChannel10 and more PortChannel10" );
   EXPECT_EQ( messages.back(), "second PortChannel10" );
}

// The mapped file is written by the same code as plain memory, but its pages are another matter.
TEST( FlightRecorderMemoryTest, WritingIntoAFileNeedsNoMemory ) {
   const TraceFolder folder;
   Jotter::TraceFile file( folder.path(), Jotter::TraceFile::fewestBytes );
   const IntfId name( Vex::String( 300, 'x' ) );
   const std::uint64_t before = Memory::requests();
   for ( unsigned round = 0; round < 1'000; ++round ) {
      file.write( 1, name, round );
   }
   EXPECT_EQ( Memory::requests(), before );
}

TEST( FlightRecorderMemoryTest, WhereverTheMemoryRunsOutNothingHasChangedOnDiskOrHere ) {
   const TraceFolder folder;
   const auto site = Jotter::registerDescriptor( describedBy( { literal( "known before" ) } ) );
   Jotter::TraceFile plain( 1 );
   Jotter::TraceFile * const before = Jotter::defaultTraceFileIs( &plain );
   plain.write( site );
   const std::string path = folder.path();
   bool done = false;
   int failed = 0;
   for ( std::uint64_t granted = 0; !done; ++granted ) {
      {
         const Memory::RunsOut memory( granted );
         done = Jotter::defaultTraceFileInto( path, Jotter::TraceFile::fewestBytes ).empty();
      }
      if ( !done ) {
         ++failed;
         ASSERT_THAT( folder.names(), testing::IsEmpty() );
         ASSERT_EQ( Jotter::defaultTraceFile(), &plain );
      }
   }
   EXPECT_GT( failed, 3 );
   EXPECT_THAT( folder.names(), ElementsAre( "agent.trace" ) );
   EXPECT_THAT( messagesOf( folder.bytes() ), ElementsAre( "known before" ) );
   Jotter::defaultTraceFileIs( before );
}

} // namespace
