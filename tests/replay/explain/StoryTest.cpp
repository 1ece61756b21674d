// What a run of a scenario does not show: records that are missing, that are not known, that others
// have written, and decisions that are interrupted.

#include "replay/explain/Story.h"

#include "platform/Vex/Clock.h"
#include "replay/explain/Explanation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Explain::Decider;
using Explain::Gate;
using Explain::Link;
using Explain::Note;
using Explain::PairName;
using Explain::Reason;
using Explain::Story;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

const PairName pair{ "Ethernet1", "PortChannel10" };

class StoryTest : public ::testing::Test {
 protected:
   StoryTest() { story_.watch( pair ); }

   /// A message of the egress-ACL interlocks, as the ring has it, with {} for each argument.
   void tell( std::string_view function,
              std::string_view message,
              std::vector< std::string > arguments = {} ) {
      Note note{ time_,
                 ++sequence_,
                 meaningOf( Gate::egressAcl, function, message ),
                 std::move( arguments ),
                 {} };
      if ( note.meaning == nullptr ) {
         note.asWritten = message;
      }
      story_.take( note );
   }
   void handleMember( const PairName & which = pair ) {
      tell( "handleMember", "handleMember memberIntf : {} lag : {}", { which.member, which.lag } );
   }
   void handlePeerInterlockLag() {
      tell( "handlePeerInterlockLag", "handlePeerInterlockLag lag : {}", { pair.lag } );
   }
   void hold() { tell( "handleMember", "lag and member are not in input IntfFeatureStatus" ); }
   void admit() { tell( "handleMember", "lag and member are in input IntfFeatureStatus" ); }
   void updateLinkState( std::string_view message, const std::string & from ) {
      tell( "updateLinkState", "updateLinkState lag : {}", { pair.lag } );
      tell( "updateLinkState", message, { from } );
   }

   std::optional< Reason > reason( const PairName & which = pair ) const {
      const auto * const standing = story_.standing( which, Gate::egressAcl );
      return standing != nullptr ? std::optional( standing->last->reason ) : std::nullopt;
   }
   Explain::AtGate gate() const {
      const auto answer = explain( story_, { pair, Explain::Source::ring, time_, {}, {} } );
      EXPECT_TRUE( answer.explanation ) << answer.error;
      return answer.explanation.value_or( Explain::Explanation{} ).gates.at( 0 );
   }
   std::vector< std::string > remarks() const {
      return explain( story_, { pair, Explain::Source::ring, time_, {}, {} } ).explanation->remarks;
   }

   Story story_;
   Vex::Seconds time_{ 5 };
   std::uint64_t sequence_ = 0;
};

constexpr std::string_view toRequesting = "Transitioning link state from {} to linkRequesting";

TEST_F( StoryTest, AMemberOfALagWhoseExchangeIsDownIsHeld ) {
   handleMember();
   handlePeerInterlockLag();
   tell( "handleMember", "lag is down, member cannot be added" );
   EXPECT_EQ( reason(), Reason::lagDown );
   EXPECT_EQ( gate().decision->decider, Decider::peer );
   EXPECT_EQ( gate().looked.back().check, "peer's answer" );
   EXPECT_EQ( gate().looked.back().saw, "nothing is asked of the peer yet" );
   EXPECT_TRUE( gate().looked.back().decisive );
}

TEST_F( StoryTest, AVerdictWhoseBeginningIsLostIsNobodys ) {
   sequence_ = 40;
   hold();
   EXPECT_EQ( reason(), std::nullopt );
   handleMember();
   admit();
   EXPECT_EQ( reason(), Reason::aclInPlace );
}

TEST_F( StoryTest, TheFirstVerdictOfARingThatWentRoundMayBeOlder ) {
   sequence_ = 40;
   handleMember();
   hold();
   EXPECT_TRUE( gate().orEarlier );
   EXPECT_THAT( remarks(), Contains( "Nothing older than 5 s is in the ring." ) );
   time_ = Vex::Seconds( 6 );
   handleMember();
   admit();
   EXPECT_FALSE( gate().orEarlier );
   EXPECT_EQ( gate().since, Vex::Seconds( 6 ) );
}

