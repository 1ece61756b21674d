#include "platform/Jotter/Descriptor.h"

#include "platform/Jotter/TraceFile.h"

#include <algorithm>
#include <deque>
#include <mutex>

namespace Jotter {

namespace {

struct State {
   std::mutex mutex; // guards descriptors, and that the default file knows them
   std::deque< Descriptor > descriptors;
   TraceFile builtIn;
};

// Never destroyed: state machines may be traced while static objects are being destroyed.
State & state() {
   static auto * const instance = new State;
   return *instance;
}

void describeAll( TraceFile & file ) {
   DescriptorId id = 0;
   for ( const Descriptor & descriptor : state().descriptors ) {
      file.describe( ++id, descriptor );
   }
}

} // namespace

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
std::atomic< TraceFile * > Detail::defaultTraceFile{ &state().builtIn };

DescriptorId registerDescriptor( const Descriptor & descriptor ) {
   const std::lock_guard lock( state().mutex );
   auto & descriptors = state().descriptors;
   const auto known = std::ranges::find( descriptors, descriptor );
   if ( known != descriptors.end() ) {
      return static_cast< DescriptorId >( known - descriptors.begin() ) + 1;
   }
   descriptors.push_back( descriptor );
   const auto id = static_cast< DescriptorId >( descriptors.size() );
   if ( TraceFile * const file = defaultTraceFile() ) {
      try {
         file->describe( id, descriptor );
      } catch ( ... ) {
         descriptors.pop_back(); // the next attempt shall find it unknown
         throw;
      }
   }
   return id;
}

void describeKnown( TraceFile & file ) {
   const std::lock_guard lock( state().mutex );
   describeAll( file );
}

TraceFile * defaultTraceFileIs( TraceFile * file ) {
   const std::lock_guard lock( state().mutex );
   if ( file != nullptr ) {
      describeAll( *file );
   }
   return Detail::defaultTraceFile.exchange( file, std::memory_order_acq_rel );
}

} // namespace Jotter
