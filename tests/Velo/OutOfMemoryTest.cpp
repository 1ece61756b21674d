// Memory that runs out at each request in turn: while an interlock is created, and on the whole way
// from a change of an entity to the verdict. What docs/embedding.md says of it holds, and nothing
// is leaked.

#include "tests/Velo/OutOfMemory.h"

#include "platform/Vex/Trace.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace Velo {
namespace {

constexpr int mostFilled = 8;

struct OutOfMemory : testing::Test {
   OutOfMemory() { handle.levelMaskIs( 0 ); } // of the many time-outs nobody wants to hear
   ~OutOfMemory() override { handle.levelMaskIs( before ); }

   Vex::TraceHandle & handle = Vex::traceHandle( "VeloMlagEgressAclIntfInterlockSm" );
   const std::uint32_t before = handle.levelMask();
};

// Whether `action` gets through with so many requests for memory.
template < class Action >
bool getsThrough( std::uint64_t granted, Action action ) {
   try {
      const Memory::RunsOut memory( granted );
      action();
      return true;
   } catch ( const std::bad_alloc & ) {
      return false;
   }
}

// ---- Construction ------------------------------------------------------------------------------

// Returns whether the interlock was created.
bool createWith( const Kind & kind, int size, std::uint64_t granted ) {
   Scene reference( kind, size );
   reference.start();
   Scene scene( kind, size );
   const std::string watchers = scene.watchers();
   if ( getsThrough( granted, [ & ] { scene.start(); } ) ) {
      EXPECT_EQ( scene.written(), reference.written() );
      return true;
   }
   EXPECT_EQ( scene.watchers(), watchers ) << "something watches still, or is scheduled";
   scene.start();
   EXPECT_EQ( scene.written(), reference.written() ) << "a later one does not mend it";
   return false;
}

TEST_F( OutOfMemory, AnInterlockThatCannotBeCreatedLeavesNothingBehindButWhatItHasDecided ) {
   for ( const Kind & kind : kinds ) {
      for ( int size = 0; size <= mostFilled; ++size ) {
         createWith( kind, size, UINT64_MAX - 1 ); // what is made once for the process is there
         std::uint64_t granted = 0;
         for ( bool created = false; !created; ++granted ) {
            SCOPED_TRACE( std::string( kind.name ) + ", size " + std::to_string( size ) +
                          ", memory for " + std::to_string( granted ) );
            const std::uint64_t held = Memory::held();
            created = createWith( kind, size, granted );
            ASSERT_EQ( Memory::held(), held ) << "memory is lost";
            ASSERT_FALSE( testing::Test::HasFailure() );
         }
         EXPECT_GT( granted, 10U );
      }
   }
}

// ---- Changes -----------------------------------------------------------------------------------

struct Change {
   const char * name;
   bool newEntity; // that an interlock is to watch
   void ( *make )( World & world );
};

const std::array< Change, 19 > changes{
   Change{ "a member joins", false, []( World & w ) { w.member( "Ethernet12" ); } },
   Change{ "a member of another LAG joins", false,
           []( World & w ) { w.member( "Ethernet10", "PortChannel30" ); } },
   Change{ "a member leaves", false, []( World & w ) { w.memberGone( "Ethernet1" ); } },
   Change{ "the only member leaves", false,
           []( World & w ) { w.memberGone( "Ethernet9", "PortChannel30" ); } },
   Change{ "an ACL is installed", false, []( World & w ) { w.installed( "Ethernet1" ); } },
   Change{ "an ACL goes", false,
           []( World & w ) { w.notInstalled( "Ethernet11", "PortChannel20" ); } },
   Change{ "an interface becomes MLAG", false, []( World & w ) { w.mlagIntf( "PortChannel30" ); } },
   Change{ "an interface is MLAG no more", false,
           []( World & w ) { w.mlagIntfGone( "PortChannel10" ); } },
   Change{ "MLAG goes down", false, []( World & w ) { w.mlagState( Mlag::State::inactive ); } },
   Change{ "the peer link goes down", false,
           []( World & w ) { w.linkStatus( Interface::LinkStatus::down ); } },
   Change{ "the peer answers", false, []( World & w ) { w.answerRequest(); } },
   Change{ "time passes", false, []( World & w ) { w.pass( 0.2 ); } },
   Change{ "translation goes", false, []( World & w ) { w.notTranslated( 10 ); } },
   Change{ "the peer interlock is wanted", true, []( World & w ) { w.peerInterlock( true ); } },
   Change{ "the basic one is wanted", true, []( World & w ) { w.peerInterlock( false ); } },
   Change{ "LAGs become active one by one", false,
           []( World & w ) {
              w.memberGone( "Ethernet9", "PortChannel30" ).mlagIntf( "PortChannel30" );
              w.member( "Ethernet9", "PortChannel30" );
           } },
   Change{ "a LAG is replaced", true,
           []( World & w ) { w.lag( "PortChannel10", { "Ethernet1", "Ethernet2" } ); } },
   Change{ "a LAG comes", true, []( World & w ) { w.lag( "PortChannel40", { "Ethernet13" } ); } },
   Change{ "another peer link", true, []( World & w ) { w.peerLink( "Port-Channel1001" ); } },
};

// The next changes: of each LAG and of each pair, and one that only a watched LAG tells.
void whatComesNext( Scene & scene ) {
   scene.lookAtAll();
   scene.world.member( "Ethernet7", "PortChannel30" ).memberGone( "Ethernet12", "PortChannel20" );
}

// Returns whether the change got through.
bool changeWith( const Kind & kind, const Change & change, int size, std::uint64_t granted ) {
   Scene reference( kind, size );
   reference.start();
   change.make( reference.world );
   Scene scene( kind, size );
   scene.start();
   if ( getsThrough( granted, [ & ] { change.make( scene.world ); } ) ) {
      EXPECT_EQ( scene.written(), reference.written() );
      return true;
   }
   EXPECT_EQ( scene.brokenTimeouts(), "" );
   change.make( scene.world ); // of no effect where the entity has it already
   whatComesNext( reference );
   whatComesNext( scene );
   if ( !change.newEntity ) {
      EXPECT_EQ( scene.watchers(), reference.watchers() );
      EXPECT_EQ( scene.written(), reference.written() ) << "what comes next does not mend it";
   }
   EXPECT_EQ( scene.brokenTimeouts(), "" );
   reference.restart();
   scene.restart();
   EXPECT_EQ( scene.written(), reference.written() ) << "another interlock does not mend it";
   EXPECT_EQ( scene.watchers(), reference.watchers() );
   return false;
}

TEST_F( OutOfMemory, AChangeIsMendedByTheNextOneOfTheSamePairOrByAnotherInterlock ) {
   for ( const Kind & kind : kinds ) {
      for ( const Change & change : changes ) {
         std::uint64_t failures = 0;
         for ( int size = 0; size <= mostFilled; ++size ) {
            changeWith( kind, change, size, 0 ); // what is made once for the process is there
            bool made = false;
            for ( std::uint64_t granted = 0; !made; ++granted ) {
               SCOPED_TRACE( std::string( kind.name ) + ", " + change.name + ", size " +
                             std::to_string( size ) + ", memory for " + std::to_string( granted ) );
               const std::uint64_t held = Memory::held();
               made = changeWith( kind, change, size, granted );
               failures += made ? 0U : 1U;
               ASSERT_EQ( Memory::held(), held ) << "memory is lost";
               ASSERT_FALSE( testing::Test::HasFailure() );
            }
         }
         RecordProperty( std::string( kind.name ) + ", " + change.name,
                         std::to_string( failures ) );
      }
   }
}

// ---- A consumer without memory -----------------------------------------------------------------

class Carrier final : public Vex::ConstNotifiee< Mlag::AclInstallRequest > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Carrier" };
      return type;
   }
   void onAttribute( Attribute /* attribute */, const Nodo::IntfId & /* lag */ ) override {
      if ( fails ) {
         throw std::bad_alloc();
      }
   }

   bool fails = false;
};

