// Scenarios of two switches: which switch a statement is for, the wire, the responders, and what is
// shown of it.

#include "tests/replay/Playing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using TestSupport::Json;
using TestSupport::play;
using TestSupport::playAsText;

// The left switch asks at time 0 with token 2; the right one is ready.
const std::string asking = "switch right\n"
                           "lag PortChannel10 Ethernet7\n"
                           "acl Ethernet7 PortChannel10\n"
                           "switch left\n"
                           "mlag peer-interlock on\n"
                           "mlag intf PortChannel10 2 2\n"
                           "lag PortChannel10 Ethernet1\n"
                           "acl Ethernet1 PortChannel10\n"
                           "start controller\n";

// When the left switch is answered, by which token.
std::vector< std::pair< double, std::uint32_t > > answers( const std::string & scenario ) {
   const auto played = play( scenario );
   EXPECT_EQ( played.error, "" );
   std::vector< std::pair< double, std::uint32_t > > all;
   for ( const Json & object : played.objects( "response" ) ) {
      EXPECT_EQ( object.at( "switch" ), "left" );
      const Json & token = object.at( "token" );
      all.emplace_back( object.at( "t" ), token.is_null() ? 0 : token.get< std::uint32_t >() );
   }
   return all;
}

std::string errorOf( const std::string & scenario ) {
   return play( scenario ).error;
}

using Answer = std::pair< double, std::uint32_t >;

// ---- Switches -----------------------------------------------------------------------------------

TEST( Pair, AStatementIsForTheSwitchNamedLast ) {
   const auto played = play( "output egress-acl Ethernet1 PortChannel10\n"
                             "switch right\n"
                             "output egress-acl Ethernet2 PortChannel10\n"
                             "switch left\n"
                             "output egress-acl Ethernet3 PortChannel10\n" );
   const Json end = played.object( "end" );
   EXPECT_EQ( end.at( "left" ).at( "egress-acl" ),
              Json::parse( R"([["Ethernet1","PortChannel10"],["Ethernet3","PortChannel10"]])" ) );
   EXPECT_EQ( end.at( "right" ).at( "egress-acl" ),
              Json::parse( R"([["Ethernet2","PortChannel10"]])" ) );
}

TEST( Pair, AnExpectAsksTheSwitchNamedLast ) {
   const auto played = play( "output egress-acl Ethernet1 PortChannel10\n"
                             "expect egress-acl Ethernet1 PortChannel10\n"
                             "switch right\n"
                             "expect no egress-acl Ethernet1 PortChannel10\n" );
   EXPECT_EQ( played.failed, 0U );
}

TEST( Pair, TheTraceOfWhatHappenedLastOutlivesAChangeOfSwitch ) {
   const auto played = play( asking + "at 0.02\nswitch right\nexpect trace \" to linkUp\"\n" );
   EXPECT_EQ( played.failed, 0U );
}

TEST( Pair, EachVerdictSaysOnWhichSwitchItFell ) {
   const auto played = play( "switch right\noutput egress-acl Ethernet1 PortChannel10\n" );
   EXPECT_EQ( played.object( "verdict" ).at( "switch" ), "right" );
}

TEST( Pair, AScenarioOfOneSwitchNamesNone ) {
   const auto played = play( "output egress-acl Ethernet1 PortChannel10\n" );
   EXPECT_FALSE( played.object( "verdict" ).contains( "switch" ) );
   EXPECT_FALSE( played.object( "end" ).contains( "left" ) );
}

// ---- The wire -----------------------------------------------------------------------------------

TEST( Pair, ARequestIsAnsweredAfterTheWayThereAndBack ) {
   EXPECT_THAT( answers( asking + "at 1\n" ), ElementsAre( Answer( 0.02, 2 ) ) );
}

TEST( Pair, TheWireTakesAsLongAsItIsTold ) {
   EXPECT_THAT( answers( "wire delay 0.03\n" + asking + "at 1\n" ),
                ElementsAre( Answer( 0.06, 2 ) ) );
}

TEST( Pair, TheNextMessagesOfASwitchAreLost ) {
   EXPECT_THAT( answers( "switch right\nwire lose 1\n" + asking + "at 1\n" ), ElementsAre() );
   EXPECT_THAT( answers( "switch left\nwire lose 1\n" + asking + "at 1\n" ), ElementsAre() );
   EXPECT_THAT( answers( "switch left\nwire lose 0\n" + asking + "at 1\n" ),
                ElementsAre( Answer( 0.02, 2 ) ) );
}

TEST( Pair, TheNextMessagesOfASwitchAreRepeated ) {
   EXPECT_THAT( answers( "switch right\nwire repeat 1 0.05\n" + asking + "at 1\n" ),
                ElementsAre( Answer( 0.02, 2 ), Answer( 0.07, 2 ) ) );
}

