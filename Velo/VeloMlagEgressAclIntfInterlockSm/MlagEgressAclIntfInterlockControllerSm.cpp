#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockControllerSm.h"

#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"
#include "platform/Vex/ScopedValue.h"

#include <utility>

namespace Velo {

using EgressAcl::duplog;

namespace {

const Vex::String prefix = "MlagEgressAclIntfInterlockControllerSm::";

// The child that another one is about to replace: while that starts, whoever hears of it may change
// an input of both, and this one would decide by its own once more.
void retire( const Vex::Ptr< MlagEgressAclIntfInterlockBaseSm > & child ) {
   if ( child ) {
      child->vexDoZombieReactors( true );
   }
}

} // namespace

// ---- Wiring: which change of which input calls what --------------------------------------------

void MlagEgressAclIntfInterlockControllerSm::VexMlagStatus::onAttribute(
   Attribute attribute, const Nodo::IntfId & /* key */ ) {
   const auto sm = ownerUnlessZombie();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::peerInterlock:
      sm->handleFeatureSwitchover();
      break;
   case Attribute::mlagState: // the children's
   case Attribute::peerLink:
   case Attribute::intfStatus:
      break;
   }
}

void MlagEgressAclIntfInterlockControllerSm::VexMlagStatus::onNotifier() {
   const auto sm = ownerUnlessZombie();
   if ( sm && notifier() ) {
      sm->handleFeatureSwitchover();
   }
}

// ---- Construction ------------------------------------------------------------------------------

Vex::Ptr< MlagEgressAclIntfInterlockControllerSm >
MlagEgressAclIntfInterlockControllerSm::MlagEgressAclIntfInterlockControllerSmIs(
   Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
   Vex::Ptr< Kel::TaskScheduler > taskScheduler,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus ) {
   auto sm = Vex::make< MlagEgressAclIntfInterlockControllerSm >(
      std::move( inIntfFeatureStatus ), std::move( hwLagConfig ), std::move( mlagStatus ),
      std::move( aclResponseFromPeer ), std::move( aclRequestToPeer ), std::move( taskScheduler ),
      std::move( outIntfFeatureStatus ) );
   sm->hasNotificationActiveIs( true );
   return sm;
}

MlagEgressAclIntfInterlockControllerSm::MlagEgressAclIntfInterlockControllerSm(
   Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
   Vex::Ptr< Kel::TaskScheduler > taskScheduler,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus )
    : inIntfFeatureStatus_( std::move( inIntfFeatureStatus ) ),
      hwLagConfig_( std::move( hwLagConfig ) ),
      aclResponseFromPeer_( std::move( aclResponseFromPeer ) ),
      aclRequestToPeer_( std::move( aclRequestToPeer ) ),
      taskScheduler_( std::move( taskScheduler ) ),
      outIntfFeatureStatus_( std::move( outIntfFeatureStatus ) ) {
   mlagStatus_.createIfGiven( std::move( mlagStatus ) );
   handleInitialized();
}

const Vex::Type & MlagEgressAclIntfInterlockControllerSm::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Velo::MlagEgressAclIntfInterlockControllerSm" };
   return type;
}

const Vex::Type & MlagEgressAclIntfInterlockControllerSm::fwkType() const noexcept {
   return staticFwkType();
}

// ---- Children ----------------------------------------------------------------------------------

Vex::Ptr< MlagEgressAclIntfPeerInterlockSm >
MlagEgressAclIntfInterlockControllerSm::peerInterlockSmIs(
   const Vex::Ptr< const IntfFeatureStatus > & inIntfFeatureStatus,
   const Vex::Ptr< const Hardware::Lag::Config > & hwLagConfig,
   const Vex::Ptr< const Mlag::Status > & mlagStatus,
   const Vex::Ptr< IntfFeatureStatus > & outIntfFeatureStatus,
   const Vex::Ptr< const Mlag::AclInstallResponse > & aclResponseFromPeer,
   const Vex::Ptr< Mlag::AclInstallRequest > & aclRequestToPeer,
   const Vex::Ptr< Kel::TaskScheduler > & taskScheduler ) {
   const auto & sm = peerInterlockSm_.sm();
   if ( sm && sm->aclIntfFeatureStatus() == inIntfFeatureStatus &&
        sm->hwLagConfig() == hwLagConfig && sm->mlagStatus() == mlagStatus &&
        sm->outIntfFeatureStatus() == outIntfFeatureStatus &&
        sm->aclResponseFromPeer() == aclResponseFromPeer &&
        sm->aclRequestToPeer() == aclRequestToPeer && sm->scheduler() == taskScheduler ) {
      return sm;
   }
   retire( sm );
   auto created = MlagEgressAclIntfPeerInterlockSm::MlagEgressAclIntfPeerInterlockSmIs(
      inIntfFeatureStatus, hwLagConfig, mlagStatus, outIntfFeatureStatus, aclResponseFromPeer,
      aclRequestToPeer, taskScheduler );
   peerInterlockSm_.is( created );
   return created;
}

