// `interlock-trace explain`: out of the trace file that a run has left, with nothing but the file.

#include "tests/replay/explain/Explaining.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using TestSupport::basic;
using TestSupport::explainTrace;
using TestSupport::peer;
using TestSupport::Shown;
using TestSupport::TemporaryFolder;

const std::vector< std::string > thePair{ "Ethernet1", "PortChannel10" };

TEST( ExplainTrace, AMemberThatWaitsForThePeer ) {
   const Shown shown = explainTrace( peer, thePair );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.err, "" );
   EXPECT_EQ( '\n' + shown.out, R"(
Ethernet1 in PortChannel10 is HELD at 1 s, by egress-acl since 1 s

   egress-acl (peer-coordinated) holds it, decided at 1 s
   because Ethernet1 entered, left or changed in PortChannel10
      request to the peer           sent with token 2
      peer's answer                 none that fits the request yet  <- holds it
      member of the LAG             yes
      LAG is an MLAG interface      yes
      exchange with the peer        asking since 1 s; request 2, sent at 1 s
   is looked at again when
      the time-out comes, at 1.1 s
      an answer of the peer that fits request 2 comes
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      Ethernet1 enters, leaves or changes in PortChannel10

   vlan-xlate writes nothing into the ring: whether it holds the port, too, is not known here.
)" );
}

TEST( ExplainTrace, WhyAnAclIsNeededIsNotInTheRing ) {
   EXPECT_EQ( '\n' + explainTrace( basic + "member PortChannel10 Ethernet1\n"
                                           "at 3\n"
                                           "mlag state 1\n",
                                   thePair )
                        .out,
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 3 s, by egress-acl since 3 s

   egress-acl (basic) admits it, decided at 3 s
   because the MLAG state, the peer link or its link status changed
      member of the LAG             yes
      egress ACL needed             no  <- admits it
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      the MLAG state, the peer link or its link status changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 0 s         held        its egress ACL is not installed

   Why an egress ACL is needed, or is not, goes to the text trace alone.
   vlan-xlate writes nothing into the ring: whether it holds the port, too, is not known here.
)" );
}

TEST( ExplainTrace, TheDeprecatedInterlockTellsAll ) {
   const Shown shown = explainTrace( "mlag state 3\n"
                                     "lag PortChannel10 Ethernet1\n"
                                     "start deprecated\n",
                                     thePair );
   EXPECT_THAT( shown.out, HasSubstr( "egress-acl (deprecated) admits it, decided at 0 s\n" ) );
   EXPECT_THAT( shown.out, HasSubstr( "      MLAG is active                yes\n"
                                      "      peer link is up               no, there is none\n"
                                      "      egress ACL needed             no  <- admits it\n" ) );
   EXPECT_THAT( shown.out, Not( HasSubstr( "goes to the text trace alone" ) ) );
}

TEST( ExplainTrace, AnEventOfALagWithoutMembersIsNoReasonToHoldOne ) {
   EXPECT_THAT( explainTrace( "mlag peer-interlock on\nlag PortChannel10\nstart controller\n"
                              "mlag intf PortChannel10 1 2\n" // at the same moment
                              "member PortChannel10 Ethernet1\n",
                              thePair )
                   .out,
                HasSubstr( "because Ethernet1 entered, left or changed in PortChannel10\n" ) );
}

TEST( ExplainTrace, APortThatCameAfterTheStartIsNotDecidedByIt ) {
   const Shown shown = explainTrace( "mlag intf PortChannel10 1 2\n"
                                     "mlag peer-interlock on\n"
                                     "lag PortChannel10\n"
                                     "lag PortChannel20\n"
                                     "start controller\n" // at the same moment
                                     "member PortChannel10 Ethernet1\n",
                                     thePair );
   EXPECT_THAT( shown.out, HasSubstr( "because Ethernet1 entered, left or changed in "
                                      "PortChannel10\n      request to the peer" ) );
}

