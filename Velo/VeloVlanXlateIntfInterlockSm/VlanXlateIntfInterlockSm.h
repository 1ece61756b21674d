#pragma once

// The VLAN-translation interlock. A member joins at once when its LAG has no VLAN translation
// configured, and otherwise once the input status carries its (member, LAG) pair. It keeps no
// state: the output is its only effect.
//
// Ownership, threading and re-entrancy: interlock-model/StateMachine.h. The four inputs and outputs
// may be null at construction only; no handler looks for a null one.

#include "interlock-model/Bridging/Config.h"
#include "interlock-model/Bridging/SwitchIntfConfig.h"
#include "interlock-model/Bridging/VlanXlateKey.h"
#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Reactor.h"
#include "interlock-model/ReactorMembers.h"
#include "interlock-model/StateMachine.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Ptr.h"

namespace Velo {

class VlanXlateIntfInterlockSm final : public InterlockModel::StateMachine {
 public:
   using IntfFeature = Interface::Interlock::IntfFeature;
   using IntfFeatureStatus = Interface::Interlock::IntfFeatureStatus;

   // The reactors. Their guards are not those of the egress-ACL interlocks, and that is meant: no
   // handler is called for a zombie, but the two that keep the collections go on keeping them as
   // long as they have a notifier and an owner; whether notifications are active is not asked.

   class VexInIntfFeatureStatus final
       : public InterlockModel::Reactor< VlanXlateIntfInterlockSm, IntfFeatureStatus > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const IntfFeature & intfFeature ) override;
   };

   class VexHwLagConfig final
       : public InterlockModel::Reactor< VlanXlateIntfInterlockSm, Hardware::Lag::Config > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override;

    private:
      void onNotifier() override;
   };

   class VexBridgingConfig final
       : public InterlockModel::Reactor< VlanXlateIntfInterlockSm, Bridging::Config > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & intf ) override;

    private:
      void onNotifier() override;
   };

   /// Watches the members of one LAG.
   class VexInitialMemberSm final
       : public InterlockModel::Reactor< VlanXlateIntfInterlockSm, Hardware::Lag::InitialMember > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & member ) override;

    private:
      void vex_handleInitialMemberSm_member( Nodo::IntfId member );
   };

   /// Watches the translation mappings of one interface.
   class VexSwitchIntfConfigSm final
       : public InterlockModel::Reactor< VlanXlateIntfInterlockSm, Bridging::SwitchIntfConfig > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Bridging::VlanXlateKey & key ) override;

    private:
      void vex_handleSwitchIntfConfigSm_ingressVlanXlate( Bridging::VlanXlateKey key );
      void vex_handleSwitchIntfConfigSm_egressVlanXlate( Bridging::VlanXlateKey key );
   };

   /// Creates the state machine, which makes a full pass, and switches its notifications on.
   static Vex::Ptr< VlanXlateIntfInterlockSm > VlanXlateIntfInterlockSmIs(
      Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
      Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
      Vex::Ptr< const Bridging::Config > bridgingConfig,
      Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus );

   VlanXlateIntfInterlockSm( Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
                             Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
                             Vex::Ptr< const Bridging::Config > bridgingConfig,
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
   const Vex::Ptr< const Bridging::Config > & bridgingConfig() const {
      return bridgingConfig_.notifier();
   }
   const Vex::Ptr< IntfFeatureStatus > & outIntfFeatureStatus() const {
      return outIntfFeatureStatus_;
   }

   // The reactors themselves; null for an input that was not given.

   const Vex::Ptr< VexInIntfFeatureStatus > & vexInIntfFeatureStatus() const {
      return inIntfFeatureStatus_.reactor();
   }
   const Vex::Ptr< VexHwLagConfig > & vexHwLagConfig() const { return hwLagConfig_.reactor(); }
   const Vex::Ptr< VexBridgingConfig > & vexBridgingConfig() const {
      return bridgingConfig_.reactor();
   }
   const Vex::KeyMap< Nodo::IntfId, Vex::Ptr< VexInitialMemberSm > > & initialMemberSm() const {
      return initialMemberSm_.reactors();
   }
   const Vex::KeyMap< Nodo::IntfId, Vex::Ptr< VexSwitchIntfConfigSm > > & switchIntfConfigSm()
      const {
      return switchIntfConfigSm_.reactors();
   }

   // Collection mutators. None runs a handler or writes to the output. The setters watch the entity
   // under its own key, in place of what was watched there, and switch its notifications on; a null
   // argument is the null-argument error. The deleters return the reactor, a zombie now, or null.

   Vex::Ptr< VexInitialMemberSm > initialMemberSmIs(
      Vex::Ptr< const Hardware::Lag::InitialMember > initialMember );
   Vex::Ptr< VexInitialMemberSm > initialMemberSmDel( Nodo::IntfId lagIntfId );
   void initialMemberSmDelAll();
   Vex::Ptr< VexSwitchIntfConfigSm > switchIntfConfigSmIs(
      Vex::Ptr< const Bridging::SwitchIntfConfig > switchIntfConfig );
   Vex::Ptr< VexSwitchIntfConfigSm > switchIntfConfigSmDel( Nodo::IntfId intfId );
   void switchIntfConfigSmDelAll();

   // Decisions and handlers.

   /// Whether the member is in the LAG's initial-member set.
   bool lagMemberActive( Nodo::IntfId memberIntf, Nodo::IntfId lagIntfId ) const;
   /// Whether the LAG itself (no member port) has any translation mapping.
   bool needsVlanXlateProgramming( Nodo::IntfId lagIntfId ) const;
   /// Decides one pair, given whether the member is active: the only writer of the output.
   void updateIntfFeature( Nodo::IntfId memberIntf, Nodo::IntfId lagIntfId, bool active );
   void handleMember( Nodo::IntfId memberIntf, Nodo::IntfId lagIntfId );
   /// The interface's translation has changed: decides every member of the LAG of that name.
   void handleIntfConfig( Nodo::IntfId intfId );
   /// The input entry has appeared or gone.
   void handleIntfFeature( const IntfFeature & intfFeature );
   /// The full pass: what an earlier owner left in the output, then every member of every LAG.
   void handleInitialized();

 private:
   ~VlanXlateIntfInterlockSm() override = default;

   // In this order they are switched, turned into zombies and detached.
   InterlockModel::SingleReactor< VexInIntfFeatureStatus > inIntfFeatureStatus_{ *this };
   InterlockModel::SingleReactor< VexHwLagConfig > hwLagConfig_{ *this };
   InterlockModel::SingleReactor< VexBridgingConfig > bridgingConfig_{ *this };
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus_;
   InterlockModel::KeyedReactors< VexInitialMemberSm > initialMemberSm_{
      *this, "initialMemberSmIs", InterlockModel::Repointing::switchesNotificationsOn };
   InterlockModel::KeyedReactors< VexSwitchIntfConfigSm > switchIntfConfigSm_{
      *this, "switchIntfConfigSmIs", InterlockModel::Repointing::switchesNotificationsOn };
};

} // namespace Velo
