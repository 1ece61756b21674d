// The verdicts of the basic egress-ACL interlock.

#include "Velo/VeloIntfInterlock.h"
#include "platform/Vex/GenericConstruction.h"
#include "platform/Vex/Module.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/BasicSm.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/World.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Velo {
namespace {

using Interface::LinkStatus;
using Mlag::IntfState;
using Mlag::State;
using TestSupport::admitted;
using TestSupport::entry;
using TestSupport::intf;
using TestSupport::VerdictLog;
using TestSupport::World;

struct BasicInterlock : testing::Test {
   World world;
   Vex::Ptr< MlagEgressAclIntfInterlockSm > sm;
   Vex::Ptr< VerdictLog > verdicts;

   void start() {
      sm = startBasic( world );
      verdicts = VerdictLog::of( world.output );
   }
   bool needed() const { return sm->shouldInstallEgressAcl( intf( "PortChannel10" ) ); }
};

// ---- Whether the ACL is needed ------------------------------------------------------------------

TEST_F( BasicInterlock, NeedsTheAclOfAnMlagLagThatIsActiveOnThePeer ) {
   start();
   EXPECT_TRUE( needed() );
}

TEST_F( BasicInterlock, NeedsTheAclInTheMlagStates3And4Only ) {
   start();
   for ( unsigned state = 0; state < 256; ++state ) {
      world.mlagState( static_cast< State >( state ) );
      EXPECT_EQ( needed(), state == 3 || state == 4 ) << state;
   }
}

TEST_F( BasicInterlock, NeedsNoAclWithoutPeerLink ) {
   world.noPeerLink();
   start();
   EXPECT_FALSE( needed() );
}

TEST_F( BasicInterlock, NeedsNoAclWhereThePeerLinkHasNoIdentifierWhateverItsLinkStatus ) {
   world.peerLink( "", LinkStatus::up );
   start();
   EXPECT_FALSE( needed() );
}

TEST_F( BasicInterlock, NeedsTheAclWithLinkStatus2Only ) {
   start();
   for ( unsigned status = 0; status < 256; ++status ) {
      world.linkStatus( static_cast< LinkStatus >( status ) );
      EXPECT_EQ( needed(), status == 2 ) << status;
   }
}

TEST_F( BasicInterlock, NeedsTheAclWithPeerState2Only ) {
   start();
   for ( unsigned state = 0; state < 256; ++state ) {
      world.mlagIntf( "PortChannel10", static_cast< IntfState >( state ) );
      EXPECT_EQ( needed(), state == 2 ) << state;
   }
}

TEST_F( BasicInterlock, NeedsTheAclWhateverTheOtherFieldsOfTheMlagInterface ) {
   world.mlagStatus->intfStatusIs( intf( "PortChannel10" ),
                                   { "", IntfState::unknown, IntfState::active } );
   start();
   EXPECT_TRUE( needed() );
}

TEST_F( BasicInterlock, NeedsNoAclOfALagThatIsNoMlagInterface ) {
   world.mlagIntfGone( "PortChannel10" ).mlagIntf( "PortChannel20" );
   start();
   EXPECT_FALSE( needed() );
}

TEST_F( BasicInterlock, NeedsNoAclOfALagWhoseEntryEqualsTheDefault ) {
   world.mlagStatus->intfStatusIs( intf( "PortChannel10" ), {} );
   start();
   EXPECT_FALSE( needed() );
}

// ---- Verdicts -----------------------------------------------------------------------------------

TEST_F( BasicInterlock, HoldsAMemberOutUntilItsAclIsInstalled ) {
   start();
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
   world.installed( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( BasicInterlock, AnAclInstalledForAnotherPairDoesNotAdmit ) {
   world.lag( "PortChannel20", { "Ethernet5" } ).mlagIntf( "PortChannel20" );
   start();
   world.installed( "Ethernet1", "PortChannel20" ).installed( "Ethernet5", "PortChannel10" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( BasicInterlock, AdmitsEveryActiveMemberOfEveryLagAtOnceWhenMlagIsInactive ) {
   world.lag( "PortChannel20", { "Ethernet6", "Ethernet5" } ).mlagIntf( "PortChannel20" );
   world.mlagState( State::inactive );
   start();
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10) (Ethernet6, PortChannel20) "
                                        "(Ethernet5, PortChannel20)" );
}

TEST_F( BasicInterlock, DecidesEveryLagAgainWhenTheMlagStateChanges ) {
   world.lag( "PortChannel20", { "Ethernet5" } ).mlagIntf( "PortChannel20" );
   start();
   world.mlagState( State::inactive );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet5, PortChannel20)" );
   world.mlagState( State::secondary );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet5, PortChannel20)" );
   world.mlagState( State::primary );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( BasicInterlock, DecidesEveryLagAgainWhenThePeerLinkGoesUpOrDown ) {
   world.lag( "PortChannel20", { "Ethernet5" } ).mlagIntf( "PortChannel20" );
   start();
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet5, PortChannel20)" );
   world.linkStatus( LinkStatus::up );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet5, PortChannel20)" );
}

