// What a chart says of a run.

#include "tests/replay/timeline/Charting.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using TestSupport::chartOf;
using TestSupport::marksOf;
using TestSupport::spansOf;

const std::string mlag = "mlag state 3\n"
                         "link Ethernet49 2\n"
                         "mlag peer-link Ethernet49\n"
                         "mlag intf PortChannel10 2 2\n";
const std::string peerMode = mlag + "mlag peer-interlock on\n"
                                    "lag PortChannel10 Ethernet1\n"
                                    "start controller\n";

TEST( Recorder, AMemberIsHeldUntilItsAclIsThere ) {
   EXPECT_EQ( spansOf( mlag + "lag PortChannel10 Ethernet1\n"
                              "start basic\n"
                              "at 0.25\n"
                              "acl Ethernet1 PortChannel10\n"
                              "at 1\n" ),
              "Ethernet1: 0-0.25 held, egress-acl: its egress ACL is not installed\n"
              "Ethernet1: 0.25-1 (end) admitted, egress-acl: its egress ACL is installed\n" );
}

TEST( Recorder, OfOneSwitchATimeOutFailsOpenUntilThePeerAnswers ) {
   EXPECT_EQ( spansOf( peerMode + "acl Ethernet1 PortChannel10\n"
                                  "at 1\n"
                                  "response PortChannel10 2\n"
                                  "at 2\n" ),
              "PortChannel10: 0-0.1 linkRequesting, the peer was asked and has not answered yet\n"
              "PortChannel10: 0.1-1 linkFail, the peer has not answered in time\n"
              "PortChannel10: 1-2 (end) linkUp, the peer has answered the request\n"
              "Ethernet1: 0-0.1 held, egress-acl: waits for the peer's answer; although all "
              "egress ACLs are in place\n"
              "Ethernet1: 0.1-1 fails open, time-out; the peer has not confirmed its egress ACL\n"
              "Ethernet1: 1-2 (end) admitted, egress-acl: the peer has answered, and no local "
              "egress ACL is missing\n" );
}

TEST( Recorder, TheReasonOfAHeldMemberChangesWithoutANewVerdict ) {
   EXPECT_EQ( spansOf( peerMode + "at 0.02\n"
                                  "response PortChannel10 2\n"
                                  "at 1\n" ),
              "PortChannel10: 0-0.02 linkRequesting, the peer was asked and has not answered yet\n"
              "PortChannel10: 0.02-1 (end) linkUp, the peer has answered the request\n"
              "Ethernet1: 0-0.02 held, egress-acl: waits for the peer's answer\n"
              "Ethernet1: 0.02-1 (end) held, egress-acl: its egress ACL is not installed\n" );
}

// Both ask at one moment, the right one first; each time-out is that of its own switch.
const std::string pairOpen = R"(switch right
mlag state 3
mlag peer-interlock on
mlag intf PortChannel10 2 2
lag PortChannel10 Ethernet7
switch left
mlag state 3
mlag peer-interlock on
mlag intf PortChannel10 2 2
lag PortChannel10 Ethernet1
switch right
start controller
switch left
start controller
at 0.5
acl Ethernet1 PortChannel10
switch right
acl Ethernet7 PortChannel10
at 1
no acl Ethernet7 PortChannel10
at 1.5
switch left
stop egress-acl
at 2
start controller
at 2.3
mlag peer-interlock off
at 3
no acl Ethernet1 PortChannel10
mlag state 1
at 4
)";

