// The verdicts of the VLAN-translation interlock.

#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateSm.h"

namespace Velo {
namespace {

using TestSupport::admitted;
using TestSupport::intf;
using TestSupport::VerdictLog;

struct VlanXlateVerdicts : VlanXlateInterlock {};

// ---- Whether the members must wait --------------------------------------------------------------

TEST_F( VlanXlateVerdicts, ALagWithoutSwitchingConfigurationNeedsNoProgramming ) {
   start();
   EXPECT_FALSE( sm->needsVlanXlateProgramming( intf( "PortChannel10" ) ) );
}

TEST_F( VlanXlateVerdicts, ALagWhoseConfigurationHasNoMappingsNeedsNoProgramming ) {
   world.switchIntfConfig();
   start();
   EXPECT_FALSE( sm->needsVlanXlateProgramming( intf( "PortChannel10" ) ) );
}

TEST_F( VlanXlateVerdicts, OneMappingInEitherDirectionNeedsProgramming ) {
   start();
   world.translated( 10 );
   EXPECT_TRUE( sm->needsVlanXlateProgramming( intf( "PortChannel10" ) ) );
   egressTranslated( world, 10 );
   EXPECT_TRUE( sm->needsVlanXlateProgramming( intf( "PortChannel10" ) ) );
   world.notTranslated( 10 );
   EXPECT_TRUE( sm->needsVlanXlateProgramming( intf( "PortChannel10" ) ) );
   egressNotTranslated( world, 10 );
   EXPECT_FALSE( sm->needsVlanXlateProgramming( intf( "PortChannel10" ) ) );
}

TEST_F( VlanXlateVerdicts, MappingsOfAMemberPortOrOfAnotherLagNeedNoProgramming ) {
   world.translated( 10, "Ethernet1" ).translated( 10, "PortChannel20" );
   start();
   EXPECT_FALSE( sm->needsVlanXlateProgramming( intf( "PortChannel10" ) ) );
   EXPECT_TRUE( sm->needsVlanXlateProgramming( intf( "PortChannel20" ) ) );
}

TEST_F( VlanXlateVerdicts, AMemberIsActiveWhereTheSetOfItsLagHasIt ) {
   world.lag( "PortChannel20", {} );
   start();
   EXPECT_TRUE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel10" ) ) );
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet2" ), intf( "PortChannel10" ) ) );
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel20" ) ) );
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel90" ) ) );
}

// ---- Verdicts -----------------------------------------------------------------------------------

TEST_F( VlanXlateVerdicts, WithoutTranslationEveryMemberIsAdmittedAtOnceWhateverTheInput ) {
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } ).installed( "Ethernet5" );
   world.switchIntfConfig( "PortChannel20" );
   start();
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10) (Ethernet5, PortChannel20) "
                                        "(Ethernet6, PortChannel20)" );
   world.installed( "Ethernet1" ).notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateVerdicts, WithIngressTranslationAMemberFollowsItsInputEntry ) {
   world.translated( 10 ).member( "Ethernet2" );
   start();
   EXPECT_EQ( admitted( world.output ), "" );
   world.installed( "Ethernet2" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
   world.notInstalled( "Ethernet2" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet2, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, WithEgressTranslationAMemberFollowsItsInputEntry ) {
   egressTranslated( world, 10 );
   start();
   EXPECT_EQ( admitted( world.output ), "" );
   world.installed( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, TheInputEntryOfAnotherLagDoesNotCount ) {
   world.translated( 10 );
   start();
   world.installed( "Ethernet1", "PortChannel20" ).installed( "PortChannel10", "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateVerdicts, TheFirstMappingWithdrawsTheMembersThatAreNotReady ) {
   world.member( "Ethernet2" ).member( "Ethernet3" ).installed( "Ethernet2" );
   start();
   world.translated( 10 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet3, PortChannel10)" );
   world.translated( 20 );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateVerdicts, TheLastMappingThatGoesAdmitsAllMembers ) {
   world.member( "Ethernet2" ).installed( "Ethernet2" ).translated( 10 ).translated( 20 );
   start();
   world.notTranslated( 10 );
   EXPECT_EQ( verdicts->take(), "" );
   world.notTranslated( 20 );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10) (Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, AnEgressMappingHoldsWhenTheLastIngressMappingGoes ) {
   world.translated( 10 );
   egressTranslated( world, 10 );
   start();
   world.notTranslated( 10 );
   EXPECT_EQ( verdicts->take(), "" );
   egressNotTranslated( world, 10 );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, AChangeOfOneLagsTranslationLeavesOtherLagsAlone ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5" } ).translated( 10 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
   EXPECT_FALSE( world.admits( "Ethernet5", "PortChannel20" ) );
}

TEST_F( VlanXlateVerdicts, ADeletedSwitchingConfigurationAdmitsTheMembersOfTheLag ) {
   world.translated( 10 );
   start();
   world.bridgingConfig->switchIntfConfigDel( intf( "PortChannel10" ) );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, ASwitchingConfigurationThatBringsMappingsWithdrawsTheMembers ) {
   start();
   world.bridgingConfig->switchIntfConfigIs( switchIntfConfig( "PortChannel10", true ) );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
   world.bridgingConfig->switchIntfConfigIs( switchIntfConfig( "PortChannel10", false ) );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, ANewMemberIsDecidedAtOnce ) {
   world.translated( 10 ).installed( "Ethernet2" );
   start();
   world.member( "Ethernet2" ).member( "Ethernet3" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
   world.notTranslated( 10 );
   verdicts->take();
   world.member( "Ethernet4" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet4, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, ARemovedMemberLosesItsEntryWhateverTheInput ) {
   world.translated( 10 ).installed( "Ethernet1" );
   start();
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, TheProgramTypeOfAMemberPlaysNoPart ) {
   start();
   world.member( "Ethernet2", "PortChannel10", TestSupport::World::PortProgType( 255 ) );
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
   world.member( "Ethernet2", "PortChannel10", TestSupport::World::PortProgType( 0 ) );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateVerdicts, AnInputEntryOfAStrangerRemovesItsOutputEntry ) {
   start();
   world.left( "Ethernet9" );
   verdicts->take();
   world.installed( "Ethernet9" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet9, PortChannel10)" );
   world.notInstalled( "Ethernet9" );
   EXPECT_EQ( verdicts->take(), "" );
}

// ---- What it does not look at until something else happens --------------------------------------

TEST_F( VlanXlateVerdicts, ARemovedLagKeepsTheEntriesOfItsMembers ) {
   start();
   world.lagGone( "PortChannel10" );
   world.translated( 10 ); // of an interface that is no LAG by now
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( VlanXlateVerdicts, AnInputChangeRemovesTheEntryOfARemovedLag ) {
   start();
   world.lagGone( "PortChannel10" ).installed( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, TheNextStartRemovesTheEntriesOfARemovedLag ) {
   start();
   world.lagGone( "PortChannel10" );
   sm = startVlanXlate( world );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, ALagThatComesBackFindsItsOldEntries ) {
   start();
   world.lagGone( "PortChannel10" ).translated( 10 ).lag( "PortChannel10", { "Ethernet1" } );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   world.translated( 20 );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, ALagThatComesWithMembersIsNotDecided ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateVerdicts, AMemberChangeDecidesOfANewLagThatMemberOnly ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } )
      .member( "Ethernet7", "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet7, PortChannel20)" );
}

TEST_F( VlanXlateVerdicts, AnInputChangeDecidesOfANewLagThatPairOnly ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } );
   world.installed( "Ethernet6", "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet6, PortChannel20)" );
}

TEST_F( VlanXlateVerdicts, ABridgingChangeDecidesOfANewLagEveryMember ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } );
   world.switchIntfConfig( "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet5, PortChannel20) +(Ethernet6, PortChannel20)" );
}

TEST_F( VlanXlateVerdicts, AReplacedInitialMemberIsNotDecided ) {
   start();
   world.lag( "PortChannel10", { "Ethernet2" } );
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" );
   world.switchIntfConfig(); // looks at the members that are there, not at those that were
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( VlanXlateVerdicts, TranslationOfAMemberPortChangesNothing ) {
   start();
   world.translated( 10, "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "" );
   world.notTranslated( 10, "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( VlanXlateVerdicts, WhatOthersDoToTheOutputStaysUntilThePairIsTouched ) {
   start();
   world.output->intfDel( TestSupport::entry( "Ethernet1", "PortChannel10" ) );
   world.left( "Ethernet9" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) +(Ethernet9, PortChannel10)" );
   world.installed( "Ethernet1" ).installed( "Ethernet9" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) -(Ethernet9, PortChannel10)" );
}

// ---- Start --------------------------------------------------------------------------------------

TEST_F( VlanXlateVerdicts, TheStartDecidesWhatAnEarlierOwnerLeftBeforeTheLags ) {
   world.translated( 10 ).member( "Ethernet2" ).installed( "Ethernet2" );
   world
      .left( "Ethernet9", "PortChannel90" ) // no such LAG any more
      .left( "Ethernet2" ) // rightly there
      .left( "Ethernet8" ) // no member any more
      .left( "Ethernet1" ); // not ready any more
   world.lag( "PortChannel20", { "Ethernet5" } );
   verdicts = VerdictLog::of( world.output );
   sm = startVlanXlate( world );
   EXPECT_EQ( verdicts->take(), "-(Ethernet9, PortChannel90) -(Ethernet8, PortChannel10) "
                                "-(Ethernet1, PortChannel10) +(Ethernet5, PortChannel20)" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10) (Ethernet5, PortChannel20)" );
}

TEST_F( VlanXlateVerdicts, TheStartDoesNotWalkTheInput ) {
   world.installed( "Ethernet9" ).installed( "Ethernet5", "PortChannel20" );
   sm = startVlanXlate( world );
   const Vex::String text = trace.take();
   EXPECT_EQ( text.find( "Ethernet9" ), Vex::String::npos );
   EXPECT_EQ( text.find( "PortChannel20" ), Vex::String::npos );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" );
}

TEST_F( VlanXlateVerdicts, TheStartOnAnEmptySwitchAdmitsNobody ) {
   world.lagGone( "PortChannel10" );
   start();
   EXPECT_EQ( admitted( world.output ), "" );
}

} // namespace
} // namespace Velo
