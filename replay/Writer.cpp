#include "replay/Writer.h"

#include <cerrno>
#include <unistd.h>

namespace Replay {

void Writer::flush() noexcept {
   std::string_view rest = buffer_;
   if ( !rest.empty() && makeRoom_ ) {
      makeRoom_();
   }
   while ( !rest.empty() && error_ == 0 ) {
      const ssize_t written = ::write( descriptor_, rest.data(), rest.size() );
      if ( written >= 0 ) {
         rest.remove_prefix( static_cast< std::size_t >( written ) );
      } else if ( errno != EINTR ) {
         error_ = errno;
      }
   }
   buffer_.clear();
}

} // namespace Replay
