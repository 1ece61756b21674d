// Each way of the basic and the deprecated interlock, explained out of a scenario that is played.

#include "tests/replay/explain/Explaining.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using TestSupport::basic;
using TestSupport::explained;

TEST( ExplainBasic, AMemberThatWaitsForItsEgressAcl ) {
   EXPECT_EQ( explained( basic + "at 1\n"
                                 "member PortChannel10 Ethernet1\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 1 s, by egress-acl since 1 s

   egress-acl (basic) holds it, decided at 1 s
   because Ethernet1 entered, left or changed in PortChannel10
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
)" );
}

TEST( ExplainBasic, AMemberWhoseEgressAclIsInstalled ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "at 2.5\n"
                                 "acl Ethernet1 PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 2.5 s, by egress-acl since 2.5 s

   egress-acl (basic) admits it, decided at 2.5 s
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
)" );
}

TEST( ExplainBasic, AVerdictThatWasWithdrawn ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "acl Ethernet1 PortChannel10\n"
                                 "at 7\n"
                                 "no acl Ethernet1 PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 7 s, by egress-acl since 7 s

   egress-acl (basic) holds it, decided at 7 s
   because the egress ACL of Ethernet1 in PortChannel10 was installed or removed
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
   before that
      since 0 s         held        its egress ACL is not installed
      since 0 s         admitted    its egress ACL is installed
)" );
}

TEST( ExplainBasic, APeerLinkThatIsDown ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "at 3\n"
                                 "link Ethernet49 1\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 3 s, by egress-acl since 3 s

   egress-acl (basic) admits it, decided at 3 s
   because the MLAG state, the peer link or its link status changed
      member of the LAG             yes
      MLAG is active                yes
      peer link is up               no
      egress ACL needed             no  <- admits it
   is looked at again when
      the MLAG state, the peer link or its link status changes
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 0 s         held        its egress ACL is not installed
)" );
}

TEST( ExplainBasic, AMemberThatHasLeft ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "at 3\n"
                                 "no member PortChannel10 Ethernet1\n" ),
              R"(
Ethernet1 is NO MEMBER of PortChannel10 at 3 s: held by egress-acl since 0 s

   egress-acl (basic) holds it, decided at 3 s
   because Ethernet1 entered, left or changed in PortChannel10
      member of the LAG             no  <- holds it
   is looked at again when
      Ethernet1 enters, leaves or changes in PortChannel10
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      the MLAG state, the peer link or its link status changes
   before that
      since 0 s         held        its egress ACL is not installed
)" );
}

TEST( ExplainBasic, TheDeprecatedInterlock ) {
   EXPECT_EQ( explained( "mlag state 3\n"
                         "link Ethernet49 2\n"
                         "mlag peer-link Ethernet49\n"
                         "mlag intf PortChannel10 1 2\n"
                         "lag PortChannel10 Ethernet1\n"
                         "at 1\n"
                         "start deprecated\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 1 s, by egress-acl since 1 s

   egress-acl (deprecated) holds it, decided at 1 s
   because the interlock started
      member of the LAG             yes
      MLAG is active                yes
      peer link is up               yes: Ethernet49
      LAG is active on the peer     yes
      egress ACL needed             yes
      egress ACL installed          no  <- holds it
   is looked at again when
      the egress ACL of Ethernet1 in PortChannel10 is installed or removed
      the MLAG status of PortChannel10 changes
      the MLAG state, the peer link or its link status changes
      Ethernet1 enters, leaves or changes in PortChannel10
)" );
}

// An ACL that comes and goes, each second.
std::string flaps( int from, int to ) {
   std::string statements;
   for ( int at = from; at < to; ++at ) {
      statements += "at " + std::to_string( at ) + "\nacl Ethernet1 PortChannel10\nat " +
                    std::to_string( at ) + ".5\nno acl Ethernet1 PortChannel10\n";
   }
   return statements;
}

TEST( ExplainBasic, AMemberThatFlapped ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n" + flaps( 1, 12 ) ),
              R"(
Ethernet1 in PortChannel10 is HELD at 11.5 s, by egress-acl since 11.5 s

   egress-acl (basic) holds it, decided at 11.5 s
   because the egress ACL of Ethernet1 in PortChannel10 was installed or removed
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
   before that, after 18 more
      since 9.5 s       held        its egress ACL is not installed
      since 10 s        admitted    its egress ACL is installed
      since 10.5 s      held        its egress ACL is not installed
      since 11 s        admitted    its egress ACL is installed
)" );
}

TEST( ExplainBasic, ARestartThatChangesNothing ) {
   EXPECT_EQ( explained( basic + "member PortChannel10 Ethernet1\n"
                                 "acl Ethernet1 PortChannel10\n"
                                 "at 4\n"
                                 "restart egress-acl\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 4 s, by egress-acl since 0 s

   egress-acl (basic) admits it, decided at 4 s
   because the interlock started
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
)" );
}

} // namespace
