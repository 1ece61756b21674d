// The interlocks in the thread-safe pointer mode, which this process chooses. What one thread owns,
// others may hold and drop references to; names, level masks and the ring belong to all.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockSm.h"
#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Jotter/TraceReader.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Trace.h"
#include "tests/support/Consumers.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/World.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <latch>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace Velo {
namespace {

using TestSupport::admitted;
using TestSupport::startController;
using TestSupport::VerdictLog;
using TestSupport::World;
using String = Vex::String;
using Held = std::vector< Vex::Ptr< const Vex::Object > >;

const bool chosen = [] {
   Vex::pointerModeIs( Vex::PointerMode::threadSafe );
   return true;
}();

const char * const handle = "VeloMlagEgressAclIntfInterlockSm";

class IgnoringSink final : public Vex::TraceSink {
 public:
   void write( const Vex::TraceRecord & /* record */ ) override {}
};

/// A small ring in place of the default one, so that it is overwritten while it is read.
class SmallRing {
 public:
   SmallRing() : before_( Jotter::defaultTraceFileIs( &file_ ) ) {}
   SmallRing( const SmallRing & ) = delete;
   SmallRing & operator=( const SmallRing & ) = delete;
   SmallRing( SmallRing && ) = delete;
   SmallRing & operator=( SmallRing && ) = delete;
   ~SmallRing() { Jotter::defaultTraceFileIs( before_ ); }

   const Jotter::TraceFile & file() const { return file_; }

 private:
   Jotter::TraceFile file_{ 1 };
   Jotter::TraceFile * before_;
};

/// Threads that own nothing: two take and drop references, one reads the ring, one switches the
/// text trace on and off.
class Bystanders {
 public:
   Bystanders( const Held & held, const Jotter::TraceFile & ring ) {
      begin( [ this, held = Held( held ) ]() mutable { references( held ); } );
      begin( [ this, held = Held( held ) ]() mutable { references( held ); } );
      begin( [ this, &ring ] { readings( ring ); } );
      begin( [ this ] { switching(); } );
   }
   Bystanders( const Bystanders & ) = delete;
   Bystanders & operator=( const Bystanders & ) = delete;
   Bystanders( Bystanders && ) = delete;
   Bystanders & operator=( Bystanders && ) = delete;
   ~Bystanders() { stop(); }

   /// Whether each has been seen at work.
   bool allBusy() const { return busy_.try_wait(); }
   void stop() {
      enough_ = true;
      threads_.clear();
   }

 private:
   template < class Work >
   void begin( Work work ) {
      threads_.emplace_back( std::move( work ) );
   }
   void references( Held & held ) {
      for ( int round = 0; !enough_; ++round ) {
         Held more = held;
         more.clear();
         if ( round == 20 ) {
            busy_.count_down();
         }
      }
      held.clear(); // the last one perhaps
   }
   void readings( const Jotter::TraceFile & ring ) {
      for ( int round = 0; !enough_; ++round ) {
         std::uint64_t before = 0;
         for ( const Jotter::Record & record : Jotter::readRecords( ring.bytes() ) ) {
            EXPECT_GT( record.sequence, before );
            before = record.sequence;
         }
         if ( round == 20 ) {
            busy_.count_down();
         }
      }
   }
   void switching() {
      Vex::TraceHandle & trace = Vex::traceHandle( handle );
      for ( int round = 0; !enough_; ++round ) {
         trace.levelMaskIs( round % 2 == 0 ? 0x1FU : 0U );
         if ( round == 20 ) {
            busy_.count_down();
         }
      }
      trace.levelMaskIs( 0 );
   }

   std::atomic< bool > enough_ = false;
   std::latch busy_{ 4 };
   std::vector< std::jthread > threads_;
};

struct InterlockThreadsTest : testing::Test {
   SmallRing ring;
   IgnoringSink sink;
   Vex::TraceSinkScope scope{ sink };

   static Held entitiesOf( const World & world ) {
      return { world.aclIntfFeatureStatus,
               world.hwLagConfig,
               world.mlagStatus,
               world.response,
               world.request,
               world.scheduler,
               world.output };
   }

   static std::vector< std::uint32_t > countsOf( const Held & held ) {
      std::vector< std::uint32_t > counts;
      std::ranges::transform( held, std::back_inserter( counts ),
                              []( const auto & object ) { return object->referenceCount(); } );
      return counts;
   }

