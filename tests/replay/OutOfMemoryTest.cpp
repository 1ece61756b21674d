// Memory that runs out at each request in turn while a scenario is read and played: the caller gets
// std::bad_alloc, nothing is leaked, and clock, trace and ring are again what they were. Of text
// output only: the JSON library asks for memory in destructors, and ends the process without it.

#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Trace.h"
#include "replay/HostClock.h"
#include "replay/Parser.h"
#include "replay/Runner.h"
#include "replay/ScenarioError.h"
#include "replay/TextOutput.h"
#include "replay/Writer.h"
#include "tests/platform/Memory.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <string>

namespace {

const std::string oneSwitch = R"(# of everything something
mlag state 3
link Ethernet49 2
mlag peer-link Ethernet49
mlag intf PortChannel10 1 2 "configured and up"
mlag peer-interlock on
output egress-acl Ethernet9 PortChannel10
request PortChannel30 5
lag PortChannel10 Ethernet1 Ethernet2 Ethernet3 Ethernet4 Ethernet5
switchport PortChannel10
vlan-xlate PortChannel10 ingress 10 1000
peer echo 0.02
start controller
start vlan-xlate
expect held Ethernet1 PortChannel10
acl Ethernet1 PortChannel10
wait 0.05
expect egress-acl Ethernet1 PortChannel10
no peer echo
member PortChannel10 Ethernet6
no lag PortChannel10
lag PortChannel10 Ethernet1
wait 0.2
expect trace "Timeout has occurred"
mlag peer-interlock off
restart egress-acl
expect joined Ethernet9 PortChannel10
stop vlan-xlate
)";

const std::string pairOfSwitches = R"(# the two talk to each other
switch left
mlag state 3
mlag intf PortChannel10 1 2
mlag peer-interlock on
lag PortChannel10 Ethernet1
start controller
switch right
mlag state 4
mlag intf PortChannel10 1 2
mlag peer-interlock on
lag PortChannel10 Ethernet1
start controller
acl Ethernet1 PortChannel10
wire delay 0.01
wire repeat 50% 0.01
wire seed 3
wait 0.3
)";

const std::string withErrors = "lag PortChannel10 Ethernet1\nmember PortChannel20 Ethernet1\n";

// Each of so many requests fails in turn, of the others some: a run makes thousands.
constexpr std::uint64_t everyOne = 500;

struct Case {
   const char * name;
   const std::string * scenario;
};

const std::array< Case, 3 > cases{ Case{ "one switch", &oneSwitch },
                                   Case{ "pair", &pairOfSwitches }, Case{ "error", &withErrors } };

class OutOfMemory : public testing::Test {
 protected:
   /// How many expects failed; -1: the scenario is wrong.
   int play( const Case & what ) const {
      Replay::Writer writer( fileno( nowhere_.get() ) );
      const auto output = Replay::textOutput( writer );
      Replay::VirtualHostClock clock;
      try {
         const Replay::Scenario scenario = Replay::parseScenario( *what.scenario );
         output->begin( "test.scenario" );
         const Replay::RunOptions all{ 0xFFFFFFFF, what.scenario == &oneSwitch };
         return static_cast< int >( Replay::runScenario( scenario, all, clock, *output ) );
      } catch ( const Replay::ScenarioError & ) {
         return -1;
      }
   }

 private:
   std::unique_ptr< std::FILE, int ( * )( std::FILE * ) > nowhere_{ std::fopen( "/dev/null", "w" ),
                                                                    std::fclose };
};

TEST_F( OutOfMemory, APlayedScenarioEndsWithBadAllocAndLeavesNothingBehind ) {
   Jotter::TraceFile * const ring = Jotter::defaultTraceFile();
   auto & handle = Vex::traceHandle( "VeloMlagEgressAclIntfInterlockSm" );
   const std::uint32_t mask = handle.levelMask();
   const Vex::Clock * const clock = Vex::clockIs( nullptr );
   Vex::clockIs( clock );
   for ( const Case & what : cases ) {
      const int wanted = play( what ); // and what is made once for the process is there
      std::uint64_t granted = 0;
      for ( bool done = false; !done; granted += granted < everyOne ? 1 : 13 ) {
         SCOPED_TRACE( std::string( what.name ) + ", memory for " + std::to_string( granted ) );
         const std::uint64_t held = Memory::held();
         try {
            int failed = 0;
            {
               const Memory::RunsOut memory( granted );
               failed = play( what );
            }
            done = true;
            EXPECT_EQ( failed, wanted );
         } catch ( const std::bad_alloc & ) {}
         ASSERT_EQ( Memory::held(), held ) << "memory is lost";
         ASSERT_EQ( Jotter::defaultTraceFile(), ring );
         ASSERT_EQ( handle.levelMask(), mask );
         const Vex::Clock * const now = Vex::clockIs( nullptr );
         Vex::clockIs( now );
         ASSERT_EQ( now, clock );
      }
      EXPECT_EQ( play( what ), wanted );
      EXPECT_GT( granted, 5U );
   }
}

} // namespace
