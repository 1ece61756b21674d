// Which child the controller keeps, and when it makes another one.

#include "Velo/VeloIntfInterlock.h"
#include "interlock-model/StateMachine.h"
#include "platform/Vex/GenericConstruction.h"
#include "platform/Vex/Module.h"
#include "tests/support/Consumers.h"
#include "tests/support/Marks.h"
#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/RingRecorder.h"
#include "tests/support/TraceRecorder.h"

#include <array>
#include <gtest/gtest.h>

namespace Velo {
namespace {

using Mlag::IntfState;
using Mlag::State;
using TestSupport::admitted;
using TestSupport::brokenTimeouts;
using TestSupport::ControllerSm;
using TestSupport::intf;
using TestSupport::logOf;
using TestSupport::PeerSm;
using TestSupport::requestOf;
using TestSupport::RingRecorder;
using TestSupport::startController;
using TestSupport::stateOf;
using TestSupport::TraceRecorder;
using TestSupport::VerdictLog;
using TestSupport::World;
using String = Vex::String;

const String handle = "VeloMlagEgressAclIntfInterlockSm";

struct Controller : testing::Test {
   World world;
   Vex::Ptr< ControllerSm > sm;

   void start( bool asPeer ) {
      world.peerInterlock( asPeer );
      sm = startController( world );
   }
   String child() const {
      return String( sm->peerInterlockSm() ? "peer" : "" ) +
             ( sm->basicInterlockSm() ? "basic" : "" );
   }
   /// Another MLAG status that says the same.
   static Vex::Ptr< Mlag::Status > anotherStatus( bool asPeer ) {
      auto status = Vex::make< Mlag::Status >();
      status->mlagStateIs( State::primary );
      status->intfStatusIs( intf( "PortChannel10" ),
                            { "other", IntfState::active, IntfState::active } );
      status->peerInterlockIs( asPeer );
      return status;
   }
   /// Of the entities of this world, the one at `position` taken from another world.
   Vex::Ptr< PeerSm > peerOf( int position, const World & other ) {
      const auto at = [ position ]( int own, const auto & mine, const auto & theirs ) {
         return position == own ? theirs : mine;
      };
      return sm->peerInterlockSmIs(
         at( 0, world.aclIntfFeatureStatus, other.aclIntfFeatureStatus ),
         at( 1, world.hwLagConfig, other.hwLagConfig ), at( 2, world.mlagStatus, other.mlagStatus ),
         at( 3, world.output, other.output ), at( 4, world.response, other.response ),
         at( 5, world.request, other.request ), at( 6, world.scheduler, other.scheduler ) );
   }
   Vex::Ptr< MlagEgressAclIntfInterlockSm > basicOf( int position, const World & other ) {
      const auto at = [ position ]( int own, const auto & mine, const auto & theirs ) {
         return position == own ? theirs : mine;
      };
      return sm->basicInterlockSmIs(
         at( 0, world.aclIntfFeatureStatus, other.aclIntfFeatureStatus ),
         at( 1, world.hwLagConfig, other.hwLagConfig ), at( 2, world.mlagStatus, other.mlagStatus ),
         at( 3, world.output, other.output ) );
   }
};

constexpr int none = -1;

TEST_F( Controller, StartsTheBasicInterlockWhereTheFlagIsFalse ) {
   start( false );
   EXPECT_EQ( child(), "basic" );
   EXPECT_EQ( requestOf( world ), "none" );
   world.installed( "Ethernet1" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   EXPECT_FALSE( sm->initialized() );
   sm->initializedIs( true );
   EXPECT_TRUE( sm->initialized() );
}

TEST_F( Controller, StartsThePeerInterlockWhereTheFlagIsTrue ) {
   start( true );
   EXPECT_EQ( child(), "peer" );
   EXPECT_EQ( requestOf( world ), "2" );
   world.installed( "Ethernet1" ).answerRequest();
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( Controller, GivesThePeerChildItsOwnInputs ) {
   start( true );
   const auto & peer = sm->peerInterlockSm();
   EXPECT_EQ( peer->aclIntfFeatureStatus(), world.aclIntfFeatureStatus );
   EXPECT_EQ( peer->hwLagConfig(), world.hwLagConfig );
   EXPECT_EQ( peer->mlagStatus(), world.mlagStatus );
   EXPECT_EQ( peer->outIntfFeatureStatus(), world.output );
   EXPECT_EQ( peer->aclResponseFromPeer(), world.response );
   EXPECT_EQ( peer->aclRequestToPeer(), world.request );
   EXPECT_EQ( peer->scheduler(), world.scheduler );
}

TEST_F( Controller, WritesEachMessageOnceAtConstruction ) {
   TraceRecorder trace( handle );
   RingRecorder ring;
   start( false );
   const auto lines = [ & ]( const String & all ) {
      String own;
      for ( std::size_t at = 0; at < all.size(); ) {
         const std::size_t end = all.find( '\n', at );
         const String line = all.substr( at, end + 1 - at );
         if ( line.find( "handleFeatureSwitchover" ) != String::npos ||
              line.find( "ControllerSm" ) != String::npos ||
              line.find( "switchOver" ) != String::npos ) {
            own += line;
         }
         at = end + 1;
      }
      return own;
   };
   const String all = trace.take();
   EXPECT_EQ( lines( all ),
              "0 handleInitialized: MlagEgressAclIntfInterlockControllerSm::handleInitialized\n"
              "0 handleFeatureSwitchover: MlagEgressAclIntfInterlockControllerSm::"
              "handleFeatureSwitchover peer-interlock: false\n" );
   const String ringed = ring.take();
   EXPECT_EQ( ringed.substr( 0, ringed.find( '\n' ) + 1 ),
              "0 handleInitialized: handleInitialized []\n" );
   EXPECT_EQ( lines( ringed ), "0 handleFeatureSwitchover: handleFeatureSwitchover "
                               "peer-interlock: false [false]\n" );
   world.peerInterlock( true );
   EXPECT_EQ( lines( trace.take() ),
              "0 handleFeatureSwitchover: MlagEgressAclIntfInterlockControllerSm::"
              "handleFeatureSwitchover peer-interlock: true\n" );
   EXPECT_EQ( lines( ring.take() ), "0 handleFeatureSwitchover: handleFeatureSwitchover "
                                    "peer-interlock: true [true]\n" );
}

TEST_F( Controller, TheFlagTurnedOnReplacesTheBasicChildWhoseOutputStays ) {
   world.installed( "Ethernet1" );
   start( false );
   const auto verdicts = VerdictLog::of( world.output );
   const auto requests = logOf( world.request, [ & ] { return child(); } );
   world.peerInterlock( true );
   EXPECT_EQ( child(), "peer" );
   // When the peer child speaks for the first time the basic one has gone.
   EXPECT_EQ( requests->take(), "installRequest(PortChannel10)" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" ) << "the new child's verdict";
   EXPECT_EQ( world.response->notifiees(), 1U );
   EXPECT_EQ( world.mlagStatus->notifiees(), 2U );
}

TEST_F( Controller, TheFlagTurnedOffCleansUpThenReplacesThePeerChild ) {
   start( true );
   world.answerRequest();
   const auto requests = logOf( world.request, [ & ] { return child(); } );
   TraceRecorder trace( handle, 1 );
   world.peerInterlock( false );
   EXPECT_EQ( requests->take(), "installRequest(PortChannel10)peer" ) << "withdrawn by the child";
   EXPECT_EQ( child(), "basic" );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( world.scheduler->scheduled(), 0U );
   EXPECT_EQ( world.response->notifiees(), 0U );
   EXPECT_EQ( world.mlagStatus->notifiees(), 2U );
   const String all = trace.take();
   EXPECT_LT( all.find( "handleFeatureSwitchover" ), all.find( "doCleanup" ) );
   EXPECT_LT( all.find( "doCleanup" ), all.find( "handleAllLags" ) );
   EXPECT_NE( all.find( "doCleanup" ), String::npos );
}

TEST_F( Controller, ARepeatedNotificationKeepsTheChild ) {
   for ( const bool asPeer : { false, true } ) {
      start( asPeer );
      const auto peer = sm->peerInterlockSm();
      const auto basic = sm->basicInterlockSm();
      if ( peer ) {
         peer->hasNotificationActiveIs( false );
      }
      sm->handleFeatureSwitchover();
      EXPECT_EQ( sm->peerInterlockSm(), peer );
      EXPECT_EQ( sm->basicInterlockSm(), basic );
      if ( peer ) {
         EXPECT_FALSE( peer->hasNotificationActive() ) << "its notifications are not touched";
      }
   }
}

TEST_F( Controller, HearsOfNothingButTheFlag ) {
   start( false );
   TraceRecorder trace( handle, 1 );
   world.mlagState( State::secondary ).noPeerLink().mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( trace.take().find( "handleFeatureSwitchover" ), String::npos );
}

TEST_F( Controller, AnotherMlagStatusDecidesByItsOwnFlag ) {
   start( false );
   const auto before = sm->basicInterlockSm();
   sm->vexMlagStatus()->notifierIs( anotherStatus( true ) );
   EXPECT_EQ( child(), "peer" );
   sm->vexMlagStatus()->notifierIs( anotherStatus( false ) );
   EXPECT_EQ( child(), "basic" );
   EXPECT_NE( sm->basicInterlockSm(), before );
   world.peerInterlock( true ); // the first one has no say any more
   EXPECT_EQ( child(), "basic" );
}

TEST_F( Controller, AnotherMlagStatusWithTheSameFlagReplacesTheChild ) {
   for ( const bool asPeer : { false, true } ) {
      start( asPeer );
      const auto peer = sm->peerInterlockSm();
      const auto basic = sm->basicInterlockSm();
      const auto status = anotherStatus( asPeer );
      sm->vexMlagStatus()->notifierIs( status );
      EXPECT_EQ( child(), asPeer ? "peer" : "basic" );
      if ( asPeer ) {
         EXPECT_NE( sm->peerInterlockSm(), peer );
         EXPECT_EQ( sm->peerInterlockSm()->mlagStatus(), status );
         EXPECT_EQ( requestOf( world ), "2" ) << "nothing is withdrawn";
      } else {
         EXPECT_NE( sm->basicInterlockSm(), basic );
         EXPECT_EQ( sm->basicInterlockSm()->mlagStatus(), status );
      }
   }
}

TEST_F( Controller, AReplacedBasicChildDecidesNothingWhileTheNewOneStarts ) {
   start( false );
   const auto other = anotherStatus( false ); // without peer link: everybody joins
   const auto consumer = TestSupport::ScriptedConsumer::once( world.output, [ & ] {
      world.mlagState( State::disabled ).mlagState( State::primary ); // the first status
   } );
   sm->vexMlagStatus()->notifierIs( other );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( Controller, AReplacedPeerChildAsksNothingWhileTheNewOneStarts ) {
   start( true );
   const auto other = anotherStatus( true );
   other->intfStatusDel( intf( "PortChannel10" ) );
   const auto consumer = TestSupport::ScriptedConsumer::once(
      world.output, [ & ] { world.mlagIntf( "PortChannel10", IntfState::inactive ); } );
   sm->vexMlagStatus()->notifierIs( other );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   EXPECT_EQ( requestOf( world ), "none" );
}

TEST_F( Controller, NoMlagStatusAnyMoreKeepsTheChild ) {
   start( true );
   const auto before = sm->peerInterlockSm();
   sm->vexMlagStatus()->notifierIs( nullptr );
   EXPECT_EQ( sm->peerInterlockSm(), before );
   sm->vexMlagStatus()->notifierIs( world.mlagStatus );
   EXPECT_EQ( sm->peerInterlockSm(), before ) << "the same entities";
}

TEST_F( Controller, ThePeerChildIsKeptForTheVerySameSevenEntitiesOnly ) {
   const World other;
   for ( int position = 0; position < 7; ++position ) {
      start( true );
      const auto kept = sm->peerInterlockSm();
      EXPECT_EQ( peerOf( none, other ), kept );
      const auto created = peerOf( position, other );
      EXPECT_NE( created, kept ) << position;
      EXPECT_EQ( sm->peerInterlockSm(), created );
      EXPECT_TRUE( created->hasNotificationActive() );
      EXPECT_TRUE( kept->markedForDeletion() ) << "the one before acts no more";
   }
}

TEST_F( Controller, TheBasicChildIsKeptForTheVerySameFourEntitiesOnly ) {
   const World other;
   for ( int position = 0; position < 4; ++position ) {
      start( false );
      const auto kept = sm->basicInterlockSm();
      EXPECT_EQ( basicOf( none, other ), kept );
      const auto created = basicOf( position, other );
      EXPECT_NE( created, kept ) << position;
      EXPECT_EQ( sm->basicInterlockSm(), created );
      EXPECT_TRUE( created->hasNotificationActive() );
      EXPECT_TRUE( kept->markedForDeletion() ) << "the one before acts no more";
   }
}

TEST_F( Controller, PeerInterlockSmDelTakesTheChildOutWithItsNotificationsOff ) {
   start( true );
   const auto before = sm->peerInterlockSm();
   const auto removed = sm->peerInterlockSmDel();
   EXPECT_EQ( removed, before );
   EXPECT_EQ( child(), "" );
   EXPECT_FALSE( removed->hasNotificationActive() );
   EXPECT_EQ( requestOf( world ), "2" ) << "cleans nothing up";
   EXPECT_EQ( stateOf( *removed ), "linkRequesting" );
   EXPECT_EQ( sm->peerInterlockSmDel(), nullptr );
}

TEST_F( Controller, BasicInterlockSmDelTakesTheChildOutWithItsNotificationsOff ) {
   start( false );
   const auto before = sm->basicInterlockSm();
   const auto removed = sm->basicInterlockSmDel();
   EXPECT_EQ( removed, before );
   EXPECT_EQ( child(), "" );
   EXPECT_FALSE( removed->hasNotificationActive() );
   EXPECT_EQ( sm->basicInterlockSmDel(), nullptr );
}

TEST_F( Controller, SwitchesTheNotificationsOfTheChildItHas ) {
   for ( const bool asPeer : { false, true } ) {
      start( asPeer );
      const InterlockModel::StateMachine & own =
         asPeer ? static_cast< const InterlockModel::StateMachine & >( *sm->peerInterlockSm() )
                : *sm->basicInterlockSm();
      EXPECT_TRUE( sm->hasNotificationActive() );
      EXPECT_TRUE( sm->vexMlagStatus()->hasNotificationActive() );
      EXPECT_TRUE( own.hasNotificationActive() );
      sm->hasNotificationActiveIs( false );
      EXPECT_FALSE( sm->vexMlagStatus()->hasNotificationActive() );
      EXPECT_FALSE( own.hasNotificationActive() );
      world.memberGone( "Ethernet1" ).member( "Ethernet1" );
      sm->hasNotificationActiveIs( true );
      EXPECT_TRUE( own.hasNotificationActive() );
   }
}

TEST_F( Controller, FollowsTheFlagEvenWithItsNotificationsOff ) {
   start( false );
   sm->hasNotificationActiveIs( false );
   world.peerInterlock( true );
   EXPECT_EQ( child(), "peer" );
   EXPECT_TRUE( sm->peerInterlockSm()->hasNotificationActive() );
}

TEST_F( Controller, AsAZombieFollowsNothing ) {
   start( false );
   const auto reactor = sm->vexMlagStatus();
   reactor->vexDoZombieReactors( true );
   world.peerInterlock( true );
   reactor->notifierIs( anotherStatus( true ) );
   EXPECT_EQ( child(), "basic" );
}

TEST_F( Controller, DroppedInPeerModeCleansNothingUp ) {
   start( true );
   const auto reactor = sm->vexMlagStatus();
   const auto requests = logOf( world.request );
   const auto verdicts = VerdictLog::of( world.output );
   TraceRecorder trace( handle );
   sm.release();
   EXPECT_EQ( trace.take(), "" );
   EXPECT_EQ( requests->take(), "" );
   EXPECT_EQ( requestOf( world ), "2" );
   EXPECT_EQ( world.scheduler->scheduled(), 0U );
   EXPECT_EQ( world.response->notifiees(), 0U );
   EXPECT_TRUE( reactor->markedForDeletion() );
   world.pass( 1 ).answer( "PortChannel10", 2 ).member( "Ethernet2" ).peerInterlock( false );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( requestOf( world ), "2" );
}

TEST_F( Controller, GivesEveryReferenceBack ) {
   for ( const bool asPeer : { false, true } ) {
      start( asPeer );
      world.peerInterlock( !asPeer ).peerInterlock( asPeer );
      sm.release();
      EXPECT_EQ( world.aclIntfFeatureStatus->referenceCount(), 1U );
      EXPECT_EQ( world.hwLagConfig->referenceCount(), 1U );
      EXPECT_EQ( world.mlagStatus->referenceCount(), 1U );
      EXPECT_EQ( world.response->referenceCount(), 1U );
      EXPECT_EQ( world.request->referenceCount(), 1U );
      EXPECT_EQ( world.scheduler->referenceCount(), 1U );
      EXPECT_EQ( world.output->referenceCount(), 1U );
   }
}

TEST_F( Controller, IsMadeByItsFactory ) {
   world.peerInterlock( true );
   const auto made = mlagEgressAclIntfInterlockControllerSmFactory(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.response,
      world.request, world.scheduler, world.output );
   sm = Vex::ptrCast< ControllerSm >( made );
   ASSERT_TRUE( sm );
   EXPECT_TRUE( sm->hasNotificationActive() );
   EXPECT_EQ( child(), "peer" );
   EXPECT_EQ( sm->fwkType().name, "Velo::MlagEgressAclIntfInterlockControllerSm" );
   EXPECT_EQ( sm->peerInterlockSm()->fwkType().name, "Velo::MlagEgressAclIntfPeerInterlockSm" );
}

TEST_F( Controller, IsMadeByNameWithTheOutputLast ) {
   const std::array< Vex::Argument, 7 > arguments{ world.aclIntfFeatureStatus,
                                                   world.hwLagConfig,
                                                   world.mlagStatus,
                                                   world.response,
                                                   world.request,
                                                   world.scheduler,
                                                   world.output };
   sm = Vex::ptrCast< ControllerSm >(
      Vex::construct( "MlagEgressAclIntfInterlockControllerSm", arguments ) );
   ASSERT_TRUE( sm );
   EXPECT_EQ( child(), "basic" );
   EXPECT_TRUE( sm->hasNotificationActive() );
}

TEST_F( Controller, ThePeerInterlockIsMadeByNameWithTheOutputFourth ) {
   const std::array< Vex::Argument, 7 > arguments{ world.aclIntfFeatureStatus,
                                                   world.hwLagConfig,
                                                   world.mlagStatus,
                                                   world.output,
                                                   world.response,
                                                   world.request,
                                                   world.scheduler };
   const auto peer =
      Vex::ptrCast< PeerSm >( Vex::construct( "MlagEgressAclIntfPeerInterlockSm", arguments ) );
   ASSERT_TRUE( peer );
   EXPECT_EQ( requestOf( world ), "2" );
   EXPECT_TRUE( peer->hasNotificationActive() );
}

TEST_F( Controller, TheWrongOrderOfArgumentsIsRefused ) {
   const std::array< Vex::Argument, 7 > arguments{ world.aclIntfFeatureStatus,
                                                   world.hwLagConfig,
                                                   world.mlagStatus,
                                                   world.output,
                                                   world.response,
                                                   world.request,
                                                   world.scheduler };
   EXPECT_THROW( Vex::construct( "MlagEgressAclIntfInterlockControllerSm", arguments ),
                 Vex::ConstructionError );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( admitted( world.output ), "" );
}

TEST( EgressAclModule, ListsItsStateMachinesInOrder ) {
   TestSupport::Marks listed;
   for ( const Vex::Module * const module : Vex::modules() ) {
      if ( module->name() == "VeloMlagEgressAclIntfInterlockSm" ) {
         for ( const Vex::StateMachineType & type : module->stateMachines() ) {
            listed.add( type.name );
         }
      }
   }
   EXPECT_EQ( listed.take(),
              "MlagEgressAclIntfInterlockSm MlagEgressAclIntfPeerInterlockSm "
              "MlagEgressAclIntfInterlockControllerSm DeprecatedMlagEgressAclIntfInterlockSm" );
}

} // namespace
} // namespace Velo
