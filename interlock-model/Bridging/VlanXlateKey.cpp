#include "interlock-model/Bridging/VlanXlateKey.h"

#include <stdexcept>
#include <string>

namespace Bridging {

VlanId::VlanId( std::uint16_t value ) : value_( value ) {
   constexpr std::uint16_t last = 4094; // 0 and 4095 are reserved by IEEE 802.1Q
   if ( value < 1 || value > last ) {
      throw std::out_of_range( "VLAN " + std::to_string( value ) + ": 1 to 4094 wanted" );
   }
}

} // namespace Bridging
