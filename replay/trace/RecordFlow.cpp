#include "replay/trace/RecordFlow.h"

#include <utility>

namespace TraceTool {

namespace {

std::string numbers( std::uint64_t first, std::uint64_t last ) {
   return first == last ? "record " + std::to_string( first )
                        : "records " + std::to_string( first ) + " to " + std::to_string( last );
}

} // namespace

void RecordFlow::startAnew() {
   held_.clear();
   last_ = claimed_ = toldUpTo_ = waitingFor_ = 0;
   started_ = fromAnywhere_ = false;
}

Look RecordFlow::take( Jotter::TraceFileContents contents, LastLook lastLook ) {
   Look look;
   if ( contents.lastSequence < claimed_ ) {
      startAnew();
      look.complaints.emplace_back( "was overwritten with another trace; its records follow" );
      return look;
   }
   claimed_ = contents.lastSequence;
   if ( !started_ ) {
      started_ = true;
      fromAnywhere_ = claimed_ != 0;
      look.complaints = std::move( contents.problems );
      toldUpTo_ = claimed_;
   }
   bool lastIsThere = false;
   for ( Jotter::Record & record : contents.records ) {
      lastIsThere |= record.sequence == last_;
      if ( record.sequence > last_ ) {
         const std::uint64_t sequence = record.sequence;
         held_.emplace( sequence, std::move( record ) );
      }
   }
   release( look, lastIsThere, lastLook );
   return look;
}

void RecordFlow::release( Look & look, bool lastIsThere, LastLook lastLook ) {
   while ( !held_.empty() ) {
      const auto next = held_.begin();
      const std::uint64_t sequence = next->first;
      if ( !fromAnywhere_ && sequence != last_ + 1 ) {
         const bool overwritten = !lastIsThere && look.records.empty();
         const bool mayCome = !overwritten || last_ == 0;
         if ( mayCome && lastLook == LastLook::no && waitingFor_ != sequence ) {
            waitingFor_ = sequence;
            return;
         }
         if ( sequence - 1 > toldUpTo_ ) {
            look.complaints.push_back(
               numbers( last_ + 1, sequence - 1 ) +
               ( overwritten ? " overwritten before they could be read" : " missing" ) );
         }
      }
      look.records.push_back( std::move( next->second ) );
      last_ = sequence;
      fromAnywhere_ = false;
      held_.erase( next );
   }
}

} // namespace TraceTool
