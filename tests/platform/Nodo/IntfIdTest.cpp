#include "platform/Nodo/IntfId.h"

#include "tests/platform/Seed.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Nodo::IntfId;

TEST( IntfIdTest, TheEmptyTextIsTheValueZeroAndTheDefault ) {
   EXPECT_EQ( IntfId().value(), 0 );
   EXPECT_EQ( IntfId( "" ).value(), 0 );
   EXPECT_EQ( IntfId(), IntfId( "" ) );
   EXPECT_EQ( IntfId().stringValue(), "" );
   IntfId intf( "Ethernet1" );
   intf.handleInitialized( "" );
   EXPECT_EQ( intf, IntfId() );
}

TEST( IntfIdTest, EqualTextsHaveEqualHandlesAndHashes ) {
   const IntfId first( "Ethernet1" );
   const IntfId second( std::string( "Ether" ) + "net1" );
   EXPECT_EQ( first, second );
   EXPECT_EQ( first.value(), second.value() );
   EXPECT_EQ( first.hash(), second.hash() );
   EXPECT_EQ( &first.stringValue(), &second.stringValue() );
}

TEST( IntfIdTest, DifferentTextsHaveDifferentHandles ) {
   EXPECT_NE( IntfId( "Ethernet1" ), IntfId( "Ethernet01" ) );
   EXPECT_NE( IntfId( "Ethernet1" ), IntfId( "ethernet1" ) );
   EXPECT_NE( IntfId( "Ethernet1" ), IntfId( "Ethernet1 " ) );
   EXPECT_NE( IntfId( "Ethernet1" ), IntfId() );
}

TEST( IntfIdTest, HandlesAreNumberedInTheOrderInWhichTextsAreSeen ) {
   const IntfId first( "numbered first" );
   const IntfId second( "numbered second" );
   EXPECT_EQ( second.value(), first.value() + 1 );
   EXPECT_EQ( IntfId( "numbered first" ).value(), first.value() );
}

TEST( IntfIdTest, IsTheSameAfterItWasPacked ) {
   const IntfId intf( "packed" );
   EXPECT_EQ( IntfId::unpacked( intf.packed() ), intf );
   EXPECT_EQ( intf.packed(), intf.value() );
   EXPECT_EQ( IntfId::unpacked( 0 ), IntfId() );
}

TEST( IntfIdTest, HashesOfConsecutiveHandlesSpread ) {
   std::set< std::size_t > buckets;
   for ( int at = 0; at < 1024; ++at ) {
      buckets.insert( IntfId( "spread" + std::to_string( at ) ).hash() % 4096 );
   }
   EXPECT_GT( buckets.size(), 800 );
}

