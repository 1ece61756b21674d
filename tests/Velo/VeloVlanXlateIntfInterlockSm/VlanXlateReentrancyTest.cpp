// Who hears of a verdict of the VLAN-translation interlock may change any of its inputs, and may
// drop it, in the middle of a pass.

#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateSm.h"

#include <functional>
#include <utility>

namespace Velo {
namespace {

using TestSupport::admitted;
using TestSupport::intf;
using TestSupport::ScriptedConsumer;
using TestSupport::VerdictLog;

// PortChannel10 has the members Ethernet1 to Ethernet3, all of them admitted.
struct VlanXlateReentrancy : VlanXlateInterlock {
   VlanXlateReentrancy() {
      world.member( "Ethernet2" ).member( "Ethernet3" ).switchIntfConfig();
      start();
   }

   // The log registers first, so that it tells the changes in their order.
   Vex::Ptr< ScriptedConsumer > consumer;
   void onFirstVerdict( std::function< void() > script ) {
      consumer = ScriptedConsumer::once( world.output, std::move( script ) );
   }
};

TEST_F( VlanXlateReentrancy, DroppedInTheMiddleOfAPassItEndsThePassAndReactsNoMore ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   world.translated( 10 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet2, PortChannel10) "
                                "-(Ethernet3, PortChannel10)" );
   EXPECT_EQ( world.switchIntfConfig().notifiees(), 0U );
   world.notTranslated( 10 ).installed( "Ethernet1" ).member( "Ethernet4" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateReentrancy, DroppedByTheVerdictOnAMember ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   world.memberGone( "Ethernet1" ).memberGone( "Ethernet2" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateReentrancy, DroppedByTheVerdictOnAnInputEntry ) {
   world.translated( 10 );
   verdicts->take();
   onFirstVerdict( [ & ] { sm.release(); } );
   world.installed( "Ethernet1" ).installed( "Ethernet2" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   EXPECT_EQ( world.aclIntfFeatureStatus->notifiees(), 0U );
}

TEST_F( VlanXlateReentrancy, DroppedByTheVerdictOnAWholeSwitchingConfiguration ) {
   onFirstVerdict( [ & ] { sm.release(); } );
   const auto config = switchIntfConfig( "PortChannel10", true );
   world.bridgingConfig->switchIntfConfigIs( config );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet2, PortChannel10) "
                                "-(Ethernet3, PortChannel10)" );
   EXPECT_EQ( world.bridgingConfig->notifiees(), 0U );
   EXPECT_EQ( config->notifiees(), 0U );
}

TEST_F( VlanXlateReentrancy, AMemberThatLeavesDuringThePassIsNotVisited ) {
   onFirstVerdict( [ & ] { world.memberGone( "Ethernet2" ); } );
   world.translated( 10 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet2, PortChannel10) "
                                "-(Ethernet3, PortChannel10)" );
   world.notTranslated( 10 );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet3, PortChannel10)" );
}

TEST_F( VlanXlateReentrancy, AMemberThatComesDuringThePassIsDecidedOnce ) {
   onFirstVerdict( [ & ] { world.member( "Ethernet4" ).installed( "Ethernet4" ); } );
   world.translated( 10 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) +(Ethernet4, PortChannel10) "
                                "-(Ethernet2, PortChannel10) -(Ethernet3, PortChannel10)" );
}

TEST_F( VlanXlateReentrancy, TheMappingThatGoesDuringThePassCountsForTheRestOfIt ) {
   onFirstVerdict( [ & ] { world.notTranslated( 10 ); } );
   world.translated( 10 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) +(Ethernet1, PortChannel10)" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10) (Ethernet3, PortChannel10) "
                                        "(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateReentrancy, TheLagThatGoesDuringThePassDoesNotEndIt ) {
   onFirstVerdict( [ & ] { world.lagGone( "PortChannel10" ); } );
   world.translated( 10 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet2, PortChannel10) "
                                "-(Ethernet3, PortChannel10)" );
   EXPECT_EQ( watched( sm->initialMemberSm() ), "" );
}

