#include "interlock-model/Interface/Interlock/IntfFeature.h"

#include <ostream>

namespace Interface::Interlock {

std::ostream & operator<<( std::ostream & out, const IntfFeature & feature ) {
   return out << '(' << feature.member << ", " << feature.lag << ')';
}

} // namespace Interface::Interlock
