#include "platform/Jotter/MappedFile.h"

#include "platform/Jotter/TraceFileError.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Jotter {

namespace {

[[noreturn]] void fail( const Vex::String & path, const Vex::String & reason ) {
   throw TraceFileError( path + ": " + reason );
}

[[noreturn]] void failWith( const Vex::String & path, const Vex::String & what, int error ) {
   fail( path, what + ": " + std::generic_category().message( error ) );
}

// Interrupted calls are made again: a signal of the host must not cost it its trace.
template < class Call >
int again( Call call ) noexcept {
   int result = call();
   while ( result < 0 && errno == EINTR ) {
      result = call();
   }
   return result;
}

bool sameFile( const struct stat & a, const struct stat & b ) noexcept {
   return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The file in this place for reading, none if there is none. Opening neither follows a symbolic
// link nor waits for the other end of a pipe.
OpenFile openInPlace( const Vex::String & path, const Vex::String & called ) {
   OpenFile file( again( [ & ] {
      return open( called.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY );
   } ) );
   if ( !file ) {
      if ( errno == ENOENT ) {
         return file;
      }
      if ( errno == ELOOP || errno == ENXIO ) {
         fail( path, called + " is no regular file" );
      }
      failWith( path, "cannot open " + called, errno );
   }
   struct stat status{};
   if ( fstat( file.number(), &status ) != 0 ) {
      failWith( path, "cannot look at " + called, errno );
   }
   if ( S_ISDIR( status.st_mode ) ) {
      fail( path, called + " is a directory" );
   }
   if ( !S_ISREG( status.st_mode ) ) {
      fail( path, called + " is no regular file" );
   }
   return file;
}

void refuseForeign( const Vex::String & path,
                    const Vex::String & called,
                    const OpenFile & file,
                    MappedFile::Judge judge ) {
   std::array< std::byte, 128 > beginning{};
   const ssize_t size = pread( file.number(), beginning.data(), beginning.size(), 0 );
   if ( size < 0 ) {
      failWith( path, "cannot read " + called, errno );
   }
   const auto reason = judge( std::span( beginning ).first( static_cast< std::size_t >( size ) ) );
   if ( !reason.empty() ) {
      fail( path, called + " is there already and is left as it is: " + reason );
   }
}

} // namespace

OpenFile::OpenFile( OpenFile && other ) noexcept : number_( std::exchange( other.number_, -1 ) ) {}

OpenFile & OpenFile::operator=( OpenFile && other ) noexcept {
   std::swap( number_, other.number_ );
   return *this;
}

void OpenFile::close() noexcept {
   if ( number_ >= 0 ) {
      ::close( std::exchange( number_, -1 ) );
   }
}

MappedFile::MappedFile( Vex::String path, std::size_t size, Judge judge )
    : path_( std::move( path ) ), predecessor_( lockedPredecessor( judge ) ) {
   if ( predecessor_ ) {
      checkPrevious( judge );
   }
   try {
      create( size );
      map( size );
   } catch ( ... ) {
      if ( !temporary_.empty() ) {
         unlink( temporary_.c_str() );
      }
      throw;
   }
}

MappedFile::~MappedFile() {
   if ( !temporary_.empty() ) {
      unlink( temporary_.c_str() );
   }
   munmap( data_, size_ );
}

// The file that is in our place now, locked, so that no other process can begin to move it as well.
OpenFile MappedFile::lockedPredecessor( Judge judge ) const {
   if ( path_.empty() ) {
      fail( "trace file", "no path was given" );
   }
   // Another process may put its file there between our opening and our locking; that one is locked
   // then, so the second attempt knows.
   for ( int attempt = 0; attempt < 10; ++attempt ) {
      OpenFile file = openInPlace( path_, path_ );
      if ( !file ) {
         return file;
      }
      if ( again( [ & ] { return flock( file.number(), LOCK_EX | LOCK_NB ); } ) != 0 ) {
         if ( errno == EWOULDBLOCK ) {
            fail( path_, "it is in use, by another process or by this one" );
         }
         failWith( path_, "cannot lock it", errno );
      }
      struct stat opened{};
      struct stat inPlace{};
      if ( fstat( file.number(), &opened ) == 0 && lstat( path_.c_str(), &inPlace ) == 0 &&
           sameFile( opened, inPlace ) ) {
         refuseForeign( path_, path_, file, judge );
         return file;
      }
   }
   fail( path_, "other processes put their files there all the time" );
}

// Nothing but the trace file of an earlier run gives way to the one of the last run.
void MappedFile::checkPrevious( Judge judge ) const {
   const Vex::String previous = path_ + ".previous";
   if ( const OpenFile file = openInPlace( path_, previous ) ) {
      refuseForeign( path_, previous, file, judge );
   }
}

void MappedFile::create( std::size_t size ) {
   Vex::String name = path_ + ".XXXXXX";
   file_ = OpenFile( again( [ & ] { return mkostemp( name.data(), O_CLOEXEC ); } ) );
   if ( !file_ ) {
      failWith( path_, "cannot make a file in its folder", errno );
   }
   temporary_ = std::move( name );
   if ( again( [ & ] { return flock( file_.number(), LOCK_EX | LOCK_NB ); } ) != 0 ) {
      failWith( path_, "cannot lock a file in its folder", errno );
   }
   int error = EINTR;
   while ( error == EINTR ) {
      error = posix_fallocate( file_.number(), 0, static_cast< off_t >( size ) );
   }
   if ( error != 0 ) {
      failWith( path_, "no room for " + std::to_string( size ) + " bytes", error );
   }
}

void MappedFile::map( std::size_t size ) {
   void * const data = mmap( nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file_.number(), 0 );
   if ( data == MAP_FAILED ) { // NOLINT(performance-no-int-to-ptr): the system's own macro
      failWith( path_, "cannot map it into memory", errno );
   }
   data_ = static_cast< std::byte * >( data );
   size_ = size;
}

void MappedFile::publish() {
   const Vex::String previous = path_ + ".previous";
   if ( predecessor_ && std::rename( path_.c_str(), previous.c_str() ) != 0 ) {
      failWith( path_, "cannot keep it as " + previous, errno );
   }
   // Never over a file that came to be meanwhile. Not every file system can promise that.
   int result =
      renameat2( AT_FDCWD, temporary_.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE );
   if ( result != 0 && errno == EINVAL ) {
      result = std::rename( temporary_.c_str(), path_.c_str() );
   }
   if ( result != 0 ) {
      const int error = errno;
      if ( predecessor_ ) {
         std::rename( previous.c_str(), path_.c_str() );
      }
      failWith( path_, "cannot put the new file in place", error );
   }
   temporary_.clear();
   predecessor_.close();
}

void MappedFile::unlock() noexcept {
   if ( file_ ) {
      flock( file_.number(), LOCK_UN ); // closing alone would not do: the mapping keeps it
   }
   file_.close();
}

} // namespace Jotter
