// The picture as text. Whole pictures are compared with those of the documents, and looked at as
// XML by tests/replay/timeline/pictures.

#include "replay/timeline/Picture.h"

#include "replay/timeline/Svg.h"
#include "tests/replay/timeline/Charting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using Replay::Timeline::appendPicture;
using Replay::Timeline::Svg;
using testing::HasSubstr;
using testing::Not;

std::string pictureOf( std::string_view scenario ) {
   std::string out;
   appendPicture( out, TestSupport::chartOf( scenario ) );
   return out;
}

TEST( Svg, EscapesWhatXmlTakesForItsOwnAndShowsWhatItCannotHold ) {
   std::string out;
   Svg( out ).open( "a" ).attribute( "b", "<\"&'>" ).text( "a", "]]>&lt;\x01\n\xEF\xBF\xBF\xFF" );
   EXPECT_EQ( out,
              "<a b=\"&lt;&quot;&amp;'&gt;\">]]&gt;&amp;lt;\\x01\n\\xef\\xbf\\xbf\\xff</a>\n" );
}

TEST( Svg, WritesNumbersToAHundredthAndNoSignOfZero ) {
   std::string out;
   Svg( out ).box( 1.005, -0.001, 12.3456, 1e9 ).close();
   EXPECT_EQ( out, "<rect x=\"1\" y=\"0\" width=\"12.35\" height=\"1000000000\"/>\n" );
}

TEST( Picture, EachBarTellsWhoWhatWhenAndWhy ) {
   const std::string picture = pictureOf( "lag PortChannel10 Ethernet1\n"
                                          "start basic\n"
                                          "at 2.5\n" );
   EXPECT_THAT( picture, HasSubstr( "<title>Ethernet1 in PortChannel10\n"
                                    "admitted, 0 s to 2.5 s (2.5 s), the end\n"
                                    "egress-acl: no egress ACL is needed" ) );
   EXPECT_THAT( picture, HasSubstr( "<title>0 s  line 1: lag PortChannel10 Ethernet1</title>" ) );
}

TEST( Picture, ABadgeListsItsMarksUpToAPoint ) {
   std::string scenario;
   for ( int at = 0; at < 40; ++at ) {
      scenario += "acl Ethernet" + std::to_string( at ) + " PortChannel10\n";
   }
   const std::string picture = pictureOf( scenario );
   EXPECT_THAT( picture,
                HasSubstr( "line 24: acl Ethernet23 PortChannel10\nand 16 more, up to 0 s" ) );
   EXPECT_THAT( picture, Not( HasSubstr( "line 25:" ) ) );
}

TEST( Picture, ALegendHasOnlyWhatOccurs ) {
   const std::string picture = pictureOf( "lag PortChannel10 Ethernet1\nat 1\n" );
   EXPECT_THAT( picture, HasSubstr( ">admitted</text>" ) );
   EXPECT_THAT( picture, Not( HasSubstr( ">held</text>" ) ) );
   EXPECT_THAT( picture, Not( HasSubstr( ">time-out</text>" ) ) );
}

TEST( Picture, NothingAtAllIsSaidInWords ) {
   EXPECT_THAT( pictureOf( "" ), HasSubstr( ">no LAG, and nothing that becomes of one<" ) );
}

TEST( Picture, GrowsWithItsPixelsAndNotWithTheRun ) {
   const auto flaps = []( int count ) {
      std::string scenario = "lag PortChannel10\nstart basic\n";
      for ( int at = 0; at < count; ++at ) {
         scenario += "wait 0.5\nmember PortChannel10 Ethernet1\nwait 0.5\n"
                     "no member PortChannel10 Ethernet1\n";
      }
      return pictureOf( scenario ).size();
   };
   EXPECT_LT( flaps( 4000 ), 150'000U );
}

} // namespace
