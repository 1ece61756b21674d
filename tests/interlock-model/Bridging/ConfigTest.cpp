#include "interlock-model/Bridging/Config.h"

#include "platform/Vex/NullArgumentError.h"
#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"

#include <gtest/gtest.h>
#include <string>

namespace Bridging {
namespace {

using TestSupport::intf;
using TestSupport::logOf;

const Nodo::IntfId lag = intf( "PortChannel10" );

TEST( BridgingConfig, ASwitchIntfConfigNotifiesItsInterfaceWhenItComesAndGoes ) {
   const auto config = Vex::make< Config >();
   const auto log =
      logOf( config, [ & ] { return config->switchIntfConfig( lag ) ? ":there" : ":gone"; } );
   config->switchIntfConfigIs( Vex::make< SwitchIntfConfig >( lag ) );
   EXPECT_EQ( log->take(), "switchIntfConfig(PortChannel10):there" );
   config->switchIntfConfigDel( lag );
   EXPECT_EQ( log->take(), "switchIntfConfig(PortChannel10):gone" );
}

TEST( BridgingConfig, AReplacedSwitchIntfConfigIsOneNotification ) {
   const auto config = Vex::make< Config >();
   config->switchIntfConfigIs( Vex::make< SwitchIntfConfig >( lag ) );
   const auto other = Vex::make< SwitchIntfConfig >( lag );
   const auto log = logOf(
      config, [ & ] { return config->switchIntfConfig( lag ) == other ? ":other" : ":old"; } );
   config->switchIntfConfigIs( other );
   EXPECT_EQ( log->take(), "switchIntfConfig(PortChannel10):other" );
   EXPECT_EQ( config->switchIntfConfig().size(), 1U );
}

TEST( BridgingConfig, TheSameReferenceOrAnAbsentInterfaceNotifiesNobody ) {
   const auto config = Vex::make< Config >();
   const auto entity = Vex::make< SwitchIntfConfig >( lag );
   config->switchIntfConfigIs( entity );
   const auto log = logOf( config );
   config->switchIntfConfigIs( entity );
   config->switchIntfConfigDel( intf( "PortChannel20" ) );
   EXPECT_EQ( log->take(), "" );
}

TEST( BridgingConfig, ANullSwitchIntfConfigIsTheNullArgumentErrorAndChangesNothing ) {
   const auto config = Vex::make< Config >();
   const auto log = logOf( config );
   try {
      config->switchIntfConfigIs( nullptr );
      ADD_FAILURE() << "accepted";
   } catch ( const Vex::NullArgumentError & error ) {
      EXPECT_EQ( error.mutator(), "switchIntfConfigIs" );
      EXPECT_TRUE( std::string( error.what() ).starts_with( "switchIntfConfigIs" ) );
   }
   EXPECT_EQ( log->take(), "" );
   EXPECT_TRUE( config->switchIntfConfig().empty() );
}

TEST( BridgingConfig, ARemovedSwitchIntfConfigLivesUntilItsWatchersHaveHeardOfIt ) {
   const auto config = Vex::make< Config >();
   auto entity = Vex::make< SwitchIntfConfig >( lag );
   config->switchIntfConfigIs( entity );
   const SwitchIntfConfig & borrowed = *entity;
   entity.release();
   const auto log = logOf( config, [ & ] { return ":" + borrowed.key().stringValue(); } );
   config->switchIntfConfigDel( lag );
   EXPECT_EQ( log->take(), "switchIntfConfig(PortChannel10):PortChannel10" );
}

TEST( BridgingConfig, TheSwitchIntfConfigOfAnUnknownInterfaceIsNull ) {
   const auto config = Vex::make< Config >();
   EXPECT_EQ( config->switchIntfConfig( lag ), nullptr );
   EXPECT_EQ( Vex::Ptr< const Config >( config )->switchIntfConfig( lag ), nullptr );
   EXPECT_EQ( config->switchIntfConfigFind( lag ), nullptr );
}

TEST( BridgingConfig, TheSwitchIntfConfigOfAnInterfaceIsFoundWithoutAReferenceToIt ) {
   const auto config = Vex::make< Config >();
   const auto entity = Vex::make< SwitchIntfConfig >( lag );
   config->switchIntfConfigIs( entity );
   const auto references = entity->referenceCount();
   EXPECT_EQ( config->switchIntfConfigFind( lag ), entity.get() );
   EXPECT_EQ( entity->referenceCount(), references );
}

} // namespace
} // namespace Bridging