TEST( Recorder, OfAPairEachCauseOfFailingOpenIsTold ) {
   EXPECT_EQ(
      spansOf( pairOpen ),
      "left PortChannel10: 0-0.1 linkRequesting, the peer was asked and has not answered yet\n"
      "left PortChannel10: 0.1-0.51 linkFail, the peer has not answered in time\n"
      "left PortChannel10: 0.51-1.01 linkUp, the peer has answered the request\n"
      "left PortChannel10: 1.01-1.5 linkFail, the peer's answer was withdrawn, or another one "
      "came\n"
      "left PortChannel10: 2-2.1 linkRequesting, the peer was asked and has not answered yet\n"
      "left PortChannel10: 2.1-2.3 linkFail, the peer has not answered in time\n"
      "left Ethernet1: 0-0.1 held, egress-acl: waits for the peer's answer\n"
      "left Ethernet1: 0.1-0.5 fails open, time-out; the local egress ACL is not installed; an "
      "egress ACL is missing on the peer\n"
      "left Ethernet1: 0.5-0.51 admitted, egress-acl: the link counts as failed: its members join "
      "without the peer's answer\n"
      "left Ethernet1: 0.51-1 admitted, egress-acl: the peer has answered, and no local egress ACL "
      "is "
      "missing\n"
      "left Ethernet1: 1-1.01 fails open, withdrawal under way or lost; an egress ACL is missing "
      "on "
      "the peer\n"
      "left Ethernet1: 1.01-1.5 fails open, answer withdrawn; an egress ACL is missing on the "
      "peer\n"
      "left Ethernet1: 1.5-2 fails open, agent down; an egress ACL is missing on the peer\n"
      "left Ethernet1: 2-2.1 held, egress-acl: waits for the peer's answer\n"
      "left Ethernet1: 2.1-2.3 fails open, time-out; an egress ACL is missing on the peer\n"
      "left Ethernet1: 2.3-3 admitted without ACL, basic mode asks no peer; an egress ACL is "
      "missing on the peer\n"
      "left Ethernet1: 3-4 (end) admitted without ACL, local ACL not needed; the local egress ACL "
      "is not installed; an egress ACL is missing on the peer\n"
      "right PortChannel10: 0-0.1 linkRequesting, the peer was asked and has not answered yet\n"
      "right PortChannel10: 0.1-0.51 linkFail, the peer has not answered in time\n"
      "right PortChannel10: 0.51-3.01 linkUp, the peer has answered the request\n"
      "right PortChannel10: 3.01-4 (end) linkFail, the peer's answer was withdrawn, or another one "
      "came\n"
      "right Ethernet7: 0-0.1 held, egress-acl: waits for the peer's answer\n"
      "right Ethernet7: 0.1-0.5 fails open, time-out; the local egress ACL is not installed; an "
      "egress ACL is missing on the peer\n"
      "right Ethernet7: 0.5-0.51 admitted, egress-acl: the link counts as failed: its members "
      "join without the peer's answer\n"
      "right Ethernet7: 0.51-1 admitted, egress-acl: the peer has answered, and no local egress "
      "ACL is "
      "missing\n"
      "right Ethernet7: 1-3.01 held, egress-acl: its egress ACL is not installed\n"
      "right Ethernet7: 3.01-4 (end) fails open, answer withdrawn; the local egress ACL is not "
      "installed; an egress ACL is missing on the peer\n" );
}

TEST( Recorder, WhomNothingHasLookedAtSinceItsLagWasReplacedIsToldSo ) {
   EXPECT_EQ( spansOf( mlag + "lag PortChannel10 Ethernet1\n"
                              "start basic\n"
                              "acl Ethernet1 PortChannel10\n"
                              "at 1\n"
                              "lag PortChannel10 Ethernet1 Ethernet2\n"
                              "no acl Ethernet2 PortChannel10\n"
                              "at 2\n" ),
              "Ethernet1: 0-1 admitted, egress-acl: its egress ACL is installed\n"
              "Ethernet1: 1-2 (end) admitted, egress-acl: nothing has looked at it since its LAG "
              "changed\n"
              "Ethernet2: 1-2 (end) held, egress-acl: nothing has looked at it since its LAG "
              "changed\n" );
}

TEST( Recorder, AStoppedInterlocksVerdictStandsAndOneThatNeverRanHasNone ) {
   EXPECT_EQ(
      spansOf( "switchport PortChannel10\n"
               "vlan-xlate PortChannel10 ingress 10 20\n"
               "lag PortChannel10 Ethernet1\n"
               "at 1\n"
               "start vlan-xlate\n"
               "at 2\n"
               "stop vlan-xlate\n"
               "at 3\n" ),
      "Ethernet1: 0-1 admitted, no interlock runs\n"
      "Ethernet1: 1-2 held, vlan-xlate: VLAN translation is not programmed\n"
      "Ethernet1: 2-3 (end) held, vlan-xlate: the agent is down, its last verdict stands\n" );
}

TEST( Recorder, WhatLastsNoTimeLeavesNoSpanButForTheLast ) {
   EXPECT_EQ( spansOf( "lag PortChannel10 Ethernet1 Ethernet2\n"
                       "no member PortChannel10 Ethernet1\n"
                       "start basic\n"
                       "at 1\n"
                       "member PortChannel10 Ethernet3\n"
                       "no member PortChannel10 Ethernet2\n" ),
              "Ethernet2: 0-1 admitted, egress-acl: no egress ACL is needed\n"
              "Ethernet3: 1-1 (end) admitted, egress-acl: no egress ACL is needed\n" );
}

