// `--summary`: for how long each member was held, and by what.

#include "replay/explain/Summary.h"

#include "tests/replay/explain/Explaining.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>

namespace {

using ::testing::HasSubstr;
using TestSupport::basic;
using TestSupport::OutputFile;
using TestSupport::peer;

/// What is shown of a run, with a summary.
std::string shownWith( Explain::SummaryForm form, const std::string & text ) {
   const OutputFile file;
   {
      Replay::Writer writer( file.descriptor() );
      const auto inner = form == Explain::SummaryForm::text ? Replay::textOutput( writer )
                                                            : Replay::jsonLinesOutput( writer );
      const Replay::Scenario scenario = Replay::parseScenario( text );
      Explain::Summary summary( scenario, 0, *inner, form );
      Replay::VirtualHostClock clock;
      summary.begin( "s" );
      runScenario( scenario, {}, clock, summary );
   }
   return file.text();
}

/// The lines of the summary alone, behind an empty line.
std::string summaryOf( const std::string & scenario ) {
   const std::string shown = shownWith( Explain::SummaryForm::text, scenario );
   return shown.substr( shown.rfind( "\n\n" ) + 1 );
}

TEST( Summary, TellsForHowLongEachMemberWasHeldAndByWhat ) {
   EXPECT_EQ( summaryOf( peer + "at 1.02\n"
                                "response PortChannel10 2\n"
                                "at 1.5\n"
                                "acl Ethernet1 PortChannel10\n"
                                "at 4\n"
                                "no acl Ethernet1 PortChannel10\n"
                                "at 6\n" ),
              R"(
                                        in the LAG                held
   Ethernet1 -> PortChannel10           5 s                       2.5 s, still
      egress-acl: its egress ACL is not installed                 2.48 s
      egress-acl: waits for the peer's answer                     0.02 s
)" );
}

TEST( Summary, WhatTwoInterlocksHoldIsHeldOnce ) {
   EXPECT_EQ( summaryOf( basic + "switchport PortChannel10\n"
                                 "vlan-xlate PortChannel10 ingress 10 110\n"
                                 "start vlan-xlate\n"
                                 "member PortChannel10 Ethernet1\n"
                                 "at 1\n"
                                 "acl Ethernet1 PortChannel10\n"
                                 "at 3\n"
                                 "vlan-ready Ethernet1 PortChannel10\n"
                                 "at 4\n" ),
              R"(
                                        in the LAG                held
   Ethernet1 -> PortChannel10           4 s                       3 s
      egress-acl: its egress ACL is not installed                 1 s
      vlan-xlate: VLAN translation is not programmed              3 s
)" );
}

TEST( Summary, AMemberThatLeavesIsNotHeldAnyMore ) {
   EXPECT_EQ( summaryOf( basic + "member PortChannel10 Ethernet1\n"
                                 "at 1\n"
                                 "no member PortChannel10 Ethernet1\n"
                                 "at 5\n" ),
              R"(
                                        in the LAG                held
   Ethernet1 -> PortChannel10           1 s                       1 s
      egress-acl: its egress ACL is not installed                 1 s
)" );
}

TEST( Summary, WhatNobodyLooksAtIsHeldByThat ) {
   EXPECT_EQ( summaryOf( basic + "lag PortChannel20 Ethernet1\n"
                                 "at 2\n"
                                 "acl Ethernet1 PortChannel20\n"
                                 "at 3\n"
                                 "no lag PortChannel20\n"
                                 "at 4\n" ),
              R"(
                                        in the LAG                held
   Ethernet1 -> PortChannel20           3 s                       2 s
      egress-acl: has not looked at it                            2 s
)" );
}

TEST( Summary, WhatWasDecidedBeforeItsLagWasReplacedIsHeldByNobodyLooking ) {
   EXPECT_EQ( summaryOf( basic + "member PortChannel10 Ethernet1\n"
                                 "at 1\n"
                                 "lag PortChannel10 Ethernet1\n"
                                 "at 3\n"
                                 "no acl Ethernet1 PortChannel10\n" // is no change
                                 "mlag state 4\n" // decides over it
                                 "at 4\n" ),
              R"(
                                        in the LAG                held
   Ethernet1 -> PortChannel10           4 s                       4 s, still
      egress-acl: its egress ACL is not installed                 2 s
      egress-acl: has not looked at it                            2 s
)" );
}

TEST( Summary, AnInterlockThatWasNeverStartedHoldsNobody ) {
   EXPECT_EQ( summaryOf( basic + "member PortChannel10 Ethernet1\n"
                                 "acl Ethernet1 PortChannel10\n"
                                 "at 1\n" ),
              R"(
                                        in the LAG                held
   Ethernet1 -> PortChannel10           1 s                       0 s
)" );
}

TEST( Summary, WhileAnInterlockIsStoppedItsVerdictsStand ) {
   EXPECT_EQ( summaryOf( basic + "member PortChannel10 Ethernet1\n"
                                 "at 1\n"
                                 "stop egress-acl\n"
                                 "at 3\n"
                                 "start basic\n"
                                 "at 4\n" ),
              R"(
                                        in the LAG                held
   Ethernet1 -> PortChannel10           4 s                       4 s, still
      egress-acl: nobody decides: the interlock is stopped        2 s
      egress-acl: its egress ACL is not installed                 2 s
)" );
}

TEST( Summary, WhatSomebodyElseTakesAwayIsHeldByThat ) {
   EXPECT_EQ( summaryOf( basic + "member PortChannel10 Ethernet1\n"
                                 "acl Ethernet1 PortChannel10\n"
                                 "at 1\n"
                                 "no output egress-acl Ethernet1 PortChannel10\n"
                                 "at 3\n" ),
              R"(
                                        in the LAG                held
   Ethernet1 -> PortChannel10           3 s                       2 s, still
      egress-acl: admits it, but somebody else wrote its output   2 s
)" );
}

TEST( Summary, WithoutMembersSaysSo ) {
   EXPECT_EQ( summaryOf( "mlag state 3\n" ), R"(
                                        in the LAG                held
   no port was in a LAG
)" );
}

TEST( Summary, HasAPartForEachSwitch ) {
   const std::string shown =
      shownWith( Explain::SummaryForm::text, "switch right\nlag P\nstart basic\nmember P E2\n"
                                             "member P E10\nat 1\n" );
   EXPECT_THAT( shown, ::testing::EndsWith( R"(
   left                                 in the LAG                held
   no port was in a LAG

   right                                in the LAG                held
   E2 -> P                              1 s                       0 s
   E10 -> P                             1 s                       0 s
)" ) );
}

TEST( Summary, AsObjectsComesBeforeTheEnd ) {
   const std::string shown =
      shownWith( Explain::SummaryForm::jsonLines, basic + "member PortChannel10 Ethernet1\n"
                                                          "at 0.25\n" );
   EXPECT_THAT( shown,
                ::testing::HasSubstr(
                   R"({"kind":"held","t":0.25,"member":"Ethernet1","lag":"PortChannel10",)"
                   R"("in_lag":0.25,"held":0.25,"held_now":true,"by":[{"interlock":"egress-acl",)"
                   R"("reason":"no-local-acl","for":0.25}]})"
                   "\n"
                   R"({"kind":"end",)" ) );
}

TEST( Summary, TheRunIsShownAsWithoutIt ) {
   const std::string scenario = basic + "member PortChannel10 Ethernet1\nexpect trace active\n";
   for ( const auto form : { Explain::SummaryForm::text, Explain::SummaryForm::jsonLines } ) {
      const bool text = form == Explain::SummaryForm::text;
      const std::string alone =
         ( text ? TestSupport::playAsText( scenario ) : TestSupport::play( scenario ) ).shown;
      std::string with = shownWith( form, scenario );
      TestSupport::replaceAll( with, "s\n\n", "test.scenario\n\n" );
      if ( text ) {
         EXPECT_THAT( with, ::testing::StartsWith( alone ) );
      } else {
         const std::size_t held = with.find( R"({"kind":"held")" );
         with.erase( held, with.find( '\n', held ) + 1 - held );
         EXPECT_EQ( with, alone );
      }
   }
}

TEST( Summary, TheManualTellsHowAMemberIsShownThatIsHeldAtTheEnd ) {
   const std::string held = basic + "member PortChannel10 Ethernet1\nat 1\n";
   std::ifstream file( INTERLOCK_SOURCE_DIR "/packaging/man/interlock-replay.1" );
   const std::string manual( std::istreambuf_iterator< char >( file ), {} );
   EXPECT_THAT( shownWith( Explain::SummaryForm::text, held ), HasSubstr( "1 s, still\n" ) );
   EXPECT_THAT( manual, HasSubstr( "\n.Sq \", still\"\n" ) );
   EXPECT_THAT( shownWith( Explain::SummaryForm::jsonLines, held ),
                HasSubstr( R"("held_now":true)" ) );
   EXPECT_THAT( manual, HasSubstr( "\n.Li held_now\n" ) );
}

} // namespace
