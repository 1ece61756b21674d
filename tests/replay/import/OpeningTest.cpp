// The openings as a whole, and that they play.

#include "replay/import/Opening.h"

#include "tests/platform/Seed.h"
#include "tests/replay/Playing.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using Import::Named;
using Import::parseConfigDb;
using Import::SwitchConfig;

std::string openingOf( std::string_view text ) {
   const SwitchConfig config = parseConfigDb( text );
   const std::array switches{ Named{ "config_db.json", config } };
   return Import::opening( switches );
}

std::string openingOf( std::string_view left, std::string_view right ) {
   const SwitchConfig leftConfig = parseConfigDb( left );
   const SwitchConfig rightConfig = parseConfigDb( right );
   const std::array switches{ Named{ "left.json", leftConfig },
                              Named{ "right.json", rightConfig } };
   return Import::opening( switches );
}

const std::string leaf = R"({
   "PORTCHANNEL": { "PortChannel10": {}, "PortChannel2": { "admin_status": "down" } },
   "PORTCHANNEL_MEMBER": { "PortChannel10|Ethernet10": {}, "PortChannel10|Ethernet2": {},
                           "PortChannel2|Ethernet 3#": {} },
   "MCLAG_DOMAIN": { "1": { "source_ip": "10.0.0.1", "peer_ip": "10.0.0.2",
                            "peer_link": "Ethernet48" } },
   "MCLAG_INTERFACE": { "1|PortChannel10": {}, "1|PortChannel2": {} },
   "VLAN_TRANSLATION": { "PortChannel10|100": { "new_vlan": "1000" } },
   "PORT": {} })";

TEST( Opening, OfOneSwitchIsThis ) {
   EXPECT_EQ( openingOf( leaf ),
              R"(# The opening of a scenario, made from config_db.json
# skipped: 1 other table: PORT (0)

mlag state 3                              # MLAG is active
link Ethernet48 2                         # the peer link is up
mlag peer-link Ethernet48
mlag peer-interlock on                    # off: the local ACL alone decides
mlag intf PortChannel2 1 2                # not active here: admin_status is down
mlag intf PortChannel10 2 2               # active here and on the peer
switchport PortChannel10
vlan-xlate PortChannel10 ingress 100 1000
vlan-xlate PortChannel10 egress 1000 100
lag PortChannel2                          # admin_status is down: no member is to join
lag PortChannel10 Ethernet2 Ethernet10

peer echo 0.02                            # a peer that answers each request after 20 ms
start controller                          # basic: the local ACL alone decides
start vlan-xlate

# The story goes on here. What the hardware reports, as it gets ready:
at 1
# acl Ethernet2 PortChannel10
# vlan-ready Ethernet2 PortChannel10
# acl Ethernet10 PortChannel10
# vlan-ready Ethernet10 PortChannel10
)" );
}

TEST( Opening, OfAPairIsThis ) {
   EXPECT_EQ( openingOf( leaf, R"({
   "PORTCHANNEL": { "PortChannel10": { "members": [ "eth one" ] } },
   "MCLAG_DOMAIN": { "1": { "source_ip": "10.0.0.2", "peer_ip": "10.0.0.3" } },
   "MCLAG_INTERFACE": { "1|PortChannel10": {} } })" ),
              R"(# The opening of a scenario of two switches, made from
#    left: left.json
# skipped: 1 other table: PORT (0)
#    right: right.json
# Do they belong together? peer_ip of the right is '10.0.0.3', source_ip of the left is '10.0.0.1'.

wire delay 0.01                           # what a message takes from switch to switch

switch left
mlag state 3                              # MLAG is active
link Ethernet48 2                         # the peer link is up
mlag peer-link Ethernet48
mlag peer-interlock on                    # off: the local ACL alone decides
mlag intf PortChannel2 1 1                # not active here: admin_status is down
mlag intf PortChannel10 2 2               # active here and on the peer
switchport PortChannel10
vlan-xlate PortChannel10 ingress 100 1000
vlan-xlate PortChannel10 egress 1000 100
lag PortChannel2                          # admin_status is down: no member is to join
lag PortChannel10 Ethernet2 Ethernet10
start controller                          # basic: the local ACL alone decides
start vlan-xlate

switch right
mlag state 4                              # MLAG is active
# MCLAG_DOMAIN has no peer_link: without one, no ACL is needed but by the peer's interlock.
mlag peer-interlock on                    # off: the local ACL alone decides
mlag intf PortChannel10 2 2               # active here and on the peer
lag PortChannel10 "eth one"
start controller                          # basic: the local ACL alone decides

# The story goes on here. What the hardware reports, as it gets ready:
at 1
switch left
# acl Ethernet2 PortChannel10
# vlan-ready Ethernet2 PortChannel10
# acl Ethernet10 PortChannel10
# vlan-ready Ethernet10 PortChannel10
switch right
# acl "eth one" PortChannel10
)" );
}

