// How an egress-ACL interlock stops.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/BasicSm.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/World.h"

#include <gtest/gtest.h>
#include <vector>

namespace Velo {
namespace {

using Interface::LinkStatus;
using Mlag::State;
using TestSupport::admitted;
using TestSupport::intf;
using TestSupport::VerdictLog;
using TestSupport::World;

struct Teardown : testing::Test {
   World world;
   Vex::Ptr< Hardware::Lag::InitialMember > members =
      world.hwLagConfig->initialMember( intf( "PortChannel10" ) );

   std::vector< std::uint32_t > references() const {
      return { world.aclIntfFeatureStatus->referenceCount(),
               world.hwLagConfig->referenceCount(),
               world.mlagStatus->referenceCount(),
               world.peerLinkEntity()->referenceCount(),
               world.output->referenceCount(),
               members->referenceCount() };
   }
   std::vector< std::size_t > notifiees() const {
      return { world.aclIntfFeatureStatus->notifiees(),
               world.hwLagConfig->notifiees(),
               world.mlagStatus->notifiees(),
               world.peerLinkEntity()->notifiees(),
               world.output->notifiees(),
               members->notifiees() };
   }
   void changeEverything() {
      world.mlagState( State::disabled ).member( "Ethernet2" ).installed( "Ethernet1" );
      world.linkStatus( LinkStatus::down ).mlagIntfGone( "PortChannel10" ).noPeerLink();
      world.lag( "PortChannel20", { "Ethernet5" } ).lagGone( "PortChannel10" );
   }
};

TEST_F( Teardown, GivesBackEveryRegistrationAndReference ) {
   const auto before = references();
   auto sm = startBasic( world );
   EXPECT_EQ( notifiees(), ( std::vector< std::size_t >{ 1, 1, 1, 1, 0, 1 } ) );
   sm.release();
   EXPECT_EQ( notifiees(), ( std::vector< std::size_t >{ 0, 0, 0, 0, 0, 0 } ) );
   EXPECT_EQ( references(), before );
}

TEST_F( Teardown, LeavesTheOutputAsItIs ) {
   world.installed( "Ethernet1" );
   auto sm = startBasic( world );
   const auto verdicts = VerdictLog::of( world.output );
   sm.release();
   EXPECT_EQ( verdicts->take(), "" );
   changeEverything();
   EXPECT_EQ( verdicts->take(), "" );
   EXPECT_EQ( admitted( world.output ), "(Ethernet1, PortChannel10)" );
}

TEST_F( Teardown, LeavesReactorsThatSomebodyHoldsMute ) {
   auto sm = startBasic( world );
   const std::vector< Vex::Ptr< Vex::NotifieeBase > > held{
      sm->vexAclIntfFeatureStatus(), sm->vexHwLagConfig(), sm->vexMlagStatus(),
      sm->vexPeerLinkIntf(), sm->initialMemberSm().get( intf( "PortChannel10" ) ) };
   sm.release();
   for ( const auto & reactor : held ) {
      EXPECT_TRUE( reactor->markedForDeletion() );
      reactor->vexDoZombieReactors( false ); // not even as if alive
   }
   changeEverything();
   EXPECT_EQ( admitted( world.output ), "" );
}

TEST_F( Teardown, AsAZombieItDecidesNothing ) {
   const auto sm = startBasic( world );
   sm->vexDoZombieReactors( true );
   changeEverything();
   EXPECT_EQ( admitted( world.output ), "" );
}

TEST_F( Teardown, WithoutInputsItCanStillBeDropped ) {
   // Nothing to decide and nothing to read: the LAG configuration is given, and empty.
   auto sm = MlagEgressAclIntfInterlockSm::MlagEgressAclIntfInterlockSmIs(
      nullptr, Vex::make< Hardware::Lag::Config >(), nullptr, world.output );
   EXPECT_EQ( sm->mlagStatus(), nullptr );
   sm.release();
   EXPECT_EQ( sm, nullptr );
}

TEST_F( Teardown, ASecondInterlockTakesOverWhatTheFirstLeft ) {
   world.mlagState( State::disabled );
   auto first = startBasic( world );
   first.release();
   world.mlagState( State::primary );
   EXPECT_TRUE( world.admits( "Ethernet1" ) );
   const auto second = startBasic( world );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
}

} // namespace
} // namespace Velo
