// Where things lie in the picture: the axis, and what shares a place on it.

#include "replay/timeline/Layout.h"

#include "replay/timeline/Labels.h"
#include "replay/timeline/TimeAxis.h"
#include "tests/platform/Seed.h"

#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using Replay::Timeline::badges;
using Replay::Timeline::bars;
using Replay::Timeline::Mark;
using Replay::Timeline::MarkKind;
using Replay::Timeline::Span;
using Replay::Timeline::SpanKind;
using Replay::Timeline::TimeAxis;

std::vector< Vex::Seconds > moments( const std::vector< double > & values ) {
   std::vector< Vex::Seconds > all;
   for ( const double value : values ) {
      all.emplace_back( value );
   }
   return all;
}

std::string labels( const TimeAxis & axis ) {
   std::string text;
   for ( const TimeAxis::Tick & tick : axis.ticks() ) {
      text += ( text.empty() ? "" : " " ) + tick.label;
   }
   return text;
}

TEST( TimeAxis, HasItsTicksAtRoundTimes ) {
   EXPECT_EQ( labels( { moments( { 0, 3.5 } ), 100, 960 } ), "0.0 0.5 1.0 1.5 2.0 2.5 3.0 3.5" );
   EXPECT_EQ( labels( { moments( { 0, 0.055 } ), 100, 500 } ), "0.00 0.01 0.02 0.03 0.04 0.05" );
   EXPECT_EQ( labels( { moments( { 0, 86400 } ), 100, 960 } ), "0 10000 20000 30000 40000 50000 "
                                                               "60000 70000 80000" );
   EXPECT_EQ( labels( { moments( { 0, 7e11 } ), 100, 960 } ),
              "0 1e+11 2e+11 3e+11 4e+11 5e+11 6e+11 7e+11" );
}

TEST( TimeAxis, HasOneTickWhereAllIsAtOneMoment ) {
   const TimeAxis axis( moments( { 0 } ), 100, 960 );
   EXPECT_EQ( labels( axis ), "0" );
   EXPECT_EQ( axis.at( Vex::Seconds( 0 ) ), 100 );
   EXPECT_EQ( axis.right(), 100 );
}

TEST( TimeAxis, CutsAQuietTimeThatDwarfsTheRest ) {
   const TimeAxis axis( moments( { 0, 0.1, 1, 2, 2.1, 60 } ), 100, 960 );
   ASSERT_EQ( axis.cuts().size(), 1U );
   EXPECT_EQ( axis.cuts().front().from, Vex::Seconds( 2.1 ) );
   EXPECT_EQ( axis.cuts().front().to, Vex::Seconds( 60 ) );
   EXPECT_NEAR( axis.right(), 1060, 0.001 );
   EXPECT_NEAR( axis.at( Vex::Seconds( 2.1 ) ), 1008, 0.001 );
   EXPECT_EQ( labels( axis ), "0.0 0.2 0.4 0.6 0.8 1.0 1.2 1.4 1.6 1.8 2.0 60.0" );
}

TEST( TimeAxis, CutsQuietTimesOfOneLengthTogetherOrNotAtAll ) {
   EXPECT_EQ( TimeAxis( moments( { 0, 0.1, 60.1, 60.2, 120.2, 120.3 } ), 0, 960 ).cuts().size(),
              2U );
   EXPECT_TRUE( TimeAxis( moments( { 0, 10 } ), 0, 960 ).cuts().empty() );
   EXPECT_TRUE( TimeAxis( moments( { 0, 1, 1.25, 1.5, 2, 2.1, 3, 3.5 } ), 0, 960 ).cuts().empty() );
}

TEST( TimeAxis, NeverRunsBackwardsNorOut ) {
   std::mt19937_64 random( seed( 1 ) );
   SCOPED_TRACE( seedNote( 1 ) );
   for ( int round = 0; round < 300; ++round ) {
      std::set< double > times{ 0 };
      std::lognormal_distribution<> gap( 0, 1 + static_cast< double >( random() % 5 ) );
      for ( double time = 0; times.size() < 2 + random() % 30; ) {
         times.insert( time += gap( random ) );
      }
      const auto all = moments( { times.begin(), times.end() } );
      const TimeAxis axis( all, 50, 960 );
      double last = 50;
      for ( const Vex::Seconds moment : all ) {
         EXPECT_GE( axis.at( moment ), last - 1e-6 );
         last = axis.at( moment );
      }
      EXPECT_NEAR( last, 1010, 1e-3 );
      EXPECT_LE( axis.ticks().size(), 40U );
   }
}

