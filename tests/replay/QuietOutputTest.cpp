// What failed, and nothing else.

#include "replay/QuietOutput.h"

#include "replay/HostClock.h"
#include "replay/JsonLinesOutput.h"
#include "replay/Parser.h"
#include "replay/Runner.h"
#include "replay/TextOutput.h"
#include "tests/replay/Playing.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t allLevels = std::numeric_limits< std::uint32_t >::max();

// What is shown of scenarios that are played one after the other, with everything that could be.
std::string shownOf( TestSupport::MakeOutput makeOutput,
                     const std::vector< std::string > & scenarios ) {
   TestSupport::Captured captured;
   const auto output = makeOutput( captured.writer() );
   Replay::QuietOutput quiet( *output );
   for ( const std::string & scenario : scenarios ) {
      Replay::VirtualHostClock clock;
      quiet.begin( "scenario " + std::to_string( scenario.size() ) );
      Replay::runScenario( Replay::parseScenario( scenario ), { allLevels, true }, clock, quiet );
   }
   return captured.text();
}

const std::string allHeld = TestSupport::aclNeeded +
                            "mlag peer-interlock on\npeer echo 0.1\nstart controller\n"
                            "acl Ethernet1 PortChannel10\nexpect held Ethernet1 PortChannel10\n"
                            "wait 1\nexpect joined Ethernet1 PortChannel10\n";
const std::string twoFailed = "expect joined E P\nwait 1.5\nexpect held E P\n"
                              "expect egress-acl E P # really?\n";

TEST( QuietOutput, ShowsNothingWhereEverythingHeld ) {
   EXPECT_EQ( shownOf( &Replay::textOutput, { allHeld, "", allHeld } ), "" );
   EXPECT_EQ( shownOf( &Replay::jsonLinesOutput, { allHeld, "", allHeld } ), "" );
}

TEST( QuietOutput, ShowsWhatFailedWithItsStatementAndTime ) {
   EXPECT_EQ( shownOf( &Replay::textOutput, { allHeld, twoFailed } ),
              "scenario 75\n\n"
              "   seconds     line\n"
              "    0.000       1  expect joined E P                                        FAILED\n"
              "                      found       E is no member of P\n"
              "    1.500       4  expect egress-acl E P                                    FAILED\n"
              "                      found       E -> P is not in the output\n" );
}

TEST( QuietOutput, ShowsEachScenarioThatFailedUnderItsName ) {
   const std::string shown =
      shownOf( &Replay::textOutput, { "expect joined E P", allHeld, "expect joined Eth P" } );
   EXPECT_EQ( shown, "scenario 17\n\n"
                     "   seconds     line\n"
                     "    0.000       1  expect joined E P                                        "
                     "FAILED\n"
                     "                      found       E is no member of P\n"
                     "\nscenario 19\n\n"
                     "   seconds     line\n"
                     "    0.000       1  expect joined Eth P                                      "
                     "FAILED\n"
                     "                      found       Eth is no member of P\n" );
}

TEST( QuietOutput, ShowsTheObjectsOfWhatFailed ) {
   EXPECT_EQ( shownOf( &Replay::jsonLinesOutput, { twoFailed, allHeld } ),
              "{\"kind\":\"statement\",\"t\":0.0,\"line\":1,\"text\":\"expect joined E P\"}\n"
              "{\"kind\":\"expect\",\"t\":0.0,\"line\":1,\"ok\":false}\n"
              "{\"kind\":\"statement\",\"t\":1.5,\"line\":4,\"text\":\"expect egress-acl E P\"}\n"
              "{\"kind\":\"expect\",\"t\":1.5,\"line\":4,\"ok\":false}\n" );
}

} // namespace