TEST( IntfIdTest, KeepsAnyTextAsItIs ) {
   const std::vector< std::string > texts{ "Ethernet3/1/4.100",
                                           " ",
                                           "Vlan 10\n",
                                           "port-channel-ü-λ-端口-🔌",
                                           std::string( "a\0b", 3 ),
                                           std::string( "\0", 1 ),
                                           "\x80\xFF",
                                           std::string( 100'000, 'x' ) };
   for ( const std::string & text : texts ) {
      EXPECT_EQ( IntfId( text ).stringValue(), text );
      EXPECT_NE( IntfId( text ), IntfId() );
   }
   EXPECT_NE( IntfId( std::string( "a\0b", 3 ) ), IntfId( "a" ) );
   EXPECT_NE( IntfId( std::string( "a\0b", 3 ) ), IntfId( std::string( "a\0c", 3 ) ) );
}

TEST( IntfIdTest, ANameLiesReadyForRecordsWithItsLengthInFrontAndZerosBehind ) {
   for ( const std::size_t length : { 0U, 1U, 15U, 16U, 31U } ) {
      const std::string text( length, 'n' );
      std::string wanted( 1, static_cast< char >( length ) );
      wanted += text;
      wanted.resize( Nodo::InternedName::recordFormBytes, '\0' );
      const auto & form = IntfId( text ).name().recordForm;
      EXPECT_EQ( std::string( reinterpret_cast< const char * >( form.data() ), form.size() ),
                 wanted );
   }
   EXPECT_EQ( IntfId( std::string( 32, 'n' ) ).name().recordForm[ 0 ],
              Nodo::InternedName::noRecordForm );
   EXPECT_EQ( IntfId( std::string( 255, 'n' ) ).name().recordForm[ 0 ],
              Nodo::InternedName::noRecordForm );
}

TEST( IntfIdTest, StreamsItsText ) {
   std::ostringstream out;
   out << IntfId( "PortChannel10" ) << '|' << IntfId() << '|' << IntfId( "λ" );
   EXPECT_EQ( out.str(), "PortChannel10||λ" );
}

TEST( IntfIdTest, TheTextStaysWhereItIsWhileAMillionOthersAreSeen ) {
   const IntfId intf( "Ethernet-stays" );
   const std::string & text = intf.stringValue();
   const char * const bytes = text.data();
   std::string other;
   for ( int at = 0; at < 1'000'000; ++at ) {
      other = "m";
      other += std::to_string( at );
      static_cast< void >( IntfId( other ) );
   }
   EXPECT_EQ( &intf.stringValue(), &text );
   EXPECT_EQ( text.data(), bytes );
   EXPECT_EQ( text, "Ethernet-stays" );
   EXPECT_EQ( IntfId( "m123456" ).stringValue(), "m123456" );
   EXPECT_EQ( IntfId( "Ethernet-stays" ), intf );
}

TEST( IntfIdOrderTest, IsTheNaturalOrderOfTheTexts ) {
   const std::vector< std::string > ascending{
      "",
      "-",
      "0",
      "00",
      "0a",
      "00b",
      "01",
      "1",
      "2",
      "10",
      "99999999999999999999999999",
      "100000000000000000000000000",
      "Et",
      "Et1",
      "Et1/1",
      "Et1/2",
      "Et1/10",
      "Et002",
      "Et02",
      "Et2",
      "Et2/1",
      "Et02/2",
      "Et2/3",
      "Et10",
      "Et10/1",
      "Ethernet",
      "Ethernet1",
      "Ethernet2",
      "Ethernet9",
      "Ethernet10",
      "Ethernet10.1",
      "Ethernet10.20",
      "Ethernet10a",
      "Ethernet100",
      "PortChannel1",
      "PortChannel10",
      "a",
      "a0",
      "a00",
      "a1",
      "ab",
      "z",
      "ä1",
      "ä2",
      "ä10",
      "端口3",
      "端口12",
      "🔌1",
   };
   for ( std::size_t a = 0; a < ascending.size(); ++a ) {
      for ( std::size_t b = 0; b < ascending.size(); ++b ) {
         EXPECT_EQ( IntfId( ascending[ a ] ) <=> IntfId( ascending[ b ] ), a <=> b )
            << ascending[ a ] << " and " << ascending[ b ];
      }
   }
}

TEST( IntfIdOrderTest, DoesNotDependOnTheOrderInWhichTextsWereSeen ) {
   const IntfId later( "Order20" );
   const IntfId earlier( "Order3" );
   EXPECT_LT( earlier, later );
   EXPECT_GT( later, earlier );
   EXPECT_LE( IntfId( "Order3" ), earlier );
   EXPECT_LT( IntfId(), earlier );
}

TEST( IntfIdOrderTest, IsATotalOrder ) {
   SCOPED_TRACE( seedNote( 11 ) );
   std::mt19937_64 random( seed( 11 ) );
   const auto draw = [ & ] {
      static const std::string letters( "0012aB/.\xC3\0", 10 );
      std::string text;
      for ( auto length = random() % 7; length > 0; --length ) {
         text += letters[ random() % letters.size() ];
      }
      return IntfId( text );
   };
   for ( int round = 0; round < 20'000; ++round ) {
      const IntfId a = draw();
      const IntfId b = draw();
      const IntfId c = draw();
      ASSERT_EQ( a <=> b == 0, a == b ) << a << ", " << b;
      ASSERT_EQ( a< b, b > a ) << a << ", " << b;
      if ( a < b && b < c ) {
         ASSERT_LT( a, c ) << a << ", " << b << ", " << c;
      }
      if ( a <= b && b <= a ) {
         ASSERT_EQ( a, b );
      }
   }
}

TEST( IntfIdOrderTest, SortsAListTheSameFromWhereverItStarts ) {
   SCOPED_TRACE( seedNote( 12 ) );
   std::mt19937_64 random( seed( 12 ) );
   std::vector< IntfId > sorted;
   for ( int at = 0; at < 200; ++at ) {
      sorted.emplace_back( "Ethernet" + std::to_string( at ) );
   }
   auto shuffled = sorted;
   std::ranges::shuffle( shuffled, random );
   std::ranges::sort( shuffled );
   EXPECT_EQ( shuffled, sorted );
}

} // namespace