TEST_F( VlanXlateReentrancy, TheSwitchingConfigurationThatGoesWhileItComesIsNotWatched ) {
   onFirstVerdict(
      [ & ] { world.bridgingConfig->switchIntfConfigDel( intf( "PortChannel10" ) ); } );
   const auto config = switchIntfConfig( "PortChannel10", true );
   world.bridgingConfig->switchIntfConfigIs( config );
   EXPECT_EQ( watched( sm->switchIntfConfigSm() ), "" );
   EXPECT_EQ( config->notifiees(), 0U );
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10) (Ethernet3, PortChannel10) "
                                        "(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateReentrancy, AnotherBridgingConfigDuringThePassIsTheOneThatIsFollowed ) {
   const auto other = Vex::make< Bridging::Config >();
   other->switchIntfConfigIs( switchIntfConfig( "PortChannel20", true ) );
   onFirstVerdict( [ & ] { sm->vexBridgingConfig()->notifierIs( other ); } );
   world.bridgingConfig->switchIntfConfigIs( switchIntfConfig( "PortChannel10", true ) );
   EXPECT_EQ( watched( sm->switchIntfConfigSm() ), "PortChannel20" );
   EXPECT_EQ( sm->bridgingConfig(), other );
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10) (Ethernet3, PortChannel10)" )
      << "Ethernet1 was decided by the old configuration";
}

TEST_F( VlanXlateReentrancy, WithoutBridgingConfigAfterThePassTheReactorsStayAsTheyAre ) {
   world.memberGone( "Ethernet2" ).memberGone( "Ethernet3" ); // the one verdict ends the pass
   onFirstVerdict( [ & ] { sm->vexBridgingConfig()->notifierIs( nullptr ); } );
   const auto before = sm->switchIntfConfigSm().get( intf( "PortChannel10" ) );
   world.bridgingConfig->switchIntfConfigIs( switchIntfConfig( "PortChannel10", true ) );
   EXPECT_EQ( sm->switchIntfConfigSm().get( intf( "PortChannel10" ) ), before );
   EXPECT_FALSE( before->markedForDeletion() );
}

TEST_F( VlanXlateReentrancy, TheInputEntryThatGoesWhileItAdmitsIsWithdrawn ) {
   world.translated( 10 );
   verdicts->take();
   onFirstVerdict( [ & ] { world.notInstalled( "Ethernet1" ); } );
   world.installed( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) -(Ethernet1, PortChannel10)" );
}

// ---- During the start: nobody has the interlock yet, but everybody has its inputs ---------------

struct VlanXlateReentrancyOfTheStart : VlanXlateInterlock {
   Vex::Ptr< ScriptedConsumer > consumer;
   void startWith( std::function< void() > onFirst ) {
      verdicts = VerdictLog::of( world.output );
      consumer = ScriptedConsumer::once( world.output, std::move( onFirst ) );
      sm = startVlanXlate( world );
   }
};

TEST_F( VlanXlateReentrancyOfTheStart, ALagThatComesIsWatchedOnce ) {
   startWith( [ & ] { world.lag( "PortChannel20", { "Ethernet5" } ); } );
   EXPECT_EQ( watched( sm->initialMemberSm() ), "PortChannel20 PortChannel10" );
   EXPECT_EQ( world.hwLagConfig->initialMember( intf( "PortChannel20" ) )->notifiees(), 1U );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateReentrancyOfTheStart, ALagThatGoesIsNotWatched ) {
   world.member( "Ethernet2" ).lag( "PortChannel20", { "Ethernet5" } );
   startWith( [ & ] { world.lagGone( "PortChannel20" ).lagGone( "PortChannel10" ); } );
   EXPECT_EQ( watched( sm->initialMemberSm() ), "" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10)" );
}

TEST_F( VlanXlateReentrancyOfTheStart, AConfigurationThatComesIsObeyedAndWatched ) {
   startWith( [ & ] { world.translated( 10 ); } );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) -(Ethernet1, PortChannel10)" );
   world.notTranslated( 10 );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateReentrancyOfTheStart, AMemberThatComesToTheLagThatIsDecidedIsNotHeard ) {
   startWith( [ & ] { world.member( "Ethernet2" ); } );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" );
   world.installed( "Ethernet2" );
   EXPECT_TRUE( world.admits( "Ethernet2" ) );
}

TEST_F( VlanXlateReentrancyOfTheStart, StaleEntriesMayGoWhileTheyAreDecided ) {
   world.left( "Ethernet7" ).left( "Ethernet8" ).left( "Ethernet9" );
   startWith(
      [ & ] { world.output->intfDel( TestSupport::entry( "Ethernet8", "PortChannel10" ) ); } );
   EXPECT_EQ( verdicts->take(), "-(Ethernet7, PortChannel10) -(Ethernet8, PortChannel10) "
                                "-(Ethernet9, PortChannel10) +(Ethernet1, PortChannel10)" );
}

} // namespace
} // namespace Velo
