#pragma once

// Everything that an interlock reads and writes, in a state in which the egress ACL decides: MLAG
// is primary, the peer link Port-Channel1000 is up, and the one LAG, PortChannel10, has the one
// member Ethernet1 and is active on the peer. No ACL is installed, nothing was asked of the peer or
// answered by it, no VLAN is translated, the output is empty, and time stands at zero.
//
//    World world;
//    world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } ).linkStatus( LinkStatus::down );
//
// Every change takes the way that an agent's change takes, through the mutator of the entity. The
// World's clock is the framework's as long as it lives.

#include "interlock-model/Bridging/Config.h"
#include "interlock-model/Bridging/SwitchIntfConfig.h"
#include "interlock-model/Bridging/VlanXlateKey.h"
#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Mlag/AclInstallRequest.h"
#include "interlock-model/Mlag/AclInstallResponse.h"
#include "interlock-model/Mlag/IntfStatus.h"
#include "interlock-model/Mlag/Status.h"
#include "platform/Kel/TaskScheduler.h"
#include "platform/Kel/VirtualTime.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/String.h"
#include "tests/support/Names.h"

#include <cstdint>
#include <initializer_list>

namespace TestSupport {

class World {
 public:
   using String = Vex::String;
   using Members = std::initializer_list< String >;
   using PortProgType = Hardware::Lag::PortProgType;

   // The entities. The name of an input is that of the constructor argument.
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > aclIntfFeatureStatus =
      Vex::make< Interface::Interlock::IntfFeatureStatus >(); // of the other interlocks, too
   Vex::Ptr< Hardware::Lag::Config > hwLagConfig = Vex::make< Hardware::Lag::Config >();
   Vex::Ptr< Mlag::Status > mlagStatus = Vex::make< Mlag::Status >();
   Vex::Ptr< Mlag::AclInstallResponse > response = Vex::make< Mlag::AclInstallResponse >();
   Vex::Ptr< Mlag::AclInstallRequest > request = Vex::make< Mlag::AclInstallRequest >();
   Vex::Ptr< Bridging::Config > bridgingConfig = Vex::make< Bridging::Config >();
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > output =
      Vex::make< Interface::Interlock::IntfFeatureStatus >();
   Vex::VirtualClock clock;
   Vex::Ptr< Kel::TaskScheduler > scheduler = Vex::make< Kel::TaskScheduler >();

   World() {
      lag( "PortChannel10", { "Ethernet1" } ).mlagIntf( "PortChannel10" );
      mlagState( Mlag::State::primary ).peerLink( "Port-Channel1000" );
   }

   // LAGs and members.

   /// Adds a LAG with these members; puts another InitialMember in place of the one there is.
   World & lag( const String & lag, Members members ) {
      hwLagConfig->initialMemberIs( initialMember( lag, members ) );
      return *this;
   }
   World & lagGone( const String & lag ) {
      hwLagConfig->initialMemberDel( intf( lag ) );
      return *this;
   }
   /// The LAG must be there.
   World & member( const String & port,
                   const String & lag = "PortChannel10",
                   PortProgType type = PortProgType() ) {
      hwLagConfig->initialMember( intf( lag ) )->memberIs( intf( port ), type );
      return *this;
   }
   World & memberGone( const String & port, const String & lag = "PortChannel10" ) {
      hwLagConfig->initialMember( intf( lag ) )->memberDel( intf( port ) );
      return *this;
   }
   /// An InitialMember that is in no configuration yet.
   static Vex::Ptr< Hardware::Lag::InitialMember > initialMember( const String & lag,
                                                                  Members members ) {
      auto created = Vex::make< Hardware::Lag::InitialMember >( intf( lag ) );
      for ( const String & port : members ) {
         created->memberIs( intf( port ), PortProgType() );
      }
      return created;
   }

   // MLAG.

