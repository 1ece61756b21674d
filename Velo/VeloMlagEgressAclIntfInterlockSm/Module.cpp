// What the egress-ACL interlocks register with the framework, and their exported factories.

#include "platform/Vex/Module.h"

#include "Velo/VeloIntfInterlock.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedMlagEgressAclIntfInterlockSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/LinkState.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockControllerSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfPeerInterlockSm.h"

#include <utility>

namespace Velo {

namespace {

using Basic = MlagEgressAclIntfInterlockSm;
using Peer = MlagEgressAclIntfPeerInterlockSm;
using Controller = MlagEgressAclIntfInterlockControllerSm;
using Deprecated = DeprecatedMlagEgressAclIntfInterlockSm;

const Vex::Module egressAclModule(
   "VeloMlagEgressAclIntfInterlockSm",
   { Vex::stateMachineType( "MlagEgressAclIntfInterlockSm",
                            &Basic::MlagEgressAclIntfInterlockSmIs ),
     Vex::stateMachineType( "MlagEgressAclIntfPeerInterlockSm",
                            &Peer::MlagEgressAclIntfPeerInterlockSmIs ),
     Vex::stateMachineType( "MlagEgressAclIntfInterlockControllerSm",
                            &Controller::MlagEgressAclIntfInterlockControllerSmIs ),
     Vex::stateMachineType( "DeprecatedMlagEgressAclIntfInterlockSm",
                            &Deprecated::DeprecatedMlagEgressAclIntfInterlockSmIs ) },
   { &Vex::enumTypeOf< LinkState > } );

} // namespace

Vex::Ptr< InterlockModel::StateMachine > mlagEgressAclIntfInterlockControllerSmFactory(
   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
   Vex::Ptr< Kel::TaskScheduler > taskScheduler,
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > outIntfFeatureStatus ) {
   return Controller::MlagEgressAclIntfInterlockControllerSmIs(
      std::move( inIntfFeatureStatus ), std::move( hwLagConfig ), std::move( mlagStatus ),
      std::move( aclResponseFromPeer ), std::move( aclRequestToPeer ), std::move( taskScheduler ),
      std::move( outIntfFeatureStatus ) );
}

Vex::Ptr< InterlockModel::StateMachine > mlagEgressAclIntfInterlockSmFactory(
   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > aclIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > outIntfFeatureStatus ) {
   return Basic::MlagEgressAclIntfInterlockSmIs( std::move( aclIntfFeatureStatus ),
                                                 std::move( hwLagConfig ), std::move( mlagStatus ),
                                                 std::move( outIntfFeatureStatus ) );
}

Vex::Ptr< InterlockModel::StateMachine > deprecatedMlagEgressAclIntfInterlockSmFactory(
   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > outIntfFeatureStatus ) {
   return Deprecated::DeprecatedMlagEgressAclIntfInterlockSmIs(
      std::move( inIntfFeatureStatus ), std::move( hwLagConfig ), std::move( mlagStatus ),
      std::move( outIntfFeatureStatus ) );
}

} // namespace Velo