TEST( Bars, SpansTooShortToBeSeenShareOne ) {
   const TimeAxis axis( moments( { 0, 960 } ), 0, 960 ); // a pixel a second
   std::vector< Span > spans{
      { Vex::Seconds( 0 ), Vex::Seconds( 100 ), SpanKind::held, "", false } };
   for ( int at = 0; at < 8; ++at ) {
      spans.push_back( { Vex::Seconds( 100 + at ), Vex::Seconds( 101 + at ),
                         at % 2 == 0 ? SpanKind::admitted : SpanKind::held, "", false } );
   }
   spans.push_back( { Vex::Seconds( 108 ), Vex::Seconds( 960 ), SpanKind::admitted, "", true } );
   const auto all = bars( spans, axis, 50 );
   ASSERT_EQ( all.size(), 4U );
   EXPECT_EQ( all[ 1 ].spans.size(), 5U );
   EXPECT_EQ( all[ 2 ].spans.size(), 3U );
   EXPECT_EQ( all[ 2 ].right, 108 );
   EXPECT_EQ( all[ 3 ].right, 1010 );
}

TEST( Bars, AShortSpanAloneIsWideEnoughToBeSeen ) {
   const TimeAxis axis( moments( { 0, 960 } ), 0, 960 );
   const std::vector< Span > spans{
      { Vex::Seconds( 10 ), Vex::Seconds( 10.001 ), SpanKind::held, "", false } };
   const auto all = bars( spans, axis, 0 );
   ASSERT_EQ( all.size(), 1U );
   EXPECT_GE( all[ 0 ].right - all[ 0 ].left, 1.5 );
}

TEST( Badges, NeverOverlapAndForgetNoMark ) {
   std::mt19937_64 random( seed( 2 ) );
   SCOPED_TRACE( seedNote( 2 ) );
   const TimeAxis axis( moments( { 0, 960 } ), 0, 960 );
   for ( int round = 0; round < 300; ++round ) {
      std::multiset< double > times;
      while ( times.size() < 1 + random() % 300 ) {
         times.insert( static_cast< double >( random() % 96000 ) / 100 );
      }
      std::vector< Mark > marks;
      for ( const double time : times ) {
         marks.push_back( { Vex::Seconds( time ), static_cast< MarkKind >( random() % 6 ), "" } );
      }
      std::vector< const Mark * > pointers;
      for ( const Mark & mark : marks ) {
         pointers.push_back( &mark );
      }
      std::size_t count = 0;
      double taken = -100;
      for ( const auto & badge : badges( pointers, axis ) ) {
         const double half = Replay::Timeline::badgeWidth( badge.marks.size() ) / 2;
         EXPECT_GE( badge.x - half, taken );
         taken = badge.x + half;
         count += badge.marks.size();
         bool isThere = false;
         for ( const Mark * const mark : badge.marks ) {
            EXPECT_LE( mark->kind, badge.kind );
            isThere = isThere || mark->kind == badge.kind;
         }
         EXPECT_TRUE( isThere );
      }
      EXPECT_EQ( count, marks.size() );
   }
}

TEST( Labels, AreCutWhereTheyHaveNoRoom ) {
   EXPECT_EQ( Replay::Timeline::shortened( "Ethernet1", 12, 100 ), "Ethernet1" );
   EXPECT_EQ( Replay::Timeline::shortened( "Ethernet1", 12, 50 ), "Ether…" );
   EXPECT_EQ( Replay::Timeline::shortened( "日本語日本語", 12, 50 ), "日本…" );
   EXPECT_EQ( Replay::Timeline::shortened( "Ethernet1", 12, 0 ), "…" );
}

TEST( Labels, TimesAreExactToTheMicrosecond ) {
   EXPECT_EQ( Replay::Timeline::timeLabel( Vex::Seconds( 0.1 + 0.2 ) ), "0.3" );
   EXPECT_EQ( Replay::Timeline::timeLabel( Vex::Seconds( 3600.000001 ) ), "3600.000001" );
   EXPECT_EQ( Replay::Timeline::timeLabel( Vex::Seconds( 1e300 ) ), "1e+300" );
}

} // namespace
