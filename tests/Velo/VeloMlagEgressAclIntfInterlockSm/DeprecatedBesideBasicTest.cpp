// The deprecated and the basic egress-ACL interlock side by side: the same events, the verdicts and
// the traces of both. They decide alike where both look; the basic one looks more often.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/BasicSm.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedSm.h"

#include <functional>

namespace Velo {
namespace {

using Interface::LinkStatus;
using TestSupport::intf;
using TestSupport::TraceRecorder;
using TestSupport::VerdictLog;
using TestSupport::World;

struct Both {
   Vex::String deprecated;
   Vex::String basic;

   friend bool operator==( const Both &, const Both & ) = default;
   friend std::ostream & operator<<( std::ostream & out, const Both & both ) {
      return out << "deprecated: " << both.deprecated << "\nbasic:      " << both.basic;
   }
};

Both alike( const Vex::String & text ) {
   return { text, text };
}

struct DeprecatedBesideBasic : testing::Test {
   TraceRecorder trace{ "VeloMlagEgressAclIntfInterlockSm" };
   World deprecatedWorld;
   World basicWorld;
   Vex::Ptr< DeprecatedMlagEgressAclIntfInterlockSm > deprecated;
   Vex::Ptr< MlagEgressAclIntfInterlockSm > basic;
   Vex::Ptr< VerdictLog > deprecatedLog;
   Vex::Ptr< VerdictLog > basicLog;
   Both traces;

