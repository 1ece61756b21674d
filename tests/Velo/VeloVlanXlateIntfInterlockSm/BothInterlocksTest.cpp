// One member that two interlocks gate: the LAG code lets it join when both outputs have its entry.

#include "Velo/VeloIntfInterlock.h"
#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateSm.h"

#include <array>

namespace Velo {
namespace {

using TestSupport::entry;
using TestSupport::World;
using Output = Vex::Ptr< Interface::Interlock::IntfFeatureStatus >;

/// What the LAG code does: a member is in its LAG while every output has its entry.
class LagCode {
 public:
   LagCode( const Output & first, const Output & second ) : first_( first ), second_( second ) {
      const auto look = [ this ]( const TestSupport::IntfFeature & pair, bool /* admitted */ ) {
         const bool joined = first_->intfHas( pair ) && second_->intfHas( pair );
         if ( joined != joined_->intfHas( pair ) ) {
            changes.add( ( joined ? "joins " : "leaves " ) + pair.member.stringValue() );
         }
         joined ? joined_->intfIs( pair ) : joined_->intfDel( pair );
      };
      watchers_[ 0 ] = TestSupport::ScriptedConsumer::of( first, look );
      watchers_[ 1 ] = TestSupport::ScriptedConsumer::of( second, look );
   }

   TestSupport::Marks changes;

 private:
   Output first_;
   Output second_;
   Output joined_ = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   std::array< Vex::Ptr< TestSupport::ScriptedConsumer >, 2 > watchers_;
};

// The egress ACL is needed, and VLAN 10 translated.
struct BothInterlocks : testing::Test {
   TestSupport::TraceRecorder quiet{ "VeloMlagEgressAclIntfInterlockSm", 0 };
   World world;
   Output vlanInput = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   Output vlanOutput = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   LagCode lagCode{ world.output, vlanOutput };
   Vex::Ptr< InterlockModel::StateMachine > egressAcl;
   Vex::Ptr< InterlockModel::StateMachine > vlanXlate;

   void start() {
      world.translated( 10 );
      vlanXlate = vlanXlateIntfInterlockSmFactory( vlanInput, world.hwLagConfig,
                                                   world.bridgingConfig, vlanOutput );
   }
   void startWithDeprecated() {
      start();
      egressAcl = deprecatedMlagEgressAclIntfInterlockSmFactory(
         world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
   }
   void startWithController() {
      start();
      egressAcl = mlagEgressAclIntfInterlockControllerSmFactory(
         world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.response,
         world.request, world.scheduler, world.output );
   }
   Vex::String changes() { return lagCode.changes.take(); }
};

TEST_F( BothInterlocks, AMemberJoinsWhenTheLaterOfTheTwoAdmitsIt ) {
   startWithDeprecated();
   world.installed( "Ethernet1" );
   EXPECT_EQ( changes(), "" );
   vlanInput->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( changes(), "joins Ethernet1" );

   world.member( "Ethernet2" );
   vlanInput->intfIs( entry( "Ethernet2", "PortChannel10" ) );
   EXPECT_EQ( changes(), "" );
   world.installed( "Ethernet2" );
   EXPECT_EQ( changes(), "joins Ethernet2" );
}

TEST_F( BothInterlocks, AMemberLeavesWhenEitherOfTheTwoWithdrawsIt ) {
   startWithDeprecated();
   world.installed( "Ethernet1" );
   vlanInput->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   changes();
   vlanInput->intfDel( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( changes(), "leaves Ethernet1" );
   vlanInput->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( changes(), "joins Ethernet1" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( changes(), "leaves Ethernet1" );
   vlanInput->intfDel( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( changes(), "" );
}

TEST_F( BothInterlocks, AMemberThatLeavesItsLagIsWithdrawnByBoth ) {
   world.mlagState( Mlag::State::disabled );
   startWithDeprecated();
   vlanInput->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( changes(), "joins Ethernet1" );
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( changes(), "leaves Ethernet1" );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
   EXPECT_FALSE( vlanOutput->intfHas( entry( "Ethernet1", "PortChannel10" ) ) );
}

TEST_F( BothInterlocks, OneThatStopsGoesOnAdmittingWhomItAdmitted ) {
   startWithDeprecated();
   world.installed( "Ethernet1" );
   egressAcl.release();
   vlanInput->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( changes(), "joins Ethernet1" );
}

TEST_F( BothInterlocks, ThePeersAnswerAndTheTranslationAreBothWaitedFor ) {
   world.peerInterlock( true ).installed( "Ethernet1" );
   startWithController();
   vlanInput->intfIs( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( changes(), "" );
   world.answerRequest();
   EXPECT_EQ( changes(), "joins Ethernet1" );
   vlanInput->intfDel( entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_EQ( changes(), "leaves Ethernet1" );
}

TEST_F( BothInterlocks, ThePeersTimeOutDoesNotOverruleTheTranslation ) {
   world.peerInterlock( true );
   startWithController();
   world.pass( 0.2 );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   EXPECT_EQ( changes(), "" );
   world.notTranslated( 10 );
   EXPECT_EQ( changes(), "joins Ethernet1" );
}

} // namespace
} // namespace Velo
