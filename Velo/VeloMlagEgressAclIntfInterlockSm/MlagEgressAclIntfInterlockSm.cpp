#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockSm.h"

#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"

#include <utility>

namespace Velo {

using EgressAcl::duplog;
using EgressAcl::trace;

Vex::Ptr< MlagEgressAclIntfInterlockSm >
MlagEgressAclIntfInterlockSm::MlagEgressAclIntfInterlockSmIs(
   Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus ) {
   auto sm = Vex::make< MlagEgressAclIntfInterlockSm >(
      std::move( aclIntfFeatureStatus ), std::move( hwLagConfig ), std::move( mlagStatus ),
      std::move( outIntfFeatureStatus ) );
   sm->hasNotificationActiveIs( true );
   return sm;
}

MlagEgressAclIntfInterlockSm::MlagEgressAclIntfInterlockSm(
   Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus )
    : MlagEgressAclIntfInterlockBaseSm( std::move( aclIntfFeatureStatus ),
                                        std::move( hwLagConfig ),
                                        std::move( mlagStatus ),
                                        std::move( outIntfFeatureStatus ) ) {
   handleInitialized();
   // After the first pass, on purpose: an empty prefix in a trace tells that a message was written
   // during construction.
   smNameIs( "MlagEgressAclIntfInterlockSm::" );
}

const Vex::Type & MlagEgressAclIntfInterlockSm::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Velo::MlagEgressAclIntfInterlockSm" };
   return type;
}

const Vex::Type & MlagEgressAclIntfInterlockSm::fwkType() const noexcept {
   return staticFwkType();
}

// The texts are read by tools: the missing blanks before "peer link:", "peer mlag", "peer Mlag" and
// "lag ", and "inactve", stay as they are.
bool MlagEgressAclIntfInterlockSm::shouldInstallEgressAcl( Nodo::IntfId lag ) {
   trace( Vex::at< 0 >(), smName(), "shouldInstallEgressAcl", " lag : ", lag );
   const auto & mlag = mlagStatus();
   if ( !Mlag::isActive( mlag->mlagState() ) ) {
      trace( Vex::at< 2 >(), "shouldInstallEgressAcl", " Mlag is inactive" );
      return false;
   }
   trace( Vex::at< 3 >(), "shouldInstallEgressAcl", " Mlag is active" );

   const auto & peerLink = mlag->peerLink();
   if ( !peerLink ) {
      trace( Vex::at< 2 >(), "shouldInstallEgressAcl", "peer link: doesn't exist" );
      return false;
   }
   if ( peerLink->intfId() == Nodo::IntfId() ||
        peerLink->linkStatus() != Interface::LinkStatus::up ) {
      trace( Vex::at< 2 >(), "shouldInstallEgressAcl", " peer link: inactive" );
      return false;
   }
   trace( Vex::at< 3 >(), "shouldInstallEgressAcl", " peer link: active" );

   const Mlag::IntfStatus & status = mlag->intfStatus( lag );
   if ( status.peerState == Mlag::IntfState::active ) {
      trace( Vex::at< 3 >(), "shouldInstallEgressAcl", "peer mlag intf is active" );
      return true;
   }
   if ( status ) {
      trace( Vex::at< 2 >(), "shouldInstallEgressAcl", "peer Mlag intf of ", lag, " is inactve" );
      return false;
   }
   trace( Vex::at< 2 >(), "shouldInstallEgressAcl", "lag ", lag, " isn't an Mlag" );
   return false;
}

void MlagEgressAclIntfInterlockSm::handleMember( Nodo::IntfId member, Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handleMember", " memberIntf : ", member, " lag : ", lag );
   if ( markedForDeletion() ) {
      return; // replaced, by someone who heard of a verdict, while this pass was under way
   }
   const IntfFeature entry{ member, lag };
   if ( !lagMemberActive( member, lag ) ) {
      duplog( Vex::at< 3 >(), "lag member isn't active" );
      outIntfFeatureStatus()->intfDel( entry );
      return;
   }
   duplog( Vex::at< 3 >(), "lag member is active" );

   if ( !shouldInstallEgressAcl( lag ) ) {
      duplog( Vex::at< 3 >(), "egress ACL shouldn't be installed" );
      outIntfFeatureStatus()->intfIs( entry );
      return;
   }
   duplog( Vex::at< 3 >(), "egress ACL should be installed" );

   if ( aclIntfFeatureStatus()->intfHas( entry ) ) {
      duplog( Vex::at< 3 >(), "lag and member are in input IntfFeatureStatus" );
      outIntfFeatureStatus()->intfIs( entry );
   } else {
      duplog( Vex::at< 3 >(), "lag and member are not in input IntfFeatureStatus" );
      outIntfFeatureStatus()->intfDel( entry );
   }
}

void MlagEgressAclIntfInterlockSm::handleMlagIntfStatus( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handleMlagIntfStatus", " mlagIntf: ", lag );
   const auto im = hwLagConfig()->initialMember( lag );
   if ( !im ) {
      duplog( Vex::at< 2 >(), "mlagIntf isn't a lag or it is a lag but not active" );
      return;
   }
   for ( const Nodo::IntfId member : im->member().keys() ) {
      handleMember( member, lag );
   }
}

void MlagEgressAclIntfInterlockSm::handleMlagStateOrPeerlink() {
   duplog( Vex::at< 0 >(), smName(), "handleMlagStateOrPeerlink" );
   handleAllLags();
}

void MlagEgressAclIntfInterlockSm::handleInitialized() {
   duplog( Vex::at< 0 >(), smName(), "handleInitialized" );
   for ( const IntfFeature entry : outIntfFeatureStatus()->intf().keys() ) {
      handleMember( entry.member, entry.lag );
   }
   handleAllLags();
}

} // namespace Velo
