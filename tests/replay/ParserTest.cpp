#include "replay/Parser.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Nodo::IntfId;
using Replay::Interlock;
using Replay::Pair;

// The only statement of a text.
template < class StatementType >
StatementType parsed( std::string_view text ) {
   const Replay::Scenario scenario = Replay::parseScenario( text );
   EXPECT_EQ( scenario.steps.size(), 1U );
   return std::get< StatementType >( scenario.steps.at( 0 ).statement );
}

const IntfId ethernet1{ "Ethernet1" };
const IntfId ethernet2{ "Ethernet2" };
const IntfId po10{ "PortChannel10" };

TEST( Parser, ReadsLag ) {
   const auto lag = parsed< Replay::Lag >( "lag PortChannel10 Ethernet1 Ethernet2" );
   EXPECT_EQ( lag.lag, po10 );
   EXPECT_EQ( lag.members, ( std::vector{ ethernet1, ethernet2 } ) );
   EXPECT_TRUE( parsed< Replay::Lag >( "lag PortChannel10" ).members.empty() );
   EXPECT_EQ( parsed< Replay::NoLag >( "no lag PortChannel10" ).lag, po10 );
}

TEST( Parser, ReadsMember ) {
   using Type = Hardware::Lag::PortProgType;
   const auto member = parsed< Replay::Member >( "member PortChannel10 Ethernet1 255" );
   EXPECT_EQ( member.lag, po10 );
   EXPECT_EQ( member.member, ethernet1 );
   EXPECT_EQ( member.type, Type( 255 ) );
   EXPECT_EQ( parsed< Replay::Member >( "member PortChannel10 Ethernet1" ).type, Type( 0 ) );
   const auto taken = parsed< Replay::Member >( "no member PortChannel10 Ethernet1" );
   EXPECT_EQ( taken.lag, po10 );
   EXPECT_EQ( taken.member, ethernet1 );
   EXPECT_FALSE( taken.type );
}

TEST( Parser, ReadsInputEntries ) {
   const auto acl = parsed< Replay::InputEntry >( "acl Ethernet1 PortChannel10" );
   EXPECT_EQ( acl.interlock, Interlock::egressAcl );
   EXPECT_EQ( acl.pair, ( Pair{ ethernet1, po10 } ) );
   EXPECT_TRUE( acl.present );
   EXPECT_FALSE( parsed< Replay::InputEntry >( "no acl Ethernet1 PortChannel10" ).present );
   const auto ready = parsed< Replay::InputEntry >( "vlan-ready Ethernet1 PortChannel10" );
   EXPECT_EQ( ready.interlock, Interlock::vlanXlate );
   EXPECT_EQ( ready.pair, ( Pair{ ethernet1, po10 } ) );
   EXPECT_TRUE( ready.present );
   EXPECT_FALSE( parsed< Replay::InputEntry >( "no vlan-ready Ethernet1 PortChannel10" ).present );
}

TEST( Parser, ReadsMlag ) {
   EXPECT_EQ( parsed< Replay::MlagState >( "mlag state 200" ).state, Mlag::State( 200 ) );
   EXPECT_EQ( parsed< Replay::MlagPeerLink >( "mlag peer-link Ethernet1" ).intf, ethernet1 );
   EXPECT_EQ( parsed< Replay::MlagPeerLink >( "mlag peer-link \"\"" ).intf, IntfId() );
   EXPECT_FALSE( parsed< Replay::MlagPeerLink >( "no mlag peer-link" ).intf );
   EXPECT_TRUE( parsed< Replay::MlagPeerInterlock >( "mlag peer-interlock on" ).on );
   EXPECT_FALSE( parsed< Replay::MlagPeerInterlock >( "mlag peer-interlock off" ).on );
}

TEST( Parser, ReadsMlagIntf ) {
   const auto intf = parsed< Replay::MlagIntf >( "mlag intf PortChannel10 1 2 \"to the west\"" );
   EXPECT_EQ( intf.lag, po10 );
   EXPECT_EQ( intf.status,
              ( Mlag::IntfStatus{ "to the west", Mlag::IntfState( 1 ), Mlag::IntfState( 2 ) } ) );
   EXPECT_EQ( parsed< Replay::MlagIntf >( "mlag intf PortChannel10 0 0" ).status,
              Mlag::IntfStatus() );
   EXPECT_EQ( parsed< Replay::MlagIntf >( "mlag intf PortChannel10 0 0 \"\"" ).status,
              Mlag::IntfStatus() );
   const auto taken = parsed< Replay::MlagIntf >( "no mlag intf PortChannel10" );
   EXPECT_EQ( taken.lag, po10 );
   EXPECT_FALSE( taken.status );
}