   void start() {
      deprecated = startDeprecated( deprecatedWorld );
      basic = startBasic( basicWorld );
      deprecatedLog = VerdictLog::of( deprecatedWorld.output );
      basicLog = VerdictLog::of( basicWorld.output );
      trace.take();
   }
   /// Plays one event to both; returns the verdicts and keeps the traces.
   Both play( const std::function< void( World & ) > & event ) {
      event( deprecatedWorld );
      traces.deprecated = trace.take();
      event( basicWorld );
      traces.basic = trace.take();
      return { deprecatedLog->take(), basicLog->take() };
   }
};

TEST_F( DeprecatedBesideBasic, ADayOfBothHasTheSameVerdicts ) {
   start();
   EXPECT_EQ( play( []( World & w ) { w.installed( "Ethernet1" ); } ),
              alike( "+(Ethernet1, PortChannel10)" ) );
   EXPECT_EQ( play( []( World & w ) { w.member( "Ethernet2" ); } ), alike( "" ) );
   EXPECT_EQ( play( []( World & w ) { w.linkStatus( LinkStatus::down ); } ),
              alike( "+(Ethernet2, PortChannel10)" ) );
   EXPECT_EQ( play( []( World & w ) { w.peerLink( "Port-Channel2000" ); } ),
              alike( "-(Ethernet2, PortChannel10)" ) );
   EXPECT_EQ( play( []( World & w ) { w.noPeerLink(); } ), alike( "+(Ethernet2, PortChannel10)" ) );
   EXPECT_EQ( play( []( World & w ) { w.mlagState( Mlag::State::disabled ); } ), alike( "" ) );
   EXPECT_EQ( play( []( World & w ) { w.memberGone( "Ethernet2" ); } ),
              alike( "-(Ethernet2, PortChannel10)" ) );
   EXPECT_EQ( play( []( World & w ) { w.lag( "PortChannel20", { "Ethernet5" } ); } ), alike( "" ) );
   EXPECT_EQ( play( []( World & w ) { w.lagGone( "PortChannel10" ); } ), alike( "" ) );
   EXPECT_EQ( play( []( World & w ) { w.notInstalled( "Ethernet1" ); } ),
              alike( "-(Ethernet1, PortChannel10)" ) );
}

TEST_F( DeprecatedBesideBasic, OneDecisionIsTracedDifferently ) {
   start();
   play( []( World & w ) { w.member( "Ethernet2" ); } );
   const Vex::String prefix = "MlagEgressAclIntfInterlockSm::";
   const Vex::String member = "0 handleMember: " + prefix +
                              "handleMember memberIntf : Ethernet2 lag : PortChannel10\n"
                              "0 lagMemberActive: " +
                              prefix +
                              "lagMemberActive memberIntf : Ethernet2 lag : PortChannel10\n"
                              "3 lagMemberActive: lagMemberActive member is active\n"
                              "3 handleMember: lag member is active\n"
                              "0 shouldInstallEgressAcl: " +
                              prefix +
                              "shouldInstallEgressAcl lag : PortChannel10\n"
                              "3 shouldInstallEgressAcl: shouldInstallEgressAcl Mlag is active\n";
   const Vex::String needed =
      "3 shouldInstallEgressAcl: shouldInstallEgressAclpeer mlag intf is active\n"
      "3 handleMember: egress ACL should be installed\n"
      "3 handleMember: lag and member are not in input IntfFeatureStatus\n";
   EXPECT_EQ( traces.deprecated,
              member +
                 "3 shouldInstallEgressAcl: shouldInstallEgressAcl peer link : Port-Channel1000 "
                 "active\n" +
                 needed );
   EXPECT_EQ( traces.basic,
              member + "3 shouldInstallEgressAcl: shouldInstallEgressAcl peer link: active\n" +
                 needed );
}

TEST_F( DeprecatedBesideBasic, APortThatIsNoMemberIsTracedAtAnotherLevelWithAnotherText ) {
   start();
   play( []( World & w ) { w.installed( "Ethernet9" ); } );
   EXPECT_NE( traces.deprecated.find( "2 lagMemberActive: lagMemberActive member isn't active\n" ),
              Vex::String::npos );
   EXPECT_NE( traces.basic.find( "3 lagMemberActive: lagMemberActive member is not active\n" ),
              Vex::String::npos );
}

TEST_F( DeprecatedBesideBasic, AnMlagInterfaceThatIsNoLagIsTracedWithAndWithoutItsHandler ) {
   start();
   play( []( World & w ) { w.mlagIntf( "PortChannel90" ); } );
   const Vex::String entered =
      "0 handleMlagIntfStatus: MlagEgressAclIntfInterlockSm::handleMlagIntfStatus mlagIntf: "
      "PortChannel90\n";
   EXPECT_EQ( traces.deprecated,
              entered +
                 "2 handleMlagIntfStatus: MlagEgressAclIntfInterlockSm::handleMlagIntfStatus "
                 "mlagIntf isn't a lag or it is a lag but not active\n" );
   EXPECT_EQ( traces.basic, entered + "2 handleMlagIntfStatus: mlagIntf isn't a lag or it is a "
                                      "lag but not active\n" );
}

TEST_F( DeprecatedBesideBasic, AnotherPeerLinkIsDecidedOnceAndTwice ) {
   start();
   play( []( World & w ) { w.peerLink( "Port-Channel2000" ); } );
   const auto passes = []( const Vex::String & text ) {
      std::size_t count = 0;
      for ( auto at = text.find( "::handleAllLags\n" ); at != Vex::String::npos;
            at = text.find( "::handleAllLags\n", at + 1 ) ) {
         ++count;
      }
      return count;
   };
   EXPECT_EQ( passes( traces.deprecated ), 1U );
   EXPECT_EQ( passes( traces.basic ), 2U );
}

TEST_F( DeprecatedBesideBasic, AnotherMlagStatusIsDecidedByTheBasicOneOnly ) {
   start();
   deprecated->vexMlagStatus()->notifierIs( Vex::make< Mlag::Status >() );
   basic->vexMlagStatus()->notifierIs( Vex::make< Mlag::Status >() );
   EXPECT_EQ( deprecatedLog->take(), "" );
   EXPECT_EQ( basicLog->take(), "+(Ethernet1, PortChannel10)" );
}

TEST_F( DeprecatedBesideBasic, TheMembersOfAnotherLagConfigAreHeardByTheBasicOneOnly ) {
   start();
   for ( World * const w : { &deprecatedWorld, &basicWorld } ) {
      w->hwLagConfig = Vex::make< Hardware::Lag::Config >();
      w->lag( "PortChannel10", { "Ethernet1" } ).installed( "Ethernet2" );
   }
   deprecated->vexHwLagConfig()->notifierIs( deprecatedWorld.hwLagConfig );
   basic->vexHwLagConfig()->notifierIs( basicWorld.hwLagConfig );
   EXPECT_EQ( play( []( World & w ) { w.member( "Ethernet2" ); } ),
              ( Both{ "", "+(Ethernet2, PortChannel10)" } ) );
}

TEST_F( DeprecatedBesideBasic, ALagThatComesWhileNotificationsAreOffIsWatchedByTheDeprecatedOnly ) {
   start();
   deprecated->hasNotificationActiveIs( false );
   basic->hasNotificationActiveIs( false );
   play( []( World & w ) { w.lag( "PortChannel20", {} ); } );
   deprecated->hasNotificationActiveIs( true );
   basic->hasNotificationActiveIs( true );
   EXPECT_EQ( play( []( World & w ) { w.member( "Ethernet5", "PortChannel20" ); } ),
              ( Both{ "+(Ethernet5, PortChannel20)", "" } ) );
}

TEST_F( DeprecatedBesideBasic, TheStartIsTracedWithAndWithoutThePrefix ) {
   deprecated = startDeprecated( deprecatedWorld );
   EXPECT_TRUE( trace.take().starts_with(
      "0 handleInitialized: MlagEgressAclIntfInterlockSm::handleInitialized\n" ) );
   basic = startBasic( basicWorld );
   EXPECT_TRUE( trace.take().starts_with( "0 handleInitialized: handleInitialized\n" ) );
}

} // namespace
} // namespace Velo
