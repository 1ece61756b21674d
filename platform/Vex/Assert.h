#pragma once

// Assertions for programming errors. They stay on in release builds: a switch that runs on a broken
// promise loops frames, a dead agent is restarted. A failed assertion prints the tested expression
// as it is written, the file and the line on standard error, and aborts.

#include "platform/Vex/Export.h"

namespace Vex {

/// Prints "FILE:LINE: assertion failed: EXPRESSION" on standard error and aborts.
[[noreturn]] VEX_EXPORT void assertionFailed( const char * expression,
                                              const char * file,
                                              unsigned line ) noexcept;

namespace Detail {

template < class T >
T & asserted( T & object, const char * expression, const char * file, unsigned line ) noexcept {
   if ( !static_cast< bool >( object ) ) {
      assertionFailed( expression, file, line );
   }
   return object; // NOLINT(bugprone-return-const-ref-from-parameter): no temporary is a T &
}

} // namespace Detail

} // namespace Vex

// A macro, because only the preprocessor can give the text of the tested expression.
#define VEX_ASSERT( ... )                                                                          \
   ( static_cast< bool >( __VA_ARGS__ )                                                            \
        ? static_cast< void >( 0 )                                                                 \
        : ::Vex::assertionFailed( #__VA_ARGS__, __FILE__, __LINE__ ) )
// The same, and then the tested object, where looking for it once more would cost time.
#define VEX_ASSERTED( ... )                                                                        \
   ( ::Vex::Detail::asserted( __VA_ARGS__, #__VA_ARGS__, __FILE__, __LINE__ ) )
