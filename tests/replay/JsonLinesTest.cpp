// Each kind of object, with its keys.

#include "tests/replay/Playing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace {

using TestSupport::aclNeeded;
using TestSupport::Json;
using TestSupport::play;

constexpr std::uint32_t allLevels = std::numeric_limits< std::uint32_t >::max();

TEST( JsonLines, StatementHasLineAndCollapsedText ) {
   EXPECT_EQ(
      play( "\n  lag  P\t\"E  1\" # comment" ).object( "statement" ),
      ( Json{
         { "kind", "statement" }, { "t", 0.0 }, { "line", 2 }, { "text", "lag P \"E  1\"" } } ) );
}

TEST( JsonLines, StatementComesBeforeWhatItDoes ) {
   const auto objects = play( "at 1\noutput egress-acl E P\nexpect egress-acl E P" ).objects();
   std::string kinds;
   for ( const Json & object : objects ) {
      kinds += object.at( "kind" ).get< std::string >() + ' ';
   }
   EXPECT_EQ( kinds, "statement statement verdict statement expect end " );
   EXPECT_EQ( objects[ 0 ].at( "t" ), 0.0 ); // where the clock was
   EXPECT_EQ( objects[ 1 ].at( "t" ), 1.0 );
}

TEST( JsonLines, VerdictNamesItsInterlockAndComesWhateverTheCause ) {
   const auto verdicts =
      play( "output egress-acl E P\nno output egress-acl E P\noutput vlan-xlate E P" )
         .objects( "verdict" );
   ASSERT_EQ( verdicts.size(), 3U );
   Json wanted{ { "kind", "verdict" }, { "t", 0.0 },   { "interlock", "egress-acl" },
                { "member", "E" },     { "lag", "P" }, { "admitted", true } };
   EXPECT_EQ( verdicts[ 0 ], wanted );
   wanted[ "admitted" ] = false;
   EXPECT_EQ( verdicts[ 1 ], wanted );
   wanted[ "admitted" ] = true;
   wanted[ "interlock" ] = "vlan-xlate";
   EXPECT_EQ( verdicts[ 2 ], wanted );
}

TEST( JsonLines, VerdictOfAnInterlockComesWithTheStatementThatCausedIt ) {
   const auto played = play( aclNeeded + "start basic\nat 0.5\nacl Ethernet1 PortChannel10\n" );
   EXPECT_EQ( played.object( "verdict" ), ( Json{ { "kind", "verdict" },
                                                  { "t", 0.5 },
                                                  { "interlock", "egress-acl" },
                                                  { "member", "Ethernet1" },
                                                  { "lag", "PortChannel10" },
                                                  { "admitted", true } } ) );
}

TEST( JsonLines, NoVerdictComesWhereNothingChanges ) {
   EXPECT_TRUE( play( "no output egress-acl E P" ).objects( "verdict" ).empty() );
   EXPECT_EQ( play( "output egress-acl E P\noutput egress-acl E P" ).objects( "verdict" ).size(),
              1U );
}

TEST( JsonLines, RequestHasItsTokenOrNull ) {
   const auto requests = play( "request P 4294967295\nno request P" ).objects( "request" );
   ASSERT_EQ( requests.size(), 2U );
   EXPECT_EQ(
      requests[ 0 ],
      ( Json{ { "kind", "request" }, { "t", 0.0 }, { "lag", "P" }, { "token", 4294967295U } } ) );
   EXPECT_EQ(
      requests[ 1 ],
      ( Json{ { "kind", "request" }, { "t", 0.0 }, { "lag", "P" }, { "token", nullptr } } ) );
}

TEST( JsonLines, ResponseIsTheSimulatedPeersOnly ) {
   EXPECT_TRUE( play( "response P 1\nno response P" ).objects( "response" ).empty() );
   EXPECT_EQ( play( "peer echo 0.5\nrequest P 1\nat 1" ).object( "response" ),
              ( Json{ { "kind", "response" }, { "t", 0.5 }, { "lag", "P" }, { "token", 1 } } ) );
}

