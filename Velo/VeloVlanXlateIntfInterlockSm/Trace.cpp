#include "Velo/VeloVlanXlateIntfInterlockSm/Trace.h"

namespace Velo::VlanXlate {

const Vex::TextTrace trace( "VeloVlanXlateIntfInterlockSm", "Velo/VeloVlanXlateIntfInterlockSm" );

} // namespace Velo::VlanXlate
