// One library under two agents in one process, each on a thread of its own with entities, a
// scheduler and an interlock of its own, in the thread-safe pointer mode. Names, the clock and the
// trace belong to both.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Object.h"
#include "tests/support/Consumers.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/World.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <latch>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Velo {
namespace {

using TestSupport::startController;
using TestSupport::VerdictLog;
using TestSupport::World;

/// The clock of a host with several threads: one moves it, all may read it meanwhile.
class HostsClock final : public Vex::Clock {
 public:
   Vex::Seconds now() const noexcept override {
      return Vex::Seconds( 1e-3 * static_cast< double >( milliseconds_.load() ) );
   }
   void tick() noexcept { ++milliseconds_; }

 private:
   std::atomic< std::uint64_t > milliseconds_{ 0 };
};

constexpr double patience = 0.1; // how long the peer is waited for, in seconds
constexpr int rounds = 20;

/// An agent of which each LAG gets no answer from the peer, so that the time-out admits its member.
class Agent {
 public:
   Agent( std::string name, World & world ) : name_( std::move( name ) ), world_( world ) {}

   void run() {
      const auto controller = startController( world_ );
      const auto verdicts = VerdictLog::of( world_.output );
      world_.lagGone( "PortChannel10" ).peerInterlock( true );
      EXPECT_EQ( verdicts->take(), "" );
      for ( int round = 0; round < rounds; ++round ) {
         const std::string lag = name_ + "-Lag" + std::to_string( round );
         const std::string port = name_ + "-Port" + std::to_string( round );
         world_.mlagIntf( lag ).lag( lag, {} );
         const Vex::Seconds asked = Vex::now();
         world_.member( port, lag );
         while ( !world_.admits( port, lag ) ) {
            world_.scheduler->runDue();
            std::this_thread::yield();
         }
         EXPECT_GE( ( Vex::now() - asked ).value(), patience - 1e-9 );
         all_ += verdicts->take();
         wanted_ += "+(" + port + ", " + lag + ")";
      }
   }

   const std::string & verdicts() const { return all_; }
   const std::string & wantedVerdicts() const { return wanted_; }

 private:
   std::string name_;
   World & world_;
   std::string all_;
   std::string wanted_;
};

TEST( TwoAgentsThreadsTest, EachHearsItsOwnTimeoutsAndBothAreInOneTrace ) {
   ASSERT_EQ( Vex::pointerMode(), Vex::PointerMode::threadSafe );
   Jotter::TraceFile ring( 1U << 16U );
   Jotter::TraceFile * const before = Jotter::defaultTraceFileIs( &ring );
   std::array< World, 2 > worlds;
   HostsClock clock;
   const Vex::ClockScope scope( clock );
   std::array< Agent, 2 > agents{ Agent( "Left", worlds[ 0 ] ), Agent( "Right", worlds[ 1 ] ) };
   {
      std::latch begin( 2 );
      std::atomic< int > running = 2;
      std::vector< std::jthread > threads;
      for ( Agent & agent : agents ) {
         threads.emplace_back( [ & ] {
            begin.arrive_and_wait();
            agent.run();
            --running;
         } );
      }
      while ( running > 0 ) {
         clock.tick();
         std::this_thread::yield();
      }
   }
   Jotter::defaultTraceFileIs( before );

   std::array< int, 2 > timeouts{};
   std::uint64_t sequence = 0;
   for ( const Jotter::Record & record : Jotter::readRecords( ring.bytes() ) ) {
      EXPECT_EQ( record.sequence, ++sequence ); // nothing is lost, nothing is torn
      const std::string message = record.message();
      timeouts[ 0 ] +=
         message.starts_with( "Syslog: Timeout has occurred on lag Left-Lag" ) ? 1 : 0;
      timeouts[ 1 ] +=
         message.starts_with( "Syslog: Timeout has occurred on lag Right-Lag" ) ? 1 : 0;
   }
   EXPECT_EQ( sequence, ring.written() );
   for ( std::size_t side = 0; side < agents.size(); ++side ) {
      EXPECT_EQ( agents.at( side ).verdicts(), agents.at( side ).wantedVerdicts() );
      EXPECT_EQ( timeouts.at( side ), rounds );
   }
}

} // namespace
} // namespace Velo
