#pragma once

// The one trace handle of the egress-ACL interlocks. Which messages go through `duplog`, to the
// text trace and the ring at once, and which to the text trace alone, differs by state machine and
// is kept as it stands.

#include "platform/Jotter/Duplog.h"
#include "platform/Vex/Trace.h"

namespace Velo::EgressAcl {

extern const Vex::TextTrace trace;
extern const Jotter::Duplog duplog;

} // namespace Velo::EgressAcl
