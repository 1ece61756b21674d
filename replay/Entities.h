#pragma once

#include "interlock-model/Bridging/Config.h"
#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Mlag/AclInstallRequest.h"
#include "interlock-model/Mlag/AclInstallResponse.h"
#include "interlock-model/Mlag/Status.h"
#include "platform/Kel/TaskScheduler.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Ptr.h"
#include "replay/Interlocks.h"

#include <utility>

namespace Replay {

/// The data model of one switch, in memory: what its agents publish to each other, and the
/// scheduler of the agent that runs the interlocks.
struct Entities {
   using IntfFeatureStatus = Interface::Interlock::IntfFeatureStatus;

   explicit Entities( Vex::Ptr< Kel::TaskScheduler > taskScheduler )
       : scheduler( std::move( taskScheduler ) ) {}

   Vex::Ptr< Kel::TaskScheduler > scheduler;
   Vex::Ptr< Hardware::Lag::Config > hwLagConfig = Vex::make< Hardware::Lag::Config >();
   Vex::Ptr< Mlag::Status > mlagStatus = Vex::make< Mlag::Status >();
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer = Vex::make< Mlag::AclInstallRequest >();
   Vex::Ptr< Mlag::AclInstallResponse > aclResponseFromPeer =
      Vex::make< Mlag::AclInstallResponse >();
   Vex::Ptr< Bridging::Config > bridgingConfig = Vex::make< Bridging::Config >();
   Vex::Ptr< IntfFeatureStatus > aclInput = Vex::make< IntfFeatureStatus >();
   Vex::Ptr< IntfFeatureStatus > egressAclOutput = Vex::make< IntfFeatureStatus >();
   Vex::Ptr< IntfFeatureStatus > vlanInput = Vex::make< IntfFeatureStatus >();
   Vex::Ptr< IntfFeatureStatus > vlanOutput = Vex::make< IntfFeatureStatus >();
   Vex::KeyMap< Nodo::IntfId, Vex::Ptr< Interface::EthIntfStatus > > ethIntfStatus;

   const Vex::Ptr< IntfFeatureStatus > & input( Interlock interlock ) const noexcept {
      return interlock == Interlock::egressAcl ? aclInput : vlanInput;
   }
   const Vex::Ptr< IntfFeatureStatus > & output( Interlock interlock ) const noexcept {
      return interlock == Interlock::egressAcl ? egressAclOutput : vlanOutput;
   }
};

} // namespace Replay
