#pragma once

// The one trace handle of the VLAN-translation interlock, which writes to the text trace only.

#include "platform/Vex/Trace.h"

namespace Velo::VlanXlate {

extern const Vex::TextTrace trace;

} // namespace Velo::VlanXlate
