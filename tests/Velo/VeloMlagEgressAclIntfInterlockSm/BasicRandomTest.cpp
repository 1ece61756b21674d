// Random sequences of changes to every input of the basic egress-ACL interlock. After each change
// the output is what the inputs imply, no more and no less.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/BasicModel.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/BasicSm.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/World.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>

namespace Velo {
namespace {

using Interface::LinkStatus;
using Mlag::IntfState;
using TestSupport::entry;
using TestSupport::intf;
using TestSupport::ScriptedConsumer;
using TestSupport::World;
using String = Vex::String;
using Pair = BasicModel::Pair;

/// Makes every change twice: to the entities and to the model.
class RandomRun {
 public:
   explicit RandomRun( unsigned seed ) : random_( seed ) {
      world_.lagGone( "PortChannel10" ).mlagIntfGone( "PortChannel10" ).noPeerLink();
      world_.mlagState( Mlag::State::disabled );
   }

   void start() {
      if ( !sm_ ) {
         model_.start();
         sm_ = startBasic( world_ );
      }
   }
   void stop() {
      model_.running = false;
      sm_.release();
   }

   /// One change out of all there are; returns what it was.
   String change() {
      switch ( pick( 19 ) ) {
      case 0:
         start();
         return "start";
      case 1:
         return pick( 4 ) == 0 ? ( stop(), "stop" ) : "nothing";
      case 2:
      case 3:
         return replaceLag();
      case 4:
         return removeLag();
      case 5:
         return pick( 4 ) == 0 ? replaceConfig() : "nothing";
      case 6:
         return pick( 4 ) == 0 ? replaceMlagStatus() : "nothing";
      default:
         return changeWithoutGap();
      }
   }

   /// One change out of those that touch every pair whose verdict they may turn.
   String changeWithoutGap() {
      switch ( pick( 8 ) ) {
      case 0:
      case 1:
         return changeMember();
      case 2:
      case 3:
         return changeAcl();
      case 4:
         return changeMlagState();
      case 5:
         return changePeerState();
      case 6:
         return changePeerLink();
      default:
         return changeLinkStatus();
      }
   }

   /// The output beside what the model says; equal texts when all is well.
   String output() const {
      std::set< Pair > pairs;
      for ( const auto feature : world_.output->intf().keys() ) {
         pairs.insert( { feature.member.stringValue(), feature.lag.stringValue() } );
      }
      return listed( pairs );
   }
   String wanted() const { return listed( model_.verdicts ); }

   /// What every pair's verdict is when all of them have just been decided.
   String implied() const {
      std::set< Pair > pairs;
      for ( const auto & [ lag, members ] : model_.lags ) {
         for ( const auto & member : members ) {
            if ( model_.admits( { member.first, lag } ) ) {
               pairs.insert( { member.first, lag } );
            }
         }
      }
      return listed( pairs );
   }

   World & world() { return world_; }
   unsigned pick( unsigned count ) { return static_cast< unsigned >( random_() % count ); }
   String aLag() { return "PortChannel" + std::to_string( 10 * ( 1 + pick( 3 ) ) ); }
   String replaceLag() {
      const String lag = aLag();
      auto im = World::initialMember( lag, {} );
      auto & members = model_.lags[ lag ];
      members.clear();
      for ( unsigned left = pick( 4 ); left > 0; --left ) {
         const String port = aPort();
         members[ port ] = 0;
         im->memberIs( intf( port ), World::PortProgType() );
      }
      world_.hwLagConfig->initialMemberIs( im );
      return "replace " + lag;
   }

 private:
   static String listed( const std::set< Pair > & pairs ) {
      String text;
      for ( const Pair & pair : pairs ) {
         text += pair.first + ">" + pair.second + " ";
      }
      return text;
   }
   String aPort() { return "Ethernet" + std::to_string( 1 + pick( 5 ) ); }
   int anyOf( std::initializer_list< int > values ) {
      return values.begin()[ pick( static_cast< unsigned >( values.size() ) ) ];
   }

