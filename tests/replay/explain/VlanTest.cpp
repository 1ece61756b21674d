// Each way of the VLAN-translation interlock, alone and beside another one.

#include "tests/replay/explain/Explaining.h"

#include <gtest/gtest.h>

namespace {

using TestSupport::basic;
using TestSupport::explained;
using TestSupport::vlan;

TEST( ExplainVlan, AMemberThatWaitsForVlanTranslation ) {
   EXPECT_EQ( explained( vlan + "vlan-xlate PortChannel10 ingress 10 110\n"
                                "at 1\n"
                                "member PortChannel10 Ethernet1\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 1 s, by vlan-xlate since 1 s

   vlan-xlate holds it, decided at 1 s
   because Ethernet1 entered, left or changed in PortChannel10
      member of the LAG             yes
      VLAN translation needed       yes
      VLAN translation programmed   no  <- holds it
   is looked at again when
      VLAN translation is programmed or removed for Ethernet1 in PortChannel10
      the switching configuration of PortChannel10, or a mapping in it, changes
      Ethernet1 enters, leaves or changes in PortChannel10
)" );
}

TEST( ExplainVlan, AMemberWithoutVlanTranslation ) {
   EXPECT_EQ( explained( vlan + "member PortChannel10 Ethernet1\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 0 s, by vlan-xlate since 0 s

   vlan-xlate admits it, decided at 0 s
   because Ethernet1 entered, left or changed in PortChannel10
      member of the LAG             yes
      VLAN translation needed       no  <- admits it
   is looked at again when
      the switching configuration of PortChannel10, or a mapping in it, changes
      VLAN translation is programmed or removed for Ethernet1 in PortChannel10
      Ethernet1 enters, leaves or changes in PortChannel10
)" );
}

TEST( ExplainVlan, ATranslationThatIsProgrammed ) {
   EXPECT_EQ( explained( vlan + "member PortChannel10 Ethernet1\n"
                                "at 1\n"
                                "vlan-xlate PortChannel10 egress 110 10\n"
                                "at 2\n"
                                "vlan-ready Ethernet1 PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is ADMITTED at 2 s, by vlan-xlate since 2 s

   vlan-xlate admits it, decided at 2 s
   because VLAN translation was programmed or removed for Ethernet1 in PortChannel10
      member of the LAG             yes
      VLAN translation needed       yes
      VLAN translation programmed   yes  <- admits it
   is looked at again when
      VLAN translation is programmed or removed for Ethernet1 in PortChannel10
      the switching configuration of PortChannel10, or a mapping in it, changes
      Ethernet1 enters, leaves or changes in PortChannel10
   before that
      since 0 s         admitted    no VLAN translation is needed
      since 1 s         held        VLAN translation is not programmed
)" );
}

TEST( ExplainVlan, TwoInterlocks ) {
   EXPECT_EQ( explained( basic + "switchport PortChannel10\n"
                                 "vlan-xlate PortChannel10 ingress 10 110\n"
                                 "start vlan-xlate\n"
                                 "member PortChannel10 Ethernet1\n"
                                 "at 1\n"
                                 "acl Ethernet1 PortChannel10\n" ),
              R"(
Ethernet1 in PortChannel10 is HELD at 1 s, by vlan-xlate since 0 s

   egress-acl (basic) admits it, decided at 1 s
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

   vlan-xlate holds it, decided at 0 s
   because Ethernet1 entered, left or changed in PortChannel10
      member of the LAG             yes
      VLAN translation needed       yes
      VLAN translation programmed   no  <- holds it
   is looked at again when
      VLAN translation is programmed or removed for Ethernet1 in PortChannel10
      the switching configuration of PortChannel10, or a mapping in it, changes
      Ethernet1 enters, leaves or changes in PortChannel10
)" );
}

} // namespace
