// Whoever hears of anything may change anything, and may drop the controller. Every change, met by
// every meddling at every notification that it causes, by notifiees that registered before the
// interlock and after it.

#include "platform/Vex/Entity.h"
#include "platform/Vex/Type.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerWitness.h"
#include "tests/support/Names.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/TraceRecorder.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace Velo {
namespace {

using Mlag::IntfState;
using Mlag::State;
using TestSupport::ControllerSm;
using TestSupport::intf;
using TestSupport::startController;
using TestSupport::World;

const char * const lag10 = "PortChannel10";
const char * const lag20 = "PortChannel20";

template < class EntityType >
class Listener final : public Vex::ConstNotifiee< EntityType > {
 public:
   explicit Listener( const std::function< void() > & told ) : told_( told ) {}
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Listener" };
      return type;
   }
   void onAttribute( typename EntityType::Attribute /* any */,
                     const typename EntityType::Key & /* any */ ) override {
      told_();
   }

 private:
   const std::function< void() > & told_;
};

// PortChannel10 is answered, one of its two members has its ACL; PortChannel20 has asked;
// PortChannel30 is none of MLAG's.
struct Scene {
   World world;
   Vex::Ptr< Mlag::Status > firstStatus = world.mlagStatus;
   Vex::Ptr< ControllerSm > sm;
   std::vector< Vex::Ptr< Vex::NotifieeBase > > listeners;
   std::function< void() > told = [] {};
   bool unseen = false; // a LAG came, went or was replaced, at which nothing looks
   bool dropped = false;

   Scene() {
      world.member( "Ethernet2" ).lag( lag20, { "Ethernet5" } ).mlagIntf( lag20 );
      world.lag( "PortChannel30", { "Ethernet9" } ).installed( "Ethernet1" );
   }
   void start( bool asPeer ) {
      world.peerInterlock( asPeer );
      sm = startController( world );
      world.pass( 0.05 ).answerRequest( lag10 );
   }
   template < class EntityType >
   void listen( const Vex::Ptr< EntityType > & entity ) {
      auto listener = Vex::make< Listener< EntityType > >( told );
      listener->notifierIs( entity );
      listeners.push_back( listener );
   }
   void listen() {
      listen( world.output );
      listen( world.request );
      listen( world.response );
      listen( world.mlagStatus );
      listen( world.aclIntfFeatureStatus );
   }
   void replaceStatus() {
      world.mlagStatus = copyOf( *world.mlagStatus );
      if ( sm ) {
         sm->vexMlagStatus()->notifierIs( world.mlagStatus );
      }
   }
   /// In or out of the LAG, where that is there.
   void member( const char * port, bool present, const char * lag = lag10 ) {
      if ( const auto im = world.hwLagConfig->initialMember( intf( lag ) ) ) {
         present ? im->memberIs( intf( port ), {} ) : im->memberDel( intf( port ) );
      }
   }
   /// Also from inside a task: time goes on at one stroke.
   void suspend( double seconds ) {
      world.clock.jumpTo( world.clock.now() + Vex::Seconds( seconds ) );
      while ( world.scheduler->runDue() != 0 ) {}
   }
   void flip() { world.peerInterlock( !world.mlagStatus->peerInterlock() ); }
   void drop() {
      dropped = true;
      sm.release();
   }
};

struct Step {
   const char * name;
   std::function< void( Scene & ) > run;
   bool losesTheAnswer = false;
};

