#include "replay/Switch.h"

#include "platform/Vex/Entity.h"
#include "replay/ScenarioError.h"
#include "replay/Text.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Replay {

/// Tells of each verdict, whoever wrote it.
class Switch::OutputWatcher final
    : public Vex::ConstNotifiee< Interface::Interlock::IntfFeatureStatus > {
 public:
   OutputWatcher( Interlock interlock, SwitchEvents & events ) noexcept
       : interlock_( interlock ), events_( events ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Switch::OutputWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Pair & pair ) override {
      switch ( attribute ) {
      case Attribute::intf:
         events_.verdict( interlock_, pair, notifier()->intfHas( pair ) );
         break;
      }
   }

 private:
   Interlock interlock_;
   SwitchEvents & events_;
};

/// Tells of each change of an install request, and carries it to the simulated peer.
class Switch::RequestWatcher final : public Vex::ConstNotifiee< Mlag::AclInstallRequest > {
 public:
   RequestWatcher( SwitchEvents & events, SimulatedPeer & peer ) noexcept
       : events_( events ), peer_( peer ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Switch::RequestWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override {
      switch ( attribute ) {
      case Attribute::installRequest:
         const Token * const found = notifier()->installRequest().find( lag );
         const auto token = found != nullptr ? std::optional( *found ) : std::nullopt;
         events_.request( lag, token );
         peer_.requestChanged( lag, token );
         break;
      }
   }

 private:
   SwitchEvents & events_;
   SimulatedPeer & peer_; // outlives us: declared before us in the switch
};

Switch::Switch( Vex::Ptr< Kel::TaskScheduler > scheduler, SwitchEvents & events )
    : entities_( std::move( scheduler ) ),
      peer_( entities_.scheduler, entities_.aclResponseFromPeer, events ),
      egressAclWatcher_( Vex::make< OutputWatcher >( Interlock::egressAcl, events ) ),
      vlanXlateWatcher_( Vex::make< OutputWatcher >( Interlock::vlanXlate, events ) ),
      requestWatcher_( Vex::make< RequestWatcher >( events, peer_ ) ) {
   egressAclWatcher_->notifierIs( entities_.egressAclOutput );
   vlanXlateWatcher_->notifierIs( entities_.vlanOutput );
   requestWatcher_->notifierIs( entities_.aclRequestToPeer );
}

Switch::~Switch() = default;

// ---- What is so ---------------------------------------------------------------------------------

bool Switch::isMember( const Pair & pair ) const {
   const auto initialMember = entities_.hwLagConfig->initialMember( pair.lag );
   return initialMember && initialMember->memberHas( pair.member );
}

bool Switch::isHeldBy( Interlock interlock, const Pair & pair ) const {
   return interlocks_.runs( interlock ) && !entities_.output( interlock )->intfHas( pair );
}

bool Switch::isJoined( const Pair & pair ) const {
   return isMember( pair ) && std::ranges::none_of( interlocks, [ & ]( Interlock interlock ) {
             return isHeldBy( interlock, pair );
          } );
}

// They change the switch, if not its members.
// NOLINTBEGIN(readability-make-member-function-const)

// ---- What the switch's other agents publish -----------------------------------------------------

void Switch::apply( const Lag & lag ) {
   auto initialMember = Vex::make< Hardware::Lag::InitialMember >( lag.lag );
   for ( const Nodo::IntfId member : lag.members ) {
      initialMember->memberIs( member, Hardware::Lag::PortProgType( 0 ) );
   }
   entities_.hwLagConfig->initialMemberIs( std::move( initialMember ) );
}

void Switch::apply( const NoLag & lag ) {
   entities_.hwLagConfig->initialMemberDel( lag.lag );
}

void Switch::apply( const Member & member ) {
   const auto initialMember = entities_.hwLagConfig->initialMember( member.lag );
   if ( !initialMember && member.type ) {
      const std::string & name = member.lag.stringValue();
      throw StatementError( inQuotes( name ) +
                            " has no InitialMember; wanted: 'lag' for it before" );
   }
   if ( member.type ) {
      initialMember->memberIs( member.member, *member.type );
   } else if ( initialMember ) {
      initialMember->memberDel( member.member );
   }
}

void Switch::apply( const InputEntry & entry ) {
   const auto & input = entities_.input( entry.interlock );
   if ( entry.present ) {
      input->intfIs( entry.pair );
   } else {
      input->intfDel( entry.pair );
   }
}

void Switch::apply( const MlagState & state ) {
   entities_.mlagStatus->mlagStateIs( state.state );
}

void Switch::apply( const MlagPeerLink & peerLink ) {
   entities_.mlagStatus->peerLinkIs( peerLink.intf ? ethIntfStatus( *peerLink.intf ) : nullptr );
}

void Switch::apply( const Link & link ) {
   ethIntfStatus( link.intf )->linkStatusIs( link.status );
}

void Switch::apply( const MlagIntf & intf ) {
   if ( intf.status ) {
      entities_.mlagStatus->intfStatusIs( intf.lag, *intf.status );
   } else {
      entities_.mlagStatus->intfStatusDel( intf.lag );
   }
}

void Switch::apply( const MlagPeerInterlock & peerInterlock ) {
   entities_.mlagStatus->peerInterlockIs( peerInterlock.on );
}

void Switch::apply( const Response & response ) {
   if ( response.token ) {
      entities_.aclResponseFromPeer->installResponseIs( response.lag, *response.token );
   } else {
      entities_.aclResponseFromPeer->installResponseDel( response.lag );
   }
}

void Switch::apply( const Switchport & switchport ) {
   if ( switchport.present ) {
      entities_.bridgingConfig->switchIntfConfigIs(
         Vex::make< Bridging::SwitchIntfConfig >( switchport.intf ) );
   } else {
      entities_.bridgingConfig->switchIntfConfigDel( switchport.intf );
   }
}

void Switch::apply( const VlanXlate & mapping ) {
   const auto config = entities_.bridgingConfig->switchIntfConfig( mapping.intf );
   if ( !config ) {
      if ( mapping.newVlan ) {
         throw StatementError( inQuotes( mapping.intf.stringValue() ) +
                               " has no SwitchIntfConfig; wanted: 'switchport' for it before" );
      }
      return;
   }
   switch ( mapping.direction ) {
   case Direction::ingress:
      mapping.newVlan ? config->ingressVlanXlateIs( mapping.vlan, *mapping.newVlan )
                      : config->ingressVlanXlateDel( mapping.vlan );
      break;
   case Direction::egress:
      mapping.newVlan ? config->egressVlanXlateIs( mapping.vlan, *mapping.newVlan )
                      : config->egressVlanXlateDel( mapping.vlan );
      break;
   }
}

// ---- What an earlier owner left behind ----------------------------------------------------------

void Switch::apply( const OutputEntry & entry ) {
   const auto & output = entities_.output( entry.interlock );
   if ( entry.present ) {
      output->intfIs( entry.pair );
   } else {
      output->intfDel( entry.pair );
   }
}

void Switch::apply( const Request & request ) {
   if ( request.token ) {
      entities_.aclRequestToPeer->installRequestIs( request.lag, *request.token );
   } else {
      entities_.aclRequestToPeer->installRequestDel( request.lag );
   }
}

// NOLINTEND(readability-make-member-function-const)

// ---- Running the interlocks ---------------------------------------------------------------------

void Switch::apply( const Start & start ) {
   interlocks_.start( *start.machine, entities_ );
}

void Switch::apply( const Stop & stop ) {
   interlocks_.stop( stop.interlock );
}

void Switch::apply( const Restart & restart ) {
   interlocks_.restart( restart.interlock, entities_ );
}

void Switch::apply( const PeerEcho & echo ) {
   peer_.delayIs( echo.delay );
}

Vex::Ptr< Interface::EthIntfStatus > Switch::ethIntfStatus( Nodo::IntfId intf ) {
   if ( auto existing = entities_.ethIntfStatus.get( intf ) ) {
      return existing;
   }
   auto created = Vex::make< Interface::EthIntfStatus >( intf );
   entities_.ethIntfStatus.put( intf, created );
   return created;
}

} // namespace Replay
