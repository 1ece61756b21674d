#include "interlock-model/Hardware/Lag/InitialMember.h"

#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"

#include <gtest/gtest.h>
#include <string>

namespace Hardware::Lag {
namespace {

using TestSupport::intf;
using TestSupport::logOf;

const Nodo::IntfId port = intf( "Ethernet1" );

TEST( InitialMember, HasTheKeyOfItsLagAndNoMemberAtFirst ) {
   const auto im = Vex::make< InitialMember >( intf( "PortChannel10" ) );
   EXPECT_EQ( im->key(), intf( "PortChannel10" ) );
   EXPECT_EQ( im->members(), 0U );
   EXPECT_FALSE( im->memberHas( port ) );
}

TEST( InitialMember, AMemberNotifiesWhenItComesAndGoes ) {
   const auto im = Vex::make< InitialMember >( intf( "PortChannel10" ) );
   const auto log = logOf( im, [ & ] { return ":" + std::to_string( im->members() ); } );
   im->memberIs( port, PortProgType() );
   EXPECT_EQ( log->take(), "member(Ethernet1):1" );
   EXPECT_TRUE( im->memberHas( port ) );
   im->memberDel( port );
   EXPECT_EQ( log->take(), "member(Ethernet1):0" );
   EXPECT_FALSE( im->memberHas( port ) );
}

TEST( InitialMember, AnotherPortProgTypeNotifies ) {
   const auto im = Vex::make< InitialMember >( intf( "PortChannel10" ) );
   im->memberIs( port, PortProgType( 1 ) );
   const auto log = logOf( im, [ & ] {
      return ":" + std::to_string( static_cast< int >( im->member().get( port ) ) );
   } );
   im->memberIs( port, PortProgType( 2 ) );
   EXPECT_EQ( log->take(), "member(Ethernet1):2" );
   EXPECT_EQ( im->members(), 1U );
}

TEST( InitialMember, TheSamePortProgTypeOrAnAbsentPortNotifiesNobody ) {
   const auto im = Vex::make< InitialMember >( intf( "PortChannel10" ) );
   im->memberIs( port, PortProgType( 1 ) );
   const auto log = logOf( im );
   im->memberIs( port, PortProgType( 1 ) );
   im->memberDel( intf( "Ethernet2" ) );
   EXPECT_EQ( log->take(), "" );
}

} // namespace
} // namespace Hardware::Lag
