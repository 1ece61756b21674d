#include "platform/Vex/Trace.h"

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

class CountingSink final : public Vex::TraceSink {
 public:
   void write( const Vex::TraceRecord & record ) override {
      whole += record.message == "lag : 7" ? 1 : 0;
      ++all;
   }

   std::atomic< int > all = 0;
   std::atomic< int > whole = 0;
};

TEST( TraceThreadsTest, MessagesOfManyThreadsArriveWholeWhileMasksChange ) {
   CountingSink sink;
   const Vex::TraceSinkScope scope( sink );
   Vex::TraceHandle & handle = Vex::traceHandle( "TraceThreadsTest" );
   handle.levelMaskIs( 0b1 );
   {
      std::vector< std::jthread > threads;
      for ( int at = 0; at < 3; ++at ) {
         threads.emplace_back( [] {
            const Vex::TextTrace trace( "TraceThreadsTest", "tests" );
            for ( int round = 0; round < 1'000; ++round ) {
               trace( Vex::at< 0 >(), "lag : ", 7 );
               trace( Vex::at< 1 >(), "lag : ", 7 );
            }
         } );
      }
      for ( unsigned round = 0; round < 1'000; ++round ) {
         handle.levelMaskIs( 0b1U | ( round & 1U ) << 1U );
      }
   }
   EXPECT_GE( sink.all, 3'000 );
   EXPECT_EQ( sink.whole, sink.all );
}

TEST( TraceThreadsTest, AHandleIsCreatedOnceThoughManyThreadsAskForItFirst ) {
   std::array< Vex::TraceHandle *, 4 > handles{};
   for ( int round = 0; round < 50; ++round ) {
      const std::string name = "TraceThreadsTest" + std::to_string( round );
      {
         std::vector< std::jthread > threads;
         for ( auto & handle : handles ) {
            threads.emplace_back( [ & ] { handle = &Vex::traceHandle( name ); } );
         }
      }
      for ( const auto * handle : handles ) {
         ASSERT_EQ( handle, handles.front() );
      }
   }
}

} // namespace
