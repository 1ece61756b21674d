// Memory that runs out at each request in turn while a configuration is turned into an opening: the
// caller gets std::bad_alloc, and nothing is leaked.

#include "replay/import/ConfigDb.h"
#include "replay/import/Opening.h"
#include "tests/platform/Memory.h"

#include <array>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace {

TEST( OutOfMemory, AnImportEndsWithBadAllocAndLeavesNothingBehind ) {
   const std::string text =
      R"({ "PORTCHANNEL": { "PortChannel10": { "members": [ "Ethernet10" ] } },
      "PORTCHANNEL_MEMBER": { "PortChannel10|Ethernet2": {} }, "MCLAG_DOMAIN": { "1": {} },
      "MCLAG_INTERFACE": { "1|PortChannel10": { "if_type": "PortChannel" } },
      "VLAN_TRANSLATION": { "PortChannel10|100": { "new_vlan": "1000" } },
      "a table with a long name that nobody reads": [ [ {} ], "a text with \u20ac in it, so" ] })";
   const auto import = [ & ] {
      const Import::SwitchConfig config = Import::parseConfigDb( text );
      const std::array switches{ Import::Named{ "config_db.json", config } };
      return Import::opening( switches );
   };
   const std::string wanted = import(); // names that live as long as the process are there, too
   const auto held = Memory::held();
   const int failed = Memory::attemptsUntilSuccess< std::bad_alloc >(
      [ & ] { static_cast< void >( import() ); }, [ & ] { ASSERT_EQ( Memory::held(), held ); } );
   EXPECT_GT( failed, 50 );
   EXPECT_EQ( import(), wanted );
}

} // namespace
