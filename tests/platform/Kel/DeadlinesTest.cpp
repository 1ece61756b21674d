// The deadlines against an ordered list of them that is searched from the front.

#include "platform/Kel/Deadlines.h"

#include "tests/platform/Seed.h"
#include "tests/support/Names.h"

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Kel {
namespace {

using TestSupport::intf;
using Vex::Seconds;

struct DeadlinesTest : testing::Test {
   using Listed = std::vector< std::pair< Nodo::IntfId, Seconds > >;

   Deadlines deadlines;
   Listed list;

   static Nodo::IntfId lag( std::size_t number ) {
      return intf( "PortChannel" + std::to_string( number ) );
   }
   Listed::iterator inList( Nodo::IntfId one ) {
      return std::ranges::find( list, one, &Listed::value_type::first );
   }
   void put( Nodo::IntfId one, Seconds deadline ) {
      const auto listed = inList( one );
      const bool changes = listed == list.end() || listed->second != deadline;
      if ( listed == list.end() ) {
         list.emplace_back( one, deadline );
      } else {
         listed->second = deadline;
      }
      ASSERT_EQ( deadlines.put( one, deadline ), changes );
   }
   void erase( Nodo::IntfId one ) {
      ASSERT_EQ( deadlines.erase( one ), std::erase_if( list, [ & ]( const auto & listed ) {
                                            return listed.first == one;
                                         } ) != 0 );
   }
   void agree() {
      Listed::value_type earliest{ Nodo::IntfId(), Seconds::infinity() };
      for ( const auto & listed : list ) {
         if ( earliest.second > listed.second ) {
            earliest = listed;
         }
      }
      ASSERT_EQ( deadlines.earliest().key, earliest.first );
      ASSERT_EQ( deadlines.earliest().value, earliest.second );
      ASSERT_EQ( deadlines.size(), list.size() );
      ASSERT_EQ( deadlines.empty(), list.empty() );
   }
   void agreeOnAll() {
      Listed all;
      for ( const auto & entry : deadlines.entries() ) {
         all.emplace_back( entry.key, entry.value );
         ASSERT_EQ( *deadlines.find( entry.key ), entry.value );
      }
      ASSERT_EQ( all, list );
   }
};

TEST_F( DeadlinesTest, ThereIsNoEarliestAtFirst ) {
   agree();
   EXPECT_FALSE( deadlines.has( lag( 1 ) ) );
   EXPECT_EQ( deadlines.find( lag( 1 ) ), nullptr );
}

TEST_F( DeadlinesTest, OneThatIsNeverDueIsNotTheEarliestUntilItIsPutForward ) {
   put( lag( 1 ), Seconds::infinity() );
   put( lag( 2 ), Seconds::infinity() );
   agree();
   put( lag( 3 ), Seconds( 3 ) );
   put( lag( 4 ), Seconds( 4 ) );
   erase( lag( 3 ) );
   agree();
   put( lag( 1 ), Seconds( 4 ) );
   agree();
}

TEST_F( DeadlinesTest, ThoseThatGoWhileAPassIsUnderWayAreNotVisited ) {
   for ( std::size_t number = 0; number < 100; ++number ) {
      put( lag( number ), Seconds( 1 ) );
   }
   std::size_t visited = 0;
   for ( const Nodo::IntfId one : deadlines.keys() ) {
      ++visited;
      erase( one );
      erase( lag( 99 - ( visited - 1 ) ) );
      agree();
      if ( visited == 50 ) {
         put( lag( 200 ), Seconds( 2 ) );
      }
   }
   EXPECT_EQ( visited, 50 );
   agreeOnAll();
}

TEST_F( DeadlinesTest, AgreeWithAListWhateverIsPutAndErased ) {
   SCOPED_TRACE( seedNote( 31 ) );
   std::mt19937_64 random( seed( 31 ) );
   for ( int step = 0; step < 40'000; ++step ) {
      // Fewer and more of them by turns, so that holes are closed and numbers grow again.
      const bool grows = step / 2'000 % 2 == 0;
      const Nodo::IntfId one = lag( random() % 150 );
      if ( random() % 4 < ( grows ? 3 : 1 ) ) {
         const auto dice = random() % 12;
         ASSERT_NO_FATAL_FAILURE(
            put( one, dice == 0 ? Seconds::infinity() : Seconds( static_cast< double >( dice ) ) ) )
            << "step " << step;
      } else {
         ASSERT_NO_FATAL_FAILURE( erase( one ) ) << "step " << step;
      }
      if ( random() % 2 == 0 ) { // what was found before lasts, or does not
         ASSERT_NO_FATAL_FAILURE( agree() ) << "step " << step;
      }
      if ( step % 97 == 0 ) {
         ASSERT_NO_FATAL_FAILURE( agreeOnAll() ) << "step " << step;
      }
   }
}

TEST_F( DeadlinesTest, AgreeWithAListInAQueueOfThem ) {
   for ( std::size_t number = 0; number < 300; ++number ) {
      put( lag( number ), Seconds( static_cast< double >( number / 3 ) ) );
      if ( number >= 40 ) {
         erase( lag( number - 40 ) );
      }
      ASSERT_NO_FATAL_FAILURE( agree() );
   }
   agreeOnAll();
}

} // namespace
} // namespace Kel
