#include "interlock-model/Interface/Interlock/IntfFeature.h"

#include "tests/support/Names.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace Interface::Interlock {
namespace {

using TestSupport::entry;

TEST( IntfFeature, StreamsAsMemberAndLagInParentheses ) {
   EXPECT_EQ( TestSupport::text( entry( "Ethernet1", "PortChannel10" ) ),
              "(Ethernet1, PortChannel10)" );
   EXPECT_EQ( TestSupport::text( IntfFeature() ), "(, )" );
}

TEST( IntfFeature, IsEqualWhereBothIdentifiersAre ) {
   const IntfFeature feature = entry( "Ethernet1", "PortChannel10" );
   EXPECT_EQ( feature, entry( "Ethernet1", "PortChannel10" ) );
   EXPECT_NE( feature, entry( "Ethernet2", "PortChannel10" ) );
   EXPECT_NE( feature, entry( "Ethernet1", "PortChannel20" ) );
   EXPECT_NE( feature, entry( "PortChannel10", "Ethernet1" ) );
}

TEST( IntfFeature, IsTheSameAfterItWasPacked ) {
   const IntfFeature feature = entry( "Ethernet1", "PortChannel10" );
   EXPECT_EQ( IntfFeature::unpacked( feature.packed() ), feature );
   EXPECT_EQ( IntfFeature::unpacked( 0 ), IntfFeature() );
   EXPECT_NE( feature.packed(), entry( "PortChannel10", "Ethernet1" ).packed() );
}

TEST( IntfFeature, TheHashDependsOnBothIdentifiersTheirOrderAndTheSeed ) {
   const IntfFeature feature = entry( "Ethernet1", "PortChannel10" );
   EXPECT_EQ( feature.hash( 1 ), entry( "Ethernet1", "PortChannel10" ).hash( 1 ) );
   EXPECT_EQ( feature.hash(), feature.hash( 0 ) );
   EXPECT_NE( feature.hash( 1 ), feature.hash( 2 ) );
   EXPECT_NE( feature.hash(), entry( "Ethernet2", "PortChannel10" ).hash() );
   EXPECT_NE( feature.hash(), entry( "Ethernet1", "PortChannel20" ).hash() );
   EXPECT_NE( feature.hash(), entry( "PortChannel10", "Ethernet1" ).hash() );
}

TEST( IntfFeature, HashesOfTheEntriesOfASwitchSpreadOverTheLowBits ) {
   // 512 entries in 1024 slots: chance gives about 403 different ones.
   std::set< std::size_t > slots;
   for ( int port = 1; port <= 512; ++port ) {
      const auto feature = entry( "Ethernet" + std::to_string( port ),
                                  "PortChannel" + std::to_string( ( port + 3 ) / 4 ) );
      slots.insert( feature.hash() % 1024 );
   }
   EXPECT_GT( slots.size(), 350U );
}

} // namespace
} // namespace Interface::Interlock
