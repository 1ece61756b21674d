// Clock, expects and the errors that show when a statement is reached.

#include "tests/replay/Playing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TestSupport::aclNeeded;
using TestSupport::play;

// The results of the expects of a scenario that plays to its end.
std::vector< bool > results( const std::string & scenario ) {
   const auto played = play( scenario );
   EXPECT_EQ( played.error, "" );
   std::vector< bool > all;
   for ( const auto & object : played.objects( "expect" ) ) {
      all.push_back( object.at( "ok" ) );
   }
   return all;
}

double endTime( std::string_view scenario ) {
   return play( scenario ).object( "end" ).at( "t" );
}

// ---- Time ---------------------------------------------------------------------------------------

TEST( Runner, StartsAtZeroAndStandsStillWithoutBeingMoved ) {
   EXPECT_EQ( endTime( "" ), 0.0 );
   EXPECT_EQ( endTime( "mlag state 3" ), 0.0 );
}

TEST( Runner, GoesToTheMomentOfAtAndOnByTheDurationOfWait ) {
   EXPECT_EQ( endTime( "at 1.5" ), 1.5 );
   EXPECT_EQ( endTime( "at 1.5\nwait 0.25\nwait 0.25" ), 2.0 );
   EXPECT_EQ( endTime( "at 1\nat 1\nwait 0" ), 1.0 );
}

TEST( Runner, RefusesToGoBackwards ) {
   const auto played = play( "at 1.5\nat 1.25\nmlag state 3" );
   EXPECT_EQ( played.error, "2: '1.25' is in the past; wanted: 1.5 or later" );
}

TEST( Runner, RefusesToGoOnForEver ) {
   const std::string most = "1" + std::string( 308, '0' );
   const auto played = play( "at " + most + "\nwait 1\nwait " + most );
   EXPECT_THAT( played.error, ::testing::StartsWith( "3: '1000" ) );
   EXPECT_THAT( played.error,
                ::testing::EndsWith( "…' is more than the clock can go on; wanted: less" ) );
}

TEST( Runner, RunsWhatIsDueAtExactlyTheTarget ) {
   EXPECT_THAT( play( "peer echo 0.1\nrequest P 1\nat 0.1" ).objects( "response" ),
                ::testing::SizeIs( 1 ) );
}

// ---- Expects ------------------------------------------------------------------------------------

TEST( Runner, ExpectOfAnOutputLooksAtThatOutputOnly ) {
   EXPECT_THAT( results( "output egress-acl E P\n"
                         "expect egress-acl E P\n"
                         "expect no egress-acl E P\n"
                         "expect vlan-xlate E P\n"
                         "expect no vlan-xlate E P\n" ),
                ElementsAre( true, false, false, true ) );
}

TEST( Runner, ExpectJoinedWantsMembershipAndTheVerdict ) {
   EXPECT_THAT( results( aclNeeded + "expect joined Ethernet1 PortChannel10\n"
                                     "start basic\n"
                                     "expect joined Ethernet1 PortChannel10\n"
                                     "expect held Ethernet1 PortChannel10\n"
                                     "acl Ethernet1 PortChannel10\n"
                                     "expect joined Ethernet1 PortChannel10\n"
                                     "expect held Ethernet1 PortChannel10\n" ),
                ElementsAre( true, false, true, true, false ) );
}

TEST( Runner, ExpectRequestComparesTheToken ) {
   EXPECT_THAT(
      results( "expect no request P\nexpect request P 0\n"
               "request P 0\nexpect request P 0\nexpect request P 1\nexpect no request P\n" ),
      ElementsAre( true, false, true, false, false ) );
}

TEST( Runner, ExpectTraceSeesMessagesOfEveryLevel ) {
   EXPECT_THAT( results( aclNeeded + "start basic\n"
                                     "expect trace handleInitialized\n"
                                     "expect trace \"lag member is active\"\n"
                                     "expect no trace \"lag member is active\"\n"
                                     "expect trace \"no such text\"\n"
                                     "expect no trace \"no such text\"\n" ),
                ElementsAre( true, true, false, false, true ) );
}

TEST( Runner, ExpectTraceForgetsWhatCameBeforeTheLastOtherStatement ) {
   EXPECT_THAT( results( aclNeeded + "start basic\n"
                                     "expect held Ethernet1 PortChannel10\n"
                                     "expect trace handleInitialized\n"
                                     "wait 0\n"
                                     "expect trace handleInitialized\n"
                                     "expect trace \"\"\n" ),
                ElementsAre( true, true, false, false ) );
}

TEST( Runner, ExpectTraceShowsNothingByItself ) {
   const auto played = play( aclNeeded + "start basic\nexpect trace handleInitialized\n" );
   EXPECT_THAT( played.objects( "trace" ), IsEmpty() );
}

TEST( Runner, CountsTheExpectsThatFailedAndGoesOn ) {
   const auto played =
      play( "expect joined E P\nexpect held E P\nexpect joined E P\nmlag state 1" );
   EXPECT_EQ( played.failed, 2U );
   EXPECT_EQ( played.object( "end" ).at( "failed" ), 2 );
   EXPECT_EQ( played.objects( "statement" ).size(), 4U );
}

// ---- Errors of statements that are reached ------------------------------------------------------

TEST( Runner, EndsAtAStatementThatCannotBeDone ) {
   const auto played = play( "mlag state 3\noutput egress-acl E P\n\nmember P E\nmlag state 4" );
   EXPECT_EQ( played.error, "4: 'P' has no InitialMember; wanted: 'lag' for it before" );
   EXPECT_EQ( played.objects( "statement" ).size(), 3U );
   EXPECT_EQ( played.objects( "verdict" ).size(), 1U );
   EXPECT_THAT( played.objects( "end" ), IsEmpty() );
}

TEST( Runner, NamesTheLineOfEachErrorOfAStatementThatIsReached ) {
   EXPECT_EQ( play( "\nstop egress-acl" ).error.substr( 0, 3 ), "2: " );
   EXPECT_EQ( play( "start basic\nstart basic" ).error.substr( 0, 3 ), "2: " );
   EXPECT_EQ( play( "vlan-xlate P ingress 1 2" ).error.substr( 0, 3 ), "1: " );
}

TEST( Runner, RunsNothingOfAScenarioWithASyntaxError ) {
   const auto played = play( "mlag state 3\nmlag state x" );
   EXPECT_EQ( played.error, "2: 'x' is no N; wanted: a number from 0 to 255" );
   EXPECT_EQ( played.shown, "" );
}

TEST( Runner, BeginsEachRunAfresh ) {
   const std::string scenario = aclNeeded + "start basic\nat 5\nacl Ethernet1 PortChannel10\n";
   const auto first = play( scenario );
   const auto second = play( scenario );
   EXPECT_EQ( first.shown, second.shown );
   EXPECT_NE( first.shown, "" );
}

} // namespace
