#include "interlock-model/Interface/EthIntfStatus.h"

#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"

#include <gtest/gtest.h>

namespace Interface {
namespace {

using TestSupport::logOf;

TEST( EthIntfStatus, IsBornWithItsIdentifierAndAnUnknownLinkStatus ) {
   const auto status = Vex::make< EthIntfStatus >( TestSupport::intf( "Port-Channel1000" ) );
   EXPECT_EQ( status->intfId().stringValue(), "Port-Channel1000" );
   EXPECT_EQ( status->linkStatus(), LinkStatus::unknown );
}

TEST( EthIntfStatus, AnotherLinkStatusNotifiesOnceAfterTheChange ) {
   const auto status = Vex::make< EthIntfStatus >( Nodo::IntfId() );
   const auto log =
      logOf( status, [ & ] { return ":" + Vex::String( Vex::enumName( status->linkStatus() ) ); } );
   status->linkStatusIs( LinkStatus::up );
   EXPECT_EQ( log->take(), "linkStatus():up" );
   status->linkStatusIs( LinkStatus::up );
   EXPECT_EQ( log->take(), "" );
}

TEST( EthIntfStatus, UpIsTheNumberTwo ) {
   EXPECT_EQ( static_cast< int >( LinkStatus::up ), 2 );
}

} // namespace
} // namespace Interface