TEST( Parser, ReadsLink ) {
   const auto link = parsed< Replay::Link >( "link Ethernet1 2" );
   EXPECT_EQ( link.intf, ethernet1 );
   EXPECT_EQ( link.status, Interface::LinkStatus( 2 ) );
   EXPECT_EQ( parsed< Replay::Link >( "link \"\" 2" ).intf, IntfId() );
}

TEST( Parser, ReadsRequestAndResponse ) {
   const auto response = parsed< Replay::Response >( "response PortChannel10 4294967295" );
   EXPECT_EQ( response.lag, po10 );
   EXPECT_EQ( response.token, 4294967295U );
   EXPECT_FALSE( parsed< Replay::Response >( "no response PortChannel10" ).token );
   const auto request = parsed< Replay::Request >( "request PortChannel10 0" );
   EXPECT_EQ( request.lag, po10 );
   EXPECT_EQ( request.token, 0U );
   EXPECT_FALSE( parsed< Replay::Request >( "no request PortChannel10" ).token );
}

TEST( Parser, ReadsSwitchportAndVlanXlate ) {
   using Bridging::VlanId;
   const auto port = parsed< Replay::Switchport >( "switchport PortChannel10" );
   EXPECT_EQ( port.intf, po10 );
   EXPECT_TRUE( port.present );
   EXPECT_FALSE( parsed< Replay::Switchport >( "no switchport PortChannel10" ).present );
   const auto in = parsed< Replay::VlanXlate >( "vlan-xlate PortChannel10 ingress 1 4094" );
   EXPECT_EQ( in.intf, po10 );
   EXPECT_EQ( in.direction, Replay::Direction::ingress );
   EXPECT_EQ( in.vlan, VlanId( 1 ) );
   EXPECT_EQ( in.newVlan, VlanId( 4094 ) );
   const auto out = parsed< Replay::VlanXlate >( "no vlan-xlate PortChannel10 egress 7" );
   EXPECT_EQ( out.direction, Replay::Direction::egress );
   EXPECT_EQ( out.vlan, VlanId( 7 ) );
   EXPECT_FALSE( out.newVlan );
}

TEST( Parser, ReadsOutputEntries ) {
   const auto acl = parsed< Replay::OutputEntry >( "output egress-acl Ethernet1 PortChannel10" );
   EXPECT_EQ( acl.interlock, Interlock::egressAcl );
   EXPECT_EQ( acl.pair, ( Pair{ ethernet1, po10 } ) );
   EXPECT_TRUE( acl.present );
   const auto vlan =
      parsed< Replay::OutputEntry >( "no output vlan-xlate Ethernet1 PortChannel10" );
   EXPECT_EQ( vlan.interlock, Interlock::vlanXlate );
   EXPECT_FALSE( vlan.present );
}

TEST( Parser, ReadsStartOfEachMachineAndStop ) {
   for ( const std::string name : { "controller", "basic", "deprecated", "vlan-xlate" } ) {
      EXPECT_EQ( parsed< Replay::Start >( "start " + name ).machine->name, name );
   }
   EXPECT_EQ( parsed< Replay::Stop >( "stop egress-acl" ).interlock, Interlock::egressAcl );
   EXPECT_EQ( parsed< Replay::Stop >( "stop vlan-xlate" ).interlock, Interlock::vlanXlate );
}

TEST( Parser, ReadsTimeAndPeerEcho ) {
   EXPECT_EQ( parsed< Replay::At >( "at 0.1" ).time, Vex::Seconds( 0.1 ) );
   EXPECT_EQ( parsed< Replay::Wait >( "wait 2" ).duration, Vex::Seconds( 2 ) );
   EXPECT_EQ( parsed< Replay::PeerEcho >( "peer echo 0.05" ).delay, Vex::Seconds( 0.05 ) );
   EXPECT_FALSE( parsed< Replay::PeerEcho >( "no peer echo" ).delay );
}

TEST( Parser, ReadsExpectOfAnOutput ) {
   const auto in = parsed< Replay::ExpectOutput >( "expect egress-acl Ethernet1 PortChannel10" );
   EXPECT_EQ( in.interlock, Interlock::egressAcl );
   EXPECT_EQ( in.pair, ( Pair{ ethernet1, po10 } ) );
   EXPECT_TRUE( in.present );
   const auto out =
      parsed< Replay::ExpectOutput >( "expect no vlan-xlate Ethernet1 PortChannel10" );
   EXPECT_EQ( out.interlock, Interlock::vlanXlate );
   EXPECT_FALSE( out.present );
}

