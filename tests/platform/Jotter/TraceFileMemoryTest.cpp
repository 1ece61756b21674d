#include "platform/Jotter/Duplog.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Trace.h"
#include "tests/platform/Jotter/Rings.h"
#include "tests/platform/Memory.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
   duplog( Vex::at< 2 >(), "second ", lag );
   EXPECT_EQ( messagesOf( file.bytes() ).back(), "second PortChannel10" );
}

} // namespace
