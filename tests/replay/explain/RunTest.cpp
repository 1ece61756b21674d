// `interlock-replay explain` as a program: what it is asked, and when it has no answer.

#include "replay/Text.h"
#include "tests/replay/explain/Explaining.h"

#include <algorithm>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using TestSupport::basic;
using TestSupport::explained;
using TestSupport::explainRun;
using TestSupport::Json;
using TestSupport::peer;
using TestSupport::Shown;

const std::vector< std::string > thePair{ "Ethernet1", "PortChannel10" };

/// The first line of the answer.
std::string headline( const std::string & scenario, const std::vector< std::string > & arguments ) {
   const std::string text = explained( scenario, arguments );
   return text.substr( 1, text.find( '\n', 1 ) - 1 );
}

std::string headlineAt( const std::string & at ) {
   return headline( basic + "at 1\nmember PortChannel10 Ethernet1\nat 2\n"
                            "acl Ethernet1 PortChannel10\nat 3\n",
                    { "--at", at, "Ethernet1", "PortChannel10" } );
}

TEST( ExplainProgram, TellsHowThingsStoodAtATimeEventsOfThatTimeIncluded ) {
   EXPECT_EQ( headlineAt( "1" ),
              "Ethernet1 in PortChannel10 is HELD at 1 s, by egress-acl since 1 s" );
   EXPECT_EQ( headlineAt( "1.999" ),
              "Ethernet1 in PortChannel10 is HELD at 1.999 s, by egress-acl since 1 s" );
   EXPECT_EQ( headlineAt( "2" ),
              "Ethernet1 in PortChannel10 is ADMITTED at 2 s, by egress-acl since 2 s" );
}

TEST( ExplainProgram, AfterTheEndThingsStandAsAtTheEnd ) {
   EXPECT_EQ( headlineAt( "1000" ),
              "Ethernet1 in PortChannel10 is ADMITTED at 3 s, by egress-acl since 2 s" );
}

TEST( ExplainProgram, OfATimeAfterTheEndItSaysWhenThatWas ) {
   const std::string remark = "\n   The scenario ends at 1.05 s.\n";
   const auto at = []( const char * time ) {
      return explained( peer + "at 1.05\n", { "--at", time, "Ethernet1", "PortChannel10" } );
   };
   EXPECT_THAT( at( "1.05" ), Not( HasSubstr( remark ) ) );
   EXPECT_THAT( at( "1.05" ), HasSubstr( "\n      the time-out comes, at 1.1 s\n" ) );
   EXPECT_THAT( at( "9" ), HasSubstr( remark ) );
   EXPECT_THAT( at( "9" ), Not( HasSubstr( "the time-out comes" ) ) );
}

TEST( ExplainProgram, NothingIsKnownBeforeItHappens ) {
   const Shown shown = explainRun( basic + "at 1\nmember PortChannel10 Ethernet1\n",
                                   { "--at", "0.5", "Ethernet1", "PortChannel10" } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, "s: no interlock has decided over any member\n" );
}

TEST( ExplainProgram, WhereNoInterlockWasStartedThatIsSaid ) {
   const Shown shown = explainRun( "lag P E\nat 1\nstart basic\nlag Q E2\nmember Q E3\n",
                                   { "--at", "0.5", "E", "P" } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, "s: no interlock was started up to 0.5 s\n" );
}

TEST( ExplainProgram, ALagInThePlaceOfItsMemberIsToldSo ) {
   const Shown shown =
      explainRun( basic + "member PortChannel10 Ethernet1\n", { "PortChannel10", "Ethernet1" } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, "s: 'PortChannel10' is a LAG with member Ethernet1; wanted: MEMBER, then "
                         "LAG\n" );
}

TEST( ExplainProgram, NamesTheLagsThatAMemberWasSeenWith ) {
   const Shown shown = explainRun( "lag PortChannel2\nlag PortChannel10\nstart basic\n"
                                   "member PortChannel10 Ethernet1\nmember PortChannel2 Ethernet1\n"
                                   "member PortChannel2 Ethernet5\n",
                                   { "Ethernet1", "PortChannel1" } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.out, "" );
   EXPECT_EQ( shown.err, "s: 'Ethernet1' was not seen in 'PortChannel1'; it was seen in "
                         "PortChannel2, PortChannel10\n" );
}

