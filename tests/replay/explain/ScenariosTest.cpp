// Every story of scenarios/, followed from moment to moment: what the records tell is what stands
// in the outputs, on each switch; and the ring tells the same as the text trace, as far as it goes.

#include "replay/Switch.h"
#include "replay/explain/Witness.h"
#include "tests/replay/explain/Explaining.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

using Explain::Gate;
using Explain::Meaning;
using Explain::PairName;
using Explain::Story;

std::vector< std::filesystem::path > allScenarios() {
   std::vector< std::filesystem::path > files;
   for ( const auto & file :
         std::filesystem::directory_iterator( INTERLOCK_SOURCE_DIR "/scenarios" ) ) {
      files.push_back( file.path() );
   }
   std::ranges::sort( files );
   return files;
}

std::string textOf( const std::filesystem::path & file ) {
   std::ifstream stream( file );
   return { std::istreambuf_iterator< char >( stream ), {} };
}

/// Keeps the messages that it is shown, and shows nothing.
class Seen final : public Replay::Output {
 public:
   explicit Seen( Replay::Writer & writer ) : Output( writer ) {}

   std::uint32_t levelsAlwaysShown() const noexcept override { return ~0U; }
   void begin( std::string_view /* file */ ) override {}
   void sent( const Replay::Peering::Message & /* message */,
              std::span< const Vex::Seconds > /* delays */ ) override {}
   void statement( std::size_t /* line */, std::string_view /* text */ ) override {}
   void expectation( std::size_t /* line */, const Replay::Finding & finding ) override {
      EXPECT_TRUE( finding.ok );
   }
   void trace( const Vex::TraceRecord & record ) override {
      const Explain::Note note = Explain::noteOf( record, {} );
      EXPECT_NE( note.meaning, nullptr ) << note.asWritten;
      meanings.insert( note.meaning );
   }
   void ring( std::span< const Jotter::Record > /* records */ ) override {}
   void end( const Replay::Outcome & /* outcome */ ) override {}
   void verdict( Replay::Interlock /* interlock */,
                 const Replay::Pair & /* pair */,
                 bool /* admitted */ ) override {}
   void request( Nodo::IntfId /* lag */, std::optional< Replay::Token > /* token */ ) override {}
   void response( Nodo::IntfId /* lag */, std::optional< Replay::Token > /* token */ ) override {}

   std::set< const Meaning * > meanings;
};

/// Compares at each moment.
class Comparison final : public Explain::Witness {
 public:
   Comparison( const Replay::Scenario & scenario, Output & inner )
       : Witness( scenario, 0, inner ) {}

   std::size_t compared = 0;
   std::vector< Story > stories; // at the end

 private:
   void momentOver( Vex::Seconds moment, Vex::Seconds next ) override {
      for ( const Told & told : switches() ) {
         for ( const PairName & pair : told.story.pairs() ) {
            compare( told, pair, moment );
         }
         EXPECT_FALSE( told.story.mixed() ) << told.name << " at " << moment;
         EXPECT_EQ( told.story.unknown(), 0U );
         if ( next == Vex::Seconds::infinity() ) {
            stories.push_back( told.story );
         }
      }
   }

   void compare( const Told & told, const PairName & pair, Vex::Seconds moment ) {
      for ( const Replay::Interlock interlock : Replay::interlocks ) {
         const auto * const standing = told.story.standing( pair, Explain::gateOf( interlock ) );
         if ( standing == nullptr || !standing->last ) {
            continue;
         }
         const bool inOutput =
            told.device->entities()
               .output( interlock )
               ->intfHas( { Nodo::IntfId( pair.member ), Nodo::IntfId( pair.lag ) } );
         EXPECT_EQ( standing->last->admitted(), inOutput )
            << told.name << ' ' << pair.member << " in " << pair.lag << " at " << moment;
         ++compared;
      }
   }
};

struct Followed {
   std::vector< Story > stories;
   std::vector< Jotter::Record > ring;
   std::set< const Meaning * > meanings;
   std::size_t compared;
};

Followed follow( const std::string & text ) {
   const Replay::Scenario scenario = Replay::parseScenario( text );
   const TestSupport::OutputFile file;
   Replay::Writer writer( file.descriptor() );
   Seen seen( writer );
   Comparison comparison( scenario, seen );
   Jotter::TraceFile ring;
   Replay::RunOptions options;
   options.traceFile = &ring;
   Replay::VirtualHostClock clock;
   runScenario( scenario, options, clock, comparison );
   return { comparison.stories, Jotter::readRecords( ring.bytes() ), seen.meanings,
            comparison.compared };
}

Story storyOf( const std::vector< Jotter::Record > & records ) {
   Story story;
   for ( const Jotter::Record & record : records ) {
      story.take( Explain::noteOf( record ) );
   }
   return story;
}

class EveryScenario : public ::testing::TestWithParam< std::filesystem::path > {};

