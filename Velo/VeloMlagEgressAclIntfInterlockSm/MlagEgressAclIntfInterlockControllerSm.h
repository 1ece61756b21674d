#pragma once

// The egress-ACL interlock as agents run it: it owns the basic or the peer-coordinated interlock,
// as Mlag::Status::peerInterlock selects, and switches over when that changes. It writes no verdict
// itself; its child does.
//
// Leaving the peer interlock withdraws what that has asked of the peer; leaving the basic one needs
// no such thing. Either way the output stays, and the new child decides all of it again.
//
// Ownership, threading and re-entrancy: interlock-model/StateMachine.h. A switch-over that is set
// off in the middle of another one is made after it.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfPeerInterlockSm.h"
#include "interlock-model/ChildStateMachine.h"

namespace Velo {

class MlagEgressAclIntfInterlockControllerSm final : public InterlockModel::StateMachine {
 public:
   using IntfFeatureStatus = Interface::Interlock::IntfFeatureStatus;

   /// Watches the peerInterlock flag; unlike the other reactors it does not ask whether
   /// notifications are active.
   class VexMlagStatus final
       : public InterlockModel::Reactor< MlagEgressAclIntfInterlockControllerSm, Mlag::Status > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & key ) override;

    private:
      void onNotifier() override;
   };

   /// Creates the controller, which creates its child, and switches its notifications on.
   static Vex::Ptr< MlagEgressAclIntfInterlockControllerSm >
   MlagEgressAclIntfInterlockControllerSmIs(
      Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
      Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
      Vex::Ptr< const Mlag::Status > mlagStatus,
      Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
      Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
      Vex::Ptr< Kel::TaskScheduler > taskScheduler,
      Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus );

   MlagEgressAclIntfInterlockControllerSm(
      Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
      Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
      Vex::Ptr< const Mlag::Status > mlagStatus,
      Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
      Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
      Vex::Ptr< Kel::TaskScheduler > taskScheduler,
      Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus );

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   Vex::Ptr< const Mlag::Status > mlagStatus() const { return mlagStatus_.notifier(); }
   const Vex::Ptr< VexMlagStatus > & vexMlagStatus() const { return mlagStatus_.reactor(); }
   /// The child, if it is the peer interlock; else null.
   const Vex::Ptr< MlagEgressAclIntfPeerInterlockSm > & peerInterlockSm() const {
      return peerInterlockSm_.sm();
   }
   /// The child, if it is the basic interlock; else null.
   const Vex::Ptr< MlagEgressAclIntfInterlockSm > & basicInterlockSm() const {
      return basicInterlockSm_.sm();
   }
   bool initialized() const { return initialized_; }
   void initializedIs( bool initialized ) { initialized_ = initialized; }

   /// Keeps the peer child if it works on these very entities; else creates one that does, in place
   /// of it. The order of the arguments is that of the child, output fourth.
   Vex::Ptr< MlagEgressAclIntfPeerInterlockSm > peerInterlockSmIs(
      const Vex::Ptr< const IntfFeatureStatus > & inIntfFeatureStatus,
      const Vex::Ptr< const Hardware::Lag::Config > & hwLagConfig,
      const Vex::Ptr< const Mlag::Status > & mlagStatus,
      const Vex::Ptr< IntfFeatureStatus > & outIntfFeatureStatus,
      const Vex::Ptr< const Mlag::AclInstallResponse > & aclResponseFromPeer,
      const Vex::Ptr< Mlag::AclInstallRequest > & aclRequestToPeer,
      const Vex::Ptr< Kel::TaskScheduler > & taskScheduler );
   /// Takes the peer child out, its notifications off, and returns it; cleans nothing up.
   [[nodiscard]] Vex::Ptr< MlagEgressAclIntfPeerInterlockSm > peerInterlockSmDel();
   /// The same for the basic child.
   Vex::Ptr< MlagEgressAclIntfInterlockSm > basicInterlockSmIs(
      const Vex::Ptr< const IntfFeatureStatus > & inIntfFeatureStatus,
      const Vex::Ptr< const Hardware::Lag::Config > & hwLagConfig,
      const Vex::Ptr< const Mlag::Status > & mlagStatus,
      const Vex::Ptr< IntfFeatureStatus > & outIntfFeatureStatus );
   [[nodiscard]] Vex::Ptr< MlagEgressAclIntfInterlockSm > basicInterlockSmDel();

   void handleInitialized();
   /// The flag, or the entity that has it, may have changed: afterwards the child that the flag
   /// selects is there, and the other is not.
   void handleFeatureSwitchover();

 private:
   ~MlagEgressAclIntfInterlockControllerSm() override = default;

   void switchOver( const Vex::Ptr< const Mlag::Status > & status );

   // In this order they are switched; the reactor becomes a zombie and goes first, then the peer
   // child, then the basic one.
   Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus_;
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig_;
   InterlockModel::SingleReactor< VexMlagStatus > mlagStatus_{ *this };
   Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer_;
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer_;
   Vex::Ptr< Kel::TaskScheduler > taskScheduler_;
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus_;
   InterlockModel::ChildStateMachine< MlagEgressAclIntfPeerInterlockSm > peerInterlockSm_{ *this };
   InterlockModel::ChildStateMachine< MlagEgressAclIntfInterlockSm > basicInterlockSm_{ *this };
   bool initialized_ = false;
   bool switchoverWanted_ = false;
   bool switchoverUnderWay_ = false;
};

} // namespace Velo
