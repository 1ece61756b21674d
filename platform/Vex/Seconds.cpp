#include "platform/Vex/Seconds.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <ostream>
#include <string_view>

namespace Vex {

std::ostream & operator<<( std::ostream & out, Seconds seconds ) {
   // The largest double has 309 digits before the point.
   std::array< char, 328 > text{};
   const int length = std::snprintf( text.data(), text.size(), "%.6f", seconds.value() );
   return out << std::string_view( text.data(), static_cast< std::size_t >( length ) );
}

} // namespace Vex
