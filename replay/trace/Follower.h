#pragma once

// Follows the trace file of one name: from look to look, and from one run of the agent to the next,
// as an agent that is started again puts a new file in the place of the old one.

#include "replay/trace/RecordFlow.h"
#include "replay/trace/TraceSource.h"

#include <memory>
#include <string>

namespace TraceTool {

class Follower {
 public:
   /// Opens the file, or throws Unusable.
   explicit Follower( std::string path );

   /// The file as it is. An Unusable when it holds no trace.
   Look first( LastLook lastLook );

   /// What has come since. When another file has the name now, the old one is read to its end, and
   /// then the new one. A file that cannot be used is complained about, once, and waited for.
   Look next();

 private:
   bool worthReading();
   void readOn( Look & look, LastLook lastLook );
   void openNew( Look & look );
   void cannotUse( Look & look, const std::string & why );

   std::string path_;
   std::unique_ptr< TraceSource > source_; // null: there is another file, which cannot be used yet
   RecordFlow flow_;
   unsigned patience_; // looks that are left
   std::string trouble_; // why the file could not be used on the look before
   bool told_ = false; // and the user knows it
};

} // namespace TraceTool
