#include "platform/Nodo/IntfId.h"
#include "tests/platform/Memory.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace {

using Nodo::IntfId;

TEST( IntfIdMemoryTest, AKnownTextItsTextFormAndTheOrderNeedNoMemory ) {
   const std::string text = "an interface with a name of more than a few letters";
   const IntfId known( text );
   const IntfId other( text + "2" );
   const std::uint64_t before = Memory::requests();
   const bool same = IntfId( text ) == known && known.stringValue() == text && known < other;
   EXPECT_EQ( Memory::requests(), before );
   EXPECT_TRUE( same );
}

TEST( IntfIdMemoryTest, AnIdentifierThatFoundNoMemoryKeepsWhatItWasAndCanBeSetLater ) {
   IntfId intf( "Ethernet1" );
   int failed = 0;
   for ( int at = 0; at < 40; ++at ) {
      const std::string text =
         "a text that has not been seen before, number " + std::to_string( at );
      intf.handleInitialized( "Ethernet1" );
      failed += Memory::attemptsUntilSuccess< std::bad_alloc >(
         [ & ] { intf.handleInitialized( text ); },
         [ & ] { EXPECT_EQ( intf, IntfId( "Ethernet1" ) ); } );
      EXPECT_EQ( intf.stringValue(), text );
      EXPECT_EQ( intf, IntfId( text ) );
   }
   EXPECT_GE( failed, 40 );
}

} // namespace
