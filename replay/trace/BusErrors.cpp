#include "replay/trace/BusErrors.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace TraceTool {

namespace {

// What is being read, for the handler. It runs on the thread that reads, in the middle of it.
struct Reading {
   std::byte * begin;
   std::size_t size;
   std::size_t pageSize;
   volatile std::sig_atomic_t failed;
};
Reading reading{};

void onBusError( int /* signal */, siginfo_t * info, void * /* context */ ) {
   const std::uintptr_t offset = reinterpret_cast< std::uintptr_t >( info->si_addr ) -
                                 reinterpret_cast< std::uintptr_t >( reading.begin );
   if ( offset < reading.size ) {
      const int error = errno;
      void * const zeros =
         mmap( reading.begin + ( offset & ~( reading.pageSize - 1 ) ), reading.pageSize, PROT_READ,
               MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0 );
      errno = error;
      if ( zeros != MAP_FAILED ) {
         reading.failed = 1;
         return; // what was being read is read once more
      }
   }
   static_cast< void >( std::signal( SIGBUS, SIG_DFL ) ); // ends the program as it happens again
}

class Handler {
 public:
   Handler() {
      struct sigaction action{};
      action.sa_sigaction = onBusError;
      action.sa_flags = SA_SIGINFO;
      if ( sigaction( SIGBUS, &action, &before_ ) != 0 ) {
         throw std::system_error( errno, std::generic_category(), "SIGBUS" );
      }
   }
   Handler( const Handler & ) = delete;
   Handler & operator=( const Handler & ) = delete;
   Handler( Handler && ) = delete;
   Handler & operator=( Handler && ) = delete;
   ~Handler() { sigaction( SIGBUS, &before_, nullptr ); }

 private:
   struct sigaction before_{};
};

} // namespace

bool readMapped( std::span< std::byte > mapping, const std::function< void() > & read ) {
   reading.begin = mapping.data();
   reading.size = mapping.size();
   reading.pageSize = static_cast< std::size_t >( sysconf( _SC_PAGESIZE ) );
   reading.failed = 0;
   const Handler handler;
   read();
   return reading.failed == 0;
}

} // namespace TraceTool
