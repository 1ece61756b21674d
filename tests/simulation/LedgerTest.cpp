// The books notice what is wrong. Each test shows a switch that does something else than it must.

#include "tests/simulation/Ledger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using Simulation::Coverage;
using Simulation::Ledger;
using Simulation::Link;
using Simulation::Observed;
using Simulation::PortInLag;
using ::testing::HasSubstr;

constexpr Simulation::LagNo lag = 0;
constexpr PortInLag port{ lag, 0 };

// A switch in peer mode whose one MLAG LAG asks with token 2 since time 0, as it should be.
struct Books {
   Coverage coverage;
   Ledger ledger{ coverage };
   Observed seen;

   Books() {
      ledger.peerModeIs( true );
      ledger.mlagIntfIs( lag, true, true );
      ledger.lagIs( lag, { 0 } );
      seen.peerRuns = true;
      seen.requests = { { lag, 2 } };
      seen.links = { { lag, Link::asking } };
      seen.deadlines = { { lag, 0.1 } };
      seen.armedFor = lag;
      seen.armedDue = 0.1;
      look( 0 );
      ledger.agentStarted();
      ledger.check();
      EXPECT_EQ( ledger.violation(), "" );
   }

   void look( double now ) { ledger.seenIs( now, seen ); }
   // The peer answers with the token, and the switch does what it should.
   void answered() {
      ledger.answerIs( lag, 2 );
      seen.links = { { lag, Link::up } };
      seen.deadlines.clear();
      seen.armedFor.reset();
      seen.armedDue = INFINITY;
      look( 0.01 );
      ledger.answerTold( lag );
      ledger.check();
      EXPECT_EQ( ledger.violation(), "" );
   }
   // What the books say to what is seen.
   std::string verdict( double now ) {
      look( now );
      ledger.deadlinesCome();
      ledger.check();
      return ledger.violation();
   }
};

TEST( Ledger, AMemberThatJoinsWhileItsLagAsksIsNoticed ) {
   Books books;
   books.seen.admitted = { port };
   EXPECT_EQ( books.verdict( 0.05 ), "Ethernet1 of PortChannel1 is admitted without a reason" );
}

TEST( Ledger, AMemberThatJoinsWithoutItsAclIsNoticed ) {
   Books books;
   books.answered();
   books.seen.admitted = { port };
   EXPECT_EQ( books.verdict( 0.05 ), "Ethernet1 of PortChannel1 is admitted without a reason" );
}

TEST( Ledger, AMemberThatIsHeldAlthoughAllIsThereIsNoticed ) {
   Books books;
   books.answered();
   books.look( 0.05 );
   books.ledger.aclIs( port, true );
   books.ledger.check();
   EXPECT_EQ( books.ledger.violation(),
              "Ethernet1 of PortChannel1 is held, and should be admitted" );
}

TEST( Ledger, AnAnswerToAnotherRequestBringsNoLagUp ) {
   Books books;
   books.ledger.answerIs( lag, 7 );
   books.seen.links = { { lag, Link::up } };
   books.seen.deadlines.clear();
   books.look( 0.01 );
   books.ledger.answerTold( lag );
   books.ledger.check();
   EXPECT_EQ( books.ledger.violation(), "PortChannel1 is linkUp without an answer to its request" );
}

TEST( Ledger, ATimeOutThatDoesNotComeIsNoticed ) {
   Books books;
   EXPECT_THAT( books.verdict( 0.2 ), HasSubstr( "PortChannel1 has its deadline at 0.1" ) );
}

TEST( Ledger, ATimeOutThatComesEarlyIsNoticed ) {
   Books books;
   books.seen.links = { { lag, Link::failed } };
   books.seen.deadlines.clear();
   books.seen.armedFor.reset();
   books.seen.armedDue = INFINITY;
   EXPECT_EQ( books.verdict( 0.05 ), "link states are not as they should be" );
}

TEST( Ledger, ADeadlineThatMovesIsNoticed ) {
   Books books;
   books.seen.deadlines = { { lag, 0.12 } };
   books.seen.armedDue = 0.12;
   EXPECT_EQ( books.verdict( 0.05 ), "PortChannel1 has moved its deadline" );
}

TEST( Ledger, ALagThatAsksWithoutADeadlineIsNoticed ) {
   Books books;
   books.seen.deadlines.clear();
   EXPECT_EQ( books.verdict( 0.05 ), "PortChannel1 asks without a deadline" );
}

TEST( Ledger, ATimerThatIsNotArmedIsNoticed ) {
   Books books;
   books.seen.armedDue = INFINITY;
   EXPECT_EQ( books.verdict( 0.05 ), "the timer is not armed for the earliest deadline" );
}

TEST( Ledger, ATimerThatIsArmedForNobodyIsNoticed ) {
   Books books;
   books.answered();
   books.seen.armedDue = 0.1;
   EXPECT_EQ( books.verdict( 0.05 ), "the timer is armed, and no LAG asks" );
}

TEST( Ledger, ARequestThatIsSentAgainIsNoticed ) {
   Books books;
   books.seen.requests = { { lag, 3 } };
   EXPECT_EQ( books.verdict( 0.05 ), "other requests are out than should be" );
}

TEST( Ledger, ATokenOutOfOrderIsNoticed ) {
   Books books;
   books.seen.requests.clear();
   books.seen.links = { { lag, Link::down } };
   books.seen.deadlines.clear();
   books.seen.armedFor.reset();
   books.seen.armedDue = INFINITY;
   books.look( 0.01 );
   books.ledger.memberIs( port, false );
   books.ledger.check();
   ASSERT_EQ( books.ledger.violation(), "" );
   books.seen.requests = { { lag, 2 } }; // the revoked one once more
   books.seen.links = { { lag, Link::asking } };
   books.seen.deadlines = { { lag, 0.12 } };
   books.seen.armedFor = lag;
   books.seen.armedDue = 0.12;
   books.look( 0.02 );
   books.ledger.memberIs( port, true );
   books.ledger.check();
   EXPECT_EQ( books.ledger.violation(), "a request has token 2 instead of 3" );
}

TEST( Ledger, TheWrongInterlockIsNoticed ) {
   Books books;
   books.seen.basicRuns = true;
   EXPECT_EQ( books.verdict( 0.05 ), "the wrong interlock runs" );
}

TEST( Ledger, ALagThatStillAsksWhenAllIsOverIsNoticed ) {
   Books books;
   books.ledger.checkSettled();
   EXPECT_EQ( books.ledger.violation(), "PortChannel1 still asks" );
}

TEST( Ledger, ALagThatIsNotUpAlthoughThePeerIsReadyIsNoticed ) {
   Books books;
   books.answered();
   books.ledger.checkRecovered( lag, false );
   EXPECT_EQ( books.ledger.violation(), "PortChannel1 is linkUp, and the peer is not ready" );
}

} // namespace
