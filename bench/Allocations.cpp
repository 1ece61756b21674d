#include "bench/Allocations.h"

#include <cstdlib>
#include <malloc.h>
#include <new>

namespace Bench {

namespace {

// NOLINTBEGIN(cppcoreguidelines-no-malloc): what operator new stands on
// Plain numbers: everything that is measured runs on one thread.
std::uint64_t calls = 0;
std::int64_t live = 0;
bool counting = false;

void * allocate( std::size_t size, std::size_t alignment ) {
   ++calls;
   void * const memory =
      alignment <= alignof( std::max_align_t )
         ? std::malloc( size )
         : std::aligned_alloc( alignment, ( size + alignment - 1 ) / alignment * alignment );
   if ( memory == nullptr ) {
      throw std::bad_alloc();
   }
   if ( counting ) {
      live += static_cast< std::int64_t >( malloc_usable_size( memory ) );
   }
   return memory;
}

void release( void * memory ) noexcept {
   if ( counting && memory != nullptr ) {
      live -= static_cast< std::int64_t >( malloc_usable_size( memory ) );
   }
   std::free( memory );
}

// NOLINTEND(cppcoreguidelines-no-malloc)

} // namespace

std::uint64_t allocations() noexcept {
   return calls;
}

LiveBytes::LiveBytes() noexcept {
   live = 0;
   counting = true;
}

LiveBytes::~LiveBytes() {
   counting = false;
}

std::int64_t LiveBytes::count() noexcept {
   return live;
}

} // namespace Bench

// The other forms of new and delete come back to these.
void * operator new( std::size_t size ) {
   return Bench::allocate( size, 0 );
}
void * operator new( std::size_t size, std::align_val_t alignment ) {
   return Bench::allocate( size, static_cast< std::size_t >( alignment ) );
}
void operator delete( void * memory ) noexcept {
   Bench::release( memory );
}
void operator delete( void * memory, std::size_t /* size */ ) noexcept {
   Bench::release( memory );
}
void operator delete( void * memory, std::align_val_t /* alignment */ ) noexcept {
   Bench::release( memory );
}
void operator delete( void * memory,
                      std::size_t /* size */,
                      std::align_val_t /* alignment */ ) noexcept {
   Bench::release( memory );
}
