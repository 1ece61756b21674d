// What comes of one look after the other at a ring that is written meanwhile.

#include "replay/trace/RecordFlow.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using TraceTool::LastLook;
using TraceTool::Look;

// A ring that holds the records that are listed.
struct Ring {
   std::vector< std::uint64_t > records;
   std::uint64_t lastSequence;
   std::vector< Vex::String > problems = {};
};

class RecordFlowTest : public ::testing::Test {
 protected:
   // One look: the numbers that came, and the complaints, as "1 2 | complaint".
   std::string look( const Ring & ring, LastLook lastLook = LastLook::no ) {
      Jotter::TraceFileContents contents{ {}, ring.problems, ring.lastSequence };
      for ( const std::uint64_t sequence : ring.records ) {
         if ( sequence > flow.after() ) {
            contents.records.push_back( { sequence, {}, site, {} } );
         }
      }
      const Look found = flow.take( std::move( contents ), lastLook );
      std::string text;
      for ( const Jotter::Record & record : found.records ) {
         text += std::to_string( record.sequence ) + ' ';
      }
      for ( const std::string & complaint : found.complaints ) {
         text += "| " + complaint + ' ';
      }
      return text;
   }

   std::shared_ptr< const Jotter::Descriptor > site = std::make_shared< Jotter::Descriptor >();
   TraceTool::RecordFlow flow;
};

TEST_F( RecordFlowTest, EachRecordComesOnce ) {
   EXPECT_EQ( look( { { 1, 2 }, 2 } ), "1 2 " );
   EXPECT_EQ( look( { { 1, 2 }, 2 } ), "" );
   EXPECT_EQ( look( { { 1, 2, 3 }, 3 } ), "3 " );
   EXPECT_EQ( look( { { 2, 3, 4, 5 }, 5 } ), "4 5 " );
}

TEST_F( RecordFlowTest, TheFirstLookBeginsWhereTheRingDoes ) {
   EXPECT_EQ( look( { { 71, 72 }, 72 } ), "71 72 " );
}

TEST_F( RecordFlowTest, AnEmptyRingIsReadFromItsFirstRecord ) {
   EXPECT_EQ( look( { {}, 0 } ), "" );
   EXPECT_EQ( look( { { 1, 2 }, 2 } ), "1 2 " );
}

TEST_F( RecordFlowTest, WhatWasOverwrittenSinceTheLastLookIsTold ) {
   look( { { 1, 2 }, 2 } );
   EXPECT_EQ( look( { { 6, 7 }, 7 } ),
              "6 7 | records 3 to 5 overwritten before they could be read " );
   EXPECT_EQ( look( { { 9 }, 9 } ), "9 | record 8 overwritten before they could be read " );
}

TEST_F( RecordFlowTest, WhatWasOverwrittenSinceTheRingWasEmptyIsTold ) {
   look( { {}, 0 } );
   look( { { 6, 7 }, 7 } );
   EXPECT_EQ( look( { { 6, 7 }, 7 } ),
              "6 7 | records 1 to 5 overwritten before they could be read " );
}

TEST_F( RecordFlowTest, ARecordThatIsCompleteAfterItsSuccessorComesInItsPlace ) {
   look( { { 1 }, 1 } );
   EXPECT_EQ( look( { { 1, 3 }, 3 } ), "" );
   EXPECT_EQ( look( { { 1, 2, 3, 4 }, 4 } ), "2 3 4 " );
}

TEST_F( RecordFlowTest, ARecordThatStaysMissingIsToldAndPassed ) {
   look( { { 1 }, 1 } );
   EXPECT_EQ( look( { { 1, 3 }, 3 } ), "" );
   EXPECT_EQ( look( { { 1, 3, 4 }, 4 } ), "3 4 | record 2 missing " );
   EXPECT_EQ( look( { { 3, 4, 5 }, 5 } ), "5 " );
}

TEST_F( RecordFlowTest, EachGapIsWaitedForOnItsOwn ) {
   look( { { 1 }, 1 } );
   look( { { 1, 3, 5 }, 5 } );
   EXPECT_EQ( look( { { 1, 3, 5 }, 5 } ), "3 | record 2 missing " );
   EXPECT_EQ( look( { { 1, 3, 4, 5 }, 5 } ), "4 5 " );
}

TEST_F( RecordFlowTest, WhatIsHeldBackIsNotLostWhenTheRingGoesPastIt ) {
   look( { { 1 }, 1 } );
   look( { { 1, 3, 4 }, 4 } );
   EXPECT_EQ( look( { { 8, 9 }, 9 } ), "3 4 | record 2 overwritten before they could be read " );
   EXPECT_EQ( look( { { 8, 9 }, 9 } ),
              "8 9 | records 5 to 7 overwritten before they could be read " );
}

TEST_F( RecordFlowTest, TheLastLookHoldsNothingBack ) {
   look( { { 1 }, 1 } );
   EXPECT_EQ( look( { { 1, 3, 5 }, 5 }, LastLook::yes ),
              "3 5 | record 2 missing | record 4 missing " );
}

TEST_F( RecordFlowTest, WhatTheReaderHasToldOnTheFirstLookIsNotToldAgain ) {
   EXPECT_EQ( look( { { 1, 3 }, 3, { "damaged" } } ), "1 | damaged " );
   EXPECT_EQ( look( { { 1, 3 }, 3, { "damaged" } } ), "3 " );
}

TEST_F( RecordFlowTest, ALaterLookTellsOnlyOfWhatIsMissing ) {
   look( { { 1 }, 1 } );
   EXPECT_EQ( look( { { 1, 2 }, 2, { "being written" } } ), "2 " );
}

TEST_F( RecordFlowTest, AFileThatIsWrittenAnewInItsPlaceIsReadAnew ) {
   look( { { 1, 2, 3 }, 3 } );
   EXPECT_EQ( look( { { 1 }, 1 } ), "| was overwritten with another trace; its records follow " );
   EXPECT_EQ( look( { { 1 }, 1 } ), "1 " );
}

} // namespace
