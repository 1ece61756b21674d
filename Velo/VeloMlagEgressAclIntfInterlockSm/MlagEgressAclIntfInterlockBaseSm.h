#pragma once

// The common base of the basic and the peer-coordinated egress-ACL interlock. It watches the LAG
// configuration, the MLAG status, the peer link and the status of installed egress ACLs, and turns
// each relevant change into the call of one hook. It decides nothing: verdicts and every write to
// the output belong to the derived classes.
//
// Ownership, threading and re-entrancy: interlock-model/StateMachine.h. The four inputs and outputs
// may be null at construction only; no handler looks for a null one. The peer link alone may be
// absent.

#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Mlag/Status.h"
#include "interlock-model/Reactor.h"
#include "interlock-model/ReactorMembers.h"
#include "interlock-model/StateMachine.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/String.h"

namespace Velo {

class MlagEgressAclIntfInterlockBaseSm : public InterlockModel::StateMachine {
 public:
   using IntfFeature = Interface::Interlock::IntfFeature;
   using IntfFeatureStatus = Interface::Interlock::IntfFeatureStatus;

   // The reactors. Each forwards only while its notifications are active and it is no zombie.

   class VexAclIntfFeatureStatus final
       : public InterlockModel::Reactor< MlagEgressAclIntfInterlockBaseSm, IntfFeatureStatus > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const IntfFeature & feature ) override;
   };

   class VexHwLagConfig final
       : public InterlockModel::Reactor< MlagEgressAclIntfInterlockBaseSm, Hardware::Lag::Config > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override;

    private:
      void onNotifier() override;
   };

   class VexMlagStatus final
       : public InterlockModel::Reactor< MlagEgressAclIntfInterlockBaseSm, Mlag::Status > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override;

    private:
      void onNotifier() override;
   };

   class VexPeerLinkIntf final : public InterlockModel::Reactor< MlagEgressAclIntfInterlockBaseSm,
                                                                 Interface::EthIntfStatus > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Vex::NoKey & key ) override;

    private:
      void onNotifier() override;
      void vex_handlePeerLinkIntf_linkStatus();
   };

   /// Watches the members of one LAG.
   class InitMemSm final : public InterlockModel::Reactor< MlagEgressAclIntfInterlockBaseSm,
                                                           Hardware::Lag::InitialMember > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & member ) override;

    private:
      void vex_handleInitialMemberSm_member( Nodo::IntfId member );
   };

   // What is watched and written. Who goes on after a notification keeps a reference of its own.

   const Vex::Ptr< const IntfFeatureStatus > & aclIntfFeatureStatus() const {
      return aclIntfFeatureStatus_.notifier();
   }
   const Vex::Ptr< const Hardware::Lag::Config > & hwLagConfig() const {
      return hwLagConfig_.notifier();
   }
   const Vex::Ptr< const Mlag::Status > & mlagStatus() const { return mlagStatus_.notifier(); }
   const Vex::Ptr< IntfFeatureStatus > & outIntfFeatureStatus() const {
      return outIntfFeatureStatus_;
   }

   // The reactors themselves; null for an input that was not given.

   const Vex::Ptr< VexAclIntfFeatureStatus > & vexAclIntfFeatureStatus() const {
      return aclIntfFeatureStatus_.reactor();
   }
   const Vex::Ptr< VexHwLagConfig > & vexHwLagConfig() const { return hwLagConfig_.reactor(); }
   const Vex::Ptr< VexMlagStatus > & vexMlagStatus() const { return mlagStatus_.reactor(); }
   const Vex::Ptr< VexPeerLinkIntf > & vexPeerLinkIntf() const { return peerLinkIntf_.reactor(); }
   const Vex::KeyMap< Nodo::IntfId, Vex::Ptr< InitMemSm > > & initialMemberSm() const {
      return initialMemberSm_.reactors();
   }

   /// The trace prefix, for example "MlagEgressAclIntfInterlockSm::".
   const Vex::String & smName() const { return smName_; }

   // The hooks.

   /// Whether the members of `lag` need the egress ACL before they may join.
   virtual bool shouldInstallEgressAcl( Nodo::IntfId lag ) = 0;
   /// Decides one (member, LAG) pair.
   virtual void handleMember( Nodo::IntfId member, Nodo::IntfId lag ) = 0;
   /// The MLAG status of `lag` has changed.
   virtual void handleMlagIntfStatus( Nodo::IntfId lag ) = 0;
   /// Decides every member of `lag`.
   virtual void handleLag( Nodo::IntfId lag );
   /// The MLAG state, the peer link or its link status has changed.
   virtual void handleMlagStateOrPeerlink();

   /// Whether `member` is among the initial members of `lag`.
   bool lagMemberActive( Nodo::IntfId member, Nodo::IntfId lag ) const;
   /// Decides every LAG, by handleLag.
   void handleAllLags();
   /// The input entry `feature` has appeared or gone.
   void handleIntfFeature( const IntfFeature & feature );

   /// Watches `im` under its LAG, in place of what was watched there. Decides nothing. A null
   /// argument is the null-argument error.
   Vex::Ptr< InitMemSm > initialMemberSmIs( Vex::Ptr< const Hardware::Lag::InitialMember > im );
   /// Returns the watcher of `lag`, a zombie now; null when there was none. Decides nothing.
   Vex::Ptr< InitMemSm > initialMemberSmDel( Nodo::IntfId lag );
   void initialMemberSmDelAll();
   /// Watches this peer link, or none.
   void peerLinkIntfIs( Vex::Ptr< const Interface::EthIntfStatus > peerLink );
   void peerLinkIntfDel();

 protected:
   MlagEgressAclIntfInterlockBaseSm( Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
                                     Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
                                     Vex::Ptr< const Mlag::Status > mlagStatus,
                                     Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus );
   ~MlagEgressAclIntfInterlockBaseSm() override;

   void smNameIs( Vex::String smName );

 private:
   // In this order they are switched, turned into zombies and released.
   InterlockModel::SingleReactor< VexAclIntfFeatureStatus > aclIntfFeatureStatus_{ *this };
   InterlockModel::SingleReactor< VexHwLagConfig > hwLagConfig_{ *this };
   InterlockModel::SingleReactor< VexMlagStatus > mlagStatus_{ *this };
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus_;
   Vex::String smName_;
   InterlockModel::KeyedReactors< InitMemSm > initialMemberSm_{ *this, "initialMemberSmIs" };
   InterlockModel::SingleReactor< VexPeerLinkIntf > peerLinkIntf_{ *this };
};

} // namespace Velo
