// What each statement does to the entities of a switch.

#include "replay/Switch.h"

#include "replay/Parser.h"
#include "replay/ScenarioError.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Hardware::Lag::PortProgType;
using Nodo::IntfId;
using Replay::Interlock;
using Replay::Pair;

const IntfId ethernet1{ "Ethernet1" };
const IntfId ethernet2{ "Ethernet2" };
const IntfId po10{ "PortChannel10" };
const Pair pair{ ethernet1, po10 };

class Deaf final : public Replay::SwitchEvents {
 public:
   void verdict( Interlock, const Pair &, bool ) override {}
   void request( IntfId, std::optional< Replay::Token > ) override {}
   void response( IntfId, std::optional< Replay::Token > ) override {}
};

class SwitchTest : public ::testing::Test {
 protected:
   // Statements about time and expects are none of a switch's business.
   void apply( std::string_view text ) { applyTo( device_, text ); }
   static void applyTo( Replay::Switch & device, std::string_view text ) {
      for ( const Replay::Step & step : Replay::parseScenario( text ).steps ) {
         std::visit(
            [ &device ]( const auto & statement ) {
               if constexpr ( requires { device.apply( statement ); } ) {
                  device.apply( statement );
               } else {
                  FAIL() << "not a statement for a switch";
               }
            },
            step.statement );
      }
   }
   std::string errorOf( std::string_view text ) {
      try {
         apply( text );
      } catch ( const Replay::StatementError & error ) {
         return error.what();
      }
      return "no error";
   }

   const Replay::Entities & entities() const { return device_.entities(); }
   Vex::Ptr< Hardware::Lag::InitialMember > initialMember() const {
      return entities().hwLagConfig->initialMember( po10 );
   }
   std::vector< IntfId > members() const {
      std::vector< IntfId > all;
      for ( const IntfId member : initialMember()->member().keys() ) {
         all.push_back( member );
      }
      return all;
   }

   Deaf deaf_;
   Vex::Ptr< Kel::TaskScheduler > scheduler_ = Vex::make< Kel::TaskScheduler >();
   Replay::Switch device_{ scheduler_, deaf_ };
};

TEST_F( SwitchTest, LagMakesAnInitialMemberWithItsMembersOfTypeZero ) {
   apply( "lag PortChannel10 Ethernet2 Ethernet1" );
   EXPECT_EQ( members(), ( std::vector{ ethernet2, ethernet1 } ) );
   EXPECT_EQ( *initialMember()->member().find( ethernet1 ), PortProgType( 0 ) );
   EXPECT_EQ( initialMember()->key(), po10 );
}

TEST_F( SwitchTest, LagReplacesTheInitialMemberThatWasThere ) {
   apply( "lag PortChannel10 Ethernet1" );
   const auto before = initialMember();
   apply( "lag PortChannel10 Ethernet2" );
   EXPECT_NE( initialMember(), before );
   EXPECT_EQ( members(), std::vector{ ethernet2 } );
   EXPECT_TRUE( before->memberHas( ethernet1 ) );
}

TEST_F( SwitchTest, NoLagWithdrawsTheInitialMember ) {
   apply( "lag PortChannel10\nno lag PortChannel10\nno lag PortChannel10" );
   EXPECT_FALSE( initialMember() );
}

TEST_F( SwitchTest, MemberEntersWithItsTypeAndChangesIt ) {
   apply( "lag PortChannel10\nmember PortChannel10 Ethernet1 7" );
   EXPECT_EQ( *initialMember()->member().find( ethernet1 ), PortProgType( 7 ) );
   apply( "member PortChannel10 Ethernet1" );
   EXPECT_EQ( *initialMember()->member().find( ethernet1 ), PortProgType( 0 ) );
}

TEST_F( SwitchTest, MemberOfALagWithoutInitialMemberIsAnError ) {
   EXPECT_EQ( errorOf( "member PortChannel10 Ethernet1" ),
              "'PortChannel10' has no InitialMember; wanted: 'lag' for it before" );
   EXPECT_FALSE( initialMember() );
}

TEST_F( SwitchTest, NoMemberTakesThePortOutAndMindsNothingElse ) {
   apply( "no member PortChannel10 Ethernet1" ); // no InitialMember at all
   apply( "lag PortChannel10 Ethernet1 Ethernet2\n"
          "no member PortChannel10 Ethernet1\n"
          "no member PortChannel10 Ethernet1" );
   EXPECT_EQ( members(), std::vector{ ethernet2 } );
}

