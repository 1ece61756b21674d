#pragma once

// The books of one simulated switch: what its inputs are, what its egress-ACL interlock must
// therefore have decided, and whether what is seen of it agrees. It knows the rules by itself and
// shares no code with the interlocks.
//
// After each change: seenIs(), then what changed, then check(). The first disagreement is kept.

#include "replay/pair/Admission.h"
#include "tests/simulation/Coverage.h"
#include "tests/simulation/Observed.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Simulation {

using Replay::Peering::FailCause;

class Ledger {
 public:
   explicit Ledger( Coverage & coverage ) : coverage_( coverage ) {}

   // What is seen, and what changed.

   void seenIs( double now, Observed seen ) {
      now_ = now;
      seen_ = std::move( seen );
   }
   void lagIs( LagNo lag, std::set< PortNo > members ); // a new one, in place of any other
   void lagGone( LagNo lag );
   void memberIs( PortInLag pair, bool in );
   void aclIs( PortInLag pair, bool installed );
   void mlagIntfIs( LagNo lag, bool known, bool activeOnPeer );
   void mlagIs( bool active );
   void peerLinkIs( bool up );
   void peerModeIs( bool peer );
   /// The answer lies there; the interlock may not have been told yet.
   void answerIs( LagNo lag, std::optional< Token > token );
   /// The interlock has been told of the answer.
   void answerTold( LagNo lag );
   void agentStarted();
   void agentStopped() { running_ = false; }
   /// Finds the deadlines that have come, by what is seen.
   void deadlinesCome();
   void check();
   /// Nothing is under way any more: no member is held for which the inputs admit it, apart from
   /// those that nothing has touched since.
   void checkSettled();
   /// Moreover the wire has lost nothing since this LAG came up last, and something has looked at
   /// every member.
   void checkRecovered( LagNo lag, bool peerReady );

   const std::string & violation() const { return violation_; }
   void violated( const std::string & what );

   // What the books say.

   bool running() const { return running_; }
   bool peerMode() const { return peerMode_; }
   bool isThere( LagNo lag ) const { return book( lag ).present; }
   bool isMlag( LagNo lag ) const { return book( lag ).known; }
   const std::set< PortNo > & members( LagNo lag ) const { return book( lag ).members; }
   std::optional< Token > answer( LagNo lag ) const { return book( lag ).answer; }
   Link link( LagNo lag ) const { return book( lag ).link.value_or( Link::down ); }
   FailCause failCause( LagNo lag ) const { return book( lag ).cause; }
   bool asks() const; // some LAG waits for an answer
   bool hasAcl( PortInLag pair ) const { return acl_.contains( pair ); }
   /// Every member has its ACL.
   bool isReady( LagNo lag ) const;
   const std::set< PortInLag > & admitted() const { return admitted_; }
   std::optional< Token > request( LagNo lag ) const { return book( lag ).request; }
   /// Nothing has looked at the pair since its LAG was put, replaced or withdrawn, or since the
   /// link state was changed on behalf of another member alone.
   bool isUndecided( PortInLag pair ) const { return undecided_.contains( pair ); }
   bool isRevoked( LagNo lag, Token token ) const { return revoked_.contains( { lag, token } ); }
   /// The token was given out by an agent, or a peer interlock, that is no more.
   bool isFromEarlierLife( LagNo lag, Token token ) const;

 private:
   struct Book {
      bool present = false;
      std::set< PortNo > members;
      bool known = false; // an MLAG interface
      bool activeOnPeer = false;
      std::optional< Token > answer;
      std::optional< Token > request;
      std::optional< Link > link;
      double deadline = 0;
      FailCause cause = FailCause::timeOut;
      bool tokenIsOld = false; // the request has the token of an earlier one of this LAG
   };

   const Book & book( LagNo lag ) const;
   bool active( LagNo lag ) const { return !book( lag ).members.empty(); }
   bool matched( const Book & book ) const;
   bool peerRuns() const { return running_ && peerMode_; }
   bool basicRuns() const { return running_ && !peerMode_; }
   bool aclNeededByBasic( LagNo lag ) const;

   // Decisions, as the inputs stand.
   void decide( PortInLag pair );
   void decideBasic( PortInLag pair );
   void decidePeer( PortInLag pair );
   bool mayJoin( PortInLag pair ) const;
   void lookAt( LagNo lag ); // the LAG's request and link state
   void decideLag( LagNo lag );
   void decideAllOfBasic();
   void linkIs( LagNo lag, Link link );
   void askFor( LagNo lag );
   void revoke( LagNo lag );
   void startPeer();
   void startBasic();
   void touchNothing( LagNo lag );

   // Checks.
   void checkTokens();
   void checkSafety();
   void checkTimers();
   void checkBooks();

   Coverage & coverage_;
   double now_ = 0;
   Observed seen_;
   std::map< LagNo, Book > books_;
   std::set< PortInLag > acl_;
   std::set< PortInLag > admitted_;
   std::set< PortInLag > undecided_;
   std::map< std::pair< LagNo, Token >, unsigned > issued_; // in which life
   std::set< std::pair< LagNo, Token > > revoked_;
   std::vector< Token > fresh_; // tokens that the change under way has brought
   Token lastToken_ = 0;
   unsigned life_ = 0;
   bool mlagActive_ = false;
   bool peerLinkUp_ = false;
   bool peerMode_ = false;
   bool running_ = false;
   std::string violation_;
};

} // namespace Simulation