   World & mlagState( Mlag::State state ) {
      mlagStatus->mlagStateIs( state );
      return *this;
   }
   World & mlagIntf( const String & lag, Mlag::IntfState peerState = Mlag::IntfState::active ) {
      mlagStatus->intfStatusIs( intf( lag ), { "configured", Mlag::IntfState::active, peerState } );
      return *this;
   }
   World & mlagIntfGone( const String & lag ) {
      mlagStatus->intfStatusDel( intf( lag ) );
      return *this;
   }
   /// Another entity, also where the name is the same.
   World & peerLink( const String & name,
                     Interface::LinkStatus status = Interface::LinkStatus::up ) {
      mlagStatus->peerLinkIs( link( name, status ) );
      return *this;
   }
   World & noPeerLink() {
      mlagStatus->peerLinkIs( nullptr );
      return *this;
   }
   /// Of the peer link named last, also after noPeerLink().
   World & linkStatus( Interface::LinkStatus status ) {
      peerLinkEntity_->linkStatusIs( status );
      return *this;
   }
   /// The peer link named last, also after noPeerLink().
   const Vex::Ptr< Interface::EthIntfStatus > & peerLinkEntity() const { return peerLinkEntity_; }
   World & peerInterlock( bool wanted ) {
      mlagStatus->peerInterlockIs( wanted );
      return *this;
   }

   // What the hardware layer reports.

   World & installed( const String & member, const String & lag = "PortChannel10" ) {
      aclIntfFeatureStatus->intfIs( entry( member, lag ) );
      return *this;
   }
   World & notInstalled( const String & member, const String & lag = "PortChannel10" ) {
      aclIntfFeatureStatus->intfDel( entry( member, lag ) );
      return *this;
   }

   // The exchange with the peer.

   World & answer( const String & lag, std::uint32_t token ) {
      response->installResponseIs( intf( lag ), token );
      return *this;
   }
   /// The peer echoes the token that stands in the request.
   World & answerRequest( const String & lag = "PortChannel10" ) {
      return answer( lag, request->installRequest( intf( lag ) ) );
   }
   World & answerGone( const String & lag = "PortChannel10" ) {
      response->installResponseDel( intf( lag ) );
      return *this;
   }

   // VLAN translation.

   /// The interface's switching configuration, created without mappings where there was none.
   Bridging::SwitchIntfConfig & switchIntfConfig( const String & name = "PortChannel10" ) {
      if ( !bridgingConfig->switchIntfConfig().has( intf( name ) ) ) {
         bridgingConfig->switchIntfConfigIs(
            Vex::make< Bridging::SwitchIntfConfig >( intf( name ) ) );
      }
      return *bridgingConfig->switchIntfConfig( intf( name ) );
   }
   World & translated( std::uint16_t vlan, const String & name = "PortChannel10" ) {
      switchIntfConfig( name ).ingressVlanXlateIs( Bridging::VlanXlateKey( vlan ),
                                                   Bridging::VlanId( 1000 ) );
      return *this;
   }
   World & notTranslated( std::uint16_t vlan, const String & name = "PortChannel10" ) {
      switchIntfConfig( name ).ingressVlanXlateDel( Bridging::VlanXlateKey( vlan ) );
      return *this;
   }

   // The output.

   /// An entry that an earlier owner left there.
   World & left( const String & member, const String & lag = "PortChannel10" ) {
      output->intfIs( entry( member, lag ) );
      return *this;
   }
   bool admits( const String & member, const String & lag = "PortChannel10" ) const {
      return output->intfHas( entry( member, lag ) );
   }

   // Time.

   /// Moves the clock in steps and runs what falls due on the way.
   World & pass( double seconds ) {
      Kel::advanceTo( clock, *scheduler, clock.now() + Vex::Seconds( seconds ) );
      return *this;
   }

 private:
   Vex::Ptr< Interface::EthIntfStatus > link( const String & name, Interface::LinkStatus status ) {
      peerLinkEntity_ = Vex::make< Interface::EthIntfStatus >( intf( name ) );
      peerLinkEntity_->linkStatusIs( status );
      return peerLinkEntity_;
   }

   Vex::ClockScope clockScope_{ clock };
   Vex::Ptr< Interface::EthIntfStatus > peerLinkEntity_;
};

} // namespace TestSupport
