// Memory that runs out at each request in turn while a scenario is read and played: the caller gets
// std::bad_alloc, nothing is leaked, clock, trace and ring are again what they were, and what was
// shown by then is whole lines.

#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Trace.h"
#include "replay/CommandLine.h"
#include "replay/HostClock.h"
#include "replay/JsonLinesOutput.h"
#include "replay/Parser.h"
#include "replay/Runner.h"
#include "replay/ScenarioError.h"
#include "replay/TextOutput.h"
#include "replay/Writer.h"
#include "tests/platform/Memory.h"
#include "tests/replay/Lines.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

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

struct OutputCase {
   const char * name;
   std::unique_ptr< Replay::Output > ( *make )( Replay::Writer & );
};

const std::array< OutputCase, 3 > outputs{
   OutputCase{ "Text", &Replay::textOutput },
   OutputCase{ "ColouredText", &Replay::colouredTextOutput },
   OutputCase{ "JsonLines", &Replay::jsonLinesOutput } };

class OutOfMemory : public testing::TestWithParam< OutputCase > {
 protected:
   /// How many expects failed; -1: the scenario is wrong.
   int play( const Case & what ) const {
      std::rewind( file_.get() );
      EXPECT_EQ( ftruncate( fileno( file_.get() ), 0 ), 0 );
      Replay::Writer writer( fileno( file_.get() ) );
      const auto output = GetParam().make( writer );
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

   std::FILE * file() const { return file_.get(); }

   /// By the last play.
   std::string shown() const {
      std::rewind( file_.get() );
      std::string text;
      std::array< char, 4096 > piece{};
      while ( const std::size_t size = std::fread( piece.data(), 1, piece.size(), file_.get() ) ) {
         text.append( piece.data(), size );
      }
      return text;
   }

 private:
   std::unique_ptr< std::FILE, int ( * )( std::FILE * ) > file_{ std::tmpfile(), std::fclose };
};

INSTANTIATE_TEST_SUITE_P(, OutOfMemory, testing::ValuesIn( outputs ), []( const auto & output ) {
   return output.param.name;
} );

TEST_P( OutOfMemory, APlayedScenarioEndsWithBadAllocAndLeavesNothingBehind ) {
   Jotter::TraceFile * const ring = Jotter::defaultTraceFile();
   auto & handle = Vex::traceHandle( "VeloMlagEgressAclIntfInterlockSm" );
   const std::uint32_t mask = handle.levelMask();
   const Vex::Clock * const clock = Vex::clockIs( nullptr );
   Vex::clockIs( clock );
   for ( const Case & what : cases ) {
      const int wanted = play( what ); // and what is made once for the process is there
      const std::string all = shown();
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
         ASSERT_TRUE( TestSupport::areLinesOf( shown(), all ) ) << shown();
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

// Such a message is lost, and what comes next is whole.
TEST_P( OutOfMemory, ATraceMessageThatFindsNoMemoryLeavesNothingOfItself ) {
   const Vex::TraceRecord record{ "Velo/Source", 1, "handleSomething", 4, "what an operator sees" };
   const std::string statement( 100, 'x' );
   const Vex::VirtualClock clock;
   const Vex::ClockScope scope( clock );
   const auto show = [ & ]( std::uint64_t granted ) {
      std::rewind( file() );
      EXPECT_EQ( ftruncate( fileno( file() ), 0 ), 0 );
      Replay::Writer writer( fileno( file() ) );
      const auto output = GetParam().make( writer );
      bool whole = false;
      try {
         const Memory::RunsOut memory( granted );
         output->trace( record );
         whole = true;
      } catch ( const std::bad_alloc & ) {}
      output->statement( 1, statement );
      return whole;
   };
   show( 1'000 );
   const std::string all = shown();
   show( 0 );
   const std::string withoutMessage = shown();
   EXPECT_EQ( std::ranges::count( withoutMessage, '\n' ), 1 );
   EXPECT_NE( withoutMessage.find( "0.0" ), std::string::npos );
   std::uint64_t granted = 0;
   for ( ; !show( granted ); ++granted ) {
      EXPECT_EQ( shown(), withoutMessage ) << granted;
   }
   EXPECT_EQ( shown(), all );
   EXPECT_GT( granted, 1U );
}

// What is made once for a process, such as the call sites of its trace, is not there yet.
TEST_P( OutOfMemory, TheFirstPlayOfAProcessEndsWithBadAlloc ) {
   constexpr int outOfMemory = 3;
   int status = outOfMemory;
   std::uint64_t granted = 0;
   for ( ; status == outOfMemory; granted += granted < everyOne ? 7 : 61 ) {
      const pid_t child = fork();
      ASSERT_GE( child, 0 );
      if ( child == 0 ) {
         try {
            const Memory::RunsOut memory( granted );
            play( cases.front() );
            _exit( 0 );
         } catch ( const std::bad_alloc & ) {
            _exit( outOfMemory );
         }
      }
      int ended = 0;
      ASSERT_EQ( waitpid( child, &ended, 0 ), child );
      ASSERT_TRUE( WIFEXITED( ended ) )
         << "killed by " << WTERMSIG( ended ) << ", memory for " << granted;
      status = WEXITSTATUS( ended );
   }
   EXPECT_EQ( status, 0 );
   EXPECT_GT( granted, everyOne );
}

TEST( OutOfMemoryCommandLine, EndsWithBadAllocAndLeavesNothingBehind ) {
   const auto parse = []( const std::vector< const char * > & argv ) {
      return Replay::parseCommandLine( static_cast< int >( argv.size() ), argv.data() );
   };
   const std::vector< const char * > right{ "interlock-replay", "--output",  "jsonl",
                                            "--trace",          "0,2-4",     "--ring",
                                            "a.scenario",       "b.scenario" };
   const std::vector< const char * > wrong{ "interlock-replay", "--clock", "sundial",
                                            "a.scenario" };
   for ( const auto & argv : { right, wrong } ) {
      const Replay::CommandLine wanted = parse( argv );
      const std::uint64_t held = Memory::held();
      const int failed = Memory::attemptsUntilSuccess< std::bad_alloc >(
         [ & ] {
            const Replay::CommandLine found = parse( argv );
            EXPECT_EQ( found.options.has_value(), wanted.options.has_value() );
            EXPECT_EQ( found.error, wanted.error );
         },
         [ & ] { ASSERT_EQ( Memory::held(), held ) << "memory is lost"; } );
      EXPECT_GT( failed, 50 );
   }
}

} // namespace
