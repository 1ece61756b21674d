// What the basic egress-ACL interlock traces, word for word. The missing blanks and "inactve" are
// as they should be.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/BasicSm.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/RingRecorder.h"
#include "tests/support/TraceRecorder.h"
#include "tests/support/World.h"

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <tuple>

namespace Velo {
namespace {

using Interface::LinkStatus;
using Mlag::IntfState;
using Mlag::State;
using TestSupport::intf;
using TestSupport::RingRecorder;
using TestSupport::TraceRecorder;
using TestSupport::World;

const char * const handle = "VeloMlagEgressAclIntfInterlockSm";

struct BasicInterlockTrace : testing::Test {
   World world;
   Vex::Ptr< MlagEgressAclIntfInterlockSm > sm;
   RingRecorder ring;
   TraceRecorder trace{ handle };

   void start() {
      sm = startBasic( world );
      trace.take();
      ring.take();
   }
   Vex::String shouldInstallEgressAcl() {
      start();
      sm->shouldInstallEgressAcl( intf( "PortChannel10" ) );
      EXPECT_EQ( ring.take(), "" );
      return trace.take();
   }
   void handleMember( const Vex::String & member = "Ethernet1" ) {
      start();
      sm->handleMember( intf( member ), intf( "PortChannel10" ) );
   }
};

const Vex::String asked =
   "0 shouldInstallEgressAcl: MlagEgressAclIntfInterlockSm::shouldInstallEgressAcl lag : "
   "PortChannel10\n";
const Vex::String mlagActive = "3 shouldInstallEgressAcl: shouldInstallEgressAcl Mlag is active\n";
const Vex::String linkActive =
   "3 shouldInstallEgressAcl: shouldInstallEgressAcl peer link: active\n";

TEST_F( BasicInterlockTrace, MlagIsInactive ) {
   world.mlagState( State::connecting );
   EXPECT_EQ( shouldInstallEgressAcl(),
              asked + "2 shouldInstallEgressAcl: shouldInstallEgressAcl Mlag is inactive\n" );
}

TEST_F( BasicInterlockTrace, NoPeerLink ) {
   world.noPeerLink();
   EXPECT_EQ( shouldInstallEgressAcl(),
              asked + mlagActive +
                 "2 shouldInstallEgressAcl: shouldInstallEgressAclpeer link: doesn't exist\n" );
}

TEST_F( BasicInterlockTrace, PeerLinkWithoutIdentifierOrNotUp ) {
   const Vex::String inactive =
      asked + mlagActive + "2 shouldInstallEgressAcl: shouldInstallEgressAcl peer link: inactive\n";
   world.peerLink( "" );
   EXPECT_EQ( shouldInstallEgressAcl(), inactive );
   world.peerLink( "Port-Channel1000", LinkStatus::down );
   EXPECT_EQ( shouldInstallEgressAcl(), inactive );
}

TEST_F( BasicInterlockTrace, ActiveOnThePeer ) {
   EXPECT_EQ( shouldInstallEgressAcl(),
              asked + mlagActive + linkActive +
                 "3 shouldInstallEgressAcl: shouldInstallEgressAclpeer mlag intf is active\n" );
}

TEST_F( BasicInterlockTrace, NotActiveOnThePeer ) {
   world.mlagIntf( "PortChannel10", IntfState::inactive );
   EXPECT_EQ( shouldInstallEgressAcl(),
              asked + mlagActive + linkActive +
                 "2 shouldInstallEgressAcl: shouldInstallEgressAclpeer Mlag intf of PortChannel10 "
                 "is inactve\n" );
}

TEST_F( BasicInterlockTrace, NoMlagInterface ) {
   world.mlagIntfGone( "PortChannel10" );
   EXPECT_EQ( shouldInstallEgressAcl(), asked + mlagActive + linkActive +
                                           "2 shouldInstallEgressAcl: shouldInstallEgressAcllag "
                                           "PortChannel10 isn't an Mlag\n" );
}

const Vex::String ringMember1 = "0 handleMember: handleMember memberIntf : Ethernet1 lag : "
                                "PortChannel10 [Ethernet1|PortChannel10]\n"
                                "3 handleMember: lag member is active []\n";
const Vex::String textMember1 =
   "0 handleMember: MlagEgressAclIntfInterlockSm::handleMember memberIntf : Ethernet1 lag : "
   "PortChannel10\n"
   "0 lagMemberActive: MlagEgressAclIntfInterlockSm::lagMemberActive memberIntf : Ethernet1 lag : "
   "PortChannel10\n"
   "3 lagMemberActive: lagMemberActive member is active\n"
   "3 handleMember: lag member is active\n";
const Vex::String textNeeded =
   asked + mlagActive + linkActive +
   "3 shouldInstallEgressAcl: shouldInstallEgressAclpeer mlag intf is active\n"
   "3 handleMember: egress ACL should be installed\n";

TEST_F( BasicInterlockTrace, OfAMemberThatIsNotActive ) {
   handleMember( "Ethernet2" );
   EXPECT_EQ( trace.take(),
              "0 handleMember: MlagEgressAclIntfInterlockSm::handleMember memberIntf : Ethernet2 "
              "lag : PortChannel10\n"
              "0 lagMemberActive: MlagEgressAclIntfInterlockSm::lagMemberActive memberIntf : "
              "Ethernet2 lag : PortChannel10\n"
              "3 lagMemberActive: lagMemberActive member is not active\n"
              "3 handleMember: lag member isn't active\n" );
   EXPECT_EQ( ring.take(), "0 handleMember: handleMember memberIntf : Ethernet2 lag : "
                           "PortChannel10 [Ethernet2|PortChannel10]\n"
                           "3 handleMember: lag member isn't active []\n" );
}

TEST_F( BasicInterlockTrace, OfAMemberWhoseAclIsInstalled ) {
   world.installed( "Ethernet1" );
   handleMember();
   EXPECT_EQ( trace.take(), textMember1 + textNeeded +
                               "3 handleMember: lag and member are in input IntfFeatureStatus\n" );
   EXPECT_EQ( ring.take(),
              ringMember1 + "3 handleMember: egress ACL should be installed []\n"
                            "3 handleMember: lag and member are in input IntfFeatureStatus []\n" );
}

TEST_F( BasicInterlockTrace, OfAMemberWhoseAclIsNotInstalled ) {
   handleMember();
   EXPECT_EQ( trace.take(),
              textMember1 + textNeeded +
                 "3 handleMember: lag and member are not in input IntfFeatureStatus\n" );
   EXPECT_EQ( ring.take(),
              ringMember1 +
                 "3 handleMember: egress ACL should be installed []\n"
                 "3 handleMember: lag and member are not in input IntfFeatureStatus []\n" );
}

TEST_F( BasicInterlockTrace, OfAMemberThatNeedsNoAcl ) {
   world.mlagState( State::disabled );
   handleMember();
   EXPECT_EQ( trace.take(), textMember1 + asked +
                               "2 shouldInstallEgressAcl: shouldInstallEgressAcl Mlag is inactive\n"
                               "3 handleMember: egress ACL shouldn't be installed\n" );
   EXPECT_EQ( ring.take(), ringMember1 + "3 handleMember: egress ACL shouldn't be installed []\n" );
}

TEST_F( BasicInterlockTrace, OfAnMlagInterface ) {
   start();
   world.mlagIntf( "PortChannel10", IntfState::inactive );
   EXPECT_TRUE( trace.take().starts_with(
      "0 handleMlagIntfStatus: MlagEgressAclIntfInterlockSm::handleMlagIntfStatus mlagIntf: "
      "PortChannel10\n"
      "0 handleMember: " ) );
   EXPECT_TRUE( ring.take().starts_with( "0 handleMlagIntfStatus: handleMlagIntfStatus mlagIntf: "
                                         "PortChannel10 [PortChannel10]\n"
                                         "0 handleMember: " ) );
}

TEST_F( BasicInterlockTrace, OfAnMlagInterfaceThatIsNoLag ) {
   start();
   world.mlagIntf( "PortChannel90" );
   EXPECT_EQ( trace.take(),
              "0 handleMlagIntfStatus: MlagEgressAclIntfInterlockSm::handleMlagIntfStatus "
              "mlagIntf: PortChannel90\n"
              "2 handleMlagIntfStatus: mlagIntf isn't a lag or it is a lag but not active\n" );
   EXPECT_EQ( ring.take(),
              "0 handleMlagIntfStatus: handleMlagIntfStatus mlagIntf: PortChannel90 "
              "[PortChannel90]\n"
              "2 handleMlagIntfStatus: mlagIntf isn't a lag or it is a lag but not active []\n" );
}

TEST_F( BasicInterlockTrace, OfTheMlagState ) {
   world.lagGone( "PortChannel10" );
   start();
   world.mlagState( State::disabled );
   EXPECT_EQ( trace.take(), "0 handleMlagStateOrPeerlink: "
                            "MlagEgressAclIntfInterlockSm::handleMlagStateOrPeerlink\n"
                            "0 handleAllLags: MlagEgressAclIntfInterlockSm::handleAllLags\n" );
   EXPECT_EQ( ring.take(), "0 handleMlagStateOrPeerlink: handleMlagStateOrPeerlink []\n" );
}

TEST_F( BasicInterlockTrace, OfTheStartHasAnEmptyPrefix ) {
   world.mlagState( State::disabled ).left( "Ethernet9", "PortChannel90" );
   sm = startBasic( world );
   EXPECT_EQ( trace.take(),
              "0 handleInitialized: handleInitialized\n"
              "0 handleMember: handleMember memberIntf : Ethernet9 lag : PortChannel90\n"
              "0 lagMemberActive: lagMemberActive memberIntf : Ethernet9 lag : PortChannel90\n"
              "3 lagMemberActive: lagMemberActive member is not active\n"
              "3 handleMember: lag member isn't active\n"
              "0 handleAllLags: handleAllLags\n"
              "0 handleLag: handleLag lag: PortChannel10\n"
              "0 handleMember: handleMember memberIntf : Ethernet1 lag : PortChannel10\n"
              "0 lagMemberActive: lagMemberActive memberIntf : Ethernet1 lag : PortChannel10\n"
              "3 lagMemberActive: lagMemberActive member is active\n"
              "3 handleMember: lag member is active\n"
              "0 shouldInstallEgressAcl: shouldInstallEgressAcl lag : PortChannel10\n"
              "2 shouldInstallEgressAcl: shouldInstallEgressAcl Mlag is inactive\n"
              "3 handleMember: egress ACL shouldn't be installed\n" );
   EXPECT_EQ( ring.take(),
              "0 handleInitialized: handleInitialized []\n"
              "0 handleMember: handleMember memberIntf : Ethernet9 lag : PortChannel90 "
              "[Ethernet9|PortChannel90]\n"
              "3 handleMember: lag member isn't active []\n"
              "0 handleMember: handleMember memberIntf : Ethernet1 lag : PortChannel10 "
              "[Ethernet1|PortChannel10]\n"
              "3 handleMember: lag member is active []\n"
              "3 handleMember: egress ACL shouldn't be installed []\n" );
   EXPECT_EQ( sm->smName(), "MlagEgressAclIntfInterlockSm::" );
   EXPECT_EQ( sm->smName().size(), 30U );
}

TEST_F( BasicInterlockTrace, OfAFullPassLaterHasThePrefix ) {
   world.lagGone( "PortChannel10" );
   start();
   sm->handleInitialized();
   EXPECT_EQ( trace.take(), "0 handleInitialized: MlagEgressAclIntfInterlockSm::handleInitialized\n"
                            "0 handleAllLags: MlagEgressAclIntfInterlockSm::handleAllLags\n" );
}

TEST_F( BasicInterlockTrace, TheRingTakesItsRecordsWhateverTheLevelMaskSays ) {
   start();
   Vex::traceHandle( handle ).levelMaskIs( 0 );
   sm->handleMember( intf( "Ethernet2" ), intf( "PortChannel10" ) );
   EXPECT_EQ( trace.take(), "" );
   EXPECT_EQ( ring.take(), "0 handleMember: handleMember memberIntf : Ethernet2 lag : "
                           "PortChannel10 [Ethernet2|PortChannel10]\n"
                           "3 handleMember: lag member isn't active []\n" );
}

TEST_F( BasicInterlockTrace, TheTextWritesTheLevelsOfTheMaskOnly ) {
   start();
   Vex::traceHandle( handle ).levelMaskIs( 1U << 2U );
   world.mlagIntf( "PortChannel90" );
   EXPECT_EQ( trace.take(),
              "2 handleMlagIntfStatus: mlagIntf isn't a lag or it is a lag but not active\n" );
}

TEST_F( BasicInterlockTrace, ARingRecordCarriesTheFrameworksTime ) {
   start();
   world.pass( 2.5 );
   world.mlagState( State::disabled );
   const auto records = ring.takeRecords();
   ASSERT_FALSE( records.empty() );
   EXPECT_EQ( records.front().time, Vex::Seconds( 2.5 ) );
}

// Everything that a day brings.
void everything( World & world ) {
   world.lag( "PortChannel20", { "Ethernet5" } ).installed( "Ethernet1" ).member( "Ethernet2" );
   world.mlagIntf( "PortChannel10", IntfState::inactive ).mlagIntfGone( "PortChannel10" );
   world.mlagIntf( "PortChannel90" ).notInstalled( "Ethernet1" ).linkStatus( LinkStatus::down );
   world.noPeerLink().mlagState( State::disabled ).memberGone( "Ethernet1" );
}

TEST_F( BasicInterlockTrace, EveryRecordNamesItsSourceAndItsOwnCallSite ) {
   sm = startBasic( world );
   everything( world );
   sm->handleLag( intf( "Ethernet1" ) );
   // Apart from prefix and arguments, a message of a level of a function is one call site; the two
   // that say "lagMemberActive member is not active" are the same event.
   std::map< std::tuple< Vex::String, unsigned, Vex::String >, std::set< std::uint32_t > > sites;
   std::map< Vex::String, std::set< std::uint32_t > > linesOfFunction;
   for ( const auto & record : trace.takeRecords() ) {
      EXPECT_EQ( record.source, "Velo/VeloMlagEgressAclIntfInterlockSm" );
      EXPECT_GT( record.line, 0U );
      const Vex::String message = record.level == 0 ? "" : record.message;
      sites[ { record.function, record.level, message } ].insert( record.line );
      linesOfFunction[ record.function ].insert( record.line );
   }
   std::map< Vex::String, std::size_t > messagesOfFunction;
   for ( const auto & [ site, lines ] : sites ) {
      EXPECT_EQ( lines.size(), 1U ) << std::get< 0 >( site ) << ": " << std::get< 2 >( site );
      ++messagesOfFunction[ std::get< 0 >( site ) ];
   }
   for ( const auto & [ function, lines ] : linesOfFunction ) {
      EXPECT_GE( lines.size(), function == "shouldInstallEgressAcl" ? 8U : 1U ) << function;
      if ( function != "shouldInstallEgressAcl" ) { // there the LAG makes a difference
         EXPECT_EQ( lines.size(), messagesOfFunction[ function ] ) << function;
      }
   }
}

// Whoever hears of a verdict, and may be the end of this process, finds its reason in the trace.
TEST_F( BasicInterlockTrace, TellsTheReasonBeforeTheVerdictIsWritten ) {
   start();
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

TEST_F( BasicInterlockTrace, OfAnInputEntryComesBeforeThatOfItsMember ) {
   start();
   world.installed( "Ethernet1" );
   EXPECT_TRUE( trace.take().starts_with(
      "0 handleIntfFeature: MlagEgressAclIntfInterlockSm::handleIntfFeature memberIntf : Ethernet1 "
      "lag : PortChannel10\n0 handleMember: " ) );
}

TEST_F( BasicInterlockTrace, OfAMemberOnceMarkedForDeletionIsTheEntryAlone ) {
   start();
   sm->vexDoZombieReactors( true );
   sm->handleMember( intf( "Ethernet1" ), intf( "PortChannel10" ) );
   EXPECT_EQ( trace.take(), "0 handleMember: MlagEgressAclIntfInterlockSm::handleMember memberIntf "
                            ": Ethernet1 lag : PortChannel10\n" );
}

TEST_F( BasicInterlockTrace, ARingRecordNamesTheCallSiteOfItsTextCopy ) {
   sm = startBasic( world );
   everything( world );
   // The ring's records are a subsequence of those of the text.
   const auto text = trace.takeRecords();
   std::size_t at = 0;
   const auto records = ring.takeRecords();
   ASSERT_FALSE( records.empty() );
   for ( const auto & record : records ) {
      const auto & site = *record.descriptor;
      EXPECT_EQ( site.source, "Velo/VeloMlagEgressAclIntfInterlockSm" );
      while ( at < text.size() &&
              ( text[ at ].line != site.line || text[ at ].function != site.function ||
                !text[ at ].message.ends_with( record.message() ) ) ) {
         ++at;
      }
      ASSERT_LT( at, text.size() ) << site.function << ':' << site.line << ' ' << record.message();
      EXPECT_EQ( text[ at ].level, site.level );
      ++at;
   }
}

} // namespace
} // namespace Velo
