#pragma once

// Compiled into every file of a mutation build: which of the mutants that were written into the
// sources is the one of this process.
//
// INTERLOCK_MUTANT holds its number; without it, or with 0, the program is the original one.
// INTERLOCK_MUTANT_REACHED names a file, one byte a mutant, in which the places that the process
// comes by are marked at once, so that one that aborts has told as well.

#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Mutation {

struct Choice {
   int mutant = 0;
   unsigned char * reached = nullptr;
   long places = 0;

   Choice() noexcept {
      if ( const char * const number = std::getenv( "INTERLOCK_MUTANT" ) ) {
         mutant = std::atoi( number );
      }
      if ( const char * const path = std::getenv( "INTERLOCK_MUTANT_REACHED" ) ) {
         const int file = ::open( path, O_RDWR );
         struct stat status{};
         if ( file >= 0 && ::fstat( file, &status ) == 0 && status.st_size > 0 ) {
            void * const memory = ::mmap( nullptr, static_cast< std::size_t >( status.st_size ),
                                          PROT_READ | PROT_WRITE, MAP_SHARED, file, 0 );
            reached = memory == MAP_FAILED ? nullptr : static_cast< unsigned char * >( memory );
            places = status.st_size;
         }
         ::close( file );
      }
   }
};

} // namespace Mutation

/// Whether the program behaves as this mutant. Never a constant, so that initializers ask as well.
inline bool mutantIs( int mutant ) noexcept {
   static const Mutation::Choice choice;
   if ( choice.reached != nullptr && mutant < choice.places ) {
      choice.reached[ mutant ] = 1;
   }
   return choice.mutant == mutant;
}

/// A text that is needed while compiling, changed in its first letter before main() starts.
inline bool mutateText( char * text, int mutant ) noexcept {
   if ( mutantIs( mutant ) ) {
      *text = '~';
   }
   return true;
}
