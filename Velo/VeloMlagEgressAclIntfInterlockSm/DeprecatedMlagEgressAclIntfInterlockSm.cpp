#include "Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedMlagEgressAclIntfInterlockSm.h"

#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"

#include <utility>

namespace Velo {

using EgressAcl::duplog;

namespace {

// The prefix of the basic interlock, on purpose: tools find both under it.
const Vex::String prefix = "MlagEgressAclIntfInterlockSm::";

} // namespace

// ---- Wiring: which change of which input calls what --------------------------------------------

void DeprecatedMlagEgressAclIntfInterlockSm::VexInIntfFeatureStatus::onAttribute(
   Attribute attribute, const IntfFeature & intfFeature ) {
   const auto sm = forwarding();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::intf:
      sm->handleIntfFeature( intfFeature );
      break;
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::VexHwLagConfig::onAttribute(
   Attribute attribute, const Nodo::IntfId & lag ) {
   const auto sm = ownerUnlessZombie();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::initialMember:
      if ( const auto initialMember = notifier()->initialMember( lag ) ) {
         sm->initialMemberSmIs( initialMember );
      } else {
         sm->initialMemberSmDel( lag );
      }
      break;
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::VexMlagStatus::onAttribute(
   Attribute attribute, const Nodo::IntfId & intf ) {
   const auto sm = ownerUnlessZombie();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::mlagState:
      if ( hasNotificationActive() ) {
         sm->handleMlagStateOrPeerlink();
      }
      break;
   case Attribute::peerLink:
      if ( hasNotificationActive() ) {
         sm->handleMlagStateOrPeerlink();
      }
      // The notifier as it is now: whoever heard of a verdict may have replaced it.
      sm->peerLinkIntfIs( notifier() ? notifier()->peerLink() : nullptr );
      break;
   case Attribute::intfStatus:
      if ( hasNotificationActive() ) {
         sm->handleMlagIntfStatus( intf );
      }
      break;
   case Attribute::peerInterlock: // the controller's
      break;
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::VexInitialMemberSm::onAttribute(
   Attribute attribute, const Nodo::IntfId & member ) {
   switch ( attribute ) {
   case Attribute::member:
      vex_handleInitialMemberSm_member( member );
      break;
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::VexInitialMemberSm::vex_handleInitialMemberSm_member(
   Nodo::IntfId member ) {
   if ( const auto sm = forwarding() ) {
      sm->handleMember( member, notifier()->key() );
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::VexPeerLinkIntf::onAttribute(
   Attribute attribute, const Vex::NoKey & /* key */ ) {
   switch ( attribute ) {
   case Attribute::linkStatus:
      vex_handlePeerLinkIntf_linkStatus();
      break;
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::VexPeerLinkIntf::vex_handlePeerLinkIntf_linkStatus() {
   if ( const auto sm = forwarding() ) {
      sm->handleMlagStateOrPeerlink();
   }
}

// ---- Construction ------------------------------------------------------------------------------

Vex::Ptr< DeprecatedMlagEgressAclIntfInterlockSm >
DeprecatedMlagEgressAclIntfInterlockSm::DeprecatedMlagEgressAclIntfInterlockSmIs(
   Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus ) {
   auto sm = Vex::make< DeprecatedMlagEgressAclIntfInterlockSm >(
      std::move( inIntfFeatureStatus ), std::move( hwLagConfig ), std::move( mlagStatus ),
      std::move( outIntfFeatureStatus ) );
   sm->hasNotificationActiveIs( true );
   return sm;
}

// The full pass comes before the member and peer-link reactors, on purpose: it reads the inputs
// directly.
DeprecatedMlagEgressAclIntfInterlockSm::DeprecatedMlagEgressAclIntfInterlockSm(
   Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus )
    : outIntfFeatureStatus_( std::move( outIntfFeatureStatus ) ) {
   inIntfFeatureStatus_.createIfGiven( std::move( inIntfFeatureStatus ) );
   hwLagConfig_.createIfGiven( hwLagConfig );
   mlagStatus_.createIfGiven( mlagStatus );
   handleInitialized();
   for ( const auto entry : hwLagConfig->initialMember().entries() ) {
      initialMemberSmIs( entry.value );
   }
   if ( mlagStatus ) {
      peerLinkIntfIs( mlagStatus->peerLink() );
   }
}

const Vex::Type & DeprecatedMlagEgressAclIntfInterlockSm::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Velo::DeprecatedMlagEgressAclIntfInterlockSm" };
   return type;
}

const Vex::Type & DeprecatedMlagEgressAclIntfInterlockSm::fwkType() const noexcept {
   return staticFwkType();
}

// ---- Collections and later reactors ------------------------------------------------------------

Vex::Ptr< DeprecatedMlagEgressAclIntfInterlockSm::VexInitialMemberSm >
DeprecatedMlagEgressAclIntfInterlockSm::initialMemberSmIs(
   Vex::Ptr< const Hardware::Lag::InitialMember > initialMember ) {
   return initialMemberSm_.is( std::move( initialMember ) );
}

Vex::Ptr< DeprecatedMlagEgressAclIntfInterlockSm::VexInitialMemberSm >
DeprecatedMlagEgressAclIntfInterlockSm::initialMemberSmDel( Nodo::IntfId lag ) {
   return initialMemberSm_.del( lag );
}

void DeprecatedMlagEgressAclIntfInterlockSm::initialMemberSmDelAll() {
   initialMemberSm_.delAll();
}

void DeprecatedMlagEgressAclIntfInterlockSm::peerLinkIntfIs(
   Vex::Ptr< const Interface::EthIntfStatus > peerLink ) {
   if ( !peerLink ) {
      peerLinkIntfDel();
   } else if ( const auto & reactor = peerLinkIntf_.reactor() ) {
      reactor->notifierIs( std::move( peerLink ) );
   } else {
      peerLinkIntf_.create( std::move( peerLink ) );
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::peerLinkIntfDel() {
   peerLinkIntf_.del();
}

// ---- Handlers ----------------------------------------------------------------------------------
// Everything is traced to the text trace and the ring. How a message begins differs by handler; the
// texts are read by tools and stay as they are, missing blanks and "inactve" included.

bool DeprecatedMlagEgressAclIntfInterlockSm::shouldInstallEgressAcl( Nodo::IntfId lag ) const {
   duplog( Vex::at< 0 >(), prefix, "shouldInstallEgressAcl", " lag : ", lag );
   const auto & mlag = mlagStatus();
   if ( !Mlag::isActive( mlag->mlagState() ) ) {
      duplog( Vex::at< 2 >(), "shouldInstallEgressAcl", " Mlag is inactive" );
      return false;
   }
   duplog( Vex::at< 3 >(), "shouldInstallEgressAcl", " Mlag is active" );

   const auto & peerLink = mlag->peerLink();
   if ( !peerLink ) {
      duplog( Vex::at< 2 >(), "shouldInstallEgressAcl", "peerLink doesn't exist" );
      return false;
   }
   const Nodo::IntfId peerLinkId = peerLink->intfId();
   if ( peerLinkId == Nodo::IntfId() || peerLink->linkStatus() != Interface::LinkStatus::up ) {
      duplog( Vex::at< 2 >(), "shouldInstallEgressAcl", " peer link : ", peerLinkId, " inactive" );
      return false;
   }
   duplog( Vex::at< 3 >(), "shouldInstallEgressAcl", " peer link : ", peerLinkId, " active" );

   const Mlag::IntfStatus & status = mlag->intfStatus( lag );
   if ( status.peerState == Mlag::IntfState::active ) {
      duplog( Vex::at< 3 >(), "shouldInstallEgressAcl", "peer mlag intf is active" );
      return true;
   }
   if ( !status ) {
      duplog( Vex::at< 2 >(), "shouldInstallEgressAcl", "lag ", lag, " isn't an Mlag" );
      return false;
   }
   duplog( Vex::at< 2 >(), "shouldInstallEgressAcl", "peer Mlag intf of ", lag, " is inactve" );
   return false;
}

bool DeprecatedMlagEgressAclIntfInterlockSm::lagMemberActive( Nodo::IntfId member,
                                                              Nodo::IntfId lag ) const {
   duplog( Vex::at< 0 >(), prefix, "lagMemberActive", " memberIntf : ", member, " lag : ", lag );
   const auto * const initialMember = hwLagConfig()->initialMemberFind( lag );
   if ( initialMember && initialMember->memberHas( member ) ) {
      duplog( Vex::at< 3 >(), "lagMemberActive", " member is active" );
      return true;
   }
   duplog( Vex::at< 2 >(), "lagMemberActive", " member isn't active" );
   return false;
}

void DeprecatedMlagEgressAclIntfInterlockSm::handleMember( Nodo::IntfId member, Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), prefix, "handleMember", " memberIntf : ", member, " lag : ", lag );
   const IntfFeature entry{ member, lag };
   if ( !lagMemberActive( member, lag ) ) {
      duplog( Vex::at< 3 >(), "lag member isn't active" );
      outIntfFeatureStatus_->intfDel( entry );
      return;
   }
   duplog( Vex::at< 3 >(), "lag member is active" );

   if ( !shouldInstallEgressAcl( lag ) ) {
      duplog( Vex::at< 3 >(), "egress ACL shouldn't be installed" );
      outIntfFeatureStatus_->intfIs( entry );
      return;
   }
   duplog( Vex::at< 3 >(), "egress ACL should be installed" );

   if ( inIntfFeatureStatus()->intfHas( entry ) ) {
      duplog( Vex::at< 3 >(), "lag and member are in input IntfFeatureStatus" );
      outIntfFeatureStatus_->intfIs( entry );
   } else {
      duplog( Vex::at< 3 >(), "lag and member are not in input IntfFeatureStatus" );
      outIntfFeatureStatus_->intfDel( entry );
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::handleIntfFeature( const IntfFeature & intfFeature ) {
   const Nodo::IntfId member = intfFeature.member;
   const Nodo::IntfId lag = intfFeature.lag;
   duplog( Vex::at< 0 >(), prefix, "handleIntfFeature", " memberIntf : ", member, " lag : ", lag );
   handleMember( member, lag );
}

void DeprecatedMlagEgressAclIntfInterlockSm::handleMlagIntfStatus( Nodo::IntfId intf ) {
   duplog( Vex::at< 0 >(), prefix, "handleMlagIntfStatus", " mlagIntf: ", intf );
   const auto initialMember = hwLagConfig()->initialMember( intf );
   if ( !initialMember ) {
      duplog( Vex::at< 2 >(), prefix, "handleMlagIntfStatus", " mlagIntf isn't a lag or ",
              "it is a lag but not active" );
      return;
   }
   for ( const Nodo::IntfId member : initialMember->member().keys() ) {
      handleMember( member, intf );
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::handleAllLags() {
   duplog( Vex::at< 0 >(), prefix, "handleAllLags" );
   const auto config = hwLagConfig(); // lives to the end of the pass, whoever replaces it
   for ( const auto entry : config->initialMember().entries() ) {
      for ( const Nodo::IntfId member : entry.value->member().keys() ) {
         handleMember( member, entry.value->key() );
      }
   }
}

void DeprecatedMlagEgressAclIntfInterlockSm::handleMlagStateOrPeerlink() {
   duplog( Vex::at< 0 >(), prefix, "handleMlagStateOrPeerlink" );
   handleAllLags();
}

void DeprecatedMlagEgressAclIntfInterlockSm::handleInitialized() {
   duplog( Vex::at< 0 >(), prefix, "handleInitialized" );
   for ( const IntfFeature entry : outIntfFeatureStatus_->intf().keys() ) {
      handleMember( entry.member, entry.lag );
   }
   handleAllLags();
}

} // namespace Velo
