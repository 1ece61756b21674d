#include "platform/Vex/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Vex {

void assertionFailed( const char * expression, const char * file, unsigned line ) noexcept {
   std::fprintf( stderr, "%s:%u: assertion failed: %s\n", file, line, expression );
   std::abort();
}

} // namespace Vex
