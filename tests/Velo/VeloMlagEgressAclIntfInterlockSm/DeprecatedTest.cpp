// The verdicts of the deprecated egress-ACL interlock.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedSm.h"

#include <array>
#include <functional>

namespace Velo {
namespace {

using Interface::LinkStatus;
using Mlag::IntfState;
using Mlag::State;
using TestSupport::admitted;
using TestSupport::entry;
using TestSupport::intf;
using TestSupport::VerdictLog;

struct DeprecatedVerdicts : DeprecatedInterlock {
   bool needed() const { return sm->shouldInstallEgressAcl( intf( "PortChannel10" ) ); }
};

// ---- Whether the ACL is needed ------------------------------------------------------------------

TEST_F( DeprecatedVerdicts, NeedsTheAclOfAnMlagLagThatIsActiveOnThePeer ) {
   start();
   EXPECT_TRUE( needed() );
}

TEST_F( DeprecatedVerdicts, NeedsTheAclInTheMlagStates3And4Only ) {
   start();
   for ( unsigned state = 0; state < 256; ++state ) {
      world.mlagState( static_cast< State >( state ) );
      EXPECT_EQ( needed(), state == 3 || state == 4 ) << state;
   }
}

TEST_F( DeprecatedVerdicts, NeedsTheAclWhileThePeerLinkIsUpOnly ) {
   start();
   for ( unsigned status = 0; status < 256; ++status ) {
      world.linkStatus( static_cast< LinkStatus >( status ) );
      EXPECT_EQ( needed(), status == 2 ) << status;
   }
   world.noPeerLink();
   EXPECT_FALSE( needed() );
   world.peerLink( "", LinkStatus::up );
   EXPECT_FALSE( needed() );
}

TEST_F( DeprecatedVerdicts, NeedsTheAclWhereThePeersStateIs2Only ) {
   start();
   for ( unsigned state = 0; state < 256; ++state ) {
      world.mlagIntf( "PortChannel10", static_cast< IntfState >( state ) );
      EXPECT_EQ( needed(), state == 2 ) << state;
   }
   world.mlagStatus->intfStatusIs( intf( "PortChannel10" ), {} );
   EXPECT_FALSE( needed() );
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_FALSE( needed() );
}

TEST_F( DeprecatedVerdicts, AnMlagInterfaceIsKnownByAnyOfItsFields ) {
   start();
   world.mlagStatus->intfStatusIs( intf( "PortChannel10" ),
                                   { "", IntfState::unknown, IntfState::active } );
   EXPECT_TRUE( needed() );
   world.mlagStatus->intfStatusIs( intf( "PortChannel10" ),
                                   { "", IntfState::active, IntfState::unknown } );
   EXPECT_FALSE( needed() );
}

TEST_F( DeprecatedVerdicts, AMemberIsActiveWhereTheSetOfItsLagHasIt ) {
   world.lag( "PortChannel20", {} );
   start();
   EXPECT_TRUE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel10" ) ) );
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet2" ), intf( "PortChannel10" ) ) );
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel20" ) ) );
   EXPECT_FALSE( sm->lagMemberActive( intf( "Ethernet1" ), intf( "PortChannel90" ) ) );
}

// ---- Verdicts -----------------------------------------------------------------------------------

TEST_F( DeprecatedVerdicts, WhileMlagIsInactiveEveryMemberIsAdmittedWhateverTheInput ) {
   world.mlagState( State::inactive ).lag( "PortChannel20", { "Ethernet5", "Ethernet6" } );
   world.mlagIntf( "PortChannel20" ).installed( "Ethernet5", "PortChannel20" );
   start();
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10) (Ethernet5, PortChannel20) "
                                        "(Ethernet6, PortChannel20)" );
   world.installed( "Ethernet1" ).notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( DeprecatedVerdicts, WithoutPeerLinkEveryMemberIsAdmitted ) {
   world.noPeerLink();
   start();
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( DeprecatedVerdicts, WithAPeerLinkWithoutIdentifierEveryMemberIsAdmitted ) {
   world.peerLink( "" );
   start();
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( DeprecatedVerdicts, WithAPeerLinkThatIsDownEveryMemberIsAdmitted ) {
   world.peerLink( "Port-Channel1000", LinkStatus::down );
   start();
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( DeprecatedVerdicts, TheMembersOfALagThatIsNoMlagInterfaceAreAdmitted ) {
   world.mlagIntfGone( "PortChannel10" );
   start();
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( DeprecatedVerdicts, TheMembersOfALagThatIsNotActiveOnThePeerAreAdmitted ) {
   world.mlagIntf( "PortChannel10", IntfState::inactive );
   start();
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( DeprecatedVerdicts, WhereTheAclIsNeededAMemberFollowsItsInputEntry ) {
   world.member( "Ethernet2" );
   start();
   EXPECT_EQ( admitted( world.output ), "" );
   world.installed( "Ethernet2" ).installed( "Ethernet1", "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
   world.notInstalled( "Ethernet2" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet2, PortChannel10)" );
}

TEST_F( DeprecatedVerdicts, ARemovedMemberLosesItsEntryWhateverTheAcl ) {
   world.installed( "Ethernet1" );
   start();
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( DeprecatedVerdicts, ANewMemberIsDecidedAtOnce ) {
   world.installed( "Ethernet2" );
   start();
   world.member( "Ethernet2" ).member( "Ethernet3" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
}

TEST_F( DeprecatedVerdicts, ThePeerLinkThatGoesDownAdmitsEveryMember ) {
   world.member( "Ethernet2" );
   start();
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10) +(Ethernet2, PortChannel10)" );
   world.linkStatus( LinkStatus::up );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10) -(Ethernet2, PortChannel10)" );
}

TEST_F( DeprecatedVerdicts, ThePeerLinkThatGoesAndComesIsObeyed ) {
   start();
   world.noPeerLink();
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.peerLink( "Port-Channel2000" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
   world.linkStatus( LinkStatus::down );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( DeprecatedVerdicts, TheMlagStateIsObeyed ) {
   start();
   world.mlagState( State::connecting );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.mlagState( State::secondary );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( DeprecatedVerdicts, TheMlagStatusOfALagDecidesThatLagOnly ) {
   world.lag( "PortChannel20", { "Ethernet5" } ).mlagIntf( "PortChannel20" );
   start();
   world.mlagIntf( "PortChannel10", IntfState::inactive );
   EXPECT_EQ( verdicts->take(), "+(Ethernet1, PortChannel10)" );
   world.mlagIntfGone( "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet5, PortChannel20)" );
}

// ---- What it does not look at until something else happens --------------------------------------

TEST_F( DeprecatedVerdicts, ALagThatComesWithMembersIsNotDecided ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } );
   EXPECT_EQ( verdicts->take(), "" );
}

TEST_F( DeprecatedVerdicts, AMemberChangeDecidesOfANewLagThatMemberOnly ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } )
      .member( "Ethernet7", "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet7, PortChannel20)" );
}

TEST_F( DeprecatedVerdicts, AnInputChangeDecidesOfANewLagThatPairOnly ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } );
   world.installed( "Ethernet6", "PortChannel20" );
   EXPECT_EQ( verdicts->take(), "+(Ethernet6, PortChannel20)" );
}

TEST_F( DeprecatedVerdicts, AnMlagChangeDecidesOfANewLagEveryMember ) {
   using Change = std::function< void( TestSupport::World & ) >;
   const std::array changes{
      Change( []( auto & w ) { w.mlagState( State::secondary ); } ),
      Change( []( auto & w ) { w.peerLink( "Port-Channel2000" ); } ),
      Change( []( auto & w ) { w.linkStatus( LinkStatus::down ); } ),
      Change( []( auto & w ) { w.mlagIntf( "PortChannel20", IntfState::inactive ); } ),
   };
   for ( const Change & change : changes ) {
      TestSupport::World other;
      const auto running = startDeprecated( other );
      other.lag( "PortChannel20", { "Ethernet5", "Ethernet6" } );
      EXPECT_EQ( admitted( other.output ), "" );
      change( other );
      EXPECT_TRUE( other.admits( "Ethernet5", "PortChannel20" ) );
      EXPECT_TRUE( other.admits( "Ethernet6", "PortChannel20" ) );
   }
}

TEST_F( DeprecatedVerdicts, ARemovedLagKeepsItsEntriesThroughEveryChangeOfMlag ) {
   world.installed( "Ethernet1" );
   start();
   world.lagGone( "PortChannel10" ).mlagState( State::disabled ).mlagIntfGone( "PortChannel10" );
   world.linkStatus( LinkStatus::down ).noPeerLink();
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

TEST_F( DeprecatedVerdicts, AnInputChangeRemovesTheEntryOfARemovedLag ) {
   world.installed( "Ethernet1" );
   start();
   world.lagGone( "PortChannel10" ).notInstalled( "Ethernet1" );
   EXPECT_EQ( verdicts->take(), "-(Ethernet1, PortChannel10)" );
}

TEST_F( DeprecatedVerdicts, AReplacedInitialMemberIsNotDecided ) {
   world.installed( "Ethernet1" ).installed( "Ethernet2" );
   start();
   world.lag( "PortChannel10", { "Ethernet2" } );
   EXPECT_EQ( verdicts->take(), "" );
   world.mlagState( State::secondary ); // looks at the members that are there
   EXPECT_EQ( verdicts->take(), "+(Ethernet2, PortChannel10)" );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
}

// ---- Start --------------------------------------------------------------------------------------

TEST_F( DeprecatedVerdicts, TheStartDecidesWhatAnEarlierOwnerLeftBeforeTheLags ) {
   world.member( "Ethernet2" ).installed( "Ethernet2" );
   world
      .left( "Ethernet9", "PortChannel90" ) // no such LAG any more
      .left( "Ethernet2" ) // rightly there
      .left( "Ethernet8" ) // no member any more
      .left( "Ethernet1" ); // its ACL has gone
   world.lag( "PortChannel20", { "Ethernet5" } );
   verdicts = VerdictLog::of( world.output );
   sm = startDeprecated( world );
   EXPECT_EQ( verdicts->take(), "-(Ethernet9, PortChannel90) -(Ethernet8, PortChannel10) "
                                "-(Ethernet1, PortChannel10) +(Ethernet5, PortChannel20)" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet2, PortChannel10) (Ethernet5, PortChannel20)" );
}

TEST_F( DeprecatedVerdicts, ADecisionMadeAgainChangesNothing ) {
   world.installed( "Ethernet1" );
   start();
   for ( int again = 0; again < 3; ++again ) {
      sm->handleMember( intf( "Ethernet1" ), intf( "PortChannel10" ) );
      sm->handleMember( intf( "Ethernet9" ), intf( "PortChannel10" ) );
      sm->handleInitialized();
   }
   EXPECT_EQ( verdicts->take(), "" );
}

} // namespace
} // namespace Velo
