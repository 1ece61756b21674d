// The admission of members, construction, and the start-up pass.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfPeerInterlockSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"
#include "platform/Vex/Assert.h"

#include <utility>

namespace Velo {

using EgressAcl::duplog;

Vex::Ptr< MlagEgressAclIntfPeerInterlockSm >
MlagEgressAclIntfPeerInterlockSm::MlagEgressAclIntfPeerInterlockSmIs(
   Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus,
   Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
   Vex::Ptr< Kel::TaskScheduler > taskScheduler ) {
   auto sm = Vex::make< MlagEgressAclIntfPeerInterlockSm >(
      std::move( aclIntfFeatureStatus ), std::move( hwLagConfig ), std::move( mlagStatus ),
      std::move( outIntfFeatureStatus ), std::move( aclResponseFromPeer ),
      std::move( aclRequestToPeer ), std::move( taskScheduler ) );
   sm->hasNotificationActiveIs( true );
   return sm;
}

MlagEgressAclIntfPeerInterlockSm::MlagEgressAclIntfPeerInterlockSm(
   Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Mlag::Status > mlagStatus,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus,
   Vex::Ptr< const Mlag::AclInstallResponse > aclResponseFromPeer,
   Vex::Ptr< Mlag::AclInstallRequest > aclRequestToPeer,
   Vex::Ptr< Kel::TaskScheduler > taskScheduler )
    : MlagEgressAclIntfInterlockBaseSm( std::move( aclIntfFeatureStatus ),
                                        hwLagConfig,
                                        mlagStatus,
                                        std::move( outIntfFeatureStatus ) ),
      aclRequestToPeer_( std::move( aclRequestToPeer ) ), scheduler_( std::move( taskScheduler ) ) {
   aclResponseFromPeer_.createIfGiven( std::move( aclResponseFromPeer ) );
   smNameIs( "MlagEgressAclIntfPeerInterlockSm::" );
   taskIs( scheduler_, Kel::TaskPriority( 3 ), "timeoutTask" );
   handleInitialized();
}

const Vex::Type & MlagEgressAclIntfPeerInterlockSm::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Velo::MlagEgressAclIntfPeerInterlockSm" };
   return type;
}

const Vex::Type & MlagEgressAclIntfPeerInterlockSm::fwkType() const noexcept {
   return staticFwkType();
}

bool MlagEgressAclIntfPeerInterlockSm::lagActive( Nodo::IntfId lag ) const {
   const auto * const im = hwLagConfig()->initialMemberFind( lag );
   return im != nullptr && im->members() != 0;
}

bool MlagEgressAclIntfPeerInterlockSm::isMlagIntf( Nodo::IntfId lag ) const {
   return static_cast< bool >( mlagStatus()->intfStatus( lag ) );
}

bool MlagEgressAclIntfPeerInterlockSm::shouldInstallEgressAcl( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "shouldInstallEgressAcl", " lag : ", lag );
   const Mlag::IntfStatus & status = VEX_ASSERTED( mlagStatus()->intfStatus( lag ) );
   return status.peerState == Mlag::IntfState::active;
}

void MlagEgressAclIntfPeerInterlockSm::handleMember( Nodo::IntfId member, Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handleMember", " memberIntf : ", member, " lag : ", lag );
   handlePeerInterlockLag( lag );
   if ( retired() ) {
      return;
   }
   const IntfFeature entry{ member, lag };
   if ( !lagMemberActive( member, lag ) ) {
      duplog( Vex::at< 3 >(), "lag member is not active" );
      outIntfFeatureStatus()->intfDel( entry );
      return;
   }
   const LinkState state = linkState( lag );
   if ( !isMlagIntf( lag ) ) {
      duplog( Vex::at< 3 >(), "lag is not an mlag intf" );
      outIntfFeatureStatus()->intfIs( entry );
      return;
   }
   if ( state == LinkState::linkDown ) {
      duplog( Vex::at< 3 >(), "lag is down, member cannot be added" );
      outIntfFeatureStatus()->intfDel( entry );
      return;
   }
   if ( state == LinkState::linkRequesting ) {
      duplog( Vex::at< 3 >(), "member is not ready to be added to lag" );
      outIntfFeatureStatus()->intfDel( entry );
      return;
   }
   if ( state == LinkState::linkUp && shouldInstallEgressAcl( lag ) &&
        !aclIntfFeatureStatus()->intfHas( entry ) ) {
      duplog( Vex::at< 2 >(), "mlag intf is 'linkUp' but local acl is not installed" );
      outIntfFeatureStatus()->intfDel( entry );
      return;
   }
   duplog( Vex::at< 3 >(),
           "acl criteria satisfied (or linkFail), allowing member to join the lag" );
   outIntfFeatureStatus()->intfIs( entry );
}

void MlagEgressAclIntfPeerInterlockSm::handleLag( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handleLag", " (top-level) lag : ", lag );
   if ( lagActive( lag ) ) {
      MlagEgressAclIntfInterlockBaseSm::handleLag( lag );
   } else {
      handleLagInactive( lag );
   }
}

void MlagEgressAclIntfPeerInterlockSm::handleLagInactive( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handleLagInactive", " lag : ", lag );
   const auto * const im = hwLagConfig()->initialMemberFind( lag );
   VEX_ASSERT( !im || im->members() == 0 );
   handlePeerInterlockLag( lag );
   const auto ofLag = [ lag ]( const IntfFeature & entry ) { return entry.lag == lag; };
   for ( const IntfFeature entry : outIntfFeatureStatus()->intf().keysWhere( ofLag ) ) {
      handleMember( entry.member, lag );
   }
}

void MlagEgressAclIntfPeerInterlockSm::handleMlagIntfStatus( Nodo::IntfId mlagIntf ) {
   duplog( Vex::at< 0 >(), smName(), "handleMlagIntfStatus", " mlagIntf: ", mlagIntf );
   handleLag( mlagIntf );
}

void MlagEgressAclIntfPeerInterlockSm::handleInitialized() {
   duplog( Vex::at< 0 >(), smName(), "handleInitialized" );
   resumeWatermark();
   handleAllLags();
   for ( const IntfFeature entry : outIntfFeatureStatus()->intf().keys() ) {
      if ( !lagActive( entry.lag ) ) {
         handleLag( entry.lag );
      } else if ( !hwLagConfig()->initialMemberFind( entry.lag )->memberHas( entry.member ) ) {
         handleMember( entry.member, entry.lag );
      }
   }
   for ( const Nodo::IntfId lag : aclRequestToPeer_->installRequest().keys() ) {
      if ( !lagActive( lag ) ) {
         handleLag( lag );
      }
   }
}

} // namespace Velo
