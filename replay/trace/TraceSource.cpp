#include "replay/trace/TraceSource.h"

#include "platform/Jotter/RingLayout.h"
#include "replay/trace/BusErrors.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace TraceTool {

namespace {

constexpr const char * wanted = "; wanted: a trace file";

[[noreturn]] void throwErrno( const std::string & what ) {
   throw Unusable( what + ": " + std::generic_category().message( errno ) + wanted );
}

} // namespace

std::optional< FileIdentity > identityOf( const std::string & path ) noexcept {
   struct stat status{};
   if ( stat( path.c_str(), &status ) != 0 ) {
      return std::nullopt;
   }
   return FileIdentity{ status.st_dev, status.st_ino };
}

// Without blocking: a pipe that nobody writes to would be waited for.
TraceSource::TraceSource( const std::string & path )
    : descriptor_( open( path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC ) ) {
   if ( descriptor_ < 0 ) {
      throwErrno( "cannot be opened" );
   }
   struct stat status{};
   if ( fstat( descriptor_, &status ) != 0 || !S_ISREG( status.st_mode ) ) {
      close( descriptor_ );
      throw Unusable(
         std::string( S_ISDIR( status.st_mode ) ? "is a directory" : "is no regular file" ) +
         wanted );
   }
   identity_ = { status.st_dev, status.st_ino };
}

TraceSource::~TraceSource() {
   unmap();
   close( descriptor_ );
}

void TraceSource::unmap() noexcept {
   if ( !mapping_.empty() ) {
      munmap( mapping_.data(), mapping_.size() );
      mapping_ = {};
   }
}

// The file as long as it is now.
void TraceSource::map() {
   struct stat status{};
   if ( fstat( descriptor_, &status ) != 0 ) {
      throwErrno( "cannot be read" );
   }
   const auto size = static_cast< std::size_t >( status.st_size );
   if ( size == mapping_.size() ) {
      return;
   }
   unmap();
   if ( size == 0 ) {
      return;
   }
   void * const memory = mmap( nullptr, size, PROT_READ, MAP_SHARED, descriptor_, 0 );
   if ( memory == MAP_FAILED ) {
      throwErrno( "cannot be mapped" );
   }
   mapping_ = { static_cast< std::byte * >( memory ), size };
}

TraceSource::State TraceSource::state() const {
   State state{ 0, 0, mapping_.size() };
   if ( mapping_.size() >= sizeof( Jotter::Layout::Header ) ) {
      const auto & header = *reinterpret_cast< const Jotter::Layout::Header * >( mapping_.data() );
      state.sequence = header.nextSequence.load( std::memory_order_relaxed );
      state.cell = header.nextCell.load( std::memory_order_relaxed );
   }
   return state;
}

bool TraceSource::hasChanged() {
   map();
   bool changed = false;
   if ( !readMapped( mapping_, [ & ] { changed = state() != stateRead_; } ) ) {
      unmap(); // it has zeros in the place of a page
      return true;
   }
   return changed;
}

Jotter::TraceFileContents TraceSource::read( std::uint64_t after ) {
   map();
   Jotter::TraceFileContents contents;
   try {
      const bool whole = readMapped( mapping_, [ & ] {
         stateRead_ = state(); // before: what comes meanwhile is seen the next time
         contents = Jotter::readTraceFile( mapping_, after );
      } );
      if ( !whole ) {
         unmap(); // it has zeros in the place of pages
         contents.problems.emplace_back( "was cut, or failed, while it was being read" );
      }
   } catch ( const Jotter::TraceFileError & error ) {
      unmap();
      throw Unusable( error.what() );
   }
   return contents;
}

} // namespace TraceTool
