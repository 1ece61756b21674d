// How the VLAN-translation interlock comes and goes.

#include "Velo/VeloIntfInterlock.h"
#include "platform/Vex/GenericConstruction.h"
#include "platform/Vex/Module.h"
#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateSm.h"

#include <string>
#include <vector>

namespace Velo {
namespace {

using TestSupport::admitted;
using TestSupport::intf;
using TestSupport::ScriptedConsumer;

struct VlanXlateLife : VlanXlateInterlock {
   VlanXlateLife() { world.switchIntfConfig(); }
};

// ---- Construction -------------------------------------------------------------------------------

TEST_F( VlanXlateLife, EveryInputIsWatchedOnceItIsConstructed ) {
   world.lag( "PortChannel20", {} ).switchIntfConfig( "Ethernet1" );
   start();
   EXPECT_EQ( watched( sm->initialMemberSm() ), "PortChannel10 PortChannel20" );
   EXPECT_EQ( watched( sm->switchIntfConfigSm() ), "PortChannel10 Ethernet1" );
   EXPECT_EQ( sm->inIntfFeatureStatus(), world.aclIntfFeatureStatus );
   EXPECT_EQ( sm->hwLagConfig(), world.hwLagConfig );
   EXPECT_EQ( sm->bridgingConfig(), world.bridgingConfig );
   EXPECT_EQ( sm->outIntfFeatureStatus(), world.output );
   for ( const auto notifiees :
         { world.aclIntfFeatureStatus->notifiees(), world.hwLagConfig->notifiees(),
           world.bridgingConfig->notifiees(), world.switchIntfConfig().notifiees(),
           world.hwLagConfig->initialMember( intf( "PortChannel10" ) )->notifiees() } ) {
      EXPECT_EQ( notifiees, 1U );
   }
}

TEST_F( VlanXlateLife, TheFullPassComesAfterTheInputReactorsAndBeforeThePerEntityOnes ) {
   std::vector< std::size_t > seen;
   const auto consumer = ScriptedConsumer::once( world.output, [ & ] {
      seen = { world.aclIntfFeatureStatus->notifiees(), world.hwLagConfig->notifiees(),
               world.bridgingConfig->notifiees(),
               world.hwLagConfig->initialMember( intf( "PortChannel10" ) )->notifiees(),
               world.switchIntfConfig().notifiees() };
   } );
   sm = startVlanXlate( world );
   EXPECT_EQ( seen, ( std::vector< std::size_t >{ 1, 1, 1, 0, 0 } ) );
}

TEST_F( VlanXlateLife, TheReactorsAreActiveFromTheirCreationOn ) {
   const auto constructed = Vex::make< VlanXlateIntfInterlockSm >(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.bridgingConfig, world.output );
   EXPECT_FALSE( constructed->hasNotificationActive() ) << "the creator switches it on";
   EXPECT_TRUE( constructed->vexInIntfFeatureStatus()->hasNotificationActive() );
   EXPECT_TRUE( constructed->vexHwLagConfig()->hasNotificationActive() );
   EXPECT_TRUE( constructed->vexBridgingConfig()->hasNotificationActive() );
   EXPECT_TRUE(
      constructed->initialMemberSm().get( intf( "PortChannel10" ) )->hasNotificationActive() );
   EXPECT_TRUE(
      constructed->switchIntfConfigSm().get( intf( "PortChannel10" ) )->hasNotificationActive() );
}

TEST_F( VlanXlateLife, WithoutAnInputStatusItHasNoReactorForIt ) {
   sm = Vex::make< VlanXlateIntfInterlockSm >( nullptr, world.hwLagConfig, world.bridgingConfig,
                                               world.output );
   EXPECT_EQ( sm->vexInIntfFeatureStatus(), nullptr );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" );
   sm->hasNotificationActiveIs( true );
   sm->vexDoZombieReactors( true );
}

TEST_F( VlanXlateLife, WithoutABridgingConfigItHasNoReactorForIt ) {
   world.lagGone( "PortChannel10" ); // the decision of a member would ask it
   sm = Vex::make< VlanXlateIntfInterlockSm >( world.aclIntfFeatureStatus, world.hwLagConfig,
                                               nullptr, world.output );
   EXPECT_EQ( sm->vexBridgingConfig(), nullptr );
   EXPECT_EQ( sm->bridgingConfig(), nullptr );
   EXPECT_EQ( watched( sm->switchIntfConfigSm() ), "" );
}

// ---- Notifications ------------------------------------------------------------------------------

TEST_F( VlanXlateLife, SwitchingNotificationsReachesEveryReactor ) {
   start();
   EXPECT_TRUE( sm->hasNotificationActive() );
   sm->hasNotificationActiveIs( false );
   EXPECT_FALSE( sm->hasNotificationActive() );
   EXPECT_FALSE( sm->vexInIntfFeatureStatus()->hasNotificationActive() );
   EXPECT_FALSE( sm->vexHwLagConfig()->hasNotificationActive() );
   EXPECT_FALSE( sm->vexBridgingConfig()->hasNotificationActive() );
   const auto lag = sm->initialMemberSm().get( intf( "PortChannel10" ) );
   const auto config = sm->switchIntfConfigSm().get( intf( "PortChannel10" ) );
   EXPECT_FALSE( lag->hasNotificationActive() );
   EXPECT_FALSE( config->hasNotificationActive() );
   sm->hasNotificationActiveIs( true );
   EXPECT_TRUE( lag->hasNotificationActive() );
   EXPECT_TRUE( config->hasNotificationActive() );
   EXPECT_EQ( calls(), "" );
}

TEST_F( VlanXlateLife, SwitchingNotificationsToWhatTheyAreDoesNothing ) {
   start();
   sm->vexHwLagConfig()->hasNotificationActiveIs( false );
   sm->hasNotificationActiveIs( true );
   EXPECT_FALSE( sm->vexHwLagConfig()->hasNotificationActive() );
}

// ---- Teardown -----------------------------------------------------------------------------------

TEST_F( VlanXlateLife, TheOutputStaysWhenItGoes ) {
   start();
   sm.release();
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" );
   world.memberGone( "Ethernet1" ).translated( 10 ).installed( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( trace.take(), "" );
}

TEST_F( VlanXlateLife, NobodyIsWatchedOnceItHasGone ) {
   start();
   const auto output = world.output;
   const auto holders = output->referenceCount();
   sm.release();
   EXPECT_EQ( output->referenceCount(), holders - 1 );
   EXPECT_EQ( world.aclIntfFeatureStatus->notifiees(), 0U );
   EXPECT_EQ( world.hwLagConfig->notifiees(), 0U );
   EXPECT_EQ( world.bridgingConfig->notifiees(), 0U );
   EXPECT_EQ( world.switchIntfConfig().notifiees(), 0U );
   EXPECT_EQ( world.hwLagConfig->initialMember( intf( "PortChannel10" ) )->notifiees(), 0U );
}

// Whoever keeps a reactor beyond its state machine keeps something that does nothing: a zombie that
// has no owner to call.
TEST_F( VlanXlateLife, AReactorThatOutlivesItIsAZombieWithoutOwner ) {
   start();
   const auto in = sm->vexInIntfFeatureStatus();
   const auto lagConfig = sm->vexHwLagConfig();
   const auto bridging = sm->vexBridgingConfig();
   const auto lag = sm->initialMemberSm().get( intf( "PortChannel10" ) );
   const auto config = sm->switchIntfConfigSm().get( intf( "PortChannel10" ) );
   sm.release();
   EXPECT_TRUE( in->markedForDeletion() );
   EXPECT_TRUE( lagConfig->markedForDeletion() );
   EXPECT_TRUE( bridging->markedForDeletion() );
   EXPECT_TRUE( lag->markedForDeletion() );
   EXPECT_TRUE( config->markedForDeletion() );
   // Revived, they would call their owner if they had one.
   in->vexDoZombieReactors( false );
   bridging->vexDoZombieReactors( false );
   lag->vexDoZombieReactors( false );
   config->vexDoZombieReactors( false );
   world.installed( "Ethernet1" ).member( "Ethernet2" ).translated( 10 );
   world.lag( "PortChannel20", {} ).switchIntfConfig( "PortChannel20" );
   EXPECT_EQ( trace.take(), "" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateLife, MarkingForDeletionReachesEveryReactorAndItselfLast ) {
   start();
   sm->vexDoZombieReactors( true );
   EXPECT_TRUE( sm->markedForDeletion() );
   EXPECT_TRUE( sm->vexInIntfFeatureStatus()->markedForDeletion() );
   EXPECT_TRUE( sm->vexHwLagConfig()->markedForDeletion() );
   EXPECT_TRUE( sm->vexBridgingConfig()->markedForDeletion() );
   EXPECT_TRUE( sm->initialMemberSm().get( intf( "PortChannel10" ) )->markedForDeletion() );
   EXPECT_TRUE( sm->switchIntfConfigSm().get( intf( "PortChannel10" ) )->markedForDeletion() );
}

// ---- Ways to construct it -----------------------------------------------------------------------

TEST_F( VlanXlateLife, TheCreatorSwitchesItsNotificationsOn ) {
   start();
   EXPECT_TRUE( sm->hasNotificationActive() );
   EXPECT_FALSE( sm->markedForDeletion() );
   EXPECT_EQ( sm->referenceCount(), 1U );
}

TEST_F( VlanXlateLife, TheExportedFactoryStartsIt ) {
   world.translated( 10 ).member( "Ethernet2" ).installed( "Ethernet2" );
   const auto made = vlanXlateIntfInterlockSmFactory( world.aclIntfFeatureStatus, world.hwLagConfig,
                                                      world.bridgingConfig, world.output );
   EXPECT_EQ( made->fwkType().name, "Velo::VlanXlateIntfInterlockSm" );
   EXPECT_TRUE( made->hasNotificationActive() );
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10)" );
}

const Vex::String name = "VlanXlateIntfInterlockSm";

TEST_F( VlanXlateLife, IsConstructedByNameFromAnArrayOfArguments ) {
   world.translated( 10 ).installed( "Ethernet1" );
   const std::vector< Vex::Argument > arguments{ world.aclIntfFeatureStatus, world.hwLagConfig,
                                                 world.bridgingConfig, world.output };
   const auto made =
      Vex::ptrCast< InterlockModel::StateMachine >( Vex::construct( name, arguments ) );
   ASSERT_NE( made, nullptr );
   EXPECT_TRUE( made->hasNotificationActive() );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

std::string complaint( const std::vector< Vex::Argument > & arguments ) {
   try {
      Vex::construct( name, arguments );
   } catch ( const Vex::ConstructionError & error ) {
      return error.what();
   }
   return "";
}

TEST_F( VlanXlateLife, ConstructedByNameComplainsOfWrongArguments ) {
   using ReadOnly = Vex::Ptr< const Interface::Interlock::IntfFeatureStatus >;
   const auto & in = world.aclIntfFeatureStatus;
   EXPECT_EQ( complaint( { in, world.hwLagConfig, world.mlagStatus, world.output } ),
              "VlanXlateIntfInterlockSm: argument 3: Bridging::Config (read-only) wanted, "
              "Mlag::Status (writable) given" );
   EXPECT_EQ(
      complaint( { in, world.hwLagConfig, world.bridgingConfig, ReadOnly( world.output ) } ),
      "VlanXlateIntfInterlockSm: argument 4: Interface::Interlock::IntfFeatureStatus "
      "(writable) wanted, Interface::Interlock::IntfFeatureStatus (read-only) given" );
   EXPECT_EQ( complaint( { in, world.hwLagConfig, world.bridgingConfig } ),
              "VlanXlateIntfInterlockSm: argument 4: Interface::Interlock::IntfFeatureStatus "
              "(writable) wanted, none given (4 arguments wanted, 3 given)" );
   EXPECT_EQ( in->notifiees(), 0U );
   EXPECT_EQ( world.bridgingConfig->notifiees(), 0U );
}

TEST_F( VlanXlateLife, ItsModuleIsRegisteredOnce ) {
   int found = 0;
   for ( const Vex::Module * module : Vex::modules() ) {
      found += module->name() == "VeloVlanXlateIntfInterlockSm" ? 1 : 0;
   }
   EXPECT_EQ( found, 1 );
}

} // namespace
} // namespace Velo
