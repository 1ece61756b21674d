#include "interlock-model/Mlag/AclInstallRequest.h"
#include "interlock-model/Mlag/AclInstallResponse.h"
#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"

#include <gtest/gtest.h>
#include <string>

namespace Mlag {
namespace {

using TestSupport::intf;
using TestSupport::logOf;

const Nodo::IntfId lag = intf( "PortChannel10" );

TEST( AclInstallRequest, ATokenNotifiesItsLagWhenItComesChangesAndGoes ) {
   const auto request = Vex::make< AclInstallRequest >();
   const auto log =
      logOf( request, [ & ] { return ":" + std::to_string( request->installRequest( lag ) ); } );
   request->installRequestIs( lag, 1 );
   EXPECT_EQ( log->take(), "installRequest(PortChannel10):1" );
   request->installRequestIs( lag, 4294967295 );
   EXPECT_EQ( log->take(), "installRequest(PortChannel10):4294967295" );
   request->installRequestDel( lag );
   EXPECT_EQ( log->take(), "installRequest(PortChannel10):0" );
}

TEST( AclInstallRequest, TheSameTokenOrAnAbsentLagNotifiesNobody ) {
   const auto request = Vex::make< AclInstallRequest >();
   request->installRequestIs( lag, 7 );
   const auto log = logOf( request );
   request->installRequestIs( lag, 7 );
   request->installRequestDel( intf( "PortChannel20" ) );
   EXPECT_EQ( log->take(), "" );
}

TEST( AclInstallRequest, AnEntryOfTokenZeroIsAnEntry ) {
   const auto request = Vex::make< AclInstallRequest >();
   const auto log = logOf( request );
   request->installRequestIs( lag, 0 );
   EXPECT_EQ( log->take(), "installRequest(PortChannel10)" );
   EXPECT_EQ( request->installRequest().size(), 1U );
   request->installRequestDel( lag );
   EXPECT_EQ( log->take(), "installRequest(PortChannel10)" );
}

TEST( AclInstallResponse, ATokenNotifiesItsLagWhenItComesChangesAndGoes ) {
   const auto response = Vex::make< AclInstallResponse >();
   const auto log =
      logOf( response, [ & ] { return ":" + std::to_string( response->installResponse( lag ) ); } );
   response->installResponseIs( lag, 1 );
   EXPECT_EQ( log->take(), "installResponse(PortChannel10):1" );
   response->installResponseIs( lag, 2 );
   EXPECT_EQ( log->take(), "installResponse(PortChannel10):2" );
   response->installResponseDel( lag );
   EXPECT_EQ( log->take(), "installResponse(PortChannel10):0" );
}

TEST( AclInstallResponse, TheSameTokenOrAnAbsentLagNotifiesNobody ) {
   const auto response = Vex::make< AclInstallResponse >();
   response->installResponseIs( lag, 7 );
   const auto log = logOf( response );
   response->installResponseIs( lag, 7 );
   response->installResponseDel( intf( "PortChannel20" ) );
   EXPECT_EQ( log->take(), "" );
}

TEST( AclInstallResponse, AnEntryOfTokenZeroIsAnEntry ) {
   const auto response = Vex::make< AclInstallResponse >();
   const auto log = logOf( response );
   response->installResponseIs( lag, 0 );
   EXPECT_EQ( log->take(), "installResponse(PortChannel10)" );
   EXPECT_EQ( response->installResponse().size(), 1U );
}

} // namespace
} // namespace Mlag