TEST_F( BasicInterlock, DecidesEveryLagAgainWhenThePeerLinkComesGoesOrIsReplaced ) {
   start();
   world.noPeerLink();
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.peerLink( "Port-Channel1000" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
   world.peerLink( "Port-Channel2000", LinkStatus::down );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.linkStatus( LinkStatus::up );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( BasicInterlock, DecidesTheMembersOfOneLagWhenItsMlagInterfaceChanges ) {
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } ).mlagIntf( "PortChannel20" );
   start();
   world.mlagIntf( "PortChannel20", IntfState::inactive );
   EXPECT_EQ( verdicts->take(), "+(Ethernet5, PortChannel20) +(Ethernet6, PortChannel20)" );
   world.mlagIntf( "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet5, PortChannel20) -(Ethernet6, PortChannel20)" );
   world.mlagIntfGone( "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet5, PortChannel20) +(Ethernet6, PortChannel20)" );
}

TEST_F( BasicInterlock, AnMlagInterfaceThatIsNoLagDecidesNothing ) {
   start();
   world.mlagIntf( "PortChannel90" ).mlagIntfGone( "PortChannel90" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( BasicInterlock, ANewMemberIsDecidedAtOnce ) {
   world.mlagState( State::disabled );
   start();
   world.member( "Ethernet2" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
}

TEST_F( BasicInterlock, ARemovedMemberLosesItsEntryWhateverTheAcl ) {
   world.installed( "Ethernet1" );
   start();
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
   world.mlagState( State::disabled ).member( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( BasicInterlock, AnotherInputStatusCountsFromTheNextDecisionOn ) {
   start();
   const auto other = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   other->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   sm->vexAclIntfFeatureStatus()->notifierIs( other );
   EXPECT_EQ( verdicts->take(), "" );
   world.mlagState( State::secondary );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( BasicInterlock, ARemovedLagKeepsItsEntriesUntilSomethingElseTouchesThem ) {
   world.installed( "Ethernet1" );
   start();
   world.lagGone( "PortChannel10" ).mlagState( State::secondary );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( BasicInterlock, ALagAddedWithMembersIsNotDecidedUntilSomethingTouchesIt ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5" } );
   EXPECT_EQ( verdicts->take(), "" );
   world.installed( "Ethernet5", "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet5, PortChannel20)" );
}

// ---- Start --------------------------------------------------------------------------------------

TEST_F( BasicInterlock, BringsTheOutputInLineWhenItStarts ) {
   world.member( "Ethernet2" ).installed( "Ethernet2" ).lag( "PortChannel20", { "Ethernet5" } );
   start();
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10) (Ethernet5, PortChannel20)" );
}

TEST_F( BasicInterlock, DecidesAgainWhatAnEarlierOwnerLeftBeforeTheLags ) {
   world.member( "Ethernet2" ).installed( "Ethernet2" );
   world
      .left( "Ethernet9", "PortChannel90" ) // no such LAG any more
      .left( "Ethernet2" ) // rightly there
      .left( "Ethernet8" ) // no member any more
      .left( "Ethernet1" ); // held out by now
   world.lag( "PortChannel20", { "Ethernet5" } );
   verdicts = VerdictLog::of( world.output );
   sm = startBasic( world );
   EXPECT_EQ( verdicts->take(), "-(Ethernet9, PortChannel90) -(Ethernet8, PortChannel10) "
                                "-(Ethernet1, PortChannel10) +(Ethernet5, PortChannel20)" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10) (Ethernet5, PortChannel20)" );
}

TEST_F( BasicInterlock, IsStartedWithNotificationsActive ) {
   start();
   EXPECT_TRUE( sm->hasNotificationActive() );
   EXPECT_FALSE( sm->markedForDeletion() );
   EXPECT_EQ( sm->referenceCount(), 1U );
}

TEST_F( BasicInterlock, DecidesNothingWhileItsNotificationsAreInactive ) {
   start();
   sm->hasNotificationActiveIs( false );
   world.installed( "Ethernet1" ).mlagState( State::disabled ).member( "Ethernet2" );
   world.linkStatus( LinkStatus::down ).mlagIntfGone( "PortChannel10" ).noPeerLink();
   EXPECT_EQ( verdicts->take(), "" );
   sm->hasNotificationActiveIs( true );
   EXPECT_EQ( verdicts->take(), "" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" ) << "no ACL is needed by now";
}

// ---- Ways to construct it -----------------------------------------------------------------------

TEST_F( BasicInterlock, TheExportedFactoryStartsIt ) {
   world.installed( "Ethernet1" );
   const auto made = mlagEgressAclIntfInterlockSmFactory(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
   EXPECT_EQ( made->fwkType().name, "Velo::MlagEgressAclIntfInterlockSm" );
   EXPECT_TRUE( made->hasNotificationActive() );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

const Vex::String name = "MlagEgressAclIntfInterlockSm";

TEST_F( BasicInterlock, IsConstructedByNameFromAnArrayOfArguments ) {
   world.installed( "Ethernet1" );
   const std::vector< Vex::Argument > arguments{ world.aclIntfFeatureStatus, world.hwLagConfig,
                                                 world.mlagStatus, world.output };
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

TEST_F( BasicInterlock, ConstructedByNameComplainsOfWrongArguments ) {
   using ReadOnly = Vex::Ptr< const Interface::Interlock::IntfFeatureStatus >;
   const auto & in = world.aclIntfFeatureStatus;
   EXPECT_EQ( complaint( { in, world.mlagStatus, world.hwLagConfig, world.output } ),
              "MlagEgressAclIntfInterlockSm: argument 2: Hardware::Lag::Config (read-only) wanted, "
              "Mlag::Status (writable) given" );
   EXPECT_EQ( complaint( { in, world.hwLagConfig, world.mlagStatus, ReadOnly( world.output ) } ),
              "MlagEgressAclIntfInterlockSm: argument 4: Interface::Interlock::IntfFeatureStatus "
              "(writable) wanted, Interface::Interlock::IntfFeatureStatus (read-only) given" );
   EXPECT_EQ( complaint( { in, world.hwLagConfig } ),
              "MlagEgressAclIntfInterlockSm: argument 3: Mlag::Status (read-only) wanted, none "
              "given (4 arguments wanted, 2 given)" );
   EXPECT_EQ( in->notifiees(), 0U );
   EXPECT_EQ( world.hwLagConfig->notifiees(), 0U );
}

TEST_F( BasicInterlock, ItsModuleIsRegisteredOnce ) {
   int found = 0;
   for ( const Vex::Module * module : Vex::modules() ) {
      found += module->name() == "VeloMlagEgressAclIntfInterlockSm" ? 1 : 0;
   }
   EXPECT_EQ( found, 1 );
}

} // namespace
} // namespace Velo
