#pragma once

// Short ways to write interfaces and interlock entries in a test.

#include "interlock-model/Interface/Interlock/IntfFeature.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/String.h"

#include <sstream>

namespace TestSupport {

inline Nodo::IntfId intf( const Vex::String & name ) {
   return Nodo::IntfId( name );
}

inline Interface::Interlock::IntfFeature entry( const Vex::String & member,
                                                const Vex::String & lag ) {
   return { intf( member ), intf( lag ) };
}

/// A value as it streams.
template < class T >
Vex::String text( const T & value ) {
   std::ostringstream out;
   out << std::boolalpha << value;
   return out.str();
}

} // namespace TestSupport