TEST( ExplainProgram, NamesWhatThereIsAndNotTooMuchOfIt ) {
   std::string scenario = "lag P\nstart basic\n";
   for ( int port = 1; port <= 20; ++port ) {
      scenario += "member P E" + std::to_string( port ) + '\n';
   }
   EXPECT_EQ( explainRun( scenario, { "x\n", "y" } ).err,
              "s: neither 'x\\x0a' nor 'y' was seen; there are E1 in P, E2 in P, E3 in P, E4 in P, "
              "E5 in P, E6 in P, E7 in P, E8 in P and 12 more\n" );
}

// ---- Two switches -------------------------------------------------------------------------------

const std::string boot = "mlag peer-interlock on\nmlag intf PortChannel10 1 2\nlag PortChannel10\n"
                         "start controller\nmember PortChannel10 ";
const std::string onBoth = "wire off\nswitch left\n" + boot + "Ethernet1\nat 0.05\nswitch right\n" +
                           boot + "Ethernet1\nat 0.12\n";

TEST( ExplainProgram, TellsWhichSwitchItIs ) {
   EXPECT_EQ( headline( "switch right\n" + boot + "Ethernet1\n", thePair ),
              "Ethernet1 in PortChannel10 on right is HELD at 0 s, by egress-acl since 0 s" );
}

TEST( ExplainProgram, AMemberOfBothSwitchesNeedsToBeToldApart ) {
   const Shown shown = explainRun( onBoth, thePair );
   EXPECT_EQ( shown.status, 2 );
   EXPECT_EQ( shown.err, "s: 'Ethernet1' is known in 'PortChannel10' on both switches; wanted: "
                         "--switch left or --switch right\n" );
}

TEST( ExplainProgram, ATimeOutIsThatOfTheSwitchWhoseLagHasWaited ) {
   EXPECT_EQ(
      headline( onBoth, { "Ethernet1", "PortChannel10", "--switch", "left" } ),
      "Ethernet1 in PortChannel10 on left is ADMITTED at 0.12 s, by egress-acl since 0.1 s" );
   EXPECT_EQ( headline( onBoth, { "Ethernet1", "PortChannel10", "--switch", "right" } ),
              "Ethernet1 in PortChannel10 on right is HELD at 0.12 s, by egress-acl since 0.05 s" );
}

TEST( ExplainProgram, TimeOutsOfOneMomentAreToldApartByTheirVerdicts ) {
   const std::string scenario =
      "wire off\nswitch right\n" + boot + "Ethernet7\nswitch left\n" + boot + "Ethernet1\nat 1\n";
   EXPECT_THAT( explained( scenario ),
                HasSubstr( "on left is ADMITTED at 1 s, by egress-acl since 0.1 s" ) );
   EXPECT_THAT( explained( scenario, { "Ethernet7", "PortChannel10" } ),
                HasSubstr( "on right is ADMITTED at 1 s, by egress-acl since 0.1 s" ) );
}

TEST( ExplainProgram, NothingKnownOnASwitchIsToldWithItsName ) {
   const Shown shown = explainRun( "switch left\n" + boot + "Ethernet1\n",
                                   { "--switch", "right", "Ethernet1", "PortChannel10" } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, "s: right: no interlock was started up to 0 s\n" );
}

TEST( ExplainProgram, OneSwitchHasNoName ) {
   const Shown shown = explainRun( basic, { "--switch", "left", "Ethernet1", "PortChannel10" } );
   EXPECT_EQ( shown.status, 2 );
   EXPECT_EQ( shown.err, "s: --switch: the scenario has only one switch; wanted: none\n" );
}

// ---- The width of a line ------------------------------------------------------------------------

std::size_t longestLine( const std::string & text ) {
   std::size_t longest = 0;
   std::istringstream lines( text );
   for ( std::string line; std::getline( lines, line ); ) {
      longest = std::max( longest, Replay::columns( line ) );
   }
   return longest;
}

