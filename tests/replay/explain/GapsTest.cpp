// What no record tells, and a run of a scenario does.

#include "tests/replay/explain/Explaining.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using TestSupport::basic;
using TestSupport::explained;
using TestSupport::Json;

TEST( ExplainGaps, AMemberThatNobodyHasLookedAt ) {
   EXPECT_EQ( explained( basic + "at 1\n"
                                 "lag PortChannel20 Ethernet1\n",
                         { "Ethernet1", "PortChannel20" } ),
              R"(
Ethernet1 in PortChannel20 is HELD at 1 s, by egress-acl, which has not looked at it

   egress-acl holds it
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel20 is installed or removed
      the MLAG status of PortChannel20 changes
      the MLAG state, the peer link or its link status changes
      Ethernet1 enters, leaves or changes in PortChannel20

   egress-acl has not looked at this member: one that comes with its LAG waits for the next change.
)" );
}

TEST( ExplainGaps, AMemberThatCameBackWithItsLag ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "acl Ethernet1 PortChannel10\n"
                                 "no member PortChannel10 Ethernet1\n"
                                 "at 1\n"
                                 "lag PortChannel10 Ethernet1\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 1 s, by egress-acl since 0 s

   egress-acl (basic) holds it, decided at 0 s
   because Ethernet1 entered, left or changed in PortChannel10
      member of the LAG             no  <- holds it
   is looked at again when
      Ethernet1 enters, leaves or changes in PortChannel10
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      the MLAG state, the peer link or its link status changes
   before that
      since 0 s         held        its egress ACL is not installed
      since 0 s         admitted    its egress ACL is installed

   egress-acl has not looked at this member: one that comes with its LAG waits for the next change.
)" );
}

TEST( ExplainGaps, AMemberOfALagThatIsGone ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "acl Ethernet1 PortChannel10\n"
                                 "at 1\n"
                                 "no lag PortChannel10\n" ),
              R"(
Ethernet1 is NO MEMBER of PortChannel10 at 1 s: admitted by egress-acl since 0 s

   egress-acl (basic) admits it, decided at 0 s
   because the egress ACL of Ethernet1 in PortChannel10 was installed or removed
      member of the LAG             yes
      MLAG is active                yes
      peer link is up               yes
      LAG is active on the peer     yes
      egress ACL needed             yes
      egress ACL installed          yes  <- admits it
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      the MLAG state, the peer link or its link status changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 0 s         held        its egress ACL is not installed

   PortChannel10 was removed or replaced at 1 s: egress-acl has not looked at it since; what stands
      above is from before.
   It is no member of the LAG at this time: no verdict makes it join.
)" );
}

TEST( ExplainGaps, APortThatIsNoMemberIsToldSoWhateverItsInterlocksSay ) {
   const std::string scenario = "switch right\n"
                                "lag PortChannel10\n"
                                "start basic\n"
                                "start vlan-xlate\n"
                                "member PortChannel10 Ethernet1\n"
                                "at 1\n"
                                "no lag PortChannel10\n";
   EXPECT_THAT(
      explained( scenario ),
      StartsWith( "\nEthernet1 is NO MEMBER of PortChannel10 on right at 1 s: admitted by "
                  "egress-acl since 0 s and by\n      vlan-xlate since 0 s\n" ) );
   const auto object =
      Json::parse( explained( scenario, { "Ethernet1", "PortChannel10", "--output=jsonl" } ) );
   EXPECT_EQ( object.at( "admitted" ), true );
   EXPECT_EQ( object.at( "is_member" ), false );
}

TEST( ExplainGaps, APortThatWasNeverAMemberIsToldSo ) {
   EXPECT_THAT( explained( basic + "at 2\nacl Ethernet1 PortChannel10\n" ),
                StartsWith( "\nEthernet1 is NO MEMBER of PortChannel10 at 2 s: held by egress-acl "
                            "since 2 s\n" ) );
}

TEST( ExplainGaps, APortThatComesBackIsAMember ) {
   EXPECT_THAT( explained( basic + "member PortChannel10 Ethernet1\n"
                                   "acl Ethernet1 PortChannel10\n"
                                   "at 1\n"
                                   "no lag PortChannel10\n"
                                   "at 2\n"
                                   "lag PortChannel10 Ethernet1\n" ),
                StartsWith( "\nEthernet1 in PortChannel10 is ADMITTED at 2 s, by egress-acl since "
                            "0 s\n" ) );
}

TEST( ExplainGaps, ATraceFileDoesNotTellWhoIsAMember ) {
   const auto shown =
      TestSupport::explainTrace( basic + "member PortChannel10 Ethernet1\n",
                                 { "Ethernet1", "PortChannel10", "--output=jsonl" } );
   EXPECT_TRUE( Json::parse( shown.out ).at( "is_member" ).is_null() );
}

TEST( ExplainGaps, AnInterlockThatWasStopped ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "acl Ethernet1 PortChannel10\n"
                                 "at 1\n"
                                 "stop egress-acl\n"
                                 "at 2\n"
                                 "no acl Ethernet1 PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 2 s, by egress-acl since 0 s

   egress-acl (basic) admits it, decided at 0 s
   because the egress ACL of Ethernet1 in PortChannel10 was installed or removed
      member of the LAG             yes
      MLAG is active                yes
      peer link is up               yes
      LAG is active on the peer     yes
      egress ACL needed             yes
      egress ACL installed          yes  <- admits it
   is looked at again when
      an interlock is started
   before that
      since 0 s         held        its egress ACL is not installed

   egress-acl was stopped at 1 s: its verdict stands, and nobody keeps it right.
)" );
}

