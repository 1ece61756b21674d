#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"

namespace Velo::EgressAcl {

const Vex::TextTrace trace( "VeloMlagEgressAclIntfInterlockSm",
                            "Velo/VeloMlagEgressAclIntfInterlockSm" );
const Jotter::Duplog duplog( trace );

} // namespace Velo::EgressAcl