const std::vector< Step > changes{
   { "an answer", []( Scene & s ) { s.world.answerRequest( lag20 ); } },
   { "an answer withdrawn", []( Scene & s ) { s.world.answerGone( lag10 ); }, true },
   { "a stale answer", []( Scene & s ) { s.world.answer( lag10, 1 ); }, true },
   { "a time-out", []( Scene & s ) { s.suspend( 0.06 ); } },
   { "two time-outs",
     []( Scene & s ) {
        s.world.mlagIntf( "PortChannel30" );
        s.suspend( 0.2 );
     } },
   { "a member gone", []( Scene & s ) { s.member( "Ethernet1", false ); } },
   { "a member", []( Scene & s ) { s.member( "Ethernet3", true ); } },
   { "the last member gone",
     []( Scene & s ) {
        s.member( "Ethernet5", false, lag20 );
        s.member( "Ethernet5", true, lag20 );
     } },
   { "an ACL lost", []( Scene & s ) { s.world.notInstalled( "Ethernet1" ); } },
   { "an ACL", []( Scene & s ) { s.world.installed( "Ethernet2" ); } },
   { "no MLAG interface any more", []( Scene & s ) { s.world.mlagIntfGone( lag10 ); } },
   { "an MLAG interface", []( Scene & s ) { s.world.mlagIntf( "PortChannel30" ); } },
   { "inactive on the peer", []( Scene & s ) { s.world.mlagIntf( lag10, IntfState::inactive ); } },
   { "the MLAG state",
     []( Scene & s ) { s.world.mlagState( State::disabled ).mlagState( State::primary ); } },
   { "the flag", []( Scene & s ) { s.flip(); } },
   { "the flag there and back",
     []( Scene & s ) {
        s.flip();
        s.flip();
     } },
   { "another MLAG status", []( Scene & s ) { s.replaceStatus(); } },
   { "another MLAG status that knows other LAGs",
     []( Scene & s ) {
        const auto other = copyOf( *s.world.mlagStatus );
        other->intfStatusDel( intf( lag10 ) );
        other->intfStatusIs( intf( "PortChannel30" ),
                             { "", IntfState::active, IntfState::active } );
        s.world.mlagStatus = other;
        s.sm->vexMlagStatus()->notifierIs( other );
     } },
   { "another start",
     []( Scene & s ) {
        s.sm.release();
        s.sm = startController( s.world );
     } },
};

const std::vector< Step > meddlings{
   { "the flag", []( Scene & s ) { s.flip(); } },
   { "the flag there and back",
     []( Scene & s ) {
        s.flip();
        s.flip();
     } },
   { "drop the controller", []( Scene & s ) { s.drop(); } },
   { "drop it and turn the flag",
     []( Scene & s ) {
        s.drop();
        s.flip();
     } },
   { "another MLAG status", []( Scene & s ) { s.replaceStatus(); } },
   { "the first MLAG status forgets a LAG",
     []( Scene & s ) { s.firstStatus->intfStatusDel( intf( lag10 ) ); } },
   { "the first MLAG status is disabled",
     []( Scene & s ) { s.firstStatus->mlagStateIs( State::disabled ); } },
   { "the first MLAG status turns a LAG",
     []( Scene & s ) {
        s.firstStatus->intfStatusIs( intf( lag20 ),
                                     { "", IntfState::active, IntfState::inactive } );
     } },
   { "remove the LAG",
     []( Scene & s ) {
        s.unseen = true;
        s.world.lagGone( lag10 );
     } },
   { "remove the other LAG",
     []( Scene & s ) {
        s.unseen = true;
        s.world.lagGone( lag20 );
     } },
   { "replace the LAG",
     []( Scene & s ) {
        s.unseen = true;
        s.world.lag( lag10, { "Ethernet2", "Ethernet4" } );
     } },
   { "empty the LAG by replacing it",
     []( Scene & s ) {
        s.unseen = true;
        s.world.lag( lag10, {} );
     } },
   { "add a LAG",
     []( Scene & s ) {
        s.unseen = true;
        s.world.lag( "PortChannel40", { "Ethernet13" } ).mlagIntf( "PortChannel40" );
     } },
   { "MLAG forgets the LAG", []( Scene & s ) { s.world.mlagIntfGone( lag10 ); } },
   { "MLAG forgets the other LAG", []( Scene & s ) { s.world.mlagIntfGone( lag20 ); } },
   { "the LAG's entry is like the default",
     []( Scene & s ) { s.world.mlagStatus->intfStatusIs( intf( lag10 ), {} ); } },
   { "the other LAG's entry is like the default",
     []( Scene & s ) { s.world.mlagStatus->intfStatusIs( intf( lag20 ), {} ); } },
   { "MLAG learns of a LAG", []( Scene & s ) { s.world.mlagIntf( "PortChannel30" ); } },
   { "forgotten and known again",
     []( Scene & s ) { s.world.mlagIntfGone( lag10 ).mlagIntf( lag10 ); } },
   { "inactive on the peer", []( Scene & s ) { s.world.mlagIntf( lag10, IntfState::inactive ); } },
   { "a member gone", []( Scene & s ) { s.member( "Ethernet1", false ); } },
   { "all members gone",
     []( Scene & s ) {
        s.member( "Ethernet1", false );
        s.member( "Ethernet2", false );
     } },
   { "the other LAG's member gone and back",
     []( Scene & s ) {
        s.member( "Ethernet5", false, lag20 );
        s.member( "Ethernet5", true, lag20 );
     } },
   { "a member", []( Scene & s ) { s.member( "Ethernet3", true ); } },
   { "answer", []( Scene & s ) { s.world.answerRequest( lag10 ).answerRequest( lag20 ); } },
   { "answer and withdraw",
     []( Scene & s ) { s.world.answerRequest( lag20 ).answerGone( lag20 ); } },
   { "withdraw the answer", []( Scene & s ) { s.world.answerGone( lag10 ); } },
   { "answer something else", []( Scene & s ) { s.world.answer( lag10, 1 ).answer( lag20, 1 ); } },
   { "an ACL", []( Scene & s ) { s.world.installed( "Ethernet2" ); } },
   { "an ACL lost", []( Scene & s ) { s.world.notInstalled( "Ethernet1" ); } },
   { "let time pass", []( Scene & s ) { s.suspend( 0.2 ); } },
   { "switch over by hand",
     []( Scene & s ) {
        if ( s.sm ) {
           s.sm->handleFeatureSwitchover();
        }
     } },
};

