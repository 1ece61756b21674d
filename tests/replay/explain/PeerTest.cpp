// Each way of the peer-coordinated interlock, explained out of a scenario that is played.

#include "tests/replay/explain/Explaining.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using TestSupport::explained;
using TestSupport::peer;

TEST( ExplainPeer, AMemberThatWaitsForThePeer ) {
   EXPECT_EQ( explained( peer + "at 1.05\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 1.05 s, by egress-acl since 1 s

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
)" );
}

TEST( ExplainPeer, AMemberWhosePeerHasAnswered ) {
   EXPECT_EQ( explained( peer + "at 1.02\n"
                                "response PortChannel10 2\n"
                                "at 1.5\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 1.5 s, by egress-acl since 1 s

   egress-acl (peer-coordinated) holds it, decided at 1.02 s
   because the peer's answer for PortChannel10 came, changed or went
      peer's answer                 there, and fits the request
      member of the LAG             yes
      LAG is an MLAG interface      yes
      LAG is active on the peer     yes, so that an ACL is needed here
      egress ACL installed          no  <- holds it
      exchange with the peer        answered since 1.02 s; request 2, sent at 1 s
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the peer's answer for PortChannel10 goes, or does not fit any more
      the MLAG status of PortChannel10 changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 1 s         held        waits for the peer's answer
)" );
}

TEST( ExplainPeer, AMemberThatThePeerAndTheHardwareLetIn ) {
   EXPECT_EQ( explained( peer + "at 1.02\n"
                                "response PortChannel10 2\n"
                                "at 1.5\n"
                                "acl Ethernet1 PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 1.5 s, by egress-acl since 1.5 s

   egress-acl (peer-coordinated) admits it, decided at 1.5 s
   because the egress ACL of Ethernet1 in PortChannel10 was installed or removed
      peer's answer                 there, and fits the request
      member of the LAG             yes
      LAG is an MLAG interface      yes
      egress ACL installed          yes, or not needed: its record does not tell  <- admits it
      exchange with the peer        answered since 1.02 s; request 2, sent at 1 s
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the peer's answer for PortChannel10 goes, or does not fit any more
      the MLAG status of PortChannel10 changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 1 s         held        waits for the peer's answer
      since 1.02 s      held        its egress ACL is not installed
)" );
}

TEST( ExplainPeer, APeerThatDoesNotAnswerInTime ) {
   EXPECT_EQ( explained( peer + "at 2\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 2 s, by egress-acl since 1.1 s

   egress-acl (peer-coordinated) admits it, decided at 1.1 s
   because the time-out of PortChannel10 came: the peer had not answered
      peer's answer                 none that fits came in time: the link counts as failed
                                    <- admits it
      member of the LAG             yes
      LAG is an MLAG interface      yes
      exchange with the peer        failed since 1.1 s, not answered in time; request 2, sent at 1 s
   is looked at again when
      an answer of the peer that fits request 2 comes
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 1 s         held        waits for the peer's answer

   A link that has failed does not ask the peer again by itself.
)" );
}

TEST( ExplainPeer, AnAnswerThatWentAway ) {
   EXPECT_EQ( explained( peer + "response PortChannel10 2\n"
                                "acl Ethernet1 PortChannel10\n"
                                "at 2\n"
                                "no response PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 2 s, by egress-acl since 1 s

   egress-acl (peer-coordinated) admits it, decided at 2 s
   because the peer's answer for PortChannel10 came, changed or went
      peer's answer                 gone, or fits no more: the link counts as failed  <- admits it
      member of the LAG             yes
      LAG is an MLAG interface      yes
      exchange with the peer        failed since 2 s, the answer went away; request 2, sent at 1 s
   is looked at again when
      an answer of the peer that fits request 2 comes
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 1 s         held        waits for the peer's answer
      since 1 s         held        its egress ACL is not installed
      since 1 s         admitted    the peer has answered, and no local egress ACL is missing

   A link that has failed does not ask the peer again by itself.
)" );
}

TEST( ExplainPeer, AnAnswerThatComesLate ) {
   EXPECT_EQ( explained( peer + "at 2\n"
                                "response PortChannel10 2\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 2 s, by egress-acl since 2 s

   egress-acl (peer-coordinated) holds it, decided at 2 s
   because the peer's answer for PortChannel10 came, changed or went
      peer's answer                 there, and fits the request
      member of the LAG             yes
      LAG is an MLAG interface      yes
      LAG is active on the peer     yes, so that an ACL is needed here
      egress ACL installed          no  <- holds it
      exchange with the peer        answered since 2 s; request 2, sent at 1 s
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the peer's answer for PortChannel10 goes, or does not fit any more
      the MLAG status of PortChannel10 changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 1 s         held        waits for the peer's answer
      since 1.1 s       admitted    the link counts as failed: its members join without the peer's
                                    answer
)" );
}

TEST( ExplainPeer, ALagThatIsNoMlagInterface ) {
   EXPECT_EQ( explained( peer + "at 1.05\n"
                                "no mlag intf PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 1.05 s, by egress-acl since 1.05 s

   egress-acl (peer-coordinated) admits it, decided at 1.05 s
   because the MLAG status of PortChannel10 changed
      LAG is an MLAG interface      no  <- admits it
      request to the peer           withdrawn, if one was out
      member of the LAG             yes
   is looked at again when
      the MLAG status of PortChannel10 changes
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 1 s         held        waits for the peer's answer
)" );
}

TEST( ExplainPeer, ASwitchOver ) {
   EXPECT_EQ( explained( peer + "at 1.05\n"
                                "mlag peer-interlock off\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 1.05 s, by egress-acl since 1.05 s

   egress-acl (basic) admits it, decided at 1.05 s
   because the controller changed its interlock: peer-interlock is off
      member of the LAG             yes
      MLAG is active                no
      egress ACL needed             no  <- admits it
   is looked at again when
      the MLAG state, the peer link or its link status changes
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 1 s         held        waits for the peer's answer
)" );
}

TEST( ExplainPeer, OfALagWithoutMembersNoAnswerIsWaitedFor ) {
   const std::string text = explained( peer + "at 1.05\n"
                                              "no member PortChannel10 Ethernet1\n" );
   EXPECT_THAT( text, HasSubstr( "not asking since 1.05 s, the LAG has no members\n" ) );
   EXPECT_THAT( text, Not( HasSubstr( "answer of the peer" ) ) );
   EXPECT_THAT( text, Not( HasSubstr( "peer's answer for" ) ) );
}

} // namespace
