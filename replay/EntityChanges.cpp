#include "replay/EntityChanges.h"

#include "replay/ScenarioError.h"
#include "replay/Text.h"

#include <string>
#include <utility>

namespace Replay {

namespace {

Vex::Ptr< Interface::EthIntfStatus > ethIntfStatus( Nodo::IntfId intf, Entities & entities ) {
   if ( auto existing = entities.ethIntfStatus.get( intf ) ) {
      return existing;
   }
   auto created = Vex::make< Interface::EthIntfStatus >( intf );
   entities.ethIntfStatus.put( intf, created );
   return created;
}

} // namespace

// ---- What the switch's other agents publish -----------------------------------------------------

void apply( const Lag & lag, const Entities & entities ) {
   auto initialMember = Vex::make< Hardware::Lag::InitialMember >( lag.lag );
   for ( const Nodo::IntfId member : lag.members ) {
      initialMember->memberIs( member, Hardware::Lag::PortProgType( 0 ) );
   }
   entities.hwLagConfig->initialMemberIs( std::move( initialMember ) );
}

void apply( const NoLag & lag, const Entities & entities ) {
   entities.hwLagConfig->initialMemberDel( lag.lag );
}

void apply( const Member & member, const Entities & entities ) {
   const auto initialMember = entities.hwLagConfig->initialMember( member.lag );
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

void apply( const InputEntry & entry, const Entities & entities ) {
   const auto & input = entities.input( entry.interlock );
   if ( entry.present ) {
      input->intfIs( entry.pair );
   } else {
      input->intfDel( entry.pair );
   }
}

void apply( const MlagState & state, const Entities & entities ) {
   entities.mlagStatus->mlagStateIs( state.state );
}

void apply( const MlagPeerLink & peerLink, Entities & entities ) {
   entities.mlagStatus->peerLinkIs( peerLink.intf ? ethIntfStatus( *peerLink.intf, entities )
                                                  : nullptr );
}

void apply( const Link & link, Entities & entities ) {
   ethIntfStatus( link.intf, entities )->linkStatusIs( link.status );
}

void apply( const MlagIntf & intf, const Entities & entities ) {
   if ( intf.status ) {
      entities.mlagStatus->intfStatusIs( intf.lag, *intf.status );
   } else {
      entities.mlagStatus->intfStatusDel( intf.lag );
   }
}

void apply( const MlagPeerInterlock & peerInterlock, const Entities & entities ) {
   entities.mlagStatus->peerInterlockIs( peerInterlock.on );
}

void apply( const Response & response, const Entities & entities ) {
   if ( response.token ) {
      entities.aclResponseFromPeer->installResponseIs( response.lag, *response.token );
   } else {
      entities.aclResponseFromPeer->installResponseDel( response.lag );
   }
}

void apply( const Switchport & switchport, const Entities & entities ) {
   if ( switchport.present ) {
      entities.bridgingConfig->switchIntfConfigIs(
         Vex::make< Bridging::SwitchIntfConfig >( switchport.intf ) );
   } else {
      entities.bridgingConfig->switchIntfConfigDel( switchport.intf );
   }
}

void apply( const VlanXlate & mapping, const Entities & entities ) {
   const auto config = entities.bridgingConfig->switchIntfConfig( mapping.intf );
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

void apply( const OutputEntry & entry, const Entities & entities ) {
   const auto & output = entities.output( entry.interlock );
   if ( entry.present ) {
      output->intfIs( entry.pair );
   } else {
      output->intfDel( entry.pair );
   }
}

void apply( const Request & request, const Entities & entities ) {
   if ( request.token ) {
      entities.aclRequestToPeer->installRequestIs( request.lag, *request.token );
   } else {
      entities.aclRequestToPeer->installRequestDel( request.lag );
   }
}

} // namespace Replay
