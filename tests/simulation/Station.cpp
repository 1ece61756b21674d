#include "tests/simulation/Station.h"

#include "Velo/VeloIntfInterlock.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "platform/Vex/Clock.h"
#include "tests/simulation/Inspection.h"
#include "tests/simulation/Names.h"

#include <utility>

namespace Simulation {

namespace {

std::string pairText( PortInLag pair ) {
   return portName( pair.port ).stringValue() + " " + lagName( pair.lag ).stringValue();
}

} // namespace

Station::Station( Replay::Peering::Side side,
                  const Vex::Ptr< Kel::TaskScheduler > & scheduler,
                  History & history,
                  Coverage & coverage )
    : side_( side ), entities_( scheduler ), history_( history ), coverage_( coverage ),
      ledger_( coverage ) {}

double Station::now() const {
   return Vex::now().value();
}

void Station::did( std::string statement ) {
   coverage_.event();
   history_.add( now(), side_, std::move( statement ) );
}

void Station::toLedger() {
   Observed seen = inspect( entities_, agent_ );
   note( seen );
   last_ = seen;
   ledger_.seenIs( now(), std::move( seen ) );
}

// What has changed since the last look, for people.
void Station::note( const Observed & seen ) {
   if ( seen.requests != last_.requests ) {
      std::string text = "requests:";
      for ( const auto & [ lag, token ] : seen.requests ) {
         text += " " + lagName( lag ).stringValue() + " " + std::to_string( token );
      }
      history_.note( now(), side_, text );
   }
   if ( seen.links != last_.links ) {
      std::string text = "link states:";
      for ( const auto & [ lag, link ] : seen.links ) {
         text += " " + lagName( lag ).stringValue() + " " + std::string( nameOf( link ) );
      }
      history_.note( now(), side_, text );
   }
   if ( seen.admitted != last_.admitted ) {
      std::string text = "admitted:";
      for ( const PortInLag pair : seen.admitted ) {
         text += " " + pairText( pair );
      }
      history_.note( now(), side_, text );
   }
}

void Station::note( const std::string & what ) {
   history_.note( now(), side_, what );
}

void Station::look() {
   toLedger();
   ledger_.deadlinesCome();
   ledger_.check();
}

void Station::lagIs( LagNo lag, const std::set< PortNo > & members ) {
   auto initialMember = Vex::make< Hardware::Lag::InitialMember >( lagName( lag ) );
   std::string statement = "lag " + lagName( lag ).stringValue();
   for ( const PortNo port : members ) {
      initialMember->memberIs( portName( port ), Hardware::Lag::PortProgType( 0 ) );
      statement += " " + portName( port ).stringValue();
   }
   did( statement );
   entities_.hwLagConfig->initialMemberIs( std::move( initialMember ) );
   toLedger();
   ledger_.lagIs( lag, members );
   ledger_.check();
}

void Station::lagGone( LagNo lag ) {
   did( "no lag " + lagName( lag ).stringValue() );
   entities_.hwLagConfig->initialMemberDel( lagName( lag ) );
   toLedger();
   ledger_.lagGone( lag );
   ledger_.check();
}

void Station::memberIs( PortInLag pair, bool in ) {
   did( std::string( in ? "member " : "no member " ) + lagName( pair.lag ).stringValue() + " " +
        portName( pair.port ).stringValue() );
   const auto initialMember = entities_.hwLagConfig->initialMember( lagName( pair.lag ) );
   if ( in ) {
      initialMember->memberIs( portName( pair.port ), Hardware::Lag::PortProgType( 0 ) );
   } else {
      initialMember->memberDel( portName( pair.port ) );
   }
   toLedger();
   ledger_.memberIs( pair, in );
   ledger_.check();
}

void Station::aclIs( PortInLag pair, bool installed ) {
   did( std::string( installed ? "acl " : "no acl " ) + pairText( pair ) );
   if ( installed ) {
      entities_.aclInput->intfIs( nameOf( pair ) );
   } else {
      entities_.aclInput->intfDel( nameOf( pair ) );
   }
   toLedger();
   ledger_.aclIs( pair, installed );
   ledger_.check();
}

void Station::mlagIntfIs( LagNo lag, bool known, bool activeOnPeer, const std::string & text ) {
   const std::string & name = lagName( lag ).stringValue();
   const Mlag::IntfStatus status{ text, Mlag::IntfState::active,
                                  activeOnPeer ? Mlag::IntfState::active
                                               : Mlag::IntfState::inactive };
   const bool isKnown = entities_.mlagStatus->intfStatusHas( lagName( lag ) );
   if ( known == isKnown &&
        ( !known || entities_.mlagStatus->intfStatus( lagName( lag ) ) == status ) ) {
      return; // changes nothing, and nobody is told
   }
   if ( known ) {
      did( "mlag intf " + name + ( activeOnPeer ? " 2 2 " : " 2 1 " ) + text );
      entities_.mlagStatus->intfStatusIs( lagName( lag ), status );
   } else {
      did( "no mlag intf " + name );
      entities_.mlagStatus->intfStatusDel( lagName( lag ) );
   }
   toLedger();
   ledger_.mlagIntfIs( lag, known, activeOnPeer );
   ledger_.check();
}

void Station::mlagStateIs( unsigned state ) {
   const auto wanted = Mlag::State( static_cast< std::uint8_t >( state ) );
   if ( wanted == entities_.mlagStatus->mlagState() ) {
      return;
   }
   did( "mlag state " + std::to_string( state ) );
   entities_.mlagStatus->mlagStateIs( wanted );
   toLedger();
   ledger_.mlagIs( state == 3 || state == 4 );
   ledger_.check();
}

Vex::Ptr< Interface::EthIntfStatus > Station::linkEntity( unsigned which ) {
   const Nodo::IntfId name( "Ethernet" + std::to_string( 48 + which ) );
   if ( auto existing = entities_.ethIntfStatus.get( name ) ) {
      return existing;
   }
   auto created = Vex::make< Interface::EthIntfStatus >( name );
   entities_.ethIntfStatus.put( name, created );
   return created;
}

bool Station::peerLinkUp() const {
   const auto & link = entities_.mlagStatus->peerLink();
   return link && link->linkStatus() == Interface::LinkStatus::up;
}

void Station::peerLinkIs( unsigned which ) {
   const Vex::Ptr< const Interface::EthIntfStatus > entity =
      which == 0 ? nullptr : linkEntity( which );
   if ( entity == entities_.mlagStatus->peerLink() ) {
      return;
   }
   did( entity ? "mlag peer-link " + entity->intfId().stringValue() : "no mlag peer-link" );
   entities_.mlagStatus->peerLinkIs( entity );
   toLedger();
   ledger_.peerLinkIs( peerLinkUp() );
   ledger_.check();
}

void Station::linkStatusIs( unsigned which, bool up ) {
   const auto entity = linkEntity( which );
   const auto wanted = up ? Interface::LinkStatus::up : Interface::LinkStatus::down;
   if ( wanted == entity->linkStatus() ) {
      return;
   }
   did( "link " + entity->intfId().stringValue() + ( up ? " 2" : " 1" ) );
   entity->linkStatusIs( wanted );
   toLedger();
   if ( entity == entities_.mlagStatus->peerLink() ) {
      ledger_.peerLinkIs( up );
   }
   ledger_.check();
}

void Station::peerModeIs( bool peer ) {
   did( std::string( "mlag peer-interlock " ) + ( peer ? "on" : "off" ) );
   entities_.mlagStatus->peerInterlockIs( peer );
   toLedger();
   ledger_.peerModeIs( peer );
   ledger_.check();
}

void Station::foreignAnswerIs( Token token ) {
   answerArriving( foreignLag, token );
   entities_.aclResponseFromPeer->installResponseIs( lagName( foreignLag ), token );
   answerArrived( foreignLag );
}

void Station::agentIs( bool running ) {
   did( running ? "start controller" : "stop egress-acl" );
   if ( running ) {
      agent_ = Velo::mlagEgressAclIntfInterlockControllerSmFactory(
         entities_.aclInput, entities_.hwLagConfig, entities_.mlagStatus,
         entities_.aclResponseFromPeer, entities_.aclRequestToPeer, entities_.scheduler,
         entities_.egressAclOutput );
   } else {
      agent_.release();
   }
   toLedger();
   if ( running ) {
      ledger_.agentStarted();
   } else {
      ledger_.agentStopped();
   }
   ledger_.check();
}

void Station::answerArriving( LagNo lag, std::optional< Token > token ) {
   const std::string & name = lagName( lag ).stringValue();
   did( token ? "response " + name + " " + std::to_string( *token ) : "no response " + name );
   answerChanges_ = ledger_.answer( lag ) != token;
   ledger_.answerIs( lag, token );
}

void Station::answerArrived( LagNo lag ) {
   toLedger();
   if ( std::exchange( answerChanges_, false ) ) {
      ledger_.answerTold( lag );
   }
   ledger_.check();
}

} // namespace Simulation