TEST_P( EveryScenario, IsToldAsItIs ) {
   EXPECT_GT( follow( textOf( GetParam() ) ).compared, 0U );
}

TEST_P( EveryScenario, IsToldByTheRingAsByTheTextTrace ) {
   const Followed followed = follow( textOf( GetParam() ) );
   if ( followed.stories.size() > 1 ) {
      EXPECT_FALSE( followed.ring.empty() ); // it mixes both switches up
      return;
   }
   const Story & run = followed.stories.front();
   const Story ring = storyOf( followed.ring );
   EXPECT_EQ( ring.unknown(), 0U );
   EXPECT_FALSE( ring.mixed() );
   for ( const PairName & pair : run.pairs() ) {
      const auto * const expected = run.standing( pair, Gate::egressAcl );
      const auto * const found = ring.standing( pair, Gate::egressAcl );
      ASSERT_EQ( expected != nullptr && expected->last, found != nullptr ) << pair.member;
      if ( found != nullptr ) {
         EXPECT_EQ( found->last->time, expected->last->time ) << pair.member;
         EXPECT_EQ( found->last->reason, expected->last->reason ) << pair.member;
         EXPECT_EQ( found->last->decider, expected->last->decider ) << pair.member;
         EXPECT_EQ( found->verdictSince, expected->verdictSince ) << pair.member;
      }
      EXPECT_EQ( ring.standing( pair, Gate::vlanXlate ), nullptr );
      const auto * const exchange = run.exchange( pair.lag );
      const auto * const inRing = ring.exchange( pair.lag );
      ASSERT_EQ( exchange != nullptr, inRing != nullptr ) << pair.lag;
      if ( exchange != nullptr ) {
         EXPECT_EQ( inRing->link, exchange->link );
         EXPECT_EQ( inRing->since, exchange->since );
         EXPECT_EQ( inRing->token, exchange->token );
         EXPECT_EQ( inRing->deadline, exchange->deadline );
         EXPECT_EQ( inRing->failure, exchange->failure );
      }
   }
}

INSTANTIATE_TEST_SUITE_P( OfScenarios,
                          EveryScenario,
                          ::testing::ValuesIn( allScenarios() ),
                          []( const auto & story ) {
                             std::string name = story.param.stem().string();
                             std::ranges::replace( name, '-', '_' );
                             return name;
                          } );

// What the stories leave out of the interlocks' messages.
constexpr std::array< std::string_view, 3 > lesserStories{
   "mlag state 3\nmlag peer-link Ethernet49\nmlag intf PortChannel10 1 1\nlag PortChannel10\n"
   "start basic\nmember PortChannel10 Ethernet1\nlink Ethernet49 2\nmlag intf PortChannel20 1 2\n"
   "no mlag intf PortChannel10\n",
   "mlag state 3\nmlag peer-link Ethernet49\nmlag intf PortChannel10 1 1\nlag PortChannel10\n"
   "start deprecated\nmember PortChannel10 Ethernet1\nlink Ethernet49 2\nmlag state 1\n"
   "mlag state 3\nmlag intf PortChannel20 1 2\nno mlag intf PortChannel10\n"
   "no member PortChannel10 Ethernet1\n",
   "mlag peer-interlock on\nmlag intf PortChannel10 1 2\nlag PortChannel10\nstart controller\n"
   "member PortChannel10 Ethernet1\nresponse PortChannel10 2\nrequest PortChannel10 7\n"
   "acl Ethernet1 PortChannel10\nno mlag intf PortChannel10\n"
   "no member PortChannel10 Ethernet1\noutput egress-acl Ethernet1 PortChannel10\n"
   "acl Ethernet1 PortChannel10\nno acl Ethernet1 PortChannel10\n"
   "start vlan-xlate\nswitchport PortChannel20\nmember PortChannel10 Ethernet1\n"
   "no lag PortChannel10\nno acl Ethernet1 PortChannel10\nno vlan-ready Ethernet1 PortChannel10\n"
   "vlan-ready Ethernet1 PortChannel10\n",
};

TEST( Meanings, AreAllMetInRunsButForThoseThatNeedAnInterruptedDecision ) {
   std::set< const Meaning * > met;
   for ( const auto & file : allScenarios() ) {
      met.merge( follow( textOf( file ) ).meanings );
   }
   for ( const std::string_view story : lesserStories ) {
      met.merge( follow( std::string( story ) ).meanings );
   }
   std::vector< std::string_view > unmet;
   for ( const Meaning & meaning : Explain::meanings() ) {
      if ( !met.contains( &meaning ) ) {
         unmet.push_back( meaning.message );
      }
   }
   EXPECT_THAT(
      unmet, ::testing::UnorderedElementsAre( "Interface isn't a lag or it is a lag but not active",
                                              "lag is down, member cannot be added" ) );
}

} // namespace
