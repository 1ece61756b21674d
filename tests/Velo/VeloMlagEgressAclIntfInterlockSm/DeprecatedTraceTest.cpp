// What the deprecated egress-ACL interlock traces, word for word, to the text trace and to the
// ring. How a message begins differs by handler; the missing blanks and "inactve" are as they
// should be.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedSm.h"
#include "tests/support/RingRecorder.h"

#include <string>
#include <vector>

namespace Velo {
namespace {

using Interface::LinkStatus;
using Mlag::IntfState;
using Mlag::State;
using TestSupport::intf;

/// One message: as the text trace has it, and as the ring has it.
struct Message {
   unsigned level;
   Vex::String function;
   bool prefixed;
   Vex::String message;
   Vex::String arguments;
};

struct DeprecatedTrace : DeprecatedInterlock {
   TestSupport::RingRecorder ring;

   void begin() {
      start();
      ring.take();
   }
   void expect( const std::vector< Message > & messages ) {
      Vex::String text;
      Vex::String records;
      for ( const Message & m : messages ) {
         const Vex::String head = std::to_string( m.level ) + ' ' + m.function + ": ";
         text += head + ( m.prefixed ? "MlagEgressAclIntfInterlockSm::" : "" ) + m.message + '\n';
         records += head + m.message + " [" + m.arguments + "]\n";
      }
      EXPECT_EQ( trace.take(), text );
      EXPECT_EQ( ring.take(), records );
   }
   /// The messages of shouldInstallEgressAcl( PortChannel10 ) behind its first.
   void expectAsked( std::vector< Message > messages ) {
      begin();
      sm->shouldInstallEgressAcl( intf( "PortChannel10" ) );
      messages.insert( messages.begin(), asked );
      expect( messages );
   }
   void ofMember( const Vex::String & member = "Ethernet1" ) {
      begin();
      sm->handleMember( intf( member ), intf( "PortChannel10" ) );
   }

