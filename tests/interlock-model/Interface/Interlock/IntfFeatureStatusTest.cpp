#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"

#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/NotificationLog.h"

#include <gtest/gtest.h>

namespace Interface::Interlock {
namespace {

using TestSupport::entry;
using TestSupport::logOf;

const IntfFeature feature = entry( "Ethernet1", "PortChannel10" );

TEST( IntfFeatureStatus, AnEntryNotifiesWhenItComesAndGoes ) {
   const auto status = Vex::make< IntfFeatureStatus >();
   const auto log =
      logOf( status, [ & ] { return status->intfHas( feature ) ? ":there" : ":gone"; } );
   status->intfIs( feature );
   EXPECT_EQ( log->take(), "intf((Ethernet1, PortChannel10)):there" );
   status->intfDel( feature );
   EXPECT_EQ( log->take(), "intf((Ethernet1, PortChannel10)):gone" );
}

TEST( IntfFeatureStatus, APresentEntryInsertedOrAnAbsentOneRemovedNotifiesNobody ) {
   const auto status = Vex::make< IntfFeatureStatus >();
   status->intfIs( feature );
   const auto log = logOf( status );
   status->intfIs( feature );
   status->intfDel( entry( "Ethernet1", "PortChannel20" ) );
   EXPECT_EQ( log->take(), "" );
   EXPECT_EQ( status->intf().size(), 1U );
}

TEST( IntfFeatureStatus, EntriesComeInTheOrderOfInsertion ) {
   const auto status = Vex::make< IntfFeatureStatus >();
   status->intfIs( entry( "Ethernet9", "PortChannel9" ) );
   status->intfIs( feature );
   status->intfIs( entry( "Ethernet5", "PortChannel5" ) );
   status->intfDel( entry( "Ethernet9", "PortChannel9" ) );
   status->intfIs( entry( "Ethernet9", "PortChannel9" ) );
   EXPECT_EQ( TestSupport::admitted( status ),
              "(Ethernet1, PortChannel10) (Ethernet5, PortChannel5) (Ethernet9, PortChannel9)" );
}

} // namespace
} // namespace Interface::Interlock
