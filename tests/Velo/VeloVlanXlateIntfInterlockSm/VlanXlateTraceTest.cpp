// What the VLAN-translation interlock traces, word for word: to the text trace only. The blank
// before some colons and "memeber" are as they should be.

#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateSm.h"
#include "tests/support/RingRecorder.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace Velo {
namespace {

using TestSupport::intf;

struct VlanXlateTrace : VlanXlateInterlock {
   TestSupport::RingRecorder ring;

   ~VlanXlateTrace() override { EXPECT_EQ( ring.take(), "" ); }

   Vex::String ofMember( const Vex::String & member = "Ethernet1" ) {
      start();
      sm->handleMember( intf( member ), intf( "PortChannel10" ) );
      return trace.take();
   }
};

const Vex::String asked1 =
   "0 lagMemberActive: lagMemberActive memberIntf: Ethernet1 lag: PortChannel10\n";
const Vex::String active = "3 lagMemberActive: lagMemberActive member is active\n";
const Vex::String notActive = "2 lagMemberActive: lagMemberActive member isn't active\n";
const Vex::String update1 =
   "0 updateIntfFeature: updateIntfFeature memberIntf: Ethernet1 lag: PortChannel10\n"
   "3 updateIntfFeature: lag member is active\n"
   "0 needsVlanXlateProgramming: needsVlanXlateProgramming lag: PortChannel10\n";
const Vex::String notNecessary =
   "3 updateIntfFeature: vlan translation programming is not necessary\n";
const Vex::String necessary = "3 updateIntfFeature: vlan translation programming is necessary\n";
const Vex::String inInput = "3 updateIntfFeature: lag and member are in input IntfFeatureStatus\n";
const Vex::String notInInput =
   "3 updateIntfFeature: lag and member are not in input IntfFeatureStatus\n";
const Vex::String member1 =
   "0 handleMember: handleMember memberIntf: Ethernet1 lag: PortChannel10\n" + asked1 + active +
   update1;

TEST_F( VlanXlateTrace, OfAMemberThatNeedsNoProgramming ) {
   EXPECT_EQ( ofMember(), member1 + notNecessary );
   world.switchIntfConfig();
   EXPECT_EQ( ofMember(), member1 + notNecessary );
}

TEST_F( VlanXlateTrace, OfAMemberThatIsReady ) {
   world.translated( 10 ).installed( "Ethernet1" );
   EXPECT_EQ( ofMember(), member1 + necessary + inInput );
}

TEST_F( VlanXlateTrace, OfAMemberThatIsNotReady ) {
   egressTranslated( world, 10 );
   EXPECT_EQ( ofMember(), member1 + necessary + notInInput );
}

TEST_F( VlanXlateTrace, OfAPortThatIsNoMember ) {
   EXPECT_EQ( ofMember( "Ethernet2" ),
              "0 handleMember: handleMember memberIntf: Ethernet2 lag: PortChannel10\n"
              "0 lagMemberActive: lagMemberActive memberIntf: Ethernet2 lag: PortChannel10\n" +
                 notActive +
                 "0 updateIntfFeature: updateIntfFeature memberIntf: Ethernet2 lag: PortChannel10\n"
                 "3 updateIntfFeature: lag memeber is not active\n" );
}

TEST_F( VlanXlateTrace, OfAMemberOfALagThatIsThereNoMore ) {
   world.lagGone( "PortChannel10" );
   EXPECT_EQ( ofMember(),
              "0 handleMember: handleMember memberIntf: Ethernet1 lag: PortChannel10\n" + asked1 +
                 notActive +
                 "0 updateIntfFeature: updateIntfFeature memberIntf: Ethernet1 lag: PortChannel10\n"
                 "3 updateIntfFeature: lag memeber is not active\n" );
}

TEST_F( VlanXlateTrace, OfAnInputEntry ) {
   start();
   world.installed( "Ethernet1" );
   EXPECT_EQ(
      trace.take(),
      "0 handleIntfFeature: handleIntfFeature intfFeature: (Ethernet1, PortChannel10)\n"
      "0 handleIntfFeature: handleIntfFeature memberIntf : Ethernet1 lag : PortChannel10\n" +
         asked1 + active + update1 + notNecessary );
}

TEST_F( VlanXlateTrace, OfAMapping ) {
   start();
   world.switchIntfConfig();
   trace.take();
   world.translated( 10 );
   EXPECT_EQ( trace.take(), "0 handleIntfConfig: handleIntfConfig intf: PortChannel10\n" + update1 +
                               necessary + notInInput );
}

TEST_F( VlanXlateTrace, OfAConfigurationOfAnInterfaceThatIsNoLag ) {
   start();
   world.switchIntfConfig( "Ethernet1" );
   EXPECT_EQ( trace.take(), "0 handleIntfConfig: handleIntfConfig intf: Ethernet1\n"
                            "2 handleIntfConfig: handleIntfConfig intf isn't a lag or it is a lag "
                            "but not active\n" );
}

TEST_F( VlanXlateTrace, OfTheStart ) {
   world.left( "Ethernet9" ).left( "Ethernet1" );
   sm = startVlanXlate( world );
   EXPECT_EQ( trace.take(),
              "0 handleInitialized: handleInitialized\n"
              "0 lagMemberActive: lagMemberActive memberIntf: Ethernet9 lag: PortChannel10\n" +
                 notActive +
                 "0 updateIntfFeature: updateIntfFeature memberIntf: Ethernet9 lag: PortChannel10\n"
                 "3 updateIntfFeature: lag memeber is not active\n" +
                 asked1 + active + update1 + notNecessary + update1 + notNecessary );
}

TEST_F( VlanXlateTrace, OfNothingThatCallsNoHandler ) {
   start();
   world.lag( "PortChannel20", { "Ethernet5" } ).lagGone( "PortChannel10" );
   sm->hasNotificationActiveIs( false );
   sm->vexDoZombieReactors( true );
   sm.release();
   EXPECT_EQ( trace.take(), "" );
}

TEST_F( VlanXlateTrace, WritesTheLevelsOfTheMaskOnly ) {
   start();
   Vex::traceHandle( "VeloVlanXlateIntfInterlockSm" ).levelMaskIs( 1U << 2U );
   world.switchIntfConfig( "Ethernet1" ).ingressVlanXlateIs( Bridging::VlanXlateKey( 1 ), {} );
   world.installed( "Ethernet9" );
   EXPECT_EQ( trace.take(), "2 handleIntfConfig: handleIntfConfig intf isn't a lag or it is a lag "
                            "but not active\n"
                            "2 handleIntfConfig: handleIntfConfig intf isn't a lag or it is a lag "
                            "but not active\n" +
                               notActive );
}

TEST_F( VlanXlateTrace, EveryRecordNamesItsSourceAndItsOwnCallSite ) {
   world.left( "Ethernet9" );
   sm = startVlanXlate( world );
   world.installed( "Ethernet1" ).translated( 10 ).translated( 10, "Ethernet1" );
   world.notInstalled( "Ethernet1" ).member( "Ethernet2" ).memberGone( "Ethernet1" );
   world.lagGone( "PortChannel10" ).notTranslated( 10 ).installed( "Ethernet3" );
   // By function, level and message without its arguments. A function that asks for the member
   // twice in a row, or looks it up in two steps, says the same at two sites.
   std::map< Vex::String, std::set< std::uint32_t > > sites;
   for ( const auto & record : trace.takeRecords() ) {
      EXPECT_EQ( record.source, "Velo/VeloVlanXlateIntfInterlockSm" );
      const auto labelled = record.message.substr( 0, record.message.find( ':' ) );
      sites[ record.function + '/' + std::to_string( record.level ) + '/' + labelled ].insert(
         record.line );
   }
   std::set< std::uint32_t > lines;
   std::size_t count = 0;
   for ( const auto & [ site, at ] : sites ) {
      const bool twoSteps = site.ends_with( "member isn't active" );
      EXPECT_EQ( at.size(), twoSteps ? 2U : 1U ) << site;
      lines.insert( at.begin(), at.end() );
      count += at.size();
   }
   EXPECT_EQ( lines.size(), count ) << "one line has two sites";
   EXPECT_EQ( count, 18U );
}

// Whoever hears of a verdict, and may be the end of this process, finds its reason in the trace.
TEST_F( VlanXlateTrace, TellsTheReasonBeforeTheVerdictIsWritten ) {
   start();
   Vex::String reason;
   const auto consumer = TestSupport::ScriptedConsumer::of(
      world.output, [ & ]( const auto &, bool ) { reason = trace.takeLast(); } );
   world.translated( 10 );
   EXPECT_EQ( reason, "lag and member are not in input IntfFeatureStatus" );
   world.installed( "Ethernet1" );
   EXPECT_EQ( reason, "lag and member are in input IntfFeatureStatus" );
   world.notInstalled( "Ethernet1" ).notTranslated( 10 );
   EXPECT_EQ( reason, "vlan translation programming is not necessary" );
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( reason, "lag memeber is not active" );
}

} // namespace
} // namespace Velo