TEST_F( SwitchTest, AclAndVlanReadyChangeTheirOwnInput ) {
   apply( "acl Ethernet1 PortChannel10" );
   EXPECT_TRUE( entities().aclInput->intfHas( pair ) );
   EXPECT_TRUE( entities().vlanInput->intf().empty() );
   apply( "no acl Ethernet1 PortChannel10\nno acl Ethernet1 PortChannel10" );
   EXPECT_FALSE( entities().aclInput->intfHas( pair ) );
   apply( "vlan-ready Ethernet1 PortChannel10" );
   EXPECT_TRUE( entities().vlanInput->intfHas( pair ) );
   EXPECT_TRUE( entities().aclInput->intf().empty() );
   apply( "no vlan-ready Ethernet1 PortChannel10" );
   EXPECT_FALSE( entities().vlanInput->intfHas( pair ) );
}

TEST_F( SwitchTest, OutputChangesTheOutputThatItNames ) {
   apply( "output egress-acl Ethernet1 PortChannel10" );
   EXPECT_TRUE( entities().egressAclOutput->intfHas( pair ) );
   EXPECT_TRUE( entities().vlanOutput->intf().empty() );
   apply( "no output egress-acl Ethernet1 PortChannel10\n"
          "output vlan-xlate Ethernet1 PortChannel10" );
   EXPECT_TRUE( entities().egressAclOutput->intf().empty() );
   EXPECT_TRUE( entities().vlanOutput->intfHas( pair ) );
   apply( "no output vlan-xlate Ethernet1 PortChannel10" );
   EXPECT_TRUE( entities().vlanOutput->intf().empty() );
}

TEST_F( SwitchTest, MlagStateStartsAtZero ) {
   EXPECT_EQ( entities().mlagStatus->mlagState(), Mlag::State( 0 ) );
   apply( "mlag state 255" );
   EXPECT_EQ( entities().mlagStatus->mlagState(), Mlag::State( 255 ) );
}

TEST_F( SwitchTest, PeerInterlockStartsOff ) {
   EXPECT_FALSE( entities().mlagStatus->peerInterlock() );
   apply( "mlag peer-interlock on" );
   EXPECT_TRUE( entities().mlagStatus->peerInterlock() );
   apply( "mlag peer-interlock off" );
   EXPECT_FALSE( entities().mlagStatus->peerInterlock() );
}

TEST_F( SwitchTest, PeerLinkAndLinkMeanTheSameEntityWhicheverComesFirst ) {
   apply( "mlag peer-link Ethernet1" );
   const auto peerLink = entities().mlagStatus->peerLink();
   ASSERT_TRUE( peerLink );
   EXPECT_EQ( peerLink->intfId(), ethernet1 );
   EXPECT_EQ( peerLink->linkStatus(), Interface::LinkStatus( 0 ) );
   apply( "link Ethernet1 2\nlink Ethernet2 7\nmlag peer-link Ethernet2\n" );
   EXPECT_EQ( peerLink->linkStatus(), Interface::LinkStatus( 2 ) );
   EXPECT_EQ( entities().mlagStatus->peerLink()->linkStatus(), Interface::LinkStatus( 7 ) );
   apply( "mlag peer-link Ethernet1" );
   EXPECT_EQ( entities().mlagStatus->peerLink(), peerLink );
}

TEST_F( SwitchTest, TheEmptyNameHasALinkOfItsOwn ) {
   apply( "link \"\" 2\nmlag peer-link \"\"" );
   ASSERT_TRUE( entities().mlagStatus->peerLink() );
   EXPECT_EQ( entities().mlagStatus->peerLink()->intfId(), IntfId() );
   EXPECT_EQ( entities().mlagStatus->peerLink()->linkStatus(), Interface::LinkStatus( 2 ) );
}

TEST_F( SwitchTest, NoPeerLinkLeavesNone ) {
   apply( "mlag peer-link Ethernet1\nno mlag peer-link" );
   EXPECT_FALSE( entities().mlagStatus->peerLink() );
}

TEST_F( SwitchTest, MlagIntfSetsTextAndBothStates ) {
   apply( "mlag intf PortChannel10 1 2 west" );
   const Mlag::IntfStatus status = entities().mlagStatus->intfStatus( po10 );
   EXPECT_EQ( status.text, "west" );
   EXPECT_EQ( status.localState, Mlag::IntfState( 1 ) );
   EXPECT_EQ( status.peerState, Mlag::IntfState( 2 ) );
   apply( "no mlag intf PortChannel10" );
   EXPECT_FALSE( entities().mlagStatus->intfStatusHas( po10 ) );
}

TEST_F( SwitchTest, MlagIntfOfZerosIsAnEntryThatEqualsTheDefault ) {
   apply( "mlag intf PortChannel10 0 0" );
   EXPECT_TRUE( entities().mlagStatus->intfStatusHas( po10 ) );
   EXPECT_FALSE( static_cast< bool >( entities().mlagStatus->intfStatus( po10 ) ) );
}

