#include "tests/replay/Playing.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace {

// Requests and responses in their order, one a line: "TIME KIND LAG TOKEN".
std::string exchange( std::string_view scenario ) {
   const auto played = TestSupport::play( scenario );
   EXPECT_EQ( played.error, "" );
   std::ostringstream lines;
   for ( const auto & object : played.objects() ) {
      const std::string kind = object.at( "kind" );
      if ( kind == "request" || kind == "response" ) {
         lines << object.at( "t" ) << ' ' << kind << ' ' << object.at( "lag" ).get< std::string >()
               << ' ' << object.at( "token" ) << '\n';
      }
   }
   return lines.str();
}

TEST( SimulatedPeer, BringsARequestBackAfterItsDelay ) {
   EXPECT_EQ( exchange( "peer echo 0.25\nrequest P 7\nat 0.2499\nat 1" ), "0.0 request P 7\n"
                                                                          "0.25 response P 7\n" );
}

TEST( SimulatedPeer, AnswersAWithdrawnRequestByAWithdrawnResponse ) {
   EXPECT_EQ( exchange( "peer echo 0.5\nrequest P 7\nat 1\nno request P\nat 2" ),
              "0.0 request P 7\n"
              "0.5 response P 7\n"
              "1.0 request P null\n"
              "1.5 response P null\n" );
}

TEST( SimulatedPeer, AnswersEachChangeForItselfInOrder ) {
   EXPECT_EQ( exchange( "peer echo 1\nrequest P 1\nrequest P 2\nrequest Q 1\nno request P\nat 1" ),
              "0.0 request P 1\n"
              "0.0 request P 2\n"
              "0.0 request Q 1\n"
              "0.0 request P null\n"
              "1.0 response P 1\n"
              "1.0 response P 2\n"
              "1.0 response Q 1\n"
              "1.0 response P null\n" );
}

TEST( SimulatedPeer, AShorterDelayGivenLaterOvertakesNothing ) {
   EXPECT_EQ( exchange( "peer echo 2\nrequest P 1\nat 1\npeer echo 0.1\nrequest Q 2\nat 5\n"
                        "request P 3\nat 6" ),
              "0.0 request P 1\n"
              "1.0 request Q 2\n"
              "2.0 response P 1\n"
              "2.0 response Q 2\n"
              "5.0 request P 3\n"
              "5.1 response P 3\n" );
}

TEST( SimulatedPeer, WithoutDelayAnswersWhenTheClockIsNextMoved ) {
   EXPECT_EQ( exchange( "peer echo 0\nrequest P 1\nrequest P 2\nwait 0" ), "0.0 request P 1\n"
                                                                           "0.0 request P 2\n"
                                                                           "0.0 response P 1\n"
                                                                           "0.0 response P 2\n" );
}

TEST( SimulatedPeer, DoesNotSeeWhatWasThereBefore ) {
   EXPECT_EQ( exchange( "request P 1\npeer echo 1\nrequest P 1\nat 5" ), "0.0 request P 1\n" );
}

TEST( SimulatedPeer, LosesWhatIsUnderWayWhenItIsSwitchedOff ) {
   EXPECT_EQ( exchange( "peer echo 1\nrequest P 1\nat 0.5\nno peer echo\nrequest P 2\n"
                        "peer echo 0.1\nrequest P 3\nat 5" ),
              "0.0 request P 1\n"
              "0.5 request P 2\n"
              "0.5 request P 3\n"
              "0.6 response P 3\n" );
}

TEST( SimulatedPeer, ShowsAnAnswerThatChangesNothing ) {
   EXPECT_EQ( exchange( "response P 7\npeer echo 1\nrequest P 7\nat 1" ), "0.0 request P 7\n"
                                                                          "1.0 response P 7\n" );
}

TEST( SimulatedPeer, AnswersNothingAfterTheLastStatement ) {
   EXPECT_EQ( exchange( "peer echo 1\nrequest P 7\nat 0.9" ), "0.0 request P 7\n" );
}

TEST( SimulatedPeer, FallsDueAtTheSumOfMomentAndDelayInDoubles ) {
   // 0.1 + 0.2 is a little more than 0.3.
   EXPECT_EQ( exchange( "at 0.1\npeer echo 0.2\nrequest P 7\nat 0.3" ), "0.1 request P 7\n" );
   EXPECT_EQ( exchange( "at 0.1\npeer echo 0.2\nrequest P 7\nwait 0.2" ), "0.1 request P 7\n"
                                                                          "0.3 response P 7\n" );
}

TEST( SimulatedPeer, SwitchedOffWithoutHavingBeenOnChangesNothing ) {
   EXPECT_EQ( exchange( "no peer echo\nrequest P 1\nat 1" ), "0.0 request P 1\n" );
}

} // namespace