/// Meddles at notification number `at` and the next `times - 1`.
void play(
   const Step & change, const Step & meddling, bool asPeer, bool first, int at, int times ) {
   SCOPED_TRACE( std::string( change.name ) + ", met by: " + meddling.name + ", at " +
                 std::to_string( at ) + ( first ? ", heard before the interlock" : "" ) +
                 ( asPeer ? ", peer" : ", basic" ) );
   Scene scene;
   if ( first ) {
      scene.listen();
   }
   scene.start( asPeer );
   if ( !first ) {
      scene.listen();
   }
   int heard = 0;
   scene.told = [ & ] {
      if ( heard++ >= at && heard <= at + times ) {
         meddling.run( scene );
      }
   };
   change.run( scene );
   scene.told = [] {};
   if ( !scene.sm ) {
      const std::size_t own = first || !scene.listeners.empty() ? 1 : 0;
      EXPECT_EQ( scene.world.response->notifiees(), own );
      EXPECT_EQ( scene.world.scheduler->scheduled(), 0U );
      return;
   }
   // An answer that has gone, and of which something else tells the interlock first: the member
   // that is looked at fails its LAG, and the notification that comes then finds nothing to do. The
   // other members wait for their next event.
   const bool failedByAMember = first && asPeer && change.losesTheAnswer;
   EXPECT_EQ( unsettled( scene.world, *scene.sm, scene.unseen || failedByAMember ), "" );
}

void playAll( bool asPeer ) {
   const TestSupport::TraceRecorder quiet( "VeloMlagEgressAclIntfInterlockSm", 0 );
   for ( const Step & change : changes ) {
      for ( const Step & meddling : meddlings ) {
         for ( int at = 0; at < 5; ++at ) {
            play( change, meddling, asPeer, false, at, 1 );
            play( change, meddling, asPeer, true, at, 1 );
         }
         play( change, meddling, asPeer, false, 0, 4 );
         play( change, meddling, asPeer, true, 0, 4 );
      }
   }
}

TEST( Meddling, WithThePeerInterlockNeverLeavesItUnsettled ) {
   playAll( true );
}

TEST( Meddling, WithTheBasicInterlockNeverLeavesItUnsettled ) {
   playAll( false );
}

} // namespace
} // namespace Velo
