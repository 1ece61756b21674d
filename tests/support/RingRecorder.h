#pragma once

// A ring-buffer trace of its own in place of the default one, for as long as it lives.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/String.h"

#include <cstdint>
#include <sstream>
#include <vector>

namespace TestSupport {

class RingRecorder {
 public:
   RingRecorder() : before_( Jotter::defaultTraceFileIs( &file_ ) ) {}
   RingRecorder( const RingRecorder & ) = delete;
   RingRecorder & operator=( const RingRecorder & ) = delete;
   RingRecorder( RingRecorder && ) = delete;
   RingRecorder & operator=( RingRecorder && ) = delete;
   ~RingRecorder() { Jotter::defaultTraceFileIs( before_ ); }

   /// The records since the last time.
   std::vector< Jotter::Record > takeRecords() {
      std::vector< Jotter::Record > records = Jotter::readRecords( file_.bytes() );
      std::erase_if( records,
                     [ this ]( const auto & record ) { return record.sequence <= taken_; } );
      taken_ = file_.written();
      return records;
   }

   /// The same as lines "LEVEL FUNCTION: MESSAGE [ARGUMENT|ARGUMENT...]".
   Vex::String take() {
      std::ostringstream lines;
      for ( const Jotter::Record & record : takeRecords() ) {
         lines << unsigned{ record.descriptor->level } << ' ' << record.descriptor->function << ": "
               << record.message() << " [";
         const char * separator = "";
         for ( const Vex::String & argument : record.arguments ) {
            lines << separator << argument;
            separator = "|";
         }
         lines << "]\n";
      }
      return lines.str();
   }

 private:
   Jotter::TraceFile file_;
   Jotter::TraceFile * before_;
   std::uint64_t taken_ = 0;
};

} // namespace TestSupport