   /// Plays `round` until the bystanders have been seen at work, and some times more.
   template < class Round >
   static void playBeside( const Bystanders & bystanders, Round round ) {
      int rounds = 0;
      while ( rounds < 50 || !bystanders.allBusy() ) {
         ASSERT_NO_FATAL_FAILURE( round() ) << "in round " << rounds;
         ++rounds;
      }
   }
};

// Ethernet2 comes, gets its ACL, loses it and goes.
void playMember( World & world, VerdictLog & verdicts ) {
   world.member( "Ethernet2" ).installed( "Ethernet2" );
   ASSERT_EQ( verdicts.take(), "+(Ethernet2, PortChannel10)" );
   world.notInstalled( "Ethernet2" );
   ASSERT_EQ( verdicts.take(), "-(Ethernet2, PortChannel10)" );
   world.memberGone( "Ethernet2" );
   ASSERT_EQ( verdicts.take(), "" );
}

// The same with the peer's answer, then with its silence, then as the basic interlock.
void playSwitchover( World & world, VerdictLog & verdicts ) {
   world.peerInterlock( true ).installed( "Ethernet1" ).answerRequest();
   ASSERT_EQ( verdicts.take(), "+(Ethernet1, PortChannel10)" );
   world.lag( "PortChannel20", {} ).mlagIntf( "PortChannel20" );
   world.member( "Ethernet5", "PortChannel20" );
   ASSERT_EQ( verdicts.take(), "" );
   world.pass( 0.1 );
   ASSERT_EQ( verdicts.take(), "+(Ethernet5, PortChannel20)" );
   world.peerInterlock( false );
   ASSERT_EQ( verdicts.take(), "-(Ethernet5, PortChannel20)" );
   world.notInstalled( "Ethernet1" ).lagGone( "PortChannel20" );
   ASSERT_EQ( verdicts.take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( InterlockThreadsTest, TheBasicInterlockDecidesTheSameWhileOthersHoldItsEntities ) {
   ASSERT_TRUE( chosen );
   World world;
   const auto interlock = MlagEgressAclIntfInterlockSm::MlagEgressAclIntfInterlockSmIs(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
   const auto verdicts = VerdictLog::of( world.output );
   Held held = entitiesOf( world );
   held.emplace_back( interlock );
   const auto counts = countsOf( held );
   Bystanders bystanders( held, ring.file() );
   playBeside( bystanders, [ & ] { playMember( world, *verdicts ); } );
   bystanders.stop();
   EXPECT_EQ( admitted( world.output ), "" );
   EXPECT_EQ( countsOf( held ), counts );
}

TEST_F( InterlockThreadsTest, TheControllerSwitchesOverTheSameWhileOthersHoldItsEntities ) {
   World world;
   const auto controller = startController( world );
   const auto verdicts = VerdictLog::of( world.output );
   Held held = entitiesOf( world );
   held.emplace_back( controller );
   const auto counts = countsOf( held );
   Bystanders bystanders( held, ring.file() );
   playBeside( bystanders, [ & ] { playSwitchover( world, *verdicts ); } );
   bystanders.stop();
   EXPECT_EQ( admitted( world.output ), "" );
   EXPECT_EQ( countsOf( held ), counts );
}

TEST_F( InterlockThreadsTest, EntitiesThatTheirOwnerLetGoOfDieWithTheLastReferenceElsewhere ) {
   const auto initialMember = World::initialMember( "PortChannel20", { "Ethernet5" } );
   std::optional< World > world( std::in_place );
   world->hwLagConfig->initialMemberIs( initialMember );
   auto controller = startController( *world );
   Bystanders bystanders( entitiesOf( *world ), ring.file() );
   controller.release();
   world.reset();
   EXPECT_EQ( initialMember->referenceCount(), 2 ); // the configuration's among them
   bystanders.stop();
   EXPECT_EQ( initialMember->referenceCount(), 1 );
}

// Time stands still: a clock is not moved while several threads read it.
TEST_F( InterlockThreadsTest, EachOfSeveralThreadsRunsAnInterlockOnEntitiesOfItsOwn ) {
   std::array< World, 3 > worlds;
   const Bystanders bystanders( {}, ring.file() );
   std::latch start( 3 );
   std::vector< std::jthread > owners;
   owners.reserve( worlds.size() );
   for ( World & world : worlds ) {
      owners.emplace_back( [ & ] {
         start.arrive_and_wait();
         auto controller = startController( world );
         const auto verdicts = VerdictLog::of( world.output );
         playBeside( bystanders, [ & ] {
            playMember( world, *verdicts );
            world.peerInterlock( true ).installed( "Ethernet1" ).answerRequest();
            ASSERT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
            world.peerInterlock( false ).notInstalled( "Ethernet1" );
            ASSERT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
         } );
      } );
   }
}

} // namespace
} // namespace Velo
