#include "platform/Vex/Trace.h"
#include "tests/platform/Memory.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

class LastMessage final : public Vex::TraceSink {
 public:
   void write( const Vex::TraceRecord & record ) override { text = record.message; }

   std::string text;
};

TEST( TraceMemoryTest, ADisabledMessageNeedsNoMemory ) {
   Vex::traceHandle( "TraceMemoryTest" ).levelMaskIs( 0 );
   const Vex::TextTrace trace( "TraceMemoryTest", "tests" );
   const std::string piece( 100, 'x' );
   const std::uint64_t before = Memory::requests();
   trace( Vex::at< 0 >(), "lag : ", piece, 7 );
   EXPECT_EQ( Memory::requests(), before );
}

TEST( TraceMemoryTest, AMessageForWhichThereIsNoMemoryIsLostAndItsWriterGoesOn ) {
   Vex::traceHandle( "TraceMemoryTest" ).levelMaskIs( 1 );
   const Vex::TextTrace trace( "TraceMemoryTest", "tests" );
   LastMessage sink;
   const Vex::TraceSinkScope scope( sink );
   const std::string piece( 1'000, 'x' );
   {
      const Memory::RunsOut memory( 0 );
      trace( Vex::at< 0 >(), piece );
   }
   EXPECT_EQ( sink.text, "" );
   trace( Vex::at< 0 >(), "after" );
   EXPECT_EQ( sink.text, "after" );
}

} // namespace