   static const Message asked, mlagActive, linkActive, activeOnPeer;
   static const std::vector< Message > member1;
};

const Message DeprecatedTrace::asked{ 0, "shouldInstallEgressAcl", true,
                                      "shouldInstallEgressAcl lag : PortChannel10",
                                      "PortChannel10" };
const Message DeprecatedTrace::mlagActive{ 3, "shouldInstallEgressAcl", false,
                                           "shouldInstallEgressAcl Mlag is active", "" };
const Message DeprecatedTrace::linkActive{
   3, "shouldInstallEgressAcl", false, "shouldInstallEgressAcl peer link : Port-Channel1000 active",
   "Port-Channel1000" };
const Message DeprecatedTrace::activeOnPeer{ 3, "shouldInstallEgressAcl", false,
                                             "shouldInstallEgressAclpeer mlag intf is active", "" };
const std::vector< Message > DeprecatedTrace::member1{
   { 0, "handleMember", true, "handleMember memberIntf : Ethernet1 lag : PortChannel10",
     "Ethernet1|PortChannel10" },
   { 0, "lagMemberActive", true, "lagMemberActive memberIntf : Ethernet1 lag : PortChannel10",
     "Ethernet1|PortChannel10" },
   { 3, "lagMemberActive", false, "lagMemberActive member is active", "" },
   { 3, "handleMember", false, "lag member is active", "" } };

std::vector< Message > operator+( std::vector< Message > first,
                                  const std::vector< Message > & second ) {
   first.insert( first.end(), second.begin(), second.end() );
   return first;
}

// ---- shouldInstallEgressAcl ---------------------------------------------------------------------

TEST_F( DeprecatedTrace, MlagIsInactive ) {
   world.mlagState( State::connecting );
   expectAsked(
      { { 2, "shouldInstallEgressAcl", false, "shouldInstallEgressAcl Mlag is inactive", "" } } );
}

TEST_F( DeprecatedTrace, NoPeerLink ) {
   world.noPeerLink();
   expectAsked( { mlagActive,
                  { 2, "shouldInstallEgressAcl", false,
                    "shouldInstallEgressAclpeerLink doesn't exist", "" } } );
}

TEST_F( DeprecatedTrace, PeerLinkIsNotUp ) {
   world.linkStatus( LinkStatus::down );
   expectAsked(
      { mlagActive,
        { 2, "shouldInstallEgressAcl", false,
          "shouldInstallEgressAcl peer link : Port-Channel1000 inactive", "Port-Channel1000" } } );
}

TEST_F( DeprecatedTrace, PeerLinkHasNoIdentifier ) {
   world.peerLink( "" );
   expectAsked( { mlagActive,
                  { 2, "shouldInstallEgressAcl", false,
                    "shouldInstallEgressAcl peer link :  inactive", "" } } );
}

TEST_F( DeprecatedTrace, ActiveOnThePeer ) {
   expectAsked( { mlagActive, linkActive, activeOnPeer } );
}

TEST_F( DeprecatedTrace, NotActiveOnThePeer ) {
   world.mlagIntf( "PortChannel10", IntfState::inactive );
   expectAsked(
      { mlagActive,
        linkActive,
        { 2, "shouldInstallEgressAcl", false,
          "shouldInstallEgressAclpeer Mlag intf of PortChannel10 is inactve", "PortChannel10" } } );
}

TEST_F( DeprecatedTrace, NoMlagInterface ) {
   world.mlagIntfGone( "PortChannel10" );
   expectAsked( { mlagActive,
                  linkActive,
                  { 2, "shouldInstallEgressAcl", false,
                    "shouldInstallEgressAcllag PortChannel10 isn't an Mlag", "PortChannel10" } } );
}

// ---- handleMember -------------------------------------------------------------------------------

TEST_F( DeprecatedTrace, OfAMemberThatIsNotActive ) {
   ofMember( "Ethernet2" );
   expect(
      { { 0, "handleMember", true, "handleMember memberIntf : Ethernet2 lag : PortChannel10",
          "Ethernet2|PortChannel10" },
        { 0, "lagMemberActive", true, "lagMemberActive memberIntf : Ethernet2 lag : PortChannel10",
          "Ethernet2|PortChannel10" },
        { 2, "lagMemberActive", false, "lagMemberActive member isn't active", "" },
        { 3, "handleMember", false, "lag member isn't active", "" } } );
}

TEST_F( DeprecatedTrace, OfAMemberThatNeedsNoAcl ) {
   world.mlagState( State::disabled );
   ofMember();
   expect( member1 +
           std::vector< Message >{
              asked,
              { 2, "shouldInstallEgressAcl", false, "shouldInstallEgressAcl Mlag is inactive", "" },
              { 3, "handleMember", false, "egress ACL shouldn't be installed", "" } } );
}

TEST_F( DeprecatedTrace, OfAMemberWhoseAclIsInstalled ) {
   world.installed( "Ethernet1" );
   ofMember();
   expect( member1 +
           std::vector< Message >{
              asked,
              mlagActive,
              linkActive,
              activeOnPeer,
              { 3, "handleMember", false, "egress ACL should be installed", "" },
              { 3, "handleMember", false, "lag and member are in input IntfFeatureStatus", "" } } );
}

TEST_F( DeprecatedTrace, OfAMemberWhoseAclIsNotInstalled ) {
   ofMember();
   expect( member1 + std::vector< Message >{
                        asked,
                        mlagActive,
                        linkActive,
                        activeOnPeer,
                        { 3, "handleMember", false, "egress ACL should be installed", "" },
                        { 3, "handleMember", false,
                          "lag and member are not in input IntfFeatureStatus", "" } } );
}

// ---- The other handlers -------------------------------------------------------------------------

TEST_F( DeprecatedTrace, OfAnInputEntry ) {
   world.lagGone( "PortChannel10" );
   begin();
   world.installed( "Ethernet1" );
   expect(
      { { 0, "handleIntfFeature", true,
          "handleIntfFeature memberIntf : Ethernet1 lag : PortChannel10",
          "Ethernet1|PortChannel10" },
        { 0, "handleMember", true, "handleMember memberIntf : Ethernet1 lag : PortChannel10",
          "Ethernet1|PortChannel10" },
        { 0, "lagMemberActive", true, "lagMemberActive memberIntf : Ethernet1 lag : PortChannel10",
          "Ethernet1|PortChannel10" },
        { 2, "lagMemberActive", false, "lagMemberActive member isn't active", "" },
        { 3, "handleMember", false, "lag member isn't active", "" } } );
}

TEST_F( DeprecatedTrace, OfAnMlagInterfaceThatIsNoLag ) {
   begin();
   world.mlagIntf( "PortChannel90" );
   expect( { { 0, "handleMlagIntfStatus", true, "handleMlagIntfStatus mlagIntf: PortChannel90",
               "PortChannel90" },
             { 2, "handleMlagIntfStatus", true,
               "handleMlagIntfStatus mlagIntf isn't a lag or it is a lag but not active", "" } } );
}

TEST_F( DeprecatedTrace, OfAnMlagInterface ) {
   world.lag( "PortChannel10", {} );
   begin();
   world.mlagIntfGone( "PortChannel10" );
   expect( { { 0, "handleMlagIntfStatus", true, "handleMlagIntfStatus mlagIntf: PortChannel10",
               "PortChannel10" } } );
}

TEST_F( DeprecatedTrace, OfTheMlagState ) {
   world.lagGone( "PortChannel10" );
   begin();
   world.mlagState( State::disabled );
   expect( { { 0, "handleMlagStateOrPeerlink", true, "handleMlagStateOrPeerlink", "" },
             { 0, "handleAllLags", true, "handleAllLags", "" } } );
}

TEST_F( DeprecatedTrace, OfTheStartHasThePrefixAlready ) {
   world.lag( "PortChannel10", {} ).left( "Ethernet9", "PortChannel90" );
   sm = startDeprecated( world );
   expect(
      { { 0, "handleInitialized", true, "handleInitialized", "" },
        { 0, "handleMember", true, "handleMember memberIntf : Ethernet9 lag : PortChannel90",
          "Ethernet9|PortChannel90" },
        { 0, "lagMemberActive", true, "lagMemberActive memberIntf : Ethernet9 lag : PortChannel90",
          "Ethernet9|PortChannel90" },
        { 2, "lagMemberActive", false, "lagMemberActive member isn't active", "" },
        { 3, "handleMember", false, "lag member isn't active", "" },
        { 0, "handleAllLags", true, "handleAllLags", "" } } );
}

TEST_F( DeprecatedTrace, OfNothingThatCallsNoHandler ) {
   begin();
   world.lag( "PortChannel20", { "Ethernet5" } ).lagGone( "PortChannel10" ).peerInterlock( true );
   sm->hasNotificationActiveIs( false );
   world.noPeerLink().mlagState( State::disabled );
   sm.release();
   expect( {} );
}

TEST_F( DeprecatedTrace, TheRingTakesItsRecordsWhateverTheLevelMaskSays ) {
   begin();
   Vex::traceHandle( "VeloMlagEgressAclIntfInterlockSm" ).levelMaskIs( 0 );
   world.mlagIntf( "PortChannel90" );
   EXPECT_EQ( trace.take(), "" );
   EXPECT_EQ( ring.take(),
              "0 handleMlagIntfStatus: handleMlagIntfStatus mlagIntf: PortChannel90 "
              "[PortChannel90]\n"
              "2 handleMlagIntfStatus: handleMlagIntfStatus mlagIntf isn't a lag or it is a lag "
              "but not active []\n" );
}

TEST_F( DeprecatedTrace, TextAndRingNameTheSameCallSiteMessageByMessage ) {
   sm = startDeprecated( world );
   world.installed( "Ethernet1" ).member( "Ethernet2" ).memberGone( "Ethernet1" );
   world.mlagIntf( "PortChannel10", IntfState::inactive ).mlagIntf( "PortChannel90" );
   world.mlagIntfGone( "PortChannel10" ).linkStatus( LinkStatus::down ).noPeerLink();
   world.mlagState( State::disabled );
   const auto text = trace.takeRecords();
   const auto records = ring.takeRecords();
   ASSERT_GT( text.size(), 30U );
   ASSERT_EQ( text.size(), records.size() );
   for ( std::size_t at = 0; at < text.size(); ++at ) {
      const auto & site = *records[ at ].descriptor;
      EXPECT_EQ( text[ at ].source, "Velo/VeloMlagEgressAclIntfInterlockSm" );
      EXPECT_EQ( site.source, "Velo/VeloMlagEgressAclIntfInterlockSm" );
      EXPECT_EQ( text[ at ].line, site.line ) << text[ at ].message;
      EXPECT_EQ( text[ at ].function, site.function );
      EXPECT_EQ( text[ at ].level, site.level );
      EXPECT_TRUE( text[ at ].message.ends_with( records[ at ].message() ) );
   }
}

// Whoever hears of a verdict, and may be the end of this process, finds its reason in the trace.
TEST_F( DeprecatedTrace, TellsTheReasonBeforeTheVerdictIsWritten ) {
   begin();
   Vex::String reason;
   const auto consumer = TestSupport::ScriptedConsumer::of(
      world.output, [ & ]( const auto &, bool ) { reason = trace.takeLast(); } );
   world.installed( "Ethernet1" );
   EXPECT_EQ( reason, "lag and member are in input IntfFeatureStatus" );
   world.notInstalled( "Ethernet1" );
   EXPECT_EQ( reason, "lag and member are not in input IntfFeatureStatus" );
   world.mlagState( State::connecting );
   EXPECT_EQ( reason, "egress ACL shouldn't be installed" );
   world.memberGone( "Ethernet1" );
   EXPECT_EQ( reason, "lag member isn't active" );
}

} // namespace
} // namespace Velo