TEST( JsonLines, TraceComesForTheLevelsAskedFor ) {
   const std::string scenario = aclNeeded + "start basic\n";
   EXPECT_TRUE( play( scenario ).objects( "trace" ).empty() );
   const auto entries = play( scenario, { 1U << 0U, false } ).objects( "trace" );
   ASSERT_FALSE( entries.empty() );
   for ( const Json & entry : entries ) {
      EXPECT_EQ( entry.at( "level" ), 0 );
   }
   const Json & first = entries.front();
   EXPECT_EQ( first.size(), 7U );
   EXPECT_EQ( first.at( "source" ), "Velo/VeloMlagEgressAclIntfInterlockSm" );
   EXPECT_GT( first.at( "line" ), 0 );
   EXPECT_EQ( first.at( "function" ), "handleInitialized" );
   EXPECT_EQ( first.at( "message" ), "handleInitialized" );
   EXPECT_GT( play( scenario, { allLevels, false } ).objects( "trace" ).size(), entries.size() );
}

TEST( JsonLines, TraceLevelsAreNotWidenedByExpectTrace ) {
   const auto played =
      play( aclNeeded + "start basic\nexpect trace \"member is active\"\n", { 1U << 0U, false } );
   for ( const Json & record : played.objects( "trace" ) ) {
      EXPECT_EQ( record.at( "level" ), 0 );
   }
   EXPECT_EQ( played.failed, 0U );
}

TEST( JsonLines, ExpectHasItsLineAndResult ) {
   EXPECT_EQ( play( "\nexpect joined E P" ).object( "expect" ),
              ( Json{ { "kind", "expect" }, { "t", 0.0 }, { "line", 2 }, { "ok", false } } ) );
   EXPECT_EQ( play( "expect held E P" ).object( "expect" ).at( "ok" ), true );
}

TEST( JsonLines, JotterRecordsComeBeforeTheEndWithTheTimeOfTheirWriting ) {
   const auto objects = play( aclNeeded + "at 2\nstart basic\nat 3", { 0, true } ).objects();
   ASSERT_GE( objects.size(), 2U );
   EXPECT_EQ( objects.back().at( "kind" ), "end" );
   Json record;
   for ( const Json & object : objects ) {
      if ( object.at( "kind" ) == "jotter" && record.is_null() && !object.at( "args" ).empty() ) {
         record = object;
      }
   }
   EXPECT_EQ( record.size(), 6U );
   EXPECT_EQ( record.at( "t" ), 2.0 );
   EXPECT_EQ( record.at( "source" ), "Velo/VeloMlagEgressAclIntfInterlockSm" );
   EXPECT_GT( record.at( "line" ), 0 );
   EXPECT_EQ( record.at( "message" ), "handleMember memberIntf : Ethernet1 lag : PortChannel10" );
   EXPECT_EQ( record.at( "args" ), Json::array( { "Ethernet1", "PortChannel10" } ) );
}

TEST( JsonLines, JotterRecordsComeWithRingOnly ) {
   EXPECT_TRUE( play( aclNeeded + "start basic\n" ).objects( "jotter" ).empty() );
}

TEST( JsonLines, EndListsTheOutputsAndRequestsInByteOrder ) {
   const auto end = play( "output egress-acl Ethernet2 B\n"
                          "output egress-acl Ethernet10 B\n"
                          "output egress-acl Ethernet10 A\n"
                          "output vlan-xlate x y\n"
                          "request Q 2\nrequest P 1\nat 0.1\nwait 0.2" )
                       .object( "end" );
   EXPECT_EQ( end, ( Json{ { "kind", "end" },
                           { "t", 0.3 },
                           { "egress-acl", Json::array( { Json::array( { "Ethernet10", "A" } ),
                                                          Json::array( { "Ethernet10", "B" } ),
                                                          Json::array( { "Ethernet2", "B" } ) } ) },
                           { "vlan-xlate", Json::array( { Json::array( { "x", "y" } ) } ) },
                           { "requests", { { "P", 1 }, { "Q", 2 } } },
                           { "failed", 0 } } ) );
}

TEST( JsonLines, EndOfAnEmptyScenarioHasAllItsKeys ) {
   EXPECT_EQ( play( "" ).object( "end" ), ( Json{ { "kind", "end" },
                                                  { "t", 0.0 },
                                                  { "egress-acl", Json::array() },
                                                  { "vlan-xlate", Json::array() },
                                                  { "requests", Json::object() },
                                                  { "failed", 0 } } ) );
}

TEST( JsonLines, NamesOfAnyTextAreEscapedAsJsonWantsIt ) {
   const auto verdict = play( "output egress-acl \"a\\\x01\" Büro" ).object( "verdict" );
   EXPECT_EQ( verdict.at( "member" ), "a\\\x01" );
   EXPECT_EQ( verdict.at( "lag" ), "Büro" );
}

} // namespace