TEST_F( StoryTest, AWholeRingTellsTheBeginning ) {
   handleMember();
   hold();
   EXPECT_FALSE( gate().orEarlier );
   EXPECT_THAT( remarks(), ::testing::Not( Contains( HasSubstr( "older" ) ) ) );
}

TEST_F( StoryTest, RecordsThatAreMissingEndWhatWasUnderWay ) {
   handleMember();
   sequence_ += 3;
   hold();
   EXPECT_EQ( reason(), std::nullopt );
   handleMember();
   hold();
   EXPECT_EQ( reason(), Reason::noLocalAcl );
   EXPECT_THAT( remarks(),
                Contains( "Records before 5 s are missing: what they changed is not known." ) );
}

TEST_F( StoryTest, RecordsThatAreMissingTakeTheExchangeAlong ) {
   updateLinkState( toRequesting, "0" );
   EXPECT_EQ( story_.exchange( pair.lag )->link, Link::asking );
   ++sequence_;
   handleMember();
   EXPECT_EQ( story_.exchange( pair.lag ), nullptr );
   updateLinkState( toRequesting, "2" );
   EXPECT_FALSE( story_.mixed() );
}

TEST_F( StoryTest, ADecisionWithinADecisionIsItsOwn ) {
   const PairName other{ "Ethernet2", "PortChannel20" };
   tell( "handleMlagIntfStatus", "handleMlagIntfStatus mlagIntf: {}", { pair.lag } );
   handleMember();
   handlePeerInterlockLag();
   tell( "handlePeerInterlockLag", "Sending install request to peer with value {}", { "9" } );
   tell( "handleIntfFeature", "handleIntfFeature memberIntf : {} lag : {}",
         { other.member, other.lag } );
   handleMember( other );
   tell( "handleMember", "lag is not an mlag intf" );
   updateLinkState( toRequesting, "0" );
   tell( "handleMember", "member is not ready to be added to lag" );
   EXPECT_EQ( reason( other ), Reason::notMlag );
   EXPECT_EQ( reason(), Reason::awaitingPeer );
   EXPECT_EQ( gate().because, "the MLAG status of PortChannel10 changed" );
   EXPECT_EQ( story_.exchange( pair.lag )->token, "9" );
}

TEST_F( StoryTest, ADecisionThatWasGivenUpTakesNoVerdict ) {
   handleMember();
   time_ = Vex::Seconds( 6 );
   handleMember( { "Ethernet2", "PortChannel10" } );
   hold();
   EXPECT_EQ( reason(), std::nullopt );
   hold();
   EXPECT_EQ( reason(), std::nullopt );
}

TEST_F( StoryTest, AMessageThatIsNotKnownIsShownAsItStands ) {
   handleMember();
   tell( "handleMember", "the moon is full" );
   hold();
   EXPECT_EQ( gate().looked.front().check, "(message not known)" );
   EXPECT_EQ( gate().looked.front().saw, "the moon is full" );
   EXPECT_THAT( remarks(),
                Contains( "1 message is not known to this program, and may say more." ) );
}

TEST_F( StoryTest, RecordsOfTwoInterlocksContradictEachOther ) {
   tell( "handleInitialized", "handleInitialized" );
   updateLinkState( toRequesting, "0" );
   EXPECT_FALSE( story_.mixed() );
   updateLinkState( toRequesting, "2" );
   EXPECT_TRUE( story_.mixed() );
   handleMember();
   hold();
   EXPECT_THAT( remarks(), Contains( HasSubstr( "More than one switch's interlock" ) ) );
}

TEST_F( StoryTest, ALinkStateFromBeforeTheFirstRecordContradictsNothing ) {
   sequence_ = 40;
   updateLinkState( toRequesting, "2" );
   EXPECT_FALSE( story_.mixed() );
}