TEST( ExplainTrace, AnEntryThatAStartFindsInALagWithoutMembersIsDecidedByIt ) {
   const Shown shown = explainTrace( "lag PortChannel10\n"
                                     "output egress-acl Ethernet1 PortChannel10\n"
                                     "start basic\n",
                                     thePair );
   EXPECT_THAT( shown.out, HasSubstr( "because the interlock started\n" ) );
}

TEST( ExplainTrace, HowThingsStoodBefore ) {
   EXPECT_THAT(
      explainTrace( peer + "at 9\n", { "--at", "1.05", "Ethernet1", "PortChannel10" } ).out,
      StartsWith( "Ethernet1 in PortChannel10 is HELD at 1.05 s, by egress-acl since 1 s\n" ) );
   EXPECT_THAT(
      explainTrace( peer + "at 9\n", thePair ).out,
      StartsWith( "Ethernet1 in PortChannel10 is ADMITTED at 1.1 s, by egress-acl since" ) );
}

TEST( ExplainTrace, OfATimeAfterTheLastRecordItSaysThatNothingIsKnown ) {
   const std::string remark = "\n   The last record is of 1 s: what came later is not known.\n";
   const auto at = []( const char * time ) {
      return explainTrace( peer, { "--at", time, "Ethernet1", "PortChannel10" } ).out;
   };
   EXPECT_THAT( at( "1" ), Not( HasSubstr( remark ) ) );
   EXPECT_THAT( at( "1.05" ), HasSubstr( remark ) );
   EXPECT_THAT( at( "1.05" ), HasSubstr( "\n      the time-out comes, at 1.1 s\n" ) );
   EXPECT_THAT( at( "2" ), HasSubstr( remark ) );
   EXPECT_THAT( at( "2" ), Not( HasSubstr( "the time-out comes" ) ) );
}

TEST( ExplainTrace, ARingThatHasGoneRound ) {
   std::string scenario =
      basic + "member PortChannel10 Ethernet1\nmember PortChannel10 Ethernet2\n";
   for ( int at = 1; at < 200; ++at ) {
      scenario +=
         "at " + std::to_string( at ) + "\nmlag state " + std::to_string( 3 + at % 2 ) + '\n';
   }
   const Shown shown = explainTrace( scenario, thePair, Jotter::TraceFile::fewestBytes );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_THAT( shown.out, StartsWith( "Ethernet1 in PortChannel10 is HELD at 199 s, by egress-acl "
                                       "since 1" ) );
   EXPECT_THAT( shown.out, ContainsRegex( "since 1[0-9][0-9] s or earlier\n" ) );
   EXPECT_THAT( shown.out,
                ContainsRegex( "\n   Nothing older than 1[0-9][0-9] s is in the ring[.]\n" ) );
}

TEST( ExplainTrace, TwoSwitchesInOneTraceAreToldApartByNobody ) {
   const std::string boot = "mlag peer-interlock on\nmlag intf PortChannel10 1 2\n"
                            "lag PortChannel10 Ethernet1\nstart controller\n";
   EXPECT_THAT( explainTrace( "switch left\n" + boot + "switch right\n" + boot +
                                 "acl Ethernet1 PortChannel10\nat 1\nswitch left\n"
                                 "acl Ethernet1 PortChannel10\n",
                              thePair )
                   .out,
                HasSubstr( "   More than one switch's interlock wrote these records: what is said "
                           "may mix them up.\n" ) );
}

TEST( ExplainTrace, NothingIsKnownOfAMemberThatWasNeverSeen ) {
   const Shown shown = explainTrace( basic + "member PortChannel10 Ethernet1\n"
                                             "member PortChannel10 Ethernet10\n"
                                             "member PortChannel10 Ethernet2\n",
                                     { "Ethernet3", "PortChannel10" } );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.out, "" );
   EXPECT_EQ( shown.err, "interlock-trace: t: 'Ethernet3' was not seen; 'PortChannel10' was seen "
                         "with Ethernet1, Ethernet2, Ethernet10\n" );
}

TEST( ExplainTrace, AnEmptyTraceTellsNothing ) {
   const Shown shown = explainTrace( "", thePair );
   EXPECT_EQ( shown.status, 1 );
   EXPECT_EQ( shown.err, "interlock-trace: t: no interlock has decided over any member\n" );
}

