#include "platform/Jotter/FlightRecorder.h"

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"

#include <exception>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Jotter {

namespace {

// The files that have been put in use. They are never destroyed: objects that are destroyed after
// everything of ours may still trace.
std::vector< std::unique_ptr< TraceFile > > & files() {
   static auto * const instance = new std::vector< std::unique_ptr< TraceFile > >;
   return *instance;
}

// When the library goes, its locks do; who loads it again may use the same path.
struct Unlocker {
   Unlocker() = default;
   Unlocker( const Unlocker & ) = delete;
   Unlocker & operator=( const Unlocker & ) = delete;
   Unlocker( Unlocker && ) = delete;
   Unlocker & operator=( Unlocker && ) = delete;
   ~Unlocker() {
      for ( const auto & file : files() ) {
         file->unlock();
      }
   }
};

std::mutex mutex; // guards files()
const Unlocker unlocker;

void use( const Vex::String & path, std::size_t bytes ) {
   const std::lock_guard lock( mutex );
   files().reserve( files().size() + 1 );
   auto file = std::make_unique< TraceFile >( path, bytes, defaultTraceFile() );
   defaultTraceFileIs( file.get() );
   files().push_back( std::move( file ) );
}

} // namespace

Vex::String defaultTraceFileInto( const Vex::String & path, std::size_t bytes ) noexcept {
   try {
      use( path, bytes );
      return {};
   } catch ( const std::exception & error ) {
      try {
         return error.what();
      } catch ( ... ) { // NOLINT(bugprone-empty-catch): the short text below needs no memory
      }
   } catch ( ... ) { // NOLINT(bugprone-empty-catch): nobody throws anything else
   }
   return "no memory";
}

} // namespace Jotter
