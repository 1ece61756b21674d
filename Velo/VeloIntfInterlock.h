#pragma once

// The interlocks, for the agents that run them. An interlock decides member port by member port
// whether it may join its LAG now, and writes its verdicts into an output status: an entry (member,
// LAG) there admits the member, absence holds it out.
//
//    auto interlock = Velo::mlagEgressAclIntfInterlockSmFactory( aclStatus, lagConfig, mlagStatus,
//                                                                output );
//    ...                        // entities change, verdicts follow
//    interlock.release();       // stops; the entries of the output stay as they are
//
// Ownership: the caller holds the interlock by the reference that a factory returns; the interlock
// holds its inputs read-only and its output writable. All of them are given: an interlock cannot
// work without one of its entities.
// Threading: everything runs on the caller's one thread, inside the mutators of the entities and,
// for time-outs, inside Kel::TaskScheduler::runDue().
// Start: a factory makes a full pass over the inputs as they stand, so that the output agrees with
// them when it returns; what an earlier owner left in the output is decided again.
// Re-entrancy: whoever is notified of a verdict may change any entity and may drop the interlock.

#include "interlock-model/Bridging/Config.h"
#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Mlag/AclInstallRequest.h"
#include "interlock-model/Mlag/AclInstallResponse.h"
#include "interlock-model/Mlag/Status.h"
#include "interlock-model/StateMachine.h"
#include "platform/Kel/TaskScheduler.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/Ptr.h"

namespace Velo {

/// The egress-ACL interlock as normally run: the basic or the peer-coordinated one, as
/// Mlag::Status::peerInterlock selects, also when that changes. The peer-coordinated one admits the
/// members of an MLAG LAG once the peer has answered this switch's request (written to
/// `aclRequestToPeer`, answered in `aclResponseFromPeer` with the same token) and the local egress
/// ACL is reported installed, if one is needed; when the peer has not answered within 0.1 s,
/// without either. `taskScheduler` runs that time-out; it does not own a thread: the agent drives
/// it.
VEX_EXPORT Vex::Ptr< InterlockModel::StateMachine > mlagEgressAclIntfInterlockControllerSmFactory(
   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
   Vex::Ptr< Kel::TaskScheduler > taskScheduler,
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > outIntfFeatureStatus );

/// The basic egress-ACL interlock: a member of an MLAG LAG is admitted once `aclIntfFeatureStatus`
/// reports its egress ACL installed, and any member at once when no ACL is needed.
VEX_EXPORT Vex::Ptr< InterlockModel::StateMachine > mlagEgressAclIntfInterlockSmFactory(
   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > aclIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > outIntfFeatureStatus );

/// The older form of the basic egress-ACL interlock, for agents that still run it. It decides
/// alike; but a whole input entity that is replaced is recorded and decides nothing.
VEX_EXPORT Vex::Ptr< InterlockModel::StateMachine > deprecatedMlagEgressAclIntfInterlockSmFactory(
   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > outIntfFeatureStatus );

/// The VLAN-translation interlock: a member of a LAG that has translation mappings is admitted once
/// `inIntfFeatureStatus` carries its pair, any other member at once.
VEX_EXPORT Vex::Ptr< InterlockModel::StateMachine > vlanXlateIntfInterlockSmFactory(
   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Bridging::Config > bridgingConfig,
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > outIntfFeatureStatus );

} // namespace Velo