Vex::Ptr< MlagEgressAclIntfPeerInterlockSm >
MlagEgressAclIntfInterlockControllerSm::peerInterlockSmDel() {
   return peerInterlockSm_.del();
}

Vex::Ptr< MlagEgressAclIntfInterlockSm > MlagEgressAclIntfInterlockControllerSm::basicInterlockSmIs(
   const Vex::Ptr< const IntfFeatureStatus > & inIntfFeatureStatus,
   const Vex::Ptr< const Hardware::Lag::Config > & hwLagConfig,
   const Vex::Ptr< const Mlag::Status > & mlagStatus,
   const Vex::Ptr< IntfFeatureStatus > & outIntfFeatureStatus ) {
   const auto & sm = basicInterlockSm_.sm();
   if ( sm && sm->aclIntfFeatureStatus() == inIntfFeatureStatus &&
        sm->hwLagConfig() == hwLagConfig && sm->mlagStatus() == mlagStatus &&
        sm->outIntfFeatureStatus() == outIntfFeatureStatus ) {
      return sm;
   }
   retire( sm );
   auto created = MlagEgressAclIntfInterlockSm::MlagEgressAclIntfInterlockSmIs(
      inIntfFeatureStatus, hwLagConfig, mlagStatus, outIntfFeatureStatus );
   basicInterlockSm_.is( created );
   return created;
}

Vex::Ptr< MlagEgressAclIntfInterlockSm >
MlagEgressAclIntfInterlockControllerSm::basicInterlockSmDel() {
   return basicInterlockSm_.del();
}

// ---- Handlers ----------------------------------------------------------------------------------

void MlagEgressAclIntfInterlockControllerSm::handleInitialized() {
   duplog( Vex::at< 0 >(), prefix, "handleInitialized" );
   handleFeatureSwitchover();
}

// A child that is being created or cleaned up writes, and whoever hears of that may flip the flag.
// The switch-over under way goes on to its end, so that no child is left half made, and is then
// made again.
void MlagEgressAclIntfInterlockControllerSm::handleFeatureSwitchover() {
   switchoverWanted_ = true;
   if ( switchoverUnderWay_ ) {
      return;
   }
   const Vex::ScopedValue underWay( switchoverUnderWay_, true );
   while ( std::exchange( switchoverWanted_, false ) ) {
      const auto status = mlagStatus();
      duplog( Vex::at< 0 >(), prefix, "handleFeatureSwitchover",
              " peer-interlock: ", status->peerInterlock() );
      switchOver( status );
   }
}

// The old child always goes before the new one comes.
void MlagEgressAclIntfInterlockControllerSm::switchOver(
   const Vex::Ptr< const Mlag::Status > & status ) {
   if ( status->peerInterlock() ) {
      decltype( basicInterlockSm_ )::drop( basicInterlockSmDel() );
      peerInterlockSmIs( inIntfFeatureStatus_, hwLagConfig_, status, outIntfFeatureStatus_,
                         aclResponseFromPeer_, aclRequestToPeer_, taskScheduler_ );
   } else {
      if ( const auto leaving = peerInterlockSm() ) {
         leaving->doCleanup();
         decltype( peerInterlockSm_ )::drop( peerInterlockSmDel() );
      }
      basicInterlockSmIs( inIntfFeatureStatus_, hwLagConfig_, status, outIntfFeatureStatus_ );
   }
}

} // namespace Velo
