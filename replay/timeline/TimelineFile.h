#pragma once

#include <stdexcept>
#include <string>

namespace Replay::Timeline {

struct Chart;

/// The picture's file cannot be made, or written.
class TimelineFileError : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
};

/// The file that the picture of a run goes to. It is made, or emptied, before the run, so that a
/// wrong name is told of at once.
class TimelineFile {
 public:
   explicit TimelineFile( const std::string & path );
   TimelineFile( const TimelineFile & ) = delete;
   TimelineFile & operator=( const TimelineFile & ) = delete;
   TimelineFile( TimelineFile && ) = delete;
   TimelineFile & operator=( TimelineFile && ) = delete;
   ~TimelineFile();

   void write( const Chart & chart );

 private:
   std::string path_;
   int descriptor_;
};

} // namespace Replay::Timeline
