// What the tables say, and each way in which they can be wrong.

#include "replay/import/ConfigDb.h"

#include "replay/import/Json.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace {

std::string errorOf( std::string_view text ) {
   try {
      Import::parseConfigDb( text );
   } catch ( const Import::JsonError & error ) {
      const Import::Place place = Import::placeOf( text, error.at() );
      return std::to_string( place.line ) + ":" + std::to_string( place.column ) + ": " +
             error.what();
   }
   return "no error";
}

TEST( ConfigDb, ReadsLagsWithMembersFromBothPlaces ) {
   const auto config = Import::parseConfigDb( R"({
      "PORTCHANNEL_MEMBER": { "PortChannel1|Ethernet10": {}, "PortChannel1|Ethernet2": {} },
      "PORTCHANNEL": { "PortChannel1": { "members": [ "Ethernet2", "Ethernet1" ] },
                       "PortChannel2": { "admin_status": "down" } } })" );
   ASSERT_EQ( config.lags.size(), 2U );
   const auto & one = config.lags.at( Nodo::IntfId( "PortChannel1" ) );
   EXPECT_TRUE( one.adminUp );
   EXPECT_EQ( one.members, ( std::set{ Nodo::IntfId( "Ethernet1" ), Nodo::IntfId( "Ethernet2" ),
                                       Nodo::IntfId( "Ethernet10" ) } ) );
   EXPECT_FALSE( config.lags.at( Nodo::IntfId( "PortChannel2" ) ).adminUp );
}

TEST( ConfigDb, TranslatesBothWaysUnlessToldOtherwise ) {
   const auto config = Import::parseConfigDb( R"({ "VLAN_TRANSLATION": {
      "P|10": { "new_vlan": "110" },
      "P|20": { "new_vlan": "120", "direction": "ingress" },
      "P|30": { "new_vlan": "130", "direction": "egress" } } })" );
   const auto & translation = config.translations.at( Nodo::IntfId( "P" ) );
   EXPECT_EQ( translation.ingress, ( Import::Mappings{ { 10, 110 }, { 20, 120 } } ) );
   EXPECT_EQ( translation.egress, ( Import::Mappings{ { 110, 10 }, { 130, 30 } } ) );
}

TEST( ConfigDb, CountsWhatItPassesOverWhateverThatIs ) {
   const auto config = Import::parseConfigDb(
      R"({ "VLAN": { "Vlan10": 1, "Vlan20": {} }, "ACL": [ 1, 2, 3 ], "X": "y" })" );
   ASSERT_EQ( config.skipped.size(), 3U );
   EXPECT_EQ( config.skipped[ 0 ].table, "ACL" );
   EXPECT_EQ( config.skipped[ 0 ].entries, 3U );
   EXPECT_EQ( config.skipped[ 1 ].table, "VLAN" );
   EXPECT_EQ( config.skipped[ 1 ].entries, 2U );
   EXPECT_EQ( config.skipped[ 2 ].entries, 0U );
}

