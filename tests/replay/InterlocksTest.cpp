#include "replay/Interlocks.h"

#include "replay/Entities.h"
#include "replay/ScenarioError.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

namespace {

using Replay::Interlock;

const Replay::Machine & machine( std::string_view name ) {
   return *std::ranges::find( Replay::machines(), name, &Replay::Machine::name );
}

class InterlocksTest : public ::testing::Test {
 protected:
   std::string startError( const Replay::Machine & started ) {
      try {
         interlocks_.start( started, entities_ );
      } catch ( const Replay::StatementError & error ) {
         return error.what();
      }
      return "no error";
   }
   std::string stopError( Interlock interlock ) {
      try {
         interlocks_.stop( interlock );
      } catch ( const Replay::StatementError & error ) {
         return error.what();
      }
      return "no error";
   }

   Replay::Entities entities_{ Vex::make< Kel::TaskScheduler >() };
   Replay::Interlocks interlocks_;
};

TEST_F( InterlocksTest, EachMachineStarts ) {
   for ( const Replay::Machine & each : Replay::machines() ) {
      Replay::Interlocks interlocks;
      interlocks.start( each, entities_ );
      EXPECT_TRUE( interlocks.runs( each.interlock ) ) << each.name;
   }
}

TEST_F( InterlocksTest, OneOfAKindRunsAtATime ) {
   EXPECT_FALSE( interlocks_.runs( Interlock::egressAcl ) );
   interlocks_.start( machine( "basic" ), entities_ );
   EXPECT_TRUE( interlocks_.runs( Interlock::egressAcl ) );
   EXPECT_FALSE( interlocks_.runs( Interlock::vlanXlate ) );
   EXPECT_EQ(
      startError( machine( "basic" ) ),
      "'basic' cannot start: the egress-acl interlock runs already; wanted: 'stop egress-acl' "
      "before" );
}

TEST_F( InterlocksTest, StopDropsTheInterlockSoThatNothingIsDecidedAnyMore ) {
   interlocks_.start( machine( "basic" ), entities_ );
   interlocks_.stop( Interlock::egressAcl );
   EXPECT_FALSE( interlocks_.runs( Interlock::egressAcl ) );
   auto lag = Vex::make< Hardware::Lag::InitialMember >( Nodo::IntfId( "PortChannel10" ) );
   lag->memberIs( Nodo::IntfId( "Ethernet1" ), Hardware::Lag::PortProgType( 0 ) );
   entities_.hwLagConfig->initialMemberIs( lag );
   EXPECT_TRUE( entities_.egressAclOutput->intf().empty() );
   EXPECT_EQ( startError( machine( "basic" ) ), "no error" );
}

TEST_F( InterlocksTest, StopOfWhatDoesNotRunIsAnError ) {
   EXPECT_EQ( stopError( Interlock::egressAcl ),
              "'egress-acl' does not run; wanted: 'start controller|basic|deprecated' before" );
   EXPECT_EQ( stopError( Interlock::vlanXlate ),
              "'vlan-xlate' does not run; wanted: 'start vlan-xlate' before" );
}

} // namespace
