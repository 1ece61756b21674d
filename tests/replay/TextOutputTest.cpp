#include "tests/replay/Playing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using TestSupport::aclNeeded;
using TestSupport::playAsText;

TEST( TextOutput, ShowsWhatChangedUnderItsTime ) {
   EXPECT_EQ( playAsText( "output egress-acl Ethernet1 PortChannel10\n"
                          "peer echo 0.25   # the peer\n"
                          "request PortChannel10 7\n"
                          "at 0.5\n"
                          "no request PortChannel10\n"
                          "no output egress-acl Ethernet1 PortChannel10\n"
                          "expect held Ethernet1 PortChannel10\n" )
                 .shown,
              "test.scenario\n"
              "\n"
              "   seconds     line\n"
              "    0.000       1  output egress-acl Ethernet1 PortChannel10\n"
              "                      egress-acl  Ethernet1 -> PortChannel10      admitted\n"
              "                2  peer echo 0.25\n"
              "                3  request PortChannel10 7\n"
              "                      request     PortChannel10                   token 7\n"
              "                4  at 0.5\n"
              "    0.250             response    PortChannel10                   token 7\n"
              "    0.500       5  no request PortChannel10\n"
              "                      request     PortChannel10                   withdrawn\n"
              "                6  no output egress-acl Ethernet1 PortChannel10\n"
              "                      egress-acl  Ethernet1 -> PortChannel10      held\n"
              "                7  expect held Ethernet1 PortChannel10                      ok\n"
              "\n"
              "   egress-acl admits   nobody\n"
              "   expects             1 held\n" );
}

TEST( TextOutput, ShowsTheResultOfAnExpectInQuotesBehindItToo ) {
   EXPECT_THAT(
      playAsText( "\"expect\" held A B\n" ).shown,
      HasSubstr( "    0.000       1  \"expect\" held A B" + std::string( 40, ' ' ) + "ok\n" ) );
}

TEST( TextOutput, SaysOfAFailedExpectWhatWasFoundInstead ) {
   const std::string shown = playAsText( aclNeeded + "start basic\n"
                                                     "expect joined Ethernet1 PortChannel10\n"
                                                     "expect joined Ethernet2 PortChannel10\n"
                                                     "expect egress-acl Ethernet1 PortChannel10\n"
                                                     "expect request PortChannel10 1\n"
                                                     "expect trace nonsense\n"
                                                     "request PortChannel10 2\n"
                                                     "expect request PortChannel10 1\n"
                                                     "expect held Ethernet1 PortChannel10\n" )
                                .shown;
   EXPECT_THAT( shown,
                HasSubstr( "FAILED\n                      found       the egress-acl interlock "
                           "holds it\n" ) );
   EXPECT_THAT( shown, HasSubstr( "Ethernet2 is no member of PortChannel10, and the egress-acl "
                                  "interlock holds it\n" ) );
   EXPECT_THAT( shown,
                HasSubstr( "found       Ethernet1 -> PortChannel10 is not in the output\n" ) );
   EXPECT_THAT( shown, HasSubstr( "found       no request\n" ) );
   EXPECT_THAT( shown, HasSubstr( "found       no such message among " ) );
   EXPECT_THAT( shown, HasSubstr( "found       token 2\n" ) );
   EXPECT_THAT( shown, HasSubstr( "expects             1 held, 6 FAILED, first in line 7\n" ) );
}

TEST( TextOutput, ShowsMicrosecondsWhereThereAreSome ) {
   const std::string shown =
      playAsText( "at 1.0000005\nmlag state 1\nat 12.25\nmlag state 2" ).shown;
   EXPECT_THAT( shown, HasSubstr( "\n    1.000001    2  mlag state 1\n" ) );
   EXPECT_THAT( shown, HasSubstr( "\n   12.250       4  mlag state 2\n" ) );
}

TEST( TextOutput, ShowsTraceRecordsWithTheirOrigin ) {
   const std::string shown = playAsText( aclNeeded + "start basic\n", { 1U << 3U, false } ).shown;
   EXPECT_THAT( shown, ::testing::ContainsRegex(
                          "trace       lag member is active +Velo/"
                          "VeloMlagEgressAclIntfInterlockSm:[0-9]+ handleMember 3\n" ) );
   EXPECT_THAT( playAsText( aclNeeded + "start basic\n" ).shown, Not( HasSubstr( "trace " ) ) );
}

TEST( TextOutput, AlwaysAsksForTheFailuresThatAnOperatorMustSee ) {
   Replay::Writer writer( -1 );
   EXPECT_EQ( Replay::textOutput( writer )->levelsAlwaysShown(), 1U << 4U );
   EXPECT_EQ( Replay::jsonLinesOutput( writer )->levelsAlwaysShown(), 0U );
}

TEST( TextOutput, ShowsTheRingOnDemand ) {
   const std::string shown = playAsText( aclNeeded + "start basic\n", { 0, true } ).shown;
   EXPECT_THAT( shown, HasSubstr( "   ring buffer, oldest first: " ) );
   EXPECT_THAT(
      shown,
      HasSubstr( "    0.000       2  handleMember memberIntf : Ethernet1 lag : PortChannel10" ) );
   EXPECT_THAT( playAsText( aclNeeded + "start basic\n" ).shown,
                Not( HasSubstr( "ring buffer" ) ) );
}

TEST( TextOutput, ClosesWithWhoIsAdmittedInNaturalOrderAndWhatIsRequested ) {
   const std::string shown = playAsText( "output egress-acl Ethernet10 PortChannel2\n"
                                         "output egress-acl Ethernet9 PortChannel2\n"
                                         "output egress-acl Ethernet1 PortChannel10\n"
                                         "output vlan-xlate Ethernet1 PortChannel10\n"
                                         "request PortChannel2 5\n" )
                                .shown;
   EXPECT_THAT( shown,
                ::testing::EndsWith(
                   "\n"
                   "   egress-acl admits   Ethernet9 -> PortChannel2, Ethernet10 -> PortChannel2,\n"
                   "                       Ethernet1 -> PortChannel10\n"
                   "   vlan-xlate admits   Ethernet1 -> PortChannel10\n"
                   "   requests out        PortChannel2 token 5\n" ) );
}

TEST( TextOutput, KeepsALongClosingListShort ) {
   std::string scenario;
   for ( int port = 1; port <= 100; ++port ) {
      scenario += "output egress-acl Ethernet" + std::to_string( port ) + " P\n";
   }
   EXPECT_THAT( playAsText( scenario ).shown, HasSubstr( "Ethernet24 -> P, and 76 more\n" ) );
}

TEST( TextOutput, LetsNoNameMoveTheTerminal ) {
   const std::string shown = playAsText( "output egress-acl \"E\x1b[2J\" P\n" ).shown;
   EXPECT_THAT( shown, HasSubstr( "E\\x1b[2J -> P" ) );
   EXPECT_THAT( shown, Not( HasSubstr( "\x1b" ) ) );
}

} // namespace