TEST_F( StoryTest, TheDeadlineIsThatOfTheRequestsRecord ) {
   updateLinkState( toRequesting, "0" );
   EXPECT_EQ( story_.exchange( pair.lag )->deadline, std::nullopt );
   tell( "handleLinkState", "Starting timeout for lag {} at time {}", { pair.lag, "7.250000" } );
   EXPECT_EQ( story_.exchange( pair.lag )->deadline, Vex::Seconds( 7.25 ) + Story::patience );
   tell( "handleLinkState", "Stopping timeout for lag {}", { pair.lag } );
   EXPECT_EQ( story_.exchange( pair.lag )->deadline, std::nullopt );
}

TEST_F( StoryTest, ATimeThatIsNoneLeavesTheDeadlineOpen ) {
   updateLinkState( toRequesting, "0" );
   tell( "handleLinkState", "Starting timeout for lag {} at time {}", { pair.lag, "soon" } );
   EXPECT_EQ( story_.exchange( pair.lag )->deadline, std::nullopt );
}

TEST_F( StoryTest, EachPairOfAPassIsDecidedBecauseOfIt ) {
   tell( "handleMlagStateOrPeerlink", "handleMlagStateOrPeerlink" );
   handleMember( { "Ethernet2", "PortChannel10" } );
   hold();
   handleMember();
   hold();
   EXPECT_EQ( gate().because, "the MLAG state, the peer link or its link status changed" );
   handleMember(); // a pass decides it once
   admit();
   EXPECT_EQ( gate().because, "Ethernet1 entered, left or changed in PortChannel10" );
}

TEST_F( StoryTest, AnEventOfAnotherPairIsNoReason ) {
   tell( "handleIntfFeature", "handleIntfFeature memberIntf : {} lag : {}",
         { "Ethernet2", "PortChannel10" } );
   handleMember();
   hold();
   EXPECT_EQ( gate().because, "Ethernet1 entered, left or changed in PortChannel10" );
}

TEST_F( StoryTest, WhatComesAfterAPauseIsAnEventOfItsOwn ) {
   tell( "handlePeerResponse", "handlePeerResponse lag: {}", { pair.lag } );
   time_ = Vex::Seconds( 5.5 );
   handleMember();
   hold();
   EXPECT_EQ( gate().because, "Ethernet1 entered, left or changed in PortChannel10" );
}

TEST_F( StoryTest, ManyDecisionsWithinEachOtherTakeNoMoreThanTheirRoom ) {
   for ( int depth = 0; depth < 1000; ++depth ) {
      handleMember();
   }
   for ( int depth = 0; depth < 1000; ++depth ) {
      hold();
   }
   EXPECT_EQ( reason(), Reason::noLocalAcl );
}

// ---- Notes out of a trace file that says what it likes ------------------------------------------

Jotter::Record record( Jotter::Descriptor descriptor, std::vector< Vex::String > arguments ) {
   return { 1, Vex::Seconds( 1 ),
            std::make_shared< const Jotter::Descriptor >( std::move( descriptor ) ),
            std::move( arguments ) };
}

using Jotter::PieceKind;

TEST( Note, OfAMessageWhoseArgumentsAreNotThereIsNotKnown ) {
   const Note note = Explain::noteOf(
      record( { "Velo/VeloMlagEgressAclIntfInterlockSm",
                1,
                "handleMember",
                0,
                { { PieceKind::literal, "handleMember memberIntf : {} lag : {}" } } },
              {} ) );
   EXPECT_EQ( note.meaning, nullptr );
   EXPECT_EQ( note.asWritten, "handleMember: handleMember memberIntf : {} lag : {}" );
}

TEST( Note, OfAnotherProgramIsNotKnown ) {
   const Note note = Explain::noteOf(
      record( { "Elsewhere", 1, "doCleanup", 0, { { PieceKind::literal, "doCleanup" } } }, {} ) );
   EXPECT_EQ( note.meaning, nullptr );
   EXPECT_EQ( note.asWritten, "doCleanup: doCleanup" );
}

TEST( Note, OfACallSiteThatIsNotDescribedIsShownAsItIsRead ) {
   EXPECT_EQ(
      Explain::noteOf(
         record( { "", 0, "", 0, { { PieceKind::literal, "(call site 7 unknown)" } } }, {} ) )
         .asWritten,
      "(call site 7 unknown)" );
}

} // namespace
