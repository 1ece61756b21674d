#include "tests/platform/Memory.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::uint64_t unlimited = std::numeric_limits< std::uint64_t >::max();

std::uint64_t requested = 0;
std::uint64_t left = unlimited;
std::uint64_t given = 0;
std::uint64_t takenBack = 0;

void * request( std::size_t size, std::size_t alignment ) noexcept {
   ++requested;
   if ( left == 0 ) {
      return nullptr;
   }
   if ( left != unlimited ) {
      --left;
   }
   const std::size_t rounded = ( size + alignment - 1 ) / alignment * alignment;
   ++given;
   return std::aligned_alloc( alignment, rounded == 0 ? alignment : rounded );
}

void takeBack( void * memory ) noexcept {
   takenBack += memory != nullptr ? 1U : 0U;
   std::free( memory );
}

void * requestOrThrow( std::size_t size, std::size_t alignment ) {
   void * const memory = request( size, alignment );
   if ( memory == nullptr ) {
      throw std::bad_alloc();
   }
   return memory;
}

constexpr std::size_t usual = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

} // namespace

namespace Memory {

std::uint64_t requests() noexcept {
   return requested;
}

std::uint64_t held() noexcept {
   return given - takenBack;
}

RunsOut::RunsOut( std::uint64_t granted ) noexcept {
   left = granted;
}

RunsOut::~RunsOut() {
   left = unlimited;
}

} // namespace Memory

// All of them: what one has given, another may take back.
void * operator new( std::size_t size ) {
   return requestOrThrow( size, usual );
}
void * operator new[]( std::size_t size ) {
   return requestOrThrow( size, usual );
}
void * operator new( std::size_t size, std::align_val_t alignment ) {
   return requestOrThrow( size, static_cast< std::size_t >( alignment ) );
}
void * operator new[]( std::size_t size, std::align_val_t alignment ) {
   return requestOrThrow( size, static_cast< std::size_t >( alignment ) );
}
void * operator new( std::size_t size, const std::nothrow_t & ) noexcept {
   return request( size, usual );
}
void * operator new[]( std::size_t size, const std::nothrow_t & ) noexcept {
   return request( size, usual );
}
void operator delete( void * memory ) noexcept {
   takeBack( memory );
}
void operator delete[]( void * memory ) noexcept {
   takeBack( memory );
}
void operator delete( void * memory, std::size_t ) noexcept {
   takeBack( memory );
}
void operator delete[]( void * memory, std::size_t ) noexcept {
   takeBack( memory );
}
void operator delete( void * memory, std::align_val_t ) noexcept {
   takeBack( memory );
}
void operator delete[]( void * memory, std::align_val_t ) noexcept {
   takeBack( memory );
}
void operator delete( void * memory, std::size_t, std::align_val_t ) noexcept {
   takeBack( memory );
}
void operator delete[]( void * memory, std::size_t, std::align_val_t ) noexcept {
   takeBack( memory );
}
void operator delete( void * memory, const std::nothrow_t & ) noexcept {
   takeBack( memory );
}
void operator delete[]( void * memory, const std::nothrow_t & ) noexcept {
   takeBack( memory );
}
