#pragma once

// How the tests of the basic egress-ACL interlock start it.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockSm.h"
#include "platform/Vex/Ptr.h"
#include "tests/support/World.h"

namespace Velo {

inline Vex::Ptr< MlagEgressAclIntfInterlockSm > startBasic( const TestSupport::World & world ) {
   return MlagEgressAclIntfInterlockSm::MlagEgressAclIntfInterlockSmIs(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
}

} // namespace Velo
