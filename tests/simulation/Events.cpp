// What happens to a pair by chance, apart from what its wire does.

#include "tests/simulation/Names.h"
#include "tests/simulation/PairRun.h"

#include <array>
#include <utility>

namespace Simulation {

double PairRun::someTime() {
   const std::uint32_t kind = random_.below( 100 );
   const std::uint32_t most = kind < 20 ? 1U : kind < 70 ? 5'000U : kind < 95 ? 30'000U : 250'000U;
   return random_.below( most ) / 1e6;
}

std::set< PortNo > PairRun::somePorts() {
   std::set< PortNo > some;
   for ( PortNo port = 0; port < ports_; ++port ) {
      if ( random_.percent( 70 ) ) {
         some.insert( port );
      }
   }
   return some;
}

void PairRun::somethingHappens( Station & station ) {
   using Event = void ( PairRun::* )( Station & );
   static constexpr std::array< std::pair< std::uint32_t, Event >, 9 > events{ {
      { 30, &PairRun::portFlaps },
      { 34, &PairRun::aclChanges },
      { 9, &PairRun::lagFlaps },
      { 9, &PairRun::mlagIntfChanges },
      { 3, &PairRun::mlagStateChanges },
      { 4, &PairRun::peerLinkChanges },
      { 4, &PairRun::modeChanges },
      { 6, &PairRun::agentDies },
      { 1, &PairRun::counterJumps },
   } };
   if ( !station.ledger().running() && random_.percent( 50 ) ) {
      coverage_.hit( Fault::agentStarted );
      station.agentIs( true );
      return;
   }
   std::uint32_t drawn = random_.below( 100 );
   for ( const auto & [ weight, event ] : events ) {
      if ( drawn < weight ) {
         ( this->*event )( station );
         return;
      }
      drawn -= weight;
   }
}

void PairRun::portFlaps( Station & station ) {
   const PortInLag pair{ someLag(), somePort() };
   if ( !station.ledger().isThere( pair.lag ) ) {
      return;
   }
   const bool in = !station.ledger().members( pair.lag ).contains( pair.port );
   coverage_.hit( in ? Fault::portIn : Fault::portOut );
   station.memberIs( pair, in );
}

// Mostly they come, so that a pair is ready now and then.
void PairRun::aclChanges( Station & station ) {
   const PortInLag pair{ someLag(), somePort() };
   const bool installed = !station.ledger().hasAcl( pair ) || !random_.percent( 40 );
   if ( installed != station.ledger().hasAcl( pair ) ) {
      coverage_.hit( installed ? Fault::aclInstalled : Fault::aclLost );
      station.aclIs( pair, installed );
   }
}

void PairRun::lagFlaps( Station & station ) {
   const LagNo lag = someLag();
   if ( station.ledger().isThere( lag ) ) {
      if ( random_.percent( 60 ) ) {
         coverage_.hit( Fault::lagWithdrawn );
         station.lagGone( lag );
      } else {
         coverage_.hit( Fault::lagReplaced );
         station.lagIs( lag, somePorts() );
      }
      return;
   }
   if ( random_.percent( 30 ) ) {
      coverage_.hit( Fault::lagPutWithMembers );
      station.lagIs( lag, somePorts() );
      return;
   }
   coverage_.hit( Fault::lagEmptyThenFilled );
   station.lagIs( lag, {} );
   for ( const PortNo port : somePorts() ) {
      if ( !failed() ) {
         station.memberIs( { lag, port }, true );
      }
   }
}

void PairRun::mlagIntfChanges( Station & station ) {
   const LagNo lag = someLag();
   const bool known = random_.percent( 75 );
   const bool activeOnPeer = random_.percent( 70 );
   if ( !known ) {
      coverage_.hit( Fault::mlagIntfGone );
   } else if ( !activeOnPeer ) {
      coverage_.hit( Fault::mlagIntfPeerInactive );
   }
   station.mlagIntfIs( lag, known, activeOnPeer, random_.percent( 50 ) ? "up" : "changed" );
}

void PairRun::mlagStateChanges( Station & station ) {
   const std::uint32_t state = random_.percent( 60 ) ? 3 + random_.below( 2 ) : random_.below( 3 );
   if ( state < 3 ) {
      coverage_.hit( Fault::mlagStateInactive );
   }
   station.mlagStateIs( state );
}

void PairRun::peerLinkChanges( Station & station ) {
   const std::uint32_t which = 1 + random_.below( 2 );
   if ( random_.percent( 50 ) ) {
      const bool up = random_.percent( 60 );
      if ( !up ) {
         coverage_.hit( Fault::peerLinkDown );
      }
      station.linkStatusIs( which, up );
   } else if ( random_.percent( 70 ) ) {
      coverage_.hit( Fault::peerLinkReplaced );
      station.peerLinkIs( which );
   } else {
      coverage_.hit( Fault::peerLinkGone );
      station.peerLinkIs( 0 );
   }
}

void PairRun::modeChanges( Station & station ) {
   const bool peer = !station.ledger().peerMode();
   if ( station.ledger().running() && station.ledger().peerMode() && station.ledger().asks() ) {
      coverage_.hit( Fault::modeFlipWhileAsking );
   }
   coverage_.hit( peer ? Fault::modeToPeer : Fault::modeToBasic );
   station.peerModeIs( peer );
   if ( !peer && random_.percent( 70 ) ) { // mostly back soon
      coverage_.hit( Fault::modeToPeer );
      wait( someTime() );
      if ( !failed() ) {
         station.peerModeIs( true );
      }
   }
}

void PairRun::agentDies( Station & station ) {
   if ( !station.ledger().running() ) {
      return;
   }
   coverage_.hit( Fault::agentKilled );
   station.agentIs( false );
   if ( !failed() && random_.percent( 50 ) ) { // mostly started again at once
      coverage_.hit( Fault::agentStarted );
      station.agentIs( true );
   }
}

// The next interlock to start goes on from here.
void PairRun::counterJumps( Station & station ) {
   coverage_.hit( Fault::counterNearItsEnd );
   station.foreignAnswerIs( Token( 0 ) - 1 - random_.below( 8 ) );
}

void PairRun::answerHeard( Station & station, LagNo lag ) {
   if ( !faulty_ || !eager_ || lag == foreignLag || !random_.percent( 15 ) ) {
      return;
   }
   const PortInLag pair{ lag, somePort() };
   coverage_.hit( Fault::aclHeardInsideAnswer );
   station.note( "inside the answer:" );
   station.aclIs( pair, !station.ledger().hasAcl( pair ) );
}

} // namespace Simulation
