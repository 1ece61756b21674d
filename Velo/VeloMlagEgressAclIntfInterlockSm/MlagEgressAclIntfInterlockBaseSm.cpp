#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockBaseSm.h"

#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"

#include <utility>

namespace Velo {

using EgressAcl::duplog;
using EgressAcl::trace;

// ---- Wiring: which change of which input calls what ---------------------------------------------

void MlagEgressAclIntfInterlockBaseSm::VexAclIntfFeatureStatus::onAttribute(
   Attribute attribute, const IntfFeature & feature ) {
   const auto sm = forwarding();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::intf:
      sm->handleIntfFeature( feature );
      break;
   }
}

void MlagEgressAclIntfInterlockBaseSm::VexHwLagConfig::onAttribute( Attribute attribute,
                                                                    const Nodo::IntfId & lag ) {
   const auto sm = forwarding();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::initialMember:
      if ( const auto im = notifier()->initialMember( lag ) ) {
         sm->initialMemberSmIs( im );
      } else {
         sm->initialMemberSmDel( lag );
      }
      break;
   }
}

void MlagEgressAclIntfInterlockBaseSm::VexHwLagConfig::onNotifier() {
   const auto sm = forwarding();
   if ( sm && notifier() ) {
      sm->initialMemberSm_.follow( notifier()->initialMember() );
   }
}

void MlagEgressAclIntfInterlockBaseSm::VexMlagStatus::onAttribute( Attribute attribute,
                                                                   const Nodo::IntfId & lag ) {
   const auto sm = forwarding();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::mlagState:
      sm->handleMlagStateOrPeerlink();
      break;
   case Attribute::peerLink:
      sm->handleMlagStateOrPeerlink();
      // The notifier as it is now: whoever heard of a verdict may have replaced it.
      sm->peerLinkIntfIs( notifier() ? notifier()->peerLink() : nullptr );
      break;
   case Attribute::intfStatus:
      sm->handleMlagIntfStatus( lag );
      break;
   case Attribute::peerInterlock: // the controller's
      break;
   }
}

void MlagEgressAclIntfInterlockBaseSm::VexMlagStatus::onNotifier() {
   const auto sm = forwarding();
   if ( sm && notifier() ) {
      sm->handleMlagStateOrPeerlink();
      sm->peerLinkIntfIs( notifier() ? notifier()->peerLink() : nullptr );
   }
}

void MlagEgressAclIntfInterlockBaseSm::VexPeerLinkIntf::onAttribute(
   Attribute attribute, const Vex::NoKey & /* key */ ) {
   switch ( attribute ) {
   case Attribute::linkStatus:
      vex_handlePeerLinkIntf_linkStatus();
      break;
   }
}

void MlagEgressAclIntfInterlockBaseSm::VexPeerLinkIntf::onNotifier() {
   if ( notifier() ) {
      vex_handlePeerLinkIntf_linkStatus();
   }
}

void MlagEgressAclIntfInterlockBaseSm::VexPeerLinkIntf::vex_handlePeerLinkIntf_linkStatus() {
   if ( const auto sm = forwarding() ) {
      sm->handleMlagStateOrPeerlink();
   }
}

void MlagEgressAclIntfInterlockBaseSm::InitMemSm::onAttribute( Attribute attribute,
                                                               const Nodo::IntfId & member ) {
   switch ( attribute ) {
   case Attribute::member:
      vex_handleInitialMemberSm_member( member );
      break;
   }
}

void MlagEgressAclIntfInterlockBaseSm::InitMemSm::vex_handleInitialMemberSm_member(
   Nodo::IntfId member ) {
   if ( const auto sm = forwarding() ) {
      sm->handleMember( member, notifier() ? notifier()->key() : Nodo::IntfId() );
   }
}

// ---- Construction -------------------------------------------------------------------------------