TEST( ExplainGaps, AnOutputThatSomebodyElseWrote ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "at 1\n"
                                 "output egress-acl Ethernet1 PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 1 s, by egress-acl since 1 s
   egress-acl has decided otherwise: somebody else wrote its output at 1 s.

   egress-acl (basic) decided to hold it at 0 s
   because Ethernet1 entered, left or changed in PortChannel10
      member of the LAG             yes
      MLAG is active                yes
      peer link is up               yes
      LAG is active on the peer     yes
      egress ACL needed             yes
      egress ACL installed          no  <- decided to hold it
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      the MLAG state, the peer link or its link status changes
      Ethernet1 enters, leaves or changes in PortChannel10
)" );
}

TEST( ExplainGaps, AnOutputOverWhichNobodyHasDecided ) {
   EXPECT_EQ( explained( "lag PortChannel10 Ethernet1\n"
                         "at 1\n"
                         "output egress-acl Ethernet1 PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 1 s, by egress-acl since 1 s
   egress-acl has not decided over it: somebody else wrote its output.

   egress-acl admits it
   is looked at again when
      an interlock is started
)" );
}

TEST( ExplainGaps, AnOutputThatSomebodyElseTookAway ) {
   EXPECT_THAT( explained( basic + "member PortChannel10 Ethernet1\n"
                                   "acl Ethernet1 PortChannel10\n"
                                   "at 1\n"
                                   "no output egress-acl Ethernet1 PortChannel10\n" ),
                StartsWith( R"(
Ethernet1 in PortChannel10 is HELD at 1 s, by egress-acl since 1 s
   egress-acl has decided otherwise: somebody else wrote its output at 1 s.

   egress-acl (basic) decided to admit it at 0 s
)" ) );
}

// ---- A LAG that goes, or is replaced ------------------------------------------------------------

const std::string mlagOfTwo = "mlag state 3\n"
                              "link Ethernet49 2\n"
                              "mlag peer-link Ethernet49\n"
                              "mlag intf PortChannel10 2 2\n"
                              "lag PortChannel10 Ethernet1\n"
                              "start basic\n"
                              "at 1\n";
const std::string notSince = " was removed or replaced at 1 s: egress-acl has not looked at it "
                             "since; what stands\n      above is from before.\n";

TEST( ExplainGaps, AVerdictFromBeforeItsLagWasReplacedIsToldAsSuch ) {
   EXPECT_EQ( explained( mlagOfTwo + "no lag PortChannel10\n"
                                     "at 2\n"
                                     "mlag state 1\n"
                                     "at 3\n"
                                     "lag PortChannel10 Ethernet1\n"
                                     "at 5\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 5 s, by egress-acl since 0 s

   egress-acl (basic) holds it, decided at 0 s
   because the interlock started
      member of the LAG             yes
      MLAG is active                yes
      peer link is up               yes
      LAG is active on the peer     yes
      egress ACL needed             yes
      egress ACL installed          no  <- holds it
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      the MLAG state, the peer link or its link status changes
      Ethernet1 enters, leaves or changes in PortChannel10

   PortChannel10)" +
                 notSince );
}

TEST( ExplainGaps, ALagThatIsReplacedAtOnceLeavesVerdictsFromBefore ) {
   EXPECT_THAT( explained( mlagOfTwo + "lag PortChannel10 Ethernet1 Ethernet2\n" ),
                EndsWith( "\n   PortChannel10" + notSince ) );
}

TEST( ExplainGaps, ADecisionAfterItsLagWasReplacedIsOfNow ) {
   EXPECT_THAT( explained( mlagOfTwo + "lag PortChannel10 Ethernet1\n"
                                       "at 2\n"
                                       "acl Ethernet1 PortChannel10\n" ),
                Not( HasSubstr( "removed or replaced" ) ) );
}

TEST( ExplainGaps, ALagThatIsNotThereCannotBeRemoved ) {
   EXPECT_THAT( explained( mlagOfTwo + "no lag PortChannel10\n"
                                       "at 2\n"
                                       "acl Ethernet1 PortChannel10\n" // decides over it
                                       "at 3\n"
                                       "no lag PortChannel10\n" ),
                Not( HasSubstr( "removed or replaced" ) ) );
}

// ---- The same as an object ----

/// Of the first gate, as JSON.
std::string outdatedSince( const std::string & scenario ) {
   return Json::parse( explained( scenario, { "Ethernet1", "PortChannel10", "--output=jsonl" } ) )
      .at( "gates" )
      .at( 0 )
      .at( "outdated_since" )
      .dump();
}

TEST( ExplainGaps, AnObjectSaysSinceWhenItsVerdictIsFromBefore ) {
   const std::string replaced = mlagOfTwo + "lag PortChannel10 Ethernet1\nat 2\n";
   EXPECT_EQ( outdatedSince( mlagOfTwo ), "null" );
   EXPECT_EQ( outdatedSince( replaced ), "1.0" );
   EXPECT_EQ( outdatedSince( mlagOfTwo + "no lag PortChannel10\nat 2\n" ), "1.0" );
   EXPECT_EQ( outdatedSince( replaced + "acl Ethernet1 PortChannel10\n" ), "null" );
}

TEST( ExplainGaps, ThatAPortWasNoMemberIsFromBeforeOnlyOnceItIsOne ) {
   const std::string gone = mlagOfTwo + "no member PortChannel10 Ethernet1\n"
                                        "at 2\n"
                                        "no lag PortChannel10\n";
   EXPECT_EQ( outdatedSince( gone ), "null" );
   EXPECT_EQ( outdatedSince( gone + "at 3\nlag PortChannel10 Ethernet1\n" ), "2.0" );
}

} // namespace