TEST_F( SwitchTest, RequestAndResponseAreWrittenAndTakenBack ) {
   apply( "request PortChannel10 7\nresponse PortChannel10 0" );
   EXPECT_EQ( entities().aclRequestToPeer->installRequest( po10 ), 7U );
   EXPECT_TRUE( entities().aclResponseFromPeer->installResponse().has( po10 ) );
   apply( "no request PortChannel10\nno response PortChannel10" );
   EXPECT_TRUE( entities().aclRequestToPeer->installRequest().empty() );
   EXPECT_TRUE( entities().aclResponseFromPeer->installResponse().empty() );
}

TEST_F( SwitchTest, SwitchportReplacesTheConfigurationThatWasThere ) {
   apply( "switchport PortChannel10\nvlan-xlate PortChannel10 ingress 1 2" );
   const auto before = entities().bridgingConfig->switchIntfConfig( po10 );
   EXPECT_EQ( before->ingressVlanXlate().size(), 1U );
   apply( "switchport PortChannel10" );
   EXPECT_NE( entities().bridgingConfig->switchIntfConfig( po10 ), before );
   EXPECT_TRUE( entities().bridgingConfig->switchIntfConfig( po10 )->ingressVlanXlate().empty() );
   apply( "no switchport PortChannel10\nno switchport PortChannel10" );
   EXPECT_FALSE( entities().bridgingConfig->switchIntfConfig( po10 ) );
}

TEST_F( SwitchTest, VlanXlateChangesTheMappingsOfItsDirection ) {
   using Bridging::VlanId;
   apply( "switchport PortChannel10\n"
          "vlan-xlate PortChannel10 ingress 10 20\n"
          "vlan-xlate PortChannel10 egress 20 10\n"
          "vlan-xlate PortChannel10 ingress 10 30" );
   const auto config = entities().bridgingConfig->switchIntfConfig( po10 );
   EXPECT_EQ( *config->ingressVlanXlate().find( VlanId( 10 ) ), VlanId( 30 ) );
   EXPECT_EQ( *config->egressVlanXlate().find( VlanId( 20 ) ), VlanId( 10 ) );
   apply( "no vlan-xlate PortChannel10 ingress 10" );
   EXPECT_TRUE( config->ingressVlanXlate().empty() );
   EXPECT_EQ( config->egressVlanXlate().size(), 1U );
   apply( "no vlan-xlate PortChannel10 egress 20\nno vlan-xlate PortChannel10 egress 20" );
   EXPECT_TRUE( config->egressVlanXlate().empty() );
}

TEST_F( SwitchTest, VlanXlateWithoutConfigurationIsAnErrorAndTakingBackIsNone ) {
   EXPECT_EQ( errorOf( "vlan-xlate PortChannel10 ingress 1 2" ),
              "'PortChannel10' has no SwitchIntfConfig; wanted: 'switchport' for it before" );
   EXPECT_EQ( errorOf( "no vlan-xlate PortChannel10 ingress 1" ), "no error" );
}

TEST_F( SwitchTest, MembershipAloneDecidesWhileNoInterlockRuns ) {
   apply( "lag PortChannel10 Ethernet1" );
   EXPECT_TRUE( device_.isJoined( pair ) );
   EXPECT_FALSE( device_.isJoined( { ethernet2, po10 } ) );
   EXPECT_FALSE( device_.isJoined( { po10, ethernet1 } ) );
}

TEST_F( SwitchTest, ARunningInterlockHoldsWhatItDoesNotAdmit ) {
   apply(
      "mlag state 3\nlink Ethernet49 2\nmlag peer-link Ethernet49\nmlag intf PortChannel10 1 2\n"
      "lag PortChannel10 Ethernet1\nstart basic" );
   EXPECT_TRUE( device_.isHeldBy( Interlock::egressAcl, pair ) );
   EXPECT_FALSE( device_.isHeldBy( Interlock::vlanXlate, pair ) );
   EXPECT_FALSE( device_.isJoined( pair ) );
   apply( "acl Ethernet1 PortChannel10" );
   EXPECT_TRUE( device_.isJoined( pair ) );
   apply( "no acl Ethernet1 PortChannel10\nstop egress-acl" );
   EXPECT_TRUE( device_.isJoined( pair ) );
}

TEST_F( SwitchTest, AnAdmittedPortThatIsNoMemberIsNotJoined ) {
   apply( "output egress-acl Ethernet1 PortChannel10" );
   EXPECT_FALSE( device_.isJoined( pair ) );
}

TEST_F( SwitchTest, TwoSwitchesOnOneSchedulerShareNothing ) {
   Replay::Switch other( scheduler_, deaf_ );
   apply( "lag PortChannel10 Ethernet1\nstart basic" );
   applyTo( other, "start basic" );
   EXPECT_TRUE( entities().egressAclOutput->intfHas( pair ) );
   EXPECT_TRUE( other.entities().egressAclOutput->intf().empty() );
}

} // namespace