TEST_F( OutOfMemory, ACleanUpThatTheCarrierOfRequestsInterruptsKeepsTheDeadlinesAndCanBeRepeated ) {
   Scene scene( kinds[ 2 ], 2 );
   scene.start();
   const auto carrier = Vex::make< Carrier >();
   carrier->notifierIs( scene.world.request );
   carrier->fails = true;
   EXPECT_THROW( scene.world.peerInterlock( false ), std::bad_alloc );
   EXPECT_EQ( scene.brokenTimeouts(), "" );
   carrier->fails = false;
   scene.world.peerInterlock( true ).peerInterlock( false );
   EXPECT_TRUE( scene.world.request->installRequest().empty() );
   EXPECT_EQ( scene.world.scheduler->scheduled(), 0U );
}

TEST_F( OutOfMemory, ALinkStateIsStoredWithItsDeadlineOrElseNoneIsAndThatIsTold ) {
   bool everTold = false;
   for ( int size = 0; size <= mostFilled; ++size ) {
      for ( std::uint64_t granted = 0; granted < 4; ++granted ) {
         const World world;
         const auto sm = TestSupport::startPeer( world );
         for ( int more = 0; more < size; ++more ) {
            sm->linkStateIs( TestSupport::intf( "PortChannel" + std::to_string( 100 + more ) ),
                             LinkState::linkRequesting );
         }
         const Nodo::IntfId lag = TestSupport::intf( "PortChannel20" );
         const bool told =
            !getsThrough( granted, [ & ] { sm->linkStateIs( lag, LinkState::linkRequesting ); } );
         EXPECT_EQ( sm->linkState().has( lag ), !told );
         EXPECT_EQ( sm->timer().has( lag ), !told );
         everTold = everTold || told;
      }
   }
   EXPECT_TRUE( everTold );
}

} // namespace
} // namespace Velo