TEST( Pair, TheNextMessagesOfASwitchAreHeldUp ) {
   EXPECT_THAT( answers( "switch right\nwire hold 1 0.05\n" + asking + "at 1\n" ),
                ElementsAre( Answer( 0.07, 2 ) ) );
}

TEST( Pair, AWireThatIsOffLosesEverything ) {
   EXPECT_THAT( answers( "wire off\n" + asking + "at 1\nwire on\nat 2\n" ), ElementsAre() );
}

TEST( Pair, FaultsByChanceAreThoseOfTheSeed ) {
   const auto shown = []( const std::string & seed ) {
      std::string flaps;
      for ( int at = 0; at < 20; ++at ) {
         flaps += "no member PortChannel10 Ethernet1\nmember PortChannel10 Ethernet1\nwait 1\n";
      }
      return play( "wire seed " + seed +
                   "\nwire lose 30%\nwire repeat 30% 0.2\nwire hold 30% 0.2\n" + asking + flaps )
         .objects( "wire" );
   };
   EXPECT_EQ( shown( "1" ), shown( "1" ) );
   EXPECT_NE( shown( "1" ), shown( "2" ) );
}

TEST( Pair, EachMessageIsShownWithTheMomentsOfItsArrival ) {
   const auto sent = play( "switch left\nwire repeat 1 0.5\n" + asking ).objects( "wire" );
   ASSERT_EQ( sent.size(), 1U );
   EXPECT_EQ( sent.front().at( "switch" ), "left" );
   EXPECT_EQ( sent.front().at( "content" ), "request" );
   EXPECT_EQ( sent.front().at( "token" ), 2 );
   EXPECT_EQ( sent.front().at( "arrives" ), Json::array( { 0.01, 0.51 } ) );
}

TEST( Pair, PeopleSeeWhatBecomesOfAMessage ) {
   const auto played = playAsText( "switch left\nwire lose 1\n" + asking );
   EXPECT_THAT( played.shown, HasSubstr( "wire        left: request PortChannel10 2" ) );
   EXPECT_THAT( played.shown, HasSubstr( " lost\n" ) );
}

// ---- Agents -------------------------------------------------------------------------------------

TEST( Pair, ASilentResponderAnswersWhenItSpeaksAgain ) {
   EXPECT_THAT( answers( "switch right\nresponder off\n" + asking +
                         "at 1\nswitch right\nresponder on\nat 2\n" ),
                ElementsAre( Answer( 1.01, 2 ) ) );
}

TEST( Pair, AnAgentThatIsRestartedKeepsTheRequestOfItsEarlierLife ) {
   const auto played = play( asking + "at 1\nrestart egress-acl\n" );
   EXPECT_EQ( played.objects( "request" ).size(), 1U );
   EXPECT_EQ( played.object( "end" ).at( "left" ).at( "requests" ).at( "PortChannel10" ), 2 );
}

TEST( Pair, ARestartRunsTheSameInterlockAgain ) {
   const auto played = play( "start basic\nrestart egress-acl\nexpect trace handleInitialized\n"
                             "expect no trace handleFeatureSwitchover\n" );
   EXPECT_EQ( played.error, "" );
   EXPECT_EQ( played.failed, 0U );
}

TEST( Pair, WhatDoesNotRunCannotBeRestarted ) {
   EXPECT_EQ( errorOf( "restart egress-acl" ),
              "1: 'egress-acl' does not run; wanted: 'start controller|basic|deprecated' before" );
}

// ---- Errors -------------------------------------------------------------------------------------

TEST( Pair, ASimulatedPeerHasNoPlaceBesideARealOne ) {
   EXPECT_EQ( errorOf( "switch right\npeer echo 0.1" ),
              "2: 'peer echo' has no place here: the other switch answers; wanted: a scenario of "
              "one switch" );
}

TEST( Pair, AWrongWordIsNamed ) {
   EXPECT_EQ( errorOf( "switch middle" ), "1: 'middle' is no switch; wanted: left or right" );
   EXPECT_EQ( errorOf( "wire cut" ), "1: 'cut' does not go with 'wire'; wanted: on, off, delay, "
                                     "lose, repeat, hold or seed" );
   EXPECT_EQ( errorOf( "wire lose 101%" ), "1: '101%' is no N%; wanted: 0% to 100%" );
   EXPECT_EQ( errorOf( "wire lose %" ), "1: '%' is no N%; wanted: 0% to 100%" );
   EXPECT_EQ( errorOf( "wire lose -1" ), "1: '-1' is no N; wanted: a number from 0 to 4294967295" );
   EXPECT_EQ( errorOf( "wire hold 1" ), "1: D is missing after '1'; wanted: wire hold N|N% D" );
   EXPECT_THAT( errorOf( "no wire on" ), HasSubstr( "'wire' cannot be taken back by 'no'" ) );
}

} // namespace
