// Memory that runs out at each request in turn while trace files are printed: the caller gets
// std::bad_alloc, no memory, file, mapping or signal handler is left behind, and what was shown by
// then is whole lines.

#include "tests/platform/Memory.h"
#include "tests/replay/Lines.h"
#include "tests/replay/trace/TraceTool.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

namespace {

using TestSupport::Agent;

// Each of so many requests fails in turn, of the others some: reading a file makes thousands.
constexpr std::uint64_t everyOne = 500;
constexpr std::uint64_t step = 17;

// What a process holds besides memory.
struct Held {
   std::ptrdiff_t files;
   bool mapped; // a file of this folder
   bool handlesBusErrors;

   friend bool operator==( const Held &, const Held & ) = default;
};

class TraceOutOfMemory : public ::testing::Test {
 protected:
   // A ring that went round, and a record with what JSON escapes.
   std::string makeFile( const std::string & name ) {
      for ( int i = 0; i < 300; ++i ) {
         agent.timeout();
      }
      agent.member( "Ethernet1 \"\x01\xFF", "a LAG with a name that is long enough for the heap" );
      agent.lag( "PortChannel10", true, 7, Vex::Seconds( 0.1 ) );
      agent.save( folder / name );
      return folder / name;
   }
   Held held() const {
      const auto files = std::distance( std::filesystem::directory_iterator( "/proc/self/fd" ),
                                        std::filesystem::directory_iterator() );
      std::ifstream maps( "/proc/self/maps" );
      const std::string text{ std::istreambuf_iterator< char >( maps ), {} };
      struct sigaction action{};
      sigaction( SIGBUS, nullptr, &action );
      return { files, text.find( folder / "" ) != std::string::npos, action.sa_handler != SIG_DFL };
   }
   // Runs with less and less memory missing. `prepare` makes the files what they are at the start.
   void runOutOfMemory(
      const std::vector< std::string > & arguments,
      int wanted,
      const TestSupport::Steps & steps = {},
      const std::function< void() > & prepare = [] {} ) {
      prepare();
      const std::string all = TestSupport::runIntoOne( arguments, steps );
      const Held before = held();
      std::uint64_t granted = 0;
      for ( bool done = false; !done; granted += granted < everyOne ? 1 : step ) {
         SCOPED_TRACE( arguments.front() + ", memory for " + std::to_string( granted ) );
         prepare();
         const TestSupport::OutputFile shown;
         const std::uint64_t pieces = Memory::held();
         try {
            int status = -1;
            {
               Replay::Writer out( shown.descriptor() );
               Replay::Writer err( shown.descriptor() );
               const Memory::RunsOut memory( granted );
               status = TestSupport::runWith( arguments, steps, out, err );
            }
            done = true;
            EXPECT_EQ( status, wanted );
            EXPECT_EQ( shown.text(), all );
         } catch ( const std::bad_alloc & ) {}
         ASSERT_EQ( Memory::held(), pieces ) << "memory is lost";
         ASSERT_TRUE( TestSupport::areLinesOf( shown.text(), all ) ) << shown.text();
         ASSERT_EQ( held().files, before.files + 1 ); // where it is shown
         ASSERT_EQ( held().mapped, before.mapped );
         ASSERT_EQ( held().handlesBusErrors, before.handlesBusErrors );
      }
      EXPECT_GT( granted, 5U );
   }

   TestSupport::TemporaryFolder folder;
   Agent agent;
};

TEST_F( TraceOutOfMemory, APrintedFileEndsWithBadAllocAndLeavesNothingBehind ) {
   const std::string file = makeFile( "trace" );
   runOutOfMemory( { file }, 0 );
   runOutOfMemory( { file, "--level", "0,3-4", "--intf", "PortChannel10", "--last", "5" }, 0 );
   runOutOfMemory( { file, "--intf", "nosuch" }, 0 );
   runOutOfMemory( { file, "--jsonl" }, 0 );
}

TEST_F( TraceOutOfMemory, SoDoesADamagedOneAndWhatIsNone ) {
   const std::string file = makeFile( "trace" );
   std::filesystem::resize_file( file, 70'000 );
   runOutOfMemory( { file, "--jsonl" }, 1 );
   std::filesystem::resize_file( file, 5 );
   runOutOfMemory( { file }, 2 );
   runOutOfMemory( { folder / "missing" }, 2 );
   runOutOfMemory( { "--level", "much", file }, 2 );
}

TEST_F( TraceOutOfMemory, SoDoesAFollowedOneInWhosePlaceANewOneComes ) {
   const std::string file = folder / "trace";
   const std::string next = folder / "next";
   const std::string ofBothRuns = makeFile( "both" );
   const auto prepare = [ & ] {
      for ( const std::string & path : { file, next } ) {
         std::filesystem::remove( path );
         std::filesystem::copy_file( ofBothRuns, path );
      }
   };
   runOutOfMemory( { file, "--jsonl", "--follow" }, 0,
                   { [] {}, [ & ] { std::rename( next.c_str(), file.c_str() ); }, [] {} },
                   prepare );
}

} // namespace
