#include "interlock-model/Mlag/Status.h"

#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"

#include <gtest/gtest.h>

namespace Mlag {
namespace {

using TestSupport::intf;
using TestSupport::logOf;

const Nodo::IntfId lag = intf( "PortChannel10" );

Vex::Ptr< Interface::EthIntfStatus > link( const Vex::String & name ) {
   return Vex::make< Interface::EthIntfStatus >( intf( name ) );
}

TEST( MlagStatus, IsBornDisabledWithoutPeerLinkAndWithoutEntries ) {
   const auto status = Vex::make< Status >();
   EXPECT_EQ( status->mlagState(), State::disabled );
   EXPECT_EQ( status->peerLink(), nullptr );
   EXPECT_TRUE( status->intfStatus().empty() );
   EXPECT_FALSE( status->peerInterlock() );
}

TEST( MlagStatus, StatesThreeAndFourAloneAreActive ) {
   for ( unsigned state = 0; state < 256; ++state ) {
      EXPECT_EQ( isActive( static_cast< State >( state ) ), state == 3 || state == 4 ) << state;
   }
}

TEST( MlagStatus, AnotherMlagStateNotifiesOnceAfterTheChange ) {
   const auto status = Vex::make< Status >();
   const auto log =
      logOf( status, [ & ] { return ":" + Vex::String( Vex::enumName( status->mlagState() ) ); } );
   status->mlagStateIs( State::primary );
   EXPECT_EQ( log->take(), "mlagState():primary" );
   status->mlagStateIs( State::primary );
   EXPECT_EQ( log->take(), "" );
}

TEST( MlagStatus, AnotherPeerLinkNotifiesOnceAfterTheChange ) {
   const auto status = Vex::make< Status >();
   const auto log = logOf( status, [ & ] {
      return ":" + ( status->peerLink() ? status->peerLink()->intfId().stringValue() : "none" );
   } );
   const auto first = link( "Port-Channel1" );
   status->peerLinkIs( first );
   EXPECT_EQ( log->take(), "peerLink():Port-Channel1" );
   status->peerLinkIs( first );
   EXPECT_EQ( log->take(), "" ) << "the same reference";
   status->peerLinkIs( link( "Port-Channel1" ) );
   EXPECT_EQ( log->take(), "peerLink():Port-Channel1" ) << "another entity of the same name";
   status->peerLinkIs( nullptr );
   EXPECT_EQ( log->take(), "peerLink():none" );
   status->peerLinkIs( nullptr );
   EXPECT_EQ( log->take(), "" );
}

TEST( MlagStatus, AnIntfStatusEntryNotifiesItsKeyWhenItComesChangesAndGoes ) {
   const auto status = Vex::make< Status >();
   const auto log = logOf( status, [ & ] {
      return ":" + Vex::String( Vex::enumName( status->intfStatus( lag ).peerState ) );
   } );
   status->intfStatusIs( lag, { "", IntfState::active, IntfState::inactive } );
   EXPECT_EQ( log->take(), "intfStatus(PortChannel10):inactive" );
   status->intfStatusIs( lag, { "", IntfState::active, IntfState::active } );
   EXPECT_EQ( log->take(), "intfStatus(PortChannel10):active" );
   status->intfStatusDel( lag );
   EXPECT_EQ( log->take(), "intfStatus(PortChannel10):unknown" );
}

TEST( MlagStatus, AnEqualOrAbsentIntfStatusEntryNotifiesNobody ) {
   const auto status = Vex::make< Status >();
   status->intfStatusIs( lag, { "a", IntfState::active, IntfState::active } );
   const auto log = logOf( status );
   status->intfStatusIs( lag, { "a", IntfState::active, IntfState::active } );
   status->intfStatusDel( intf( "PortChannel20" ) );
   EXPECT_EQ( log->take(), "" );
}

TEST( MlagStatus, EachFieldMakesAnIntfStatusEntryAnotherOne ) {
   const auto status = Vex::make< Status >();
   status->intfStatusIs( lag, {} );
   const auto log = logOf( status );
   status->intfStatusIs( lag, { "a", IntfState::unknown, IntfState::unknown } );
   EXPECT_EQ( log->take(), "intfStatus(PortChannel10)" );
   status->intfStatusIs( lag, { "a", IntfState::active, IntfState::unknown } );
   EXPECT_EQ( log->take(), "intfStatus(PortChannel10)" );
   status->intfStatusIs( lag, { "a", IntfState::active, IntfState::active } );
   EXPECT_EQ( log->take(), "intfStatus(PortChannel10)" );
}

TEST( MlagStatus, AnEntryThatEqualsTheDefaultIsAnEntry ) {
   const auto status = Vex::make< Status >();
   const auto log = logOf( status );
   status->intfStatusIs( lag, {} );
   EXPECT_EQ( log->take(), "intfStatus(PortChannel10)" );
   EXPECT_TRUE( status->intfStatusHas( lag ) );
   EXPECT_FALSE( status->intfStatus( lag ) );
   status->intfStatusDel( lag );
   EXPECT_EQ( log->take(), "intfStatus(PortChannel10)" );
   EXPECT_FALSE( status->intfStatusHas( lag ) );
}

TEST( MlagStatus, TheStatusOfAnUnknownLagIsTheDefaultWhichIsFalse ) {
   const auto status = Vex::make< Status >();
   status->intfStatusIs( lag, { "a", IntfState::active, IntfState::active } );
   EXPECT_EQ( status->intfStatus( intf( "PortChannel20" ) ), IntfStatus() );
   EXPECT_FALSE( status->intfStatus( intf( "PortChannel20" ) ) );
   EXPECT_TRUE( status->intfStatus( lag ) );
   EXPECT_EQ( status->intfStatus( lag ).text, "a" );
}

TEST( MlagStatus, AnyFieldAloneMakesAnIntfStatusTrue ) {
   EXPECT_FALSE( IntfStatus() );
   EXPECT_TRUE( ( IntfStatus{ "a", IntfState::unknown, IntfState::unknown } ) );
   EXPECT_TRUE( ( IntfStatus{ "", IntfState::inactive, IntfState::unknown } ) );
   EXPECT_TRUE( ( IntfStatus{ "", IntfState::unknown, IntfState::inactive } ) );
}

TEST( MlagStatus, PeerInterlockNotifiesOnceAfterTheChange ) {
   const auto status = Vex::make< Status >();
   const auto log = logOf( status, [ & ] { return status->peerInterlock() ? ":yes" : ":no"; } );
   status->peerInterlockIs( true );
   EXPECT_EQ( log->take(), "peerInterlock():yes" );
   status->peerInterlockIs( true );
   EXPECT_EQ( log->take(), "" );
   status->peerInterlockIs( false );
   EXPECT_EQ( log->take(), "peerInterlock():no" );
}

TEST( MlagStatus, AReplacedPeerLinkLivesUntilItsWatchersHaveHeardOfIt ) {
   const auto status = Vex::make< Status >();
   auto old = link( "Port-Channel1" );
   status->peerLinkIs( old );
   const Interface::EthIntfStatus & borrowed = *old;
   old.release();
   const auto log = logOf( status, [ & ] { return ":" + borrowed.intfId().stringValue(); } );
   status->peerLinkIs( nullptr );
   EXPECT_EQ( log->take(), "peerLink():Port-Channel1" );
}

} // namespace
} // namespace Mlag
