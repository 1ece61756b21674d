#pragma once

// The deprecated egress-ACL interlock: the older, self-contained form of the basic one, kept for
// agents that run it. It decides by the same conditions, and differs in what it traces, in what its
// reactors do while notifications are inactive, and in this: an input entity that is replaced as a
// whole is recorded and decides nothing.
//
// Ownership, threading and re-entrancy: interlock-model/StateMachine.h. The four inputs and outputs
// may be null at construction only; no handler looks for a null one.

#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Mlag/Status.h"
#include "interlock-model/Reactor.h"
#include "interlock-model/ReactorMembers.h"
#include "interlock-model/StateMachine.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Ptr.h"

namespace Velo {

class DeprecatedMlagEgressAclIntfInterlockSm final : public InterlockModel::StateMachine {
 public:
   using IntfFeature = Interface::Interlock::IntfFeature;
   using IntfFeatureStatus = Interface::Interlock::IntfFeatureStatus;

   // The reactors. While its notifications are inactive a reactor calls no handler, but keeps its
   // books: VexHwLagConfig the member reactors, VexMlagStatus the peer-link reactor. A zombie does
   // neither. A new notifier is recorded and decides nothing.

   class VexInIntfFeatureStatus final
       : public InterlockModel::Reactor< DeprecatedMlagEgressAclIntfInterlockSm,
                                         IntfFeatureStatus > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const IntfFeature & intfFeature ) override;
   };

   class VexHwLagConfig final
       : public InterlockModel::Reactor< DeprecatedMlagEgressAclIntfInterlockSm,
                                         Hardware::Lag::Config > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override;
   };

   class VexMlagStatus final
       : public InterlockModel::Reactor< DeprecatedMlagEgressAclIntfInterlockSm, Mlag::Status > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & intf ) override;
   };

   /// Watches the members of one LAG.
   class VexInitialMemberSm final
       : public InterlockModel::Reactor< DeprecatedMlagEgressAclIntfInterlockSm,
                                         Hardware::Lag::InitialMember > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & member ) override;

    private:
      void vex_handleInitialMemberSm_member( Nodo::IntfId member );
   };

   class VexPeerLinkIntf final
       : public InterlockModel::Reactor< DeprecatedMlagEgressAclIntfInterlockSm,
                                         Interface::EthIntfStatus > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Vex::NoKey & key ) override;

    private:
      void vex_handlePeerLinkIntf_linkStatus();
   };

   /// Creates the state machine, which makes a full pass, and switches its notifications on.
   static Vex::Ptr< DeprecatedMlagEgressAclIntfInterlockSm >
   DeprecatedMlagEgressAclIntfInterlockSmIs(
      Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
      Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
      Vex::Ptr< const Mlag::Status > mlagStatus,
      Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus );

   DeprecatedMlagEgressAclIntfInterlockSm( Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
                                           Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
                                           Vex::Ptr< const Mlag::Status > mlagStatus,
                                           Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus );

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   // What is watched and written. Who goes on after a notification keeps a reference of its own.

   const Vex::Ptr< const IntfFeatureStatus > & inIntfFeatureStatus() const {
      return inIntfFeatureStatus_.notifier();
   }
   const Vex::Ptr< const Hardware::Lag::Config > & hwLagConfig() const {
      return hwLagConfig_.notifier();
   }
   const Vex::Ptr< const Mlag::Status > & mlagStatus() const { return mlagStatus_.notifier(); }
   const Vex::Ptr< IntfFeatureStatus > & outIntfFeatureStatus() const {
      return outIntfFeatureStatus_;
   }

   // The reactors themselves; null for what is not watched.

   const Vex::Ptr< VexInIntfFeatureStatus > & vexInIntfFeatureStatus() const {
      return inIntfFeatureStatus_.reactor();
   }
   const Vex::Ptr< VexHwLagConfig > & vexHwLagConfig() const { return hwLagConfig_.reactor(); }
   const Vex::Ptr< VexMlagStatus > & vexMlagStatus() const { return mlagStatus_.reactor(); }
   const Vex::Ptr< VexPeerLinkIntf > & vexPeerLinkIntf() const { return peerLinkIntf_.reactor(); }
   const Vex::KeyMap< Nodo::IntfId, Vex::Ptr< VexInitialMemberSm > > & initialMemberSm() const {
      return initialMemberSm_.reactors();
   }

   // Mutators. None evaluates any member.

   /// Watches the entity under its LAG, in place of what was watched there. A null argument is the
   /// null-argument error.
   Vex::Ptr< VexInitialMemberSm > initialMemberSmIs(
      Vex::Ptr< const Hardware::Lag::InitialMember > initialMember );
   /// Returns the LAG's reactor, a zombie now; null when there was none.
   Vex::Ptr< VexInitialMemberSm > initialMemberSmDel( Nodo::IntfId lag );
   void initialMemberSmDelAll();
   /// Watches this peer link; without one, there is no reactor.
   void peerLinkIntfIs( Vex::Ptr< const Interface::EthIntfStatus > peerLink );
   void peerLinkIntfDel();

   // Decisions and handlers.

   /// True when MLAG is active, the peer link is there and up, and `lag` is an MLAG interface that
   /// is active on the peer.
   bool shouldInstallEgressAcl( Nodo::IntfId lag ) const;
   /// Whether `member` is among the initial members of `lag`.
   bool lagMemberActive( Nodo::IntfId member, Nodo::IntfId lag ) const;
   /// Decides one pair: the only writer of the output.
   void handleMember( Nodo::IntfId member, Nodo::IntfId lag );
   /// The input entry has appeared or gone.
   void handleIntfFeature( const IntfFeature & intfFeature );
   /// The MLAG status of `intf` has changed.
   void handleMlagIntfStatus( Nodo::IntfId intf );
   /// Decides every member of every LAG.
   void handleAllLags();
   /// The MLAG state, the peer link or its link status has changed.
   void handleMlagStateOrPeerlink();
   /// The full pass: what an earlier owner left in the output, then every LAG.
   void handleInitialized();

 private:
   ~DeprecatedMlagEgressAclIntfInterlockSm() override = default;

   // In this order they are switched, turned into zombies and released.
   InterlockModel::SingleReactor< VexInIntfFeatureStatus > inIntfFeatureStatus_{ *this };
   InterlockModel::SingleReactor< VexHwLagConfig > hwLagConfig_{ *this };
   InterlockModel::SingleReactor< VexMlagStatus > mlagStatus_{ *this };
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus_;
   InterlockModel::KeyedReactors< VexInitialMemberSm > initialMemberSm_{ *this,
                                                                         "initialMemberSmIs" };
   InterlockModel::SingleReactor< VexPeerLinkIntf > peerLinkIntf_{ *this };
};

} // namespace Velo