TEST( Recorder, MarksTellWhoChangedWhat ) {
   EXPECT_EQ( marksOf( peerMode + "at 1\n"
                                  "no member PortChannel10 Ethernet1\n"
                                  "response PortChannel10 2\n"
                                  "peer echo 0.02\n"
                                  "member PortChannel10 Ethernet1 # comment\n"
                                  "wait 1\n"
                                  "expect joined Ethernet1 PortChannel10\n"
                                  "expect held Ethernet1 PortChannel10\n" ),
              "switch: 0 c line 1: mlag state 3\n"
              "switch: 0 c line 2: link Ethernet49 2\n"
              "switch: 0 c line 3: mlag peer-link Ethernet49\n"
              "switch: 0 c line 5: mlag peer-interlock on\n"
              "switch: 0 c line 7: start controller\n"
              "switch: 1 c line 11: peer echo 0.02\n"
              "switch: 2 X line 14: expect joined Ethernet1 PortChannel10, found: the "
              "egress-acl interlock holds it\n"
              "PortChannel10: 0 c line 4: mlag intf PortChannel10 2 2\n"
              "PortChannel10: 0 c line 6: lag PortChannel10 Ethernet1\n"
              "PortChannel10: 0 r request to the peer: token 2\n"
              "PortChannel10: 0.1 ! time-out: the peer has not answered\n"
              "PortChannel10: 1 c line 9: no member PortChannel10 Ethernet1\n"
              "PortChannel10: 1 r request to the peer: withdrawn\n"
              "PortChannel10: 1 A line 10: response PortChannel10 2\n"
              "PortChannel10: 1 c line 12: member PortChannel10 Ethernet1\n"
              "PortChannel10: 1 r request to the peer: token 3\n"
              "PortChannel10: 1.02 A the peer answers: token 3\n" );
}

TEST( Recorder, MarksOfAPairTellWhatTheWireDoes ) {
   EXPECT_EQ( marksOf( "switch left\n"
                       "mlag intf PortChannel10 2 2\n"
                       "mlag peer-interlock on\n"
                       "lag PortChannel10 Ethernet1\n"
                       "wire repeat 1 0.03\n"
                       "wire delay 0.02\n"
                       "start controller\n"
                       "at 1\n"
                       "wire off\n"
                       "no member PortChannel10 Ethernet1\n" ),
              "left switch: 0 c line 3: mlag peer-interlock on\n"
              "left switch: 0 c line 5: wire repeat 1 0.03\n"
              "left switch: 0 c line 6: wire delay 0.02\n"
              "left switch: 0 c line 7: start controller\n"
              "left switch: 1 c line 9: wire off\n"
              "left PortChannel10: 0 c line 2: mlag intf PortChannel10 2 2\n"
              "left PortChannel10: 0 c line 4: lag PortChannel10 Ethernet1\n"
              "left PortChannel10: 0 r request to the peer: token 2, arrives at 0.02 s and 0.05 s\n"
              "left PortChannel10: 0.04 A the peer answers: token 2\n"
              "left PortChannel10: 1 c line 10: no member PortChannel10 Ethernet1\n"
              "left PortChannel10: 1 r request to the peer: withdrawn\n"
              "left PortChannel10: 1 L lost on the wire: request, withdrawn\n"
              "right switch: 0 c line 6: wire delay 0.02\n"
              "right switch: 1 c line 9: wire off\n" );
}

// The records cannot be told apart there; how things stand is read from the entities.
TEST( Recorder, NamesThatHoldWhatLooksLikeALabelHaveTheirOwnRow ) {
   const auto chart = chartOf( "lag \"a lag : b\" \"m lag : n\"\n"
                               "start basic\n"
                               "at 1\n" );
   const auto & lags = chart.switches.front().lags;
   ASSERT_EQ( lags.size(), 1U );
   ASSERT_EQ( lags.front().members.size(), 1U );
   ASSERT_EQ( lags.front().members.front().spans.size(), 1U );
   EXPECT_EQ( lags.front().members.front().spans.front().kind,
              Replay::Timeline::SpanKind::admitted );
}

TEST( Recorder, AnEmptyScenarioHasAnEmptyChart ) {
   const auto chart = chartOf( "" );
   EXPECT_EQ( chart.title, "test.scenario" );
   EXPECT_EQ( chart.end, Vex::Seconds( 0 ) );
   ASSERT_EQ( chart.switches.size(), 1U );
   EXPECT_TRUE( chart.switches.front().lags.empty() );
   EXPECT_TRUE( chart.switches.front().marks.empty() );
}

} // namespace
