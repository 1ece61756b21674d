// A peer interlock that is retired, by whoever hears of a request, while one of its handlers is
// under way, or that is called afterwards: it leaves requests, link states, deadlines and output
// alone.

#include "interlock-model/Mlag/AclInstallRequest.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Type.h"
#include "tests/support/Names.h"
#include "tests/support/PeerWorld.h"

#include <gtest/gtest.h>

namespace Velo {
namespace {

using TestSupport::intf;
using TestSupport::PeerSm;
using TestSupport::requestOf;
using TestSupport::startPeer;
using TestSupport::stateOf;
using TestSupport::timersOf;
using TestSupport::World;

/// Retires the interlock at the first change of a request.
class Retirer final : public Vex::ConstNotifiee< Mlag::AclInstallRequest > {
 public:
   explicit Retirer( const Vex::Ptr< PeerSm > & sm ) : sm_( sm ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Retirer" };
      return type;
   }
   void onAttribute( Attribute /* installRequest */, const Nodo::IntfId & /* lag */ ) override {
      sm_->vexDoZombieReactors( true );
   }

 private:
   Vex::Ptr< PeerSm > sm_;
};

struct Retired : testing::Test {
   World world;
   Vex::Ptr< PeerSm > sm = startPeer( world );

   void retireAtTheNextRequest() {
      retirer = Vex::make< Retirer >( sm );
      retirer->notifierIs( world.request );
   }

   Vex::Ptr< Retirer > retirer;
};

TEST_F( Retired, AsksNothingMore ) {
   sm->vexDoZombieReactors( true );
   world.request->installRequestDel( intf( "PortChannel10" ) );
   sm->handlePeerInterlockLag( intf( "PortChannel10" ) );
   EXPECT_EQ( requestOf( world ), "none" );
}

TEST_F( Retired, ActsOnNoAnswerMore ) {
   sm->vexDoZombieReactors( true );
   world.answerRequest();
   sm->handlePeerResponse( intf( "PortChannel10" ) );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   world.answerGone();
   sm->linkStateIs( intf( "PortChannel10" ), LinkState::linkUp );
   sm->handlePeerResponse( intf( "PortChannel10" ) );
   EXPECT_EQ( stateOf( *sm ), "linkUp" );
}

TEST_F( Retired, WhileItAsksStoresNoStateAndDecidesNobody ) {
   retireAtTheNextRequest();
   world.lag( "PortChannel20", {} )
      .mlagIntf( "PortChannel20" )
      .member( "Ethernet5", "PortChannel20" );
   EXPECT_EQ( requestOf( world, "PortChannel20" ), "3" );
   EXPECT_EQ( stateOf( *sm, "PortChannel20" ), "linkDown" ); // as before it had members
   EXPECT_EQ( timersOf( *sm ), "PortChannel10 0.100000 | PortChannel10 0.100000" );
}

TEST_F( Retired, WhileItRevokesTheRequestOfALagThatWentDownKeepsItsState ) {
   retireAtTheNextRequest();
   world.memberGone( "Ethernet1" ).memberGone( "Ethernet2" );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
}

TEST_F( Retired, WhileItRevokesTheRequestOfALagThatLeftMlagKeepsItsState ) {
   retireAtTheNextRequest();
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( requestOf( world ), "none" );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   EXPECT_FALSE( world.admits( "Ethernet1" ) );
}

} // namespace
} // namespace Velo
