#include "interlock-model/Bridging/SwitchIntfConfig.h"

#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace Bridging {
namespace {

using TestSupport::logOf;

Vex::Ptr< SwitchIntfConfig > config() {
   return Vex::make< SwitchIntfConfig >( TestSupport::intf( "PortChannel10" ) );
}

TEST( SwitchIntfConfig, HasTheKeyOfItsInterfaceAndNoMappingAtFirst ) {
   EXPECT_EQ( config()->key().stringValue(), "PortChannel10" );
   EXPECT_TRUE( config()->ingressVlanXlate().empty() );
   EXPECT_TRUE( config()->egressVlanXlate().empty() );
}

TEST( SwitchIntfConfig, AnIngressMappingNotifiesItsVlanWhenItComesChangesAndGoes ) {
   const auto entity = config();
   const auto log = logOf( entity, [ & ] {
      return ":" + std::to_string( entity->ingressVlanXlate().get( VlanXlateKey( 5 ) ).value() );
   } );
   entity->ingressVlanXlateIs( VlanXlateKey( 5 ), VlanId( 6 ) );
   EXPECT_EQ( log->take(), "ingressVlanXlate(5):6" );
   entity->ingressVlanXlateIs( VlanXlateKey( 5 ), VlanId( 7 ) );
   EXPECT_EQ( log->take(), "ingressVlanXlate(5):7" );
   entity->ingressVlanXlateDel( VlanXlateKey( 5 ) );
   EXPECT_EQ( log->take(), "ingressVlanXlate(5):0" );
   EXPECT_TRUE( entity->egressVlanXlate().empty() );
}

TEST( SwitchIntfConfig, AnEgressMappingNotifiesItsVlanWhenItComesChangesAndGoes ) {
   const auto entity = config();
   const auto log = logOf( entity, [ & ] {
      return ":" + std::to_string( entity->egressVlanXlate().get( VlanXlateKey( 5 ) ).value() );
   } );
   entity->egressVlanXlateIs( VlanXlateKey( 5 ), VlanId( 6 ) );
   EXPECT_EQ( log->take(), "egressVlanXlate(5):6" );
   entity->egressVlanXlateIs( VlanXlateKey( 5 ), VlanId( 7 ) );
   EXPECT_EQ( log->take(), "egressVlanXlate(5):7" );
   entity->egressVlanXlateDel( VlanXlateKey( 5 ) );
   EXPECT_EQ( log->take(), "egressVlanXlate(5):0" );
   EXPECT_TRUE( entity->ingressVlanXlate().empty() );
}

TEST( SwitchIntfConfig, TheSameMappingOrAnAbsentVlanNotifiesNobody ) {
   const auto entity = config();
   entity->ingressVlanXlateIs( VlanXlateKey( 5 ), VlanId( 6 ) );
   entity->egressVlanXlateIs( VlanXlateKey( 7 ), VlanId( 8 ) );
   const auto log = logOf( entity );
   entity->ingressVlanXlateIs( VlanXlateKey( 5 ), VlanId( 6 ) );
   entity->egressVlanXlateIs( VlanXlateKey( 7 ), VlanId( 8 ) );
   entity->ingressVlanXlateDel( VlanXlateKey( 7 ) );
   entity->egressVlanXlateDel( VlanXlateKey( 5 ) );
   EXPECT_EQ( log->take(), "" );
}

TEST( SwitchIntfConfig, AMappingToNoVlanIsAMapping ) {
   const auto entity = config();
   const auto log = logOf( entity );
   entity->ingressVlanXlateIs( VlanXlateKey( 5 ), VlanId() );
   EXPECT_EQ( log->take(), "ingressVlanXlate(5)" );
   EXPECT_EQ( entity->ingressVlanXlate().size(), 1U );
}

TEST( VlanId, GoesFrom1To4094 ) {
   EXPECT_EQ( VlanId( 1 ).value(), 1 );
   EXPECT_EQ( VlanId( 4094 ).value(), 4094 );
   EXPECT_EQ( VlanId().value(), 0 );
}

TEST( VlanId, AnyOtherNumberIsRefusedByName ) {
   for ( const int value : { 0, 4095, 4096, 65535 } ) {
      try {
         static_cast< void >( VlanId( static_cast< std::uint16_t >( value ) ) );
         ADD_FAILURE() << value << " accepted";
      } catch ( const std::out_of_range & error ) {
         EXPECT_EQ( std::string( error.what() ),
                    "VLAN " + std::to_string( value ) + ": 1 to 4094 wanted" );
      }
   }
}

TEST( VlanId, IsOrderedAndHashedByItsNumber ) {
   EXPECT_LT( VlanId( 9 ), VlanId( 10 ) );
   EXPECT_EQ( VlanId( 9 ), VlanId( 9 ) );
   EXPECT_NE( VlanId( 9 ).hash(), VlanId( 10 ).hash() );
}

} // namespace
} // namespace Bridging