TEST( ExplainTrace, AFileThatIsNoTraceIsRefused ) {
   const TemporaryFolder folder;
   std::ofstream( folder / "t" ) << "nothing";
   const Shown shown = TestSupport::run( { "explain", "a", "b", folder / "t" } );
   EXPECT_EQ( shown.status, 2 );
   EXPECT_EQ( shown.out, "" );
   EXPECT_THAT( shown.err, StartsWith( "interlock-trace: " + folder / "t" + ": no trace file" ) );
}

TEST( ExplainTrace, DamageIsToldAndTheRestExplained ) {
   const TemporaryFolder folder;
   {
      Jotter::TraceFile file( folder / "t", std::size_t{ 1 } << 20U );
      Replay::RunOptions options;
      options.traceFile = &file;
      EXPECT_EQ( TestSupport::play( peer, options ).error, "" );
   }
   std::filesystem::resize_file( folder / "t", 90'000 );
   const Shown shown =
      TestSupport::run( { "explain", "Ethernet1", "PortChannel10", folder / "t" } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_THAT( shown.out, StartsWith( "Ethernet1 in PortChannel10 is HELD" ) );
   EXPECT_THAT( shown.err, StartsWith( "interlock-trace: " + folder / "t" + ": " ) );
}

TEST( ExplainTrace, EachDamagedByteIsSurvived ) {
   const TemporaryFolder folder;
   {
      Jotter::TraceFile file( folder / "t", Jotter::TraceFile::fewestBytes );
      Replay::RunOptions options;
      options.traceFile = &file;
      EXPECT_EQ( TestSupport::play( peer + "at 2\n", options ).error, "" );
   }
   std::ifstream stream( folder / "t" );
   const std::string whole( std::istreambuf_iterator< char >( stream ), {} );
   constexpr std::size_t step = 211; // a prime: all places within a cell are met
   std::size_t answered = 0;
   for ( std::size_t at = 0; at < whole.size(); at += step ) {
      std::string damaged = whole;
      damaged[ at ] = static_cast< char >( damaged[ at ] ^ 0x55 );
      TestSupport::writeInPlace( folder / "t", damaged );
      const Shown shown =
         TestSupport::run( { "explain", "Ethernet1", "PortChannel10", folder / "t" } );
      EXPECT_LE( shown.status, 2 ) << at;
      EXPECT_EQ( shown.out.empty(), shown.status != 0 ) << at;
      answered += shown.status == 0 ? 1 : 0;
   }
   EXPECT_GT( answered, whole.size() / step / 2 );
}

TEST( ExplainTrace, SaysWhatIsWrongWithItsCommandLine ) {
   const auto error = []( std::vector< std::string > arguments ) {
      arguments.insert( arguments.begin(), "explain" );
      const Shown shown = TestSupport::run( arguments );
      EXPECT_EQ( shown.status, 2 );
      EXPECT_EQ( shown.out, "" );
      return shown.err;
   };
   EXPECT_EQ( error( { "a", "b" } ), "interlock-trace: FILE is required; see explain --help\n" );
   EXPECT_THAT( error( { "--switch", "left", "a", "b", "c" } ), HasSubstr( "--switch" ) );
   EXPECT_EQ( error( { "a", "b", "c", "d", "e\n" } ),
              "interlock-trace: The following arguments were not expected: d e\\x0a; see explain "
              "--help\n" );
   EXPECT_EQ( error( { "--at", "-1", "a", "b", "c" } ),
              "interlock-trace: --at: '-1'; wanted: seconds such as 12.5; see explain --help\n" );
}

TEST( ExplainTrace, AnswersHelp ) {
   const Shown shown = TestSupport::run( { "explain", "--help" } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_THAT( shown.out, HasSubstr( "interlock-trace explain [OPTIONS] MEMBER LAG FILE" ) );
   EXPECT_THAT( TestSupport::run( { "--help" } ).out, HasSubstr( "interlock-trace explain" ) );
}

} // namespace
