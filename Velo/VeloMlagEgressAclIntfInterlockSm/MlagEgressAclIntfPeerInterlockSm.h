#pragma once

// The peer-coordinated egress-ACL interlock. Before the members of an MLAG LAG may join it, both
// switches of the MLAG pair must have installed the egress ACL: this one asks its peer with an
// install request, waits for the response that carries the same token, at most `delay` seconds, and
// then reads the local status. When the peer does not answer in time, members join without it.
//
// Four concerns, four sources: the link state of each LAG (...LinkState.cpp, table in
// LinkStateTable.h), the exchange with the peer (...Exchange.cpp), the time-outs (...Timeout.cpp),
// and the admission of members with construction and the start-up pass (...Admission.cpp).
//
// Ownership, threading and re-entrancy: interlock-model/StateMachine.h. The time-outs run on the
// scheduler's thread, which is that of the inputs. Only a controller creates it; before that drops
// it, it calls doCleanup(), and from then on, marked for deletion, a handler that was under way
// writes nothing more.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/LinkState.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/LinkStateTable.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockBaseSm.h"
#include "interlock-model/Mlag/AclInstallRequest.h"
#include "interlock-model/Mlag/AclInstallResponse.h"
#include "platform/Kel/Deadlines.h"
#include "platform/Kel/TaskPriority.h"
#include "platform/Kel/TaskScheduler.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Seconds.h"

#include <cstdint>

namespace Velo {

class MlagEgressAclIntfPeerInterlockSm final : public MlagEgressAclIntfInterlockBaseSm {
 public:
   using LinkState = Velo::LinkState;

   /// How long a LAG may stay linkRequesting before it fails.
   static constexpr Vex::Seconds delay{ 0.1 };

   class VexAclResponseFromPeer final
       : public InterlockModel::Reactor< MlagEgressAclIntfPeerInterlockSm,
                                         Mlag::AclInstallResponse > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override;
   };

   /// Watches the one timer task over all LAGs, and holds it.
   class VexTask final
       : public InterlockModel::Reactor< MlagEgressAclIntfPeerInterlockSm, Kel::TimerTask > {
    public:
      using Reactor::Reactor;
      void onAttribute( Attribute attribute, const Vex::NoKey & key ) override;
   };

   /// Creates the state machine, which makes a full pass, and switches its notifications on.
   static Vex::Ptr< MlagEgressAclIntfPeerInterlockSm > MlagEgressAclIntfPeerInterlockSmIs(
      Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
      Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
      Vex::Ptr< const Mlag::Status > mlagStatus,
      Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus,
      Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
      Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
      Vex::Ptr< Kel::TaskScheduler > taskScheduler );

   MlagEgressAclIntfPeerInterlockSm( Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
                                     Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
                                     Vex::Ptr< const Mlag::Status > mlagStatus,
                                     Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus,
                                     Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
                                     Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
                                     Vex::Ptr< Kel::TaskScheduler > taskScheduler );

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   const Vex::Ptr< const Mlag::AclInstallResponse > & aclResponseFromPeer() const {
      return aclResponseFromPeer_.notifier();
   }
   const Vex::Ptr< Mlag::AclInstallRequest > & aclRequestToPeer() const {
      return aclRequestToPeer_;
   }
   const Vex::Ptr< Kel::TaskScheduler > & scheduler() const { return scheduler_; }
   const Vex::Ptr< VexAclResponseFromPeer > & vexAclResponseFromPeer() const {
      return aclResponseFromPeer_.reactor();
   }
   bool initialized() const { return initialized_; }
   void initializedIs( bool initialized ) { initialized_ = initialized; }

   // Link states.

   const Vex::KeyMap< Nodo::IntfId, LinkState > & linkState() const { return linkState_; }
   /// linkDown for a LAG without entry.
   LinkState linkState( Nodo::IntfId lag ) const { return linkState_.get( lag ); }
   /// Stores the state and runs handleLinkState; a no-op when the LAG has an entry with this state.
   void linkStateIs( Nodo::IntfId lag, LinkState state );
   /// Removes the entry and runs handleLinkState; a no-op when there is none.
   void linkStateDel( Nodo::IntfId lag );
   void linkStateDelAll();
   /// Computes and stores the next state. Asserts that the MLAG status has an entry for the LAG.
   void updateLinkState( Nodo::IntfId lag );
   /// Starts or stops the LAG's time-out.
   void handleLinkState( Nodo::IntfId lag );

