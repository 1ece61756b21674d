#pragma once

// Collects the text trace of one handle for as long as it lives, and restores sink and mask then.
//
//    TraceRecorder trace( "VeloMlagEgressAclIntfInterlockSm" );
//    ...
//    EXPECT_EQ( trace.take(), "0 handleAllLags: handleAllLags\n" );

#include "platform/Vex/String.h"
#include "platform/Vex/Trace.h"

#include <cstdint>
#include <limits>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace TestSupport {

class TraceRecorder final : public Vex::TraceSink {
 public:
   /// A record with texts of its own.
   struct Record {
      Vex::String source;
      std::uint32_t line;
      Vex::String function;
      unsigned level;
      Vex::String message;
   };

   static constexpr std::uint32_t allLevels = std::numeric_limits< std::uint32_t >::max();

   explicit TraceRecorder( std::string_view handle, std::uint32_t mask = allLevels )
       : handle_( Vex::traceHandle( handle ) ), maskBefore_( handle_.levelMask() ),
         scope_( *this ) {
      handle_.levelMaskIs( mask );
   }
   ~TraceRecorder() override { handle_.levelMaskIs( maskBefore_ ); }

   void write( const Vex::TraceRecord & record ) override {
      records_.push_back( { Vex::String( record.source ), record.line,
                            Vex::String( record.function ), record.level,
                            Vex::String( record.message ) } );
   }

   /// The records since the last time.
   std::vector< Record > takeRecords() { return std::exchange( records_, {} ); }

   /// The same as lines "LEVEL FUNCTION: MESSAGE".
   Vex::String take() {
      std::ostringstream lines;
      for ( const Record & record : takeRecords() ) {
         lines << record.level << ' ' << record.function << ": " << record.message << '\n';
      }
      return lines.str();
   }

   /// The message of the latest record since the last time; empty where there is none.
   Vex::String takeLast() {
      const auto records = takeRecords();
      return records.empty() ? "" : records.back().message;
   }

 private:
   Vex::TraceHandle & handle_;
   std::uint32_t maskBefore_;
   Vex::TraceSinkScope scope_;
   std::vector< Record > records_;
};

} // namespace TestSupport