TEST( Parser, ReadsTheOtherExpects ) {
   EXPECT_TRUE( parsed< Replay::ExpectJoined >( "expect joined Ethernet1 PortChannel10" ).joined );
   const auto held = parsed< Replay::ExpectJoined >( "expect held Ethernet1 PortChannel10" );
   EXPECT_FALSE( held.joined );
   EXPECT_EQ( held.pair, ( Pair{ ethernet1, po10 } ) );
   EXPECT_EQ( parsed< Replay::ExpectRequest >( "expect request PortChannel10 7" ).token, 7U );
   EXPECT_FALSE( parsed< Replay::ExpectRequest >( "expect no request PortChannel10" ).token );
   EXPECT_EQ( parsed< Replay::ExpectTrace >( "expect trace \"is # active\"" ).text, "is # active" );
   EXPECT_TRUE( parsed< Replay::ExpectTrace >( "expect trace x" ).present );
   EXPECT_FALSE( parsed< Replay::ExpectTrace >( "expect no trace x" ).present );
}

TEST( Parser, TakesAQuotedWordLikeAPlainOne ) {
   EXPECT_EQ( parsed< Replay::NoLag >( "\"no\" \"lag\" \"PortChannel10\"" ).lag, po10 );
   EXPECT_EQ( parsed< Replay::MlagState >( "mlag state \"3\"" ).state, Mlag::State( 3 ) );
}

TEST( Parser, TakesAWordOfTheLanguageAsAName ) {
   EXPECT_EQ( parsed< Replay::Lag >( "lag no lag" ).lag, IntfId( "no" ) );
   EXPECT_EQ( parsed< Replay::ExpectTrace >( "expect no trace no" ).text, "no" );
}

TEST( Parser, KeepsLinesAndCollapsedTextOfEachStatement ) {
   const auto scenario =
      Replay::parseScenario( "# a story\n\n  lag\t\tP   \"A  b\"# comment\n\nwait 1" );
   ASSERT_EQ( scenario.steps.size(), 2U );
   EXPECT_EQ( scenario.steps[ 0 ].line, 3U );
   EXPECT_EQ( scenario.text( scenario.steps[ 0 ] ), "lag P \"A  b\"" );
   EXPECT_EQ( scenario.steps[ 1 ].line, 5U );
   EXPECT_EQ( scenario.text( scenario.steps[ 1 ] ), "wait 1" );
}

TEST( Parser, KnowsWhetherATraceIsExpected ) {
   EXPECT_FALSE( Replay::parseScenario( "wait 1\nexpect joined a b" ).expectsTrace );
   EXPECT_TRUE( Replay::parseScenario( "wait 1\nexpect no trace x\nwait 1" ).expectsTrace );
}

TEST( Parser, ReadsAnEmptyTextAsAScenarioThatDoesNothing ) {
   EXPECT_TRUE( Replay::parseScenario( "" ).steps.empty() );
   EXPECT_TRUE( Replay::parseScenario( "\n\n# nothing\n" ).steps.empty() );
}

TEST( Parser, TakesCarriageReturnLineFeedAsALineEnd ) {
   const auto scenario = Replay::parseScenario( "wait 1\r\n\r\nwait 2\r\n" );
   ASSERT_EQ( scenario.steps.size(), 2U );
   EXPECT_EQ( scenario.steps[ 1 ].line, 3U );
   EXPECT_EQ( scenario.text( scenario.steps[ 1 ] ), "wait 2" );
}

TEST( Parser, PassesAByteOrderMarkOver ) {
   EXPECT_EQ( parsed< Replay::Wait >( "\xEF\xBB\xBFwait 1" ).duration, Vex::Seconds( 1 ) );
}

TEST( Parser, ReadsALineOfAMegabyte ) {
   std::string line = "lag PortChannel10";
   for ( int port = 0; line.size() < 1'000'000; ++port ) {
      line += " Ethernet" + std::to_string( port % 1000 );
   }
   EXPECT_GT( parsed< Replay::Lag >( line ).members.size(), 50'000U );
   EXPECT_TRUE( Replay::parseScenario( "#" + std::string( 1'000'000, 'x' ) ).steps.empty() );
}

} // namespace
