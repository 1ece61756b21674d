#pragma once

// The library as an agent uses it: entities in, factories of libVeloIntfInterlock, verdicts out.

#include "Velo/VeloIntfInterlock.h"
#include "bench/ours/Inputs.h"
#include "interlock-model/Bridging/SwitchIntfConfig.h"
#include "interlock-model/Interface/EthIntfStatus.h"

namespace Bench::Ours {

class MlagInputs : public Inputs {
 public:
   explicit MlagInputs( const Shape & shape ) : Inputs( shape ) {
      auto peerLink = Vex::make< Interface::EthIntfStatus >( Nodo::IntfId( "Ethernet0" ) );
      peerLink->linkStatusIs( Interface::LinkStatus::up );
      mlag_->peerLinkIs( peerLink );
      mlag_->mlagStateIs( Mlag::State::primary );
      for ( const Nodo::IntfId lag : lags() ) {
         mlag_->intfStatusIs( lag, { "", Mlag::IntfState::active, Mlag::IntfState::active } );
      }
   }

 protected:
   // NOLINTNEXTLINE(misc-non-private-member-variables-in-classes)
   Vex::Ptr< Mlag::Status > mlag_ = Vex::make< Mlag::Status >();
};

class BasicWorld : public MlagInputs {
 public:
   using MlagInputs::MlagInputs;

   void start() {
      outputIsNew();
      interlock_ = Velo::mlagEgressAclIntfInterlockSmFactory( input_, config_, mlag_, output_ );
   }
   void settle() {}
   void stop() {
      interlock_ = nullptr;
      outputIsGone();
   }
   void passHalf( bool on ) {
      mlag_->mlagStateIs( on ? Mlag::State::primary : Mlag::State::inactive );
   }
   void passNone( bool on ) {
      mlag_->mlagStateIs( on ? Mlag::State::primary : Mlag::State::secondary );
   }
};

/// The peer interlock, run by the controller; every LAG is linkUp at rest.
class PeerWorld : public MlagInputs {
 public:
   using MlagInputs::MlagInputs;

   void start() {
      outputIsNew();
      request_ = Vex::make< Mlag::AclInstallRequest >();
      response_ = Vex::make< Mlag::AclInstallResponse >();
      mlag_->peerInterlockIs( true );
      interlock_ = Velo::mlagEgressAclIntfInterlockControllerSmFactory(
         input_, config_, mlag_, response_, request_, scheduler_, output_ );
   }
   /// The peer answers every request.
   void settle() {
      for ( const Nodo::IntfId lag : lags() ) {
         answer( lag );
      }
   }
   void answer( Nodo::IntfId lag ) {
      response_->installResponseIs( lag, request_->installRequest( lag ) );
   }
   void stop() {
      interlock_ = nullptr;
      outputIsGone();
   }
   void passHalf( bool on ) {
      for ( const Nodo::IntfId lag : lags() ) {
         mlag_->intfStatusIs( lag, { "", Mlag::IntfState::active,
                                     on ? Mlag::IntfState::active : Mlag::IntfState::inactive } );
      }
   }
   void passNone( bool on ) {
      for ( const Nodo::IntfId lag : lags() ) {
         mlag_->intfStatusIs( lag, { "", on ? Mlag::IntfState::active : Mlag::IntfState::inactive,
                                     Mlag::IntfState::active } );
      }
   }

 private:
   Vex::Ptr< Mlag::AclInstallRequest > request_;
   Vex::Ptr< Mlag::AclInstallResponse > response_;
   Vex::Ptr< Kel::TaskScheduler > scheduler_ = Vex::make< Kel::TaskScheduler >();
};

/// Every LAG has one translation at rest.
class VlanWorld : public Inputs {
 public:
   explicit VlanWorld( const Shape & shape ) : Inputs( shape ) {
      for ( const Nodo::IntfId lag : lags() ) {
         auto config = Vex::make< Bridging::SwitchIntfConfig >( lag );
         config->ingressVlanXlateIs( ingress_, ingress_ );
         bridging_->switchIntfConfigIs( config );
      }
   }

   void start() {
      outputIsNew();
      interlock_ = Velo::vlanXlateIntfInterlockSmFactory( input_, config_, bridging_, output_ );
   }
   void settle() {}
   void stop() {
      interlock_ = nullptr;
      outputIsGone();
   }
   void passHalf( bool on ) {
      for ( const Nodo::IntfId lag : lags() ) {
         const auto config = bridging_->switchIntfConfig( lag );
         if ( on ) {
            config->ingressVlanXlateIs( ingress_, ingress_ );
         } else {
            config->ingressVlanXlateDel( ingress_ );
         }
      }
   }
   void passNone( bool on ) {
      for ( const Nodo::IntfId lag : lags() ) {
         const auto config = bridging_->switchIntfConfig( lag );
         if ( on ) {
            config->egressVlanXlateDel( egress_ );
         } else {
            config->egressVlanXlateIs( egress_, egress_ );
         }
      }
   }

 private:
   Vex::Ptr< Bridging::Config > bridging_ = Vex::make< Bridging::Config >();
   Bridging::VlanXlateKey ingress_{ 10 };
   Bridging::VlanXlateKey egress_{ 20 };
};

static_assert( World< BasicWorld > && World< PeerWorld > && World< VlanWorld > );

} // namespace Bench::Ours