TEST( Opening, OfNothingPlays ) {
   const auto played = TestSupport::play( openingOf( "{}" ) );
   EXPECT_EQ( played.error, "" );
   EXPECT_EQ( played.objects( "verdict" ).size(), 0U );
}

TEST( Opening, PlaysToItsEndWhenTheHardwareIsReady ) {
   std::string story = openingOf( leaf );
   for ( std::size_t at = 0; ( at = story.find( "# acl ", at ) ) != std::string::npos; ) {
      story.erase( at, 2 );
   }
   for ( std::size_t at = 0; ( at = story.find( "# vlan-ready ", at ) ) != std::string::npos; ) {
      story.erase( at, 2 );
   }
   const auto played = TestSupport::play( story + "expect joined Ethernet2 PortChannel10\n"
                                                  "expect joined Ethernet10 PortChannel10\n"
                                                  "expect held \"Ethernet 3#\" PortChannel2\n" );
   EXPECT_EQ( played.error, "" );
   EXPECT_EQ( played.failed, 0U );
}

// Names of any kind, in any order: the same opening, and one that plays.
TEST( Opening, DoesNotDependOnTheOrderOfTheFile ) {
   std::mt19937_64 random( seed( 1 ) );
   SCOPED_TRACE( seedNote( 1 ) );
   const std::array< std::string, 8 > names{ "Ethernet2", "Ethernet10", "#", "a b",
                                             "é'",        "no",         "-", "\xE2\x80\xA8" };
   for ( int round = 0; round < 200; ++round ) {
      std::vector< std::string > lags;
      std::vector< std::string > members;
      std::vector< std::string > mlags;
      for ( const std::string & name : names ) {
         const std::string lag = "P" + std::to_string( random() % 3 ) + name;
         const bool isNew = std::ranges::find( lags, "\"" + lag + "\":{}" ) == lags.end();
         if ( isNew ) {
            lags.push_back( "\"" + lag + "\":{}" );
            mlags.push_back( "\"1|" + lag + "\":{}" );
            members.push_back( "\"" + lag + "|" + name + "\":{}" );
         }
      }
      const auto text = [ & ] {
         const auto joined = [ & ]( std::vector< std::string > & list ) {
            std::ranges::shuffle( list, random );
            std::string all;
            for ( const std::string & entry : list ) {
               all += ( all.empty() ? "" : "," ) + entry;
            }
            return all;
         };
         std::vector< std::string > tables{ "\"PORTCHANNEL\":{" + joined( lags ) + "}",
                                            "\"PORTCHANNEL_MEMBER\":{" + joined( members ) + "}",
                                            "\"MCLAG_DOMAIN\":{\"1\":{}}",
                                            "\"MCLAG_INTERFACE\":{" + joined( mlags ) + "}" };
         return "{" + joined( tables ) + "}";
      };
      const std::string opening = openingOf( text() );
      ASSERT_EQ( openingOf( text() ), opening );
      const auto played = TestSupport::play( opening );
      ASSERT_EQ( played.error, "" ) << opening;
      ASSERT_EQ( played.objects( "request" ).size(), mlags.size() );
   }
}

TEST( Opening, QuotesANameWithACharacterThatIsNotSeen ) {
   const std::string text = openingOf( R"({ "PORTCHANNEL": { "PortChannel1": { "members": [
      "Ethernet1\u200b", "Ethernet2" ] } } })" );
   EXPECT_NE( text.find( "\nlag PortChannel1 \"Ethernet1\u200B\" Ethernet2\n" ), std::string::npos )
      << text;
   EXPECT_EQ( TestSupport::play( text ).error, "" );
}

} // namespace