TEST( ConfigDb, TellsWhereItIsWrongAndWhatWasWanted ) {
   const std::array< std::array< const char *, 2 >, 25 > all{ {
      { "[]", "1:1: the file is a list; wanted: an object" },
      { R"({"PORTCHANNEL":[]})", "1:16: PORTCHANNEL is a list; wanted: an object" },
      { R"({"PORTCHANNEL":{"P":"up"}})", "1:21: 'P' is a text; wanted: an object" },
      { R"({"PORTCHANNEL":{"P":{"admin_status":1}}})",
        "1:37: admin_status is a number; wanted: a text" },
      { R"({"PORTCHANNEL":{"P":{"admin_status":"on"}}})",
        "1:37: admin_status 'on'; wanted: up or down" },
      { R"({"PORTCHANNEL":{"P":{"members":"E"}}})", "1:32: members is a text; wanted: a list" },
      { R"({"PORTCHANNEL":{"P":{"members":[1]}}})", "1:33: a member is a number; wanted: a text" },
      { R"({"PORTCHANNEL":{"":{}}})", "1:17: '' is no name of an interface; wanted: a name without "
                                      "double quotes and control characters" },
      { R"({"PORTCHANNEL":{"P\n":{}}})", "1:17: 'P\\x0a' is no name of an interface; wanted: a "
                                         "name without double quotes and control characters" },
      { R"({"PORTCHANNEL_MEMBER":{"P|E":{}}})",
        "1:24: 'P' is not in PORTCHANNEL; wanted: an entry for it there" },
      { R"({"PORTCHANNEL":{"P":{}},"PORTCHANNEL_MEMBER":{"P":{}}})",
        "1:47: 'P' is no key of this table; wanted: \"PORTCHANNEL|PORT\"" },
      { R"({"PORTCHANNEL":{"P":{}},"PORTCHANNEL_MEMBER":{"P|E|F":{}}})",
        "1:47: 'P|E|F' is no key of this table; wanted: \"PORTCHANNEL|PORT\"" },
      { "{\"PORTCHANNEL\":{\"P\":{},\"Q\":{}},\n\"PORTCHANNEL_MEMBER\":{\"P|E\":{},\"Q|E\":{}}}",
        "2:32: 'E' is a member of 'P' already; wanted: a port in one LAG" },
      { R"({"PORTCHANNEL":{"P":{"members":["E"]},"Q":{"members":["E"]}}})",
        "1:55: 'E' is a member of 'P' already; wanted: a port in one LAG" },
      { R"({"MCLAG_DOMAIN":{"1":{},"2":{}}})",
        "1:25: a second MCLAG_DOMAIN '2'; wanted: only one" },
      { R"({"MCLAG_DOMAIN":{"1":{"peer_link":""}}})",
        "1:35: '' is no name of an interface; wanted: a name without double quotes and control "
        "characters" },
      { R"({"MCLAG_INTERFACE":{"1|P":{}}})",
        "1:21: there is no MCLAG_DOMAIN '1'; wanted: an entry in MCLAG_DOMAIN" },
      { R"({"MCLAG_DOMAIN":{"7":{}},"MCLAG_INTERFACE":{"1|P":{}}})",
        "1:45: there is no MCLAG_DOMAIN '1'; wanted: '7'" },
      { R"({"MCLAG_DOMAIN":{"1":{}},"MCLAG_INTERFACE":{"1|P":{}}})",
        "1:45: 'P' is not in PORTCHANNEL; wanted: an entry for it there" },
      { "{\"PORTCHANNEL\":{\"P\":{}},\"MCLAG_DOMAIN\":{\"1\":{}},\n"
        "\"MCLAG_INTERFACE\":{\"1|P\":{\"if_type\":\"X\"}}}",
        "2:37: if_type 'X'; wanted: PortChannel" },
      { R"({"VLAN_TRANSLATION":{"P|4095":{"new_vlan":"1"}}})",
        "1:22: '4095' is no VLAN; wanted: a number from 1 to 4094" },
      { R"({"VLAN_TRANSLATION":{"P|10":{}}})",
        "1:29: 'P|10' has no new_vlan; wanted: \"new_vlan\": \"VLAN\"" },
      { R"({"VLAN_TRANSLATION":{"P|10":{"new_vlan":"11","direction":"up"}}})",
        "1:58: direction 'up'; wanted: ingress, egress or both" },
      { R"({"VLAN_TRANSLATION":{"P|10":{"new_vlan":"9"},"P|20":{"new_vlan":"9"}}})",
        "1:46: VLAN 9 of 'P' is translated on egress already; wanted: each VLAN once" },
      // A VLAN can be written in more than one way.
      { R"({"VLAN_TRANSLATION":{"P|10":{"new_vlan":"20"},"P|010":{"new_vlan":"30"}}})",
        "1:47: VLAN 10 of 'P' is translated on ingress already; wanted: each VLAN once" },
   } };
   for ( const auto & [ text, message ] : all ) {
      EXPECT_EQ( errorOf( text ), message ) << text;
   }
}

} // namespace
