#pragma once

// The basic egress-ACL interlock: local only. A member joins at once when its LAG needs no egress
// ACL, and otherwise once the ACL of this (member, LAG) is reported installed. It keeps no state:
// every verdict is computed from the inputs, and the output is its only effect.
//
// Ownership, threading and re-entrancy: interlock-model/StateMachine.h.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockBaseSm.h"

namespace Velo {

class MlagEgressAclIntfInterlockSm final : public MlagEgressAclIntfInterlockBaseSm {
 public:
   /// Creates the state machine, which makes a full pass, and switches its notifications on.
   static Vex::Ptr< MlagEgressAclIntfInterlockSm > MlagEgressAclIntfInterlockSmIs(
      Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
      Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
      Vex::Ptr< const Mlag::Status > mlagStatus,
      Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus );

   MlagEgressAclIntfInterlockSm( Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
                                 Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
                                 Vex::Ptr< const Mlag::Status > mlagStatus,
                                 Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus );

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   /// True when MLAG is active, the peer link is there and up, and `lag` is an MLAG interface that
   /// is active on the peer.
   bool shouldInstallEgressAcl( Nodo::IntfId lag ) override;
   /// Marked for deletion, it decides nothing.
   void handleMember( Nodo::IntfId member, Nodo::IntfId lag ) override;
   void handleMlagIntfStatus( Nodo::IntfId lag ) override;
   void handleMlagStateOrPeerlink() override;
   /// The full pass: what an earlier owner left in the output, then every LAG.
   void handleInitialized();

 private:
   ~MlagEgressAclIntfInterlockSm() override = default;
};

} // namespace Velo
