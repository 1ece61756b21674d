#pragma once

// One switch of a simulated pair: its entities, the agent that runs its egress-ACL interlock, and
// the books about it. Every change goes to the entity, into the history and into the books, in this
// order.

#include "interlock-model/StateMachine.h"
#include "replay/Entities.h"
#include "replay/pair/Exchange.h"
#include "tests/simulation/Coverage.h"
#include "tests/simulation/History.h"
#include "tests/simulation/Ledger.h"
#include "tests/simulation/Observed.h"

#include <set>
#include <string>

namespace Simulation {

class Station {
 public:
   Station( Replay::Peering::Side side,
            const Vex::Ptr< Kel::TaskScheduler > & scheduler,
            History & history,
            Coverage & coverage );

   const Replay::Entities & entities() const { return entities_; }
   Ledger & ledger() { return ledger_; }
   const Ledger & ledger() const { return ledger_; }

   void lagIs( LagNo lag, const std::set< PortNo > & members );
   void lagGone( LagNo lag );
   void memberIs( PortInLag pair, bool in ); // the LAG is there
   void aclIs( PortInLag pair, bool installed );
   void mlagIntfIs( LagNo lag, bool known, bool activeOnPeer, const std::string & text );
   void mlagStateIs( unsigned state );
   /// Of the two links that the peer link may be on, this one; 0: none.
   void peerLinkIs( unsigned which );
   void linkStatusIs( unsigned which, bool up );
   void peerModeIs( bool peer );
   void foreignAnswerIs( Token token );
   void agentIs( bool running );

   // An answer arrives: before and after the entity has it.
   void answerArriving( LagNo lag, std::optional< Token > token );
   void answerArrived( LagNo lag );

   /// For people.
   void note( const std::string & what );
   /// Looks at the switch, and checks whatever has happened of itself.
   void look();

 private:
   double now() const;
   void did( std::string statement );
   bool peerLinkUp() const;
   void toLedger(); // what is seen, before what changed
   void note( const Observed & seen );
   Vex::Ptr< Interface::EthIntfStatus > linkEntity( unsigned which );

   Replay::Peering::Side side_;
   Replay::Entities entities_;
   History & history_;
   Coverage & coverage_;
   Ledger ledger_;
   Vex::Ptr< InterlockModel::StateMachine > agent_;
   Observed last_; // seen
   bool answerChanges_ = false;
};

} // namespace Simulation