   String removeLag() {
      const String lag = aLag();
      model_.lags.erase( lag );
      world_.lagGone( lag );
      return "remove " + lag;
   }
   String replaceConfig() {
      model_.lags.clear();
      const auto old = world_.hwLagConfig;
      world_.hwLagConfig = Vex::make< Hardware::Lag::Config >();
      replaceLag();
      replaceLag();
      if ( sm_ ) {
         sm_->vexHwLagConfig()->notifierIs( world_.hwLagConfig );
      }
      for ( const auto lag : old->initialMember().entries() ) { // nobody looks there any more
         lag.value->memberIs( intf( "Ethernet1" ), World::PortProgType( 9 ) );
      }
      return "replace the LAG configuration";
   }
   String replaceMlagStatus() {
      world_.mlagStatus = Vex::make< Mlag::Status >();
      model_.peerStates.clear();
      model_.peerLink.reset();
      model_.mlagState = 0;
      {
         // Filled before anybody looks.
         const bool running = std::exchange( model_.running, false );
         changeMlagState();
         changePeerState();
         changePeerLink();
         model_.running = running;
      }
      model_.touchAll();
      if ( sm_ ) {
         sm_->vexMlagStatus()->notifierIs( world_.mlagStatus );
      }
      return "replace the MLAG status";
   }
   String changeMember() {
      const String lag = aLag();
      const String port = aPort();
      if ( !model_.lags.contains( lag ) ) {
         return "nothing";
      }
      if ( pick( 3 ) == 0 ) {
         model_.memberGone( port, lag );
         world_.memberGone( port, lag );
         return "remove " + port + " of " + lag;
      }
      const int type = anyOf( { 0, 0, 1 } );
      model_.member( port, lag, type );
      world_.member( port, lag, static_cast< World::PortProgType >( type ) );
      return "add " + port + " to " + lag + " type " + std::to_string( type );
   }
   String changeAcl() {
      const Pair pair{ aPort(), aLag() };
      const bool present = pick( 2 ) == 0;
      model_.aclIs( pair, present );
      present ? world_.installed( pair.first, pair.second )
              : world_.notInstalled( pair.first, pair.second );
      return ( present ? "installed " : "not installed " ) + pair.first + " of " + pair.second;
   }
   String changeMlagState() {
      const int state = anyOf( { 0, 2, 3, 3, 4, 4, 5 } );
      model_.mlagStateIs( state );
      world_.mlagState( static_cast< Mlag::State >( state ) );
      return "MLAG state " + std::to_string( state );
   }
   String changePeerState() {
      const String lag = aLag();
      const int state = anyOf( { -2, -1, 1, 2, 2, 2 } );
      if ( state == -2 ) {
         model_.peerStateIs( lag, std::nullopt );
         world_.mlagIntfGone( lag );
      } else if ( state == -1 ) {
         model_.peerStateIs( lag, state );
         world_.mlagStatus->intfStatusIs( intf( lag ), {} );
      } else {
         model_.peerStateIs( lag, state );
         world_.mlagIntf( lag, static_cast< IntfState >( state ) );
      }
      return "peer state of " + lag + ' ' + std::to_string( state );
   }
   String changePeerLink() {
      if ( pick( 3 ) == 0 ) {
         model_.peerLinkGone();
         world_.noPeerLink();
         return "no peer link";
      }
      const String name = pick( 5 ) == 0 ? "" : "Port-Channel1000";
      const int status = anyOf( { 0, 1, 2, 2, 2, 3 } );
      model_.peerLinkIs( name, status );
      world_.peerLink( name, static_cast< LinkStatus >( status ) );
      return "peer link '" + name + "' " + std::to_string( status );
   }
   String changeLinkStatus() {
      const int status = anyOf( { 0, 1, 2, 2, 3 } );
      if ( world_.peerLinkEntity() ) {
         model_.linkStatusIs(
            status ); // without peer link it is that of one that is watched no more
         world_.linkStatus( static_cast< LinkStatus >( status ) );
      }
      return "link status " + std::to_string( status );
   }

   std::mt19937 random_;
   World world_;
   BasicModel model_;
   Vex::Ptr< MlagEgressAclIntfInterlockSm > sm_;
};

TEST( BasicInterlockRandom, TheOutputIsAfterEveryChangeWhatTheInputsImply ) {
   for ( unsigned seed = 1; seed <= 150; ++seed ) {
      RandomRun run( seed );
      String history = "seed " + std::to_string( seed );
      run.start();
      for ( int step = 0; step < 150; ++step ) {
         history += "\n" + run.change();
         ASSERT_EQ( run.output(), run.wanted() ) << history;
      }
   }
}

TEST( BasicInterlockRandom, AConsumerMayChangeEveryInputFromInsideItsNotification ) {
   for ( unsigned seed = 1; seed <= 150; ++seed ) {
      RandomRun run( seed );
      String history = "seed " + std::to_string( seed );
      run.replaceLag();
      run.replaceLag();
      run.start();
      int budget = 0;
      const auto consumer = ScriptedConsumer::of( run.world().output, [ & ]( const auto &, bool ) {
         if ( budget > 0 ) {
            --budget;
            history += "\n   " + run.changeWithoutGap();
         }
      } );
      for ( int step = 0; step < 100; ++step ) {
         budget = static_cast< int >( run.pick( 6 ) );
         history += "\n" + run.changeWithoutGap();
         ASSERT_EQ( run.output(), run.implied() ) << history;
      }
   }
}

TEST( BasicInterlockRandom, AConsumerMayAlsoReplaceLagsAndStopAndStartTheInterlock ) {
   for ( unsigned seed = 1; seed <= 150; ++seed ) {
      RandomRun run( seed );
      String history = "seed " + std::to_string( seed );
      run.start();
      int budget = 0;
      const auto consumer = ScriptedConsumer::of( run.world().output, [ & ]( const auto &, bool ) {
         if ( budget > 0 ) {
            --budget;
            history += "\n   " + run.change();
         }
      } );
      for ( int step = 0; step < 60; ++step ) {
         budget = static_cast< int >( run.pick( 6 ) );
         history += "\n" + run.change();
         budget = 0;
         if ( step % 10 == 9 ) { // a start decides everything again
            run.stop();
            run.start();
            ASSERT_EQ( run.output(), run.implied() ) << history;
         }
      }
   }
}

} // namespace
} // namespace Velo