   // The exchange with the peer.

   /// The token of the latest request; wraps from 2^32 - 1 to 0, which reads as no request.
   std::uint32_t watermark() const { return watermark_; }
   void watermarkIs( std::uint32_t value ) { watermark_ = value; }
   /// Adds `amount` modulo 2^32 and returns the new value.
   std::uint32_t watermarkInc( std::uint32_t amount ) { return watermark_ += amount; }
   /// Issues, keeps or revokes the LAG's install request, then brings its link state up to date.
   void handlePeerInterlockLag( Nodo::IntfId lag );
   /// The LAG's install response has come, changed or gone.
   void handlePeerResponse( Nodo::IntfId lag );

   // Time-outs.

   /// Deadlines on the framework's clock.
   const Kel::Deadlines & timer() const { return timer_; }
   /// The LAG for whose deadline the task is armed; the empty identifier: for none.
   Nodo::IntfId activeLag() const { return activeLag_; }
   /// The task; null when there is none.
   Vex::Ptr< const Kel::TimerTask > task() const { return vexTask_.notifier(); }
   /// Stores the deadline and runs handleTimer; a no-op when it is the LAG's deadline already.
   void timerIs( Nodo::IntfId lag, Vex::Seconds deadline );
   /// Removes the deadline and runs handleTimer; a no-op when there is none.
   void timerDel( Nodo::IntfId lag );
   void timerDelAll();
   void taskIs( const Vex::Ptr< Kel::TaskScheduler > & scheduler,
                Kel::TaskPriority priority,
                const Vex::String & name );
   void taskDel();
   void handleTimer( Nodo::IntfId lag );
   /// Re-arms the task for the earliest deadline.
   void resetTimer();
   /// The task has run: the LAG that it was armed for fails.
   void handleTimeout();
   /// Withdraws every request and forgets every link state and deadline; the output stays. What is
   /// notified meanwhile is not acted upon.
   void doCleanup();

   // Admission.

   /// Whether the LAG is active on the peer. Asserts that it is an MLAG interface.
   bool shouldInstallEgressAcl( Nodo::IntfId lag ) override;
   void handleMember( Nodo::IntfId member, Nodo::IntfId lag ) override;
   void handleLag( Nodo::IntfId lag ) override;
   /// Revokes the LAG's request and removes its entries from the output. Asserts that it has no
   /// members.
   void handleLagInactive( Nodo::IntfId lag );
   void handleMlagIntfStatus( Nodo::IntfId mlagIntf ) override;
   /// The start-up pass.
   void handleInitialized();

 private:
   ~MlagEgressAclIntfPeerInterlockSm() override = default;

   /// The LAG's InitialMember has members.
   bool lagActive( Nodo::IntfId lag ) const;
   bool isMlagIntf( Nodo::IntfId lag ) const;
   /// Whether the peer has answered the LAG's current request.
   bool matched( Nodo::IntfId lag ) const;
   /// What updateLinkState finds.
   LinkEvent observe( Nodo::IntfId lag ) const;
   void resumeWatermark();
   /// Cleaning up, or marked for deletion: a handler that is reached now, or was under way, is to
   /// leave requests, deadlines and output alone.
   bool retired() const { return cleaningUp_ || markedForDeletion(); }
   void scheduleTask( Vex::Seconds after );

   // Destroyed from the last to the first: the task, the deadlines and the link states, without
   // their handlers. Nothing is withdrawn then: that is doCleanup's business.
   InterlockModel::SingleReactor< VexAclResponseFromPeer > aclResponseFromPeer_{ *this };
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer_;
   Vex::Ptr< Kel::TaskScheduler > scheduler_;
   std::uint32_t watermark_ = 0;
   Vex::KeyMap< Nodo::IntfId, LinkState > linkState_;
   Kel::Deadlines timer_;
   Nodo::IntfId activeLag_;
   InterlockModel::SingleReactor< VexTask > vexTask_{ *this };
   Vex::Ptr< Kel::TimerTask > task_; // what vexTask_ watches
   bool initialized_ = false;
   bool cleaningUp_ = false;
};

} // namespace Velo
