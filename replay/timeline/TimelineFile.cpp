#include "replay/timeline/TimelineFile.h"

#include "replay/Writer.h"
#include "replay/timeline/Picture.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Replay::Timeline {

namespace {

constexpr int readableByAll = 0666; // less what the user's mask takes away

[[noreturn]] void throwError( const std::string & path, int error ) {
   throw TimelineFileError( path + ": " + std::generic_category().message( error ) );
}

} // namespace

TimelineFile::TimelineFile( const std::string & path )
    : path_( path ), descriptor_( ::open(
                        path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, readableByAll ) ) {
   if ( descriptor_ < 0 ) {
      throwError( path_, errno );
   }
}

TimelineFile::~TimelineFile() {
   if ( descriptor_ >= 0 ) {
      ::close( descriptor_ );
   }
}

void TimelineFile::write( const Chart & chart ) {
   Writer writer( descriptor_ );
   appendPicture( writer.buffer(), chart );
   writer.flush();
   if ( writer.error() != 0 ) {
      throwError( path_, writer.error() );
   }
   // Some file systems tell only now that there is no room.
   const int closed = ::close( std::exchange( descriptor_, -1 ) );
   if ( closed != 0 ) {
      throwError( path_, errno );
   }
}

} // namespace Replay::Timeline