TEST( ExplainProgram, ColumnsFollowTheWidestTime ) {
   EXPECT_THAT( explained( basic + "at 9\n"
                                   "member PortChannel10 Ethernet1\n"
                                   "at 1234567890.123456\n"
                                   "acl Ethernet1 PortChannel10\n"
                                   "at 1234567891\n"
                                   "no acl Ethernet1 PortChannel10\n" ),
                EndsWith( R"(
   before that
      since 9 s                  held        its egress ACL is not installed
      since 1234567890.123456 s  admitted    its egress ACL is installed
)" ) );
}

TEST( ExplainProgram, ALineThatIsTooLongGoesOnBelowItsBeginning ) {
   const std::string text = explained( "switchport PortChannel10\n"
                                       "at 1234567890.123456\n"
                                       "start vlan-xlate\n"
                                       "start basic\n"
                                       "lag PortChannel10 Ethernet1\n"
                                       "at 1234567890.654321\n"
                                       "acl Ethernet1 PortChannel10\n"
                                       "vlan-ready Ethernet1 PortChannel10\n" );
   EXPECT_THAT(
      text, StartsWith(
               "\nEthernet1 in PortChannel10 is ADMITTED at 1234567890.654321 s, by egress-acl "
               "since\n      1234567890.654321 s and by vlan-xlate since 1234567890.654321 s\n" ) );
   EXPECT_LE( longestLine( text ), 100U );
}

TEST( ExplainProgram, ALineOfAHundredColumnsStaysWhole ) {
   const auto headlineOf = []( std::size_t columns ) {
      const std::string fixed = " in P is HELD at 0 s, by egress-acl since 0 s";
      const std::string name( columns - fixed.size(), 'E' );
      const std::string text =
         explained( "mlag state 3\nlink L 2\nmlag peer-link L\nmlag intf P 1 2\nlag P\n"
                    "start basic\nmember P " +
                       name + '\n',
                    { name, "P" } );
      return text.substr( 1 + name.size(), text.find( "\n\n" ) - 1 - name.size() );
   };
   EXPECT_EQ( headlineOf( 100 ), " in P is HELD at 0 s, by egress-acl since 0 s" );
   EXPECT_EQ( headlineOf( 101 ), " in P is HELD at 0 s, by egress-acl since\n      0 s" );
}

TEST( ExplainProgram, ANameWithoutBlanksIsNotBroken ) {
   const std::string name( 300, 'E' );
   const std::string text =
      explained( basic + "member PortChannel10 " + name + '\n', { name, "PortChannel10" } );
   EXPECT_THAT( text, StartsWith( '\n' + name + "\n      in PortChannel10 is HELD at 0 s" ) );
   EXPECT_THAT(
      text, HasSubstr( "\n   because\n      " + name + "\n      entered, left or changed in " ) );
}

// ---- As JSON ------------------------------------------------------------------------------------

TEST( ExplainProgram, GivesTheSameAsOneObject ) {
   EXPECT_EQ(
      explained( peer + "at 1.05\n", { "--output", "jsonl", "Ethernet1", "PortChannel10" } ),
      R"(
{"kind":"explanation","t":1.05,"member":"Ethernet1","lag":"PortChannel10",)"
      R"("admitted":false,"is_member":true,"gates":[)"
      R"({"interlock":"egress-acl","kind":"peer-coordinated","admitted":false,"since":1.0,)"
      R"("or_earlier":false,"decided":1.0,"outdated_since":null,"reason":"waiting-for-peer",)"
      R"("because":"Ethernet1 entered, left or changed in PortChannel10","checks":[)"
      R"({"check":"request to the peer","saw":"sent with token 2","passed":null,"decisive":false},)"
      R"({"check":"peer's answer","saw":"none that fits the request yet","passed":false,)"
      R"("decisive":true},)"
      R"({"check":"member of the LAG","saw":"yes","passed":true,"decisive":false},)"
      R"({"check":"LAG is an MLAG interface","saw":"yes","passed":true,"decisive":false}],)"
      R"("exchange":"asking since 1 s; request 2, sent at 1 s","time_out":1.1,)"
      R"("looks_again":["an answer of the peer that fits request 2 comes",)"
      R"("the egress ACL of Ethernet1 in PortChannel10 is installed or removed",)"
      R"("the MLAG status of PortChannel10 changes",)"
      R"("Ethernet1 enters, leaves or changes in PortChannel10"],)"
      R"("before":[],"before_that":0}],"remarks":[]})"
      "\n" );
}

TEST( ExplainProgram, AnObjectSaysWhichSwitchAndWhatWasBefore ) {
   const Json object = Json::parse(
      explained( onBoth, { "Ethernet1", "PortChannel10", "--switch", "left", "--output=jsonl" } ) );
   EXPECT_EQ( object.at( "switch" ), "left" );
   EXPECT_EQ( object.at( "gates" ).at( 0 ).at( "before" ).dump(),
              R"([{"admitted":false,"reason":"waiting-for-peer","since":0.0}])" );
   EXPECT_EQ( object.at( "remarks" ).dump(),
              R"(["A link that has failed does not ask the peer again by itself."])" );
}

TEST( ExplainProgram, AnObjectOfAMemberThatNobodyLookedAtHasNulls ) {
   const Json gate =
      Json::parse( explained( "lag P\nstart basic\nlag P E\n", { "E", "P", "--output=jsonl" } ) )
         .at( "gates" )
         .at( 0 );
   for ( const char * key : { "kind", "since", "decided", "reason", "time_out" } ) {
      EXPECT_TRUE( gate.at( key ).is_null() ) << key;
   }
}

// ---- What is wrong ------------------------------------------------------------------------------

TEST( ExplainProgram, SaysWhatIsWrongWithItsCommandLine ) {
   const auto error = []( const std::vector< std::string > & arguments ) {
      const Shown shown = explainRun( "", arguments );
      EXPECT_EQ( shown.status, 2 );
      EXPECT_EQ( shown.out, "" );
      return shown.err;
   };
   EXPECT_EQ( error( {} ), "interlock-replay: LAG is required; see explain --help\n" );
   EXPECT_EQ( error( { "--output", "xml", "a", "b" } ),
              "interlock-replay: --output: 'xml'; wanted: jsonl or text; see explain --help\n" );
   EXPECT_EQ( error( { "--switch", "both", "a", "b" } ),
              "interlock-replay: --switch: 'both'; wanted: left or right; see explain --help\n" );
   EXPECT_EQ( error( { "--at", "now", "a", "b" } ),
              "interlock-replay: --at: 'now'; wanted: seconds such as 12.5; see explain --help\n" );
}

TEST( ExplainProgram, SaysWhatIsWrongWithTheScenario ) {
   EXPECT_EQ( explainRun( "mlag state 300\n", thePair ).err,
              "s:1: '300' is no N; wanted: a number from 0 to 255\n" );
   const Shown shown = explainRun( basic + "at 1\nat 0\n", thePair );
   EXPECT_EQ( shown.status, 2 );
   EXPECT_EQ( shown.out, "" );
   EXPECT_EQ( shown.err, "s:8: '0' is in the past; wanted: 1 or later\n" );
}

TEST( ExplainProgram, AnswersHelp ) {
   const Shown shown = explainRun( "", { "--help" } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_THAT( shown.out, HasSubstr( "interlock-replay explain [OPTIONS] MEMBER LAG SCENARIO" ) );
   for ( const char * word : { "--at", "--switch", "--output", "Exit status" } ) {
      EXPECT_THAT( shown.out, HasSubstr( word ) );
   }
}

TEST( ExplainProgram, SaysThatStandardOutputCannotBeWritten ) {
   const int full = open( "/dev/full", O_WRONLY | O_CLOEXEC );
   const TestSupport::OutputFile errFile;
   Replay::Writer out( full );
   Replay::Writer err( errFile.descriptor() );
   const char * const argv[] = { "interlock-replay", "explain", "--help" }; // NOLINT
   EXPECT_EQ( Explain::explainScenario( 3, argv, out, err ), 2 );
   EXPECT_EQ( errFile.text(), "interlock-replay: standard output: No space left on device\n" );
   close( full );
}

TEST( ExplainProgram, NamesThatLookLikeMessagesAreNamesNevertheless ) {
   EXPECT_EQ( headline( "lag \"P lag \"\nstart basic\nmember \"P lag \" \"E memberIntf : \"\n",
                        { "E memberIntf : ", "P lag " } ),
              "E memberIntf :  in P lag  is ADMITTED at 0 s, by egress-acl since 0 s" );
}

} // namespace
