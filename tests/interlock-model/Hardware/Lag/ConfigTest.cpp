#include "interlock-model/Hardware/Lag/Config.h"

#include "platform/Vex/NullArgumentError.h"
#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"

#include <gtest/gtest.h>
#include <string>

namespace Hardware::Lag {
namespace {

using TestSupport::intf;
using TestSupport::logOf;

const Nodo::IntfId lag = intf( "PortChannel10" );

TEST( LagConfig, AnInitialMemberNotifiesItsLagWhenItComesAndGoes ) {
   const auto config = Vex::make< Config >();
   const auto log =
      logOf( config, [ & ] { return config->initialMember( lag ) ? ":there" : ":gone"; } );
   config->initialMemberIs( Vex::make< InitialMember >( lag ) );
   EXPECT_EQ( log->take(), "initialMember(PortChannel10):there" );
   config->initialMemberDel( lag );
   EXPECT_EQ( log->take(), "initialMember(PortChannel10):gone" );
}

TEST( LagConfig, AReplacedInitialMemberIsOneNotification ) {
   const auto config = Vex::make< Config >();
   config->initialMemberIs( Vex::make< InitialMember >( lag ) );
   const auto other = Vex::make< InitialMember >( lag );
   const auto log =
      logOf( config, [ & ] { return config->initialMember( lag ) == other ? ":other" : ":old"; } );
   config->initialMemberIs( other );
   EXPECT_EQ( log->take(), "initialMember(PortChannel10):other" );
   EXPECT_EQ( config->initialMember().size(), 1U );
}

TEST( LagConfig, TheSameReferenceOrAnAbsentLagNotifiesNobody ) {
   const auto config = Vex::make< Config >();
   const auto im = Vex::make< InitialMember >( lag );
   config->initialMemberIs( im );
   const auto log = logOf( config );
   config->initialMemberIs( im );
   config->initialMemberDel( intf( "PortChannel20" ) );
   EXPECT_EQ( log->take(), "" );
}

TEST( LagConfig, ANullInitialMemberIsTheNullArgumentErrorAndChangesNothing ) {
   const auto config = Vex::make< Config >();
   config->initialMemberIs( Vex::make< InitialMember >( lag ) );
   const auto log = logOf( config );
   try {
      config->initialMemberIs( nullptr );
      ADD_FAILURE() << "accepted";
   } catch ( const Vex::NullArgumentError & error ) {
      EXPECT_EQ( error.mutator(), "initialMemberIs" );
      EXPECT_TRUE( std::string( error.what() ).starts_with( "initialMemberIs" ) ) << error.what();
   }
   EXPECT_EQ( log->take(), "" );
   EXPECT_EQ( config->initialMember().size(), 1U );
}

TEST( LagConfig, TheInitialMemberOfAnUnknownLagIsNull ) {
   const auto config = Vex::make< Config >();
   EXPECT_EQ( config->initialMember( lag ), nullptr );
   EXPECT_EQ( Vex::Ptr< const Config >( config )->initialMember( lag ), nullptr );
   EXPECT_EQ( config->initialMemberFind( lag ), nullptr );
}

TEST( LagConfig, TheInitialMemberOfALagIsFoundWithoutAReferenceToIt ) {
   const auto config = Vex::make< Config >();
   const auto im = Vex::make< InitialMember >( lag );
   config->initialMemberIs( im );
   const auto references = im->referenceCount();
   EXPECT_EQ( config->initialMemberFind( lag ), im.get() );
   EXPECT_EQ( im->referenceCount(), references );
}

TEST( LagConfig, ARemovedInitialMemberLivesUntilItsWatchersHaveHeardOfIt ) {
   const auto config = Vex::make< Config >();
   auto im = Vex::make< InitialMember >( lag );
   config->initialMemberIs( im );
   const InitialMember & borrowed = *im;
   im.release();
   const auto log = logOf( config, [ & ] { return ":" + borrowed.key().stringValue(); } );
   config->initialMemberDel( lag );
   EXPECT_EQ( log->take(), "initialMember(PortChannel10):PortChannel10" );
}

} // namespace
} // namespace Hardware::Lag