MlagEgressAclIntfInterlockBaseSm::MlagEgressAclIntfInterlockBaseSm(
   Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus )
    : outIntfFeatureStatus_( std::move( outIntfFeatureStatus ) ) {
   aclIntfFeatureStatus_.createIfGiven( std::move( aclIntfFeatureStatus ) );
   hwLagConfig_.createIfGiven( hwLagConfig );
   mlagStatus_.createIfGiven( mlagStatus );
   if ( hwLagConfig ) {
      initialMemberSm_.follow( hwLagConfig->initialMember() );
   }
   peerLinkIntfIs( mlagStatus ? mlagStatus->peerLink() : nullptr );
}

MlagEgressAclIntfInterlockBaseSm::~MlagEgressAclIntfInterlockBaseSm() = default;

void MlagEgressAclIntfInterlockBaseSm::smNameIs( Vex::String smName ) {
   smName_ = std::move( smName );
}

// ---- Collections and later reactors -------------------------------------------------------------

Vex::Ptr< MlagEgressAclIntfInterlockBaseSm::InitMemSm >
MlagEgressAclIntfInterlockBaseSm::initialMemberSmIs(
   Vex::Ptr< const Hardware::Lag::InitialMember > im ) {
   return initialMemberSm_.is( std::move( im ) );
}

Vex::Ptr< MlagEgressAclIntfInterlockBaseSm::InitMemSm >
MlagEgressAclIntfInterlockBaseSm::initialMemberSmDel( Nodo::IntfId lag ) {
   return initialMemberSm_.del( lag );
}

void MlagEgressAclIntfInterlockBaseSm::initialMemberSmDelAll() {
   initialMemberSm_.delAll();
}

void MlagEgressAclIntfInterlockBaseSm::peerLinkIntfIs(
   Vex::Ptr< const Interface::EthIntfStatus > peerLink ) {
   if ( !peerLinkIntf_.reactor() ) {
      peerLinkIntf_.create( nullptr );
   }
   // A reference of our own: re-pointing runs a hook, which may take the reactor out.
   const auto reactor = peerLinkIntf_.reactor();
   reactor->notifierIs( std::move( peerLink ) );
}

void MlagEgressAclIntfInterlockBaseSm::peerLinkIntfDel() {
   peerLinkIntf_.del();
}

// ---- Handlers -----------------------------------------------------------------------------------

bool MlagEgressAclIntfInterlockBaseSm::lagMemberActive( Nodo::IntfId member,
                                                        Nodo::IntfId lag ) const {
   trace( Vex::at< 0 >(), smName_, "lagMemberActive", " memberIntf : ", member, " lag : ", lag );
   const auto * const im = hwLagConfig()->initialMemberFind( lag );
   if ( im && im->memberHas( member ) ) {
      trace( Vex::at< 3 >(), "lagMemberActive", " member is", " ", "active" );
      return true;
   }
   trace( Vex::at< 3 >(), "lagMemberActive", " member is", " not ", "active" );
   return false;
}

void MlagEgressAclIntfInterlockBaseSm::handleLag( Nodo::IntfId lag ) {
   trace( Vex::at< 0 >(), smName_, "handleLag", " lag: ", lag );
   const auto im = hwLagConfig()->initialMember( lag );
   if ( !im ) {
      trace( Vex::at< 2 >(), "Interface isn't a lag or it is a lag but not active" );
      return;
   }
   for ( const Nodo::IntfId member : im->member().keys() ) {
      handleMember( member, lag );
   }
}

void MlagEgressAclIntfInterlockBaseSm::handleMlagStateOrPeerlink() {}

void MlagEgressAclIntfInterlockBaseSm::handleAllLags() {
   trace( Vex::at< 0 >(), smName_, "handleAllLags" );
   const auto config = hwLagConfig(); // lives to the end of the pass, whoever replaces it
   for ( const Nodo::IntfId lag : config->initialMember().keys() ) {
      handleLag( lag );
   }
}

void MlagEgressAclIntfInterlockBaseSm::handleIntfFeature( const IntfFeature & feature ) {
   duplog( Vex::at< 0 >(), smName_, "handleIntfFeature", " memberIntf : ", feature.member,
           " lag : ", feature.lag );
   handleMember( feature.member, feature.lag );
}

} // namespace Velo
