#include "platform/Jotter/TraceFile.h"

#include "platform/Vex/Clock.h"
#include "platform/Vex/EventClock.h"
#include "tests/platform/Jotter/Rings.h"
#include "tests/platform/Vex/CountingClock.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <vector>

namespace {

using Jotter::PieceKind;
using Nodo::IntfId;
using testing::ElementsAre;
using testing::IsEmpty;

enum class Link : std::uint8_t { down = 0, up = 2 };

class TraceFileTest : public testing::Test {
 protected:
   static constexpr Jotter::DescriptorId text = 1;
   static constexpr Jotter::DescriptorId number = 2;
   static constexpr Jotter::DescriptorId bare = 3;
   static constexpr Jotter::DescriptorId twoTexts = 4;

   void SetUp() override {
      file.describe( text, describedBy( { placeholder( PieceKind::text ) } ) );
      file.describe( number, describedBy( { placeholder( PieceKind::number ) } ) );
      file.describe( bare, describedBy( { literal( "bare" ) } ) );
      file.describe( twoTexts,
                     describedBy( { literal( " memberIntf : " ), placeholder( PieceKind::text ),
                                    literal( " lag : " ), placeholder( PieceKind::text ) } ) );
   }

   // What becomes of this text on its way through the ring.
   Vex::String throughTheRing( const Vex::String & argument ) {
      file.write( text, IntfId( argument ) );
      const auto records = Jotter::readRecords( file.bytes() );
      return records.empty() ? "nothing" : records.back().message();
   }

   static constexpr std::uint64_t fewest = 256; // cells of the smallest ring
   Jotter::TraceFile file{ 1 };
};

TEST_F( TraceFileTest, IsEmptyAtFirst ) {
   EXPECT_EQ( file.written(), 0 );
   EXPECT_THAT( messagesOf( file.bytes() ), IsEmpty() );
}

TEST_F( TraceFileTest, ReadsBackWhatWasWrittenOldestFirst ) {
   file.write( text, IntfId( "Ethernet1" ) );
   file.write( bare );
   file.write( number, 7U );
   EXPECT_THAT( messagesOf( file.bytes() ), ElementsAre( "Ethernet1", "bare", "7" ) );
   EXPECT_EQ( file.written(), 3 );
}

TEST_F( TraceFileTest, ARecordCarriesItsSequenceTimeAndDescriptor ) {
   Vex::VirtualClock clock( Vex::Seconds( 12.5 ) );
   const Vex::ClockScope scope( clock );
   file.write( bare );
   clock.jumpTo( Vex::Seconds( 13.75 ) );
   file.write( number, 1U );
   const auto records = Jotter::readRecords( file.bytes() );
   ASSERT_EQ( records.size(), 2 );
   EXPECT_EQ( records[ 0 ].sequence, 1 );
   EXPECT_EQ( records[ 0 ].time, Vex::Seconds( 12.5 ) );
   EXPECT_EQ( records[ 1 ].sequence, 2 );
   EXPECT_EQ( records[ 1 ].time, Vex::Seconds( 13.75 ) );
   EXPECT_EQ( *records[ 1 ].descriptor, describedBy( { placeholder( PieceKind::number ) } ) );
   EXPECT_THAT( records[ 1 ].arguments, ElementsAre( "1" ) );
}

TEST_F( TraceFileTest, RecordsOfAnEventHaveTheTimeOfTheFirstAndEverySixteenthItsOwn ) {
   const CountingClock clock;
   const Vex::ClockScope clockScope( clock );
   std::vector< Vex::Seconds > wanted;
   {
      const Vex::EventScope event;
      const IntfId longText( Vex::String( 50, 'x' ) );
      for ( int at = 0; at < 18; ++at ) {
         at % 3 == 0   ? file.write( bare )
         : at % 3 == 1 ? file.write( text, IntfId( "Ethernet1" ) )
                       : file.write( text, longText );
         wanted.emplace_back( at < 16 ? 1 : 2 );
      }
   }
   file.write( bare );
   file.write( text, IntfId( "Ethernet1" ) );
   wanted.insert( wanted.end(), { Vex::Seconds( 3 ), Vex::Seconds( 4 ) } );
   std::vector< Vex::Seconds > times;
   for ( const Jotter::Record & record : Jotter::readRecords( file.bytes() ) ) {
      times.push_back( record.time );
   }
   EXPECT_EQ( times, wanted );
}

TEST_F( TraceFileTest, ArgumentsOfEachKindComeBackAsText ) {
   file.describe( 5, describedBy( { placeholder( PieceKind::boolean ), literal( " " ),
                                    placeholder( PieceKind::boolean ), literal( " " ),
                                    placeholder( PieceKind::number ), literal( " " ),
                                    placeholder( PieceKind::time ) } ) );
   file.describe( 6, describedBy( { placeholder( PieceKind::number ), literal( " " ),
                                    placeholder( PieceKind::text ) } ) );
   file.write( 5, true, " ", false, " ", ~std::uint64_t{ 0 }, " ", Vex::Seconds( 0.1 ) );
   file.write( 6, Link::up, " ", IntfId( "PortChannel10" ) );
   EXPECT_THAT( messagesOf( file.bytes() ),
                ElementsAre( "true false 18446744073709551615 0.100000", "2 PortChannel10" ) );
}

TEST_F( TraceFileTest, APrefixIsNoPartOfTheRecord ) {
   const Vex::String smName = "MlagEgressAclIntfInterlockSm::";
   file.write( text, smName, "handleLag", IntfId( "PortChannel10" ) );
   EXPECT_THAT( messagesOf( file.bytes() ), ElementsAre( "PortChannel10" ) );
}

TEST_F( TraceFileTest, TheRingOverwritesItsOldestRecords ) {
   for ( unsigned at = 1; at <= fewest; ++at ) {
      file.write( number, at );
   }
   EXPECT_EQ( messagesOf( file.bytes() ).size(), fewest );
   file.write( number, 1000U );
   const auto messages = messagesOf( file.bytes() );
   ASSERT_EQ( messages.size(), fewest );
   EXPECT_EQ( messages.front(), "2" );
   EXPECT_EQ( messages.back(), "1000" );
}

TEST_F( TraceFileTest, SequenceNumbersHaveNoGapsHoweverOftenTheRingGoesRound ) {
   for ( unsigned at = 1; at <= 10 * fewest + 3; ++at ) {
      file.write( number, at );
   }
   std::uint64_t wanted = 9 * fewest + 4;
   for ( const Jotter::Record & record : Jotter::readRecords( file.bytes() ) ) {
      ASSERT_EQ( record.sequence, wanted );
      ASSERT_EQ( record.message(), std::to_string( wanted ) );
      ++wanted;
   }
   EXPECT_EQ( wanted, 10 * fewest + 4 );
   EXPECT_EQ( file.written(), 10 * fewest + 3 );
}

TEST_F( TraceFileTest, TheNumberOfCellsIsRoundedUpToAPowerOfTwo ) {
   EXPECT_EQ( Jotter::TraceFile( 256 ).bytes().size(), file.bytes().size() );
   EXPECT_EQ( Jotter::TraceFile( 257 ).bytes().size(), file.bytes().size() + fewest * 64 );
   EXPECT_EQ( Jotter::TraceFile( 512 ).bytes().size(), file.bytes().size() + fewest * 64 );
}

// --- texts of every length ---

TEST_F( TraceFileTest, TextsOfEveryLengthUpToTheLongestComeBackWhole ) {
   // 31 just fits into one cell; 254 and 255 are the two forms of a length; 1024 is the longest.
   for ( const unsigned length : { 0U, 1U, 30U, 31U, 32U, 86U, 87U, 88U, 142U, 143U, 144U, 253U,
                                   254U, 255U, 256U, 1023U, 1024U } ) {
      const Vex::String argument( length, 'x' );
      EXPECT_EQ( throughTheRing( argument ), argument ) << length;
   }
   EXPECT_EQ( Jotter::readRecords( file.bytes() ).size(), file.written() );
}

TEST_F( TraceFileTest, ATextOverTheLongestIsCutAndMarked ) {
   EXPECT_EQ( throughTheRing( Vex::String( 1025, 'x' ) ), Vex::String( 1024, 'x' ) + "…" );
   EXPECT_EQ( throughTheRing( Vex::String( 100'000, 'y' ) ), Vex::String( 1024, 'y' ) + "…" );
}

TEST_F( TraceFileTest, ATextIsCutBeforeTheCharacterThatDoesNotFit ) {
   const Vex::String filling( 1022, 'x' );
   EXPECT_EQ( throughTheRing( filling + "ää" ), filling + "ä…" ); // 2 bytes each: the first fits
   EXPECT_EQ( throughTheRing( filling + "xää" ), filling + "x…" );
   EXPECT_EQ( throughTheRing( filling + "端" ), filling + "…" );
   EXPECT_EQ( throughTheRing( filling + "🔌" ), filling + "…" );
   EXPECT_EQ( throughTheRing( filling.substr( 2 ) + "🔌x" ), filling.substr( 2 ) + "🔌…" );
}

TEST_F( TraceFileTest, ATextThatIsNoUtf8AtAllIsCutSomewhere ) {
   EXPECT_EQ( throughTheRing( Vex::String( 2000, '\x80' ) ), "…" );
   EXPECT_EQ( throughTheRing( Vex::String( 1024, '\x80' ) ), Vex::String( 1024, '\x80' ) );
}

TEST_F( TraceFileTest, TextsKeepTheirNulBytes ) {
   const Vex::String argument( "a\0b\0", 4 );
   EXPECT_EQ( throughTheRing( argument ), argument );
}

TEST_F( TraceFileTest, TwoTextsThatJustFitIntoOneCellTogetherTakeOne ) {
   const Vex::String fifteen( 15, 'a' );
   for ( std::uint64_t at = 0; at < fewest; ++at ) {
      file.write( twoTexts, IntfId( fifteen ), IntfId( fifteen ) );
   }
   EXPECT_EQ( messagesOf( file.bytes() ).size(), fewest );
   file.write( twoTexts, IntfId( fifteen ), IntfId( fifteen + "a" ) ); // two cells
   EXPECT_EQ( messagesOf( file.bytes() ).size(), fewest - 1 );
   EXPECT_EQ( messagesOf( file.bytes() ).back(),
              " memberIntf : " + fifteen + " lag : " + fifteen + "a" );
}

// A cell is put together of words; the parts meet at every place in one.
TEST_F( TraceFileTest, TextsOfAllLengthsStandBehindEachOther ) {
   constexpr Jotter::DescriptorId three = 5;
   file.describe( three, describedBy( { placeholder( PieceKind::text ), literal( "|" ),
                                        placeholder( PieceKind::text ), literal( "|" ),
                                        placeholder( PieceKind::text ) } ) );
   for ( std::size_t first = 0; first <= 33; ++first ) {
      for ( std::size_t second = 0; second <= 33; ++second ) {
         const Vex::String a( first, 'a' );
         const Vex::String b( second, '\xFF' );
         const Vex::String c( ( first + second ) % 12, 'c' );
         const std::uint64_t cell = file.written();
         file.write( three, IntfId( a ), "|", IntfId( b ), "|", IntfId( c ) );
         const auto records = Jotter::readRecords( file.bytes() );
         ASSERT_EQ( records.back().sequence, cell + 1 );
         ASSERT_THAT( records.back().arguments, ElementsAre( a, b, c ) ) << first << ", " << second;
      }
   }
}

TEST_F( TraceFileTest, NumbersStandAtEveryPlaceBehindATextAndBeforeOne ) {
   constexpr Jotter::DescriptorId mixed = 5;
   file.describe( mixed, describedBy( { placeholder( PieceKind::text ), literal( "|" ),
                                        placeholder( PieceKind::number ), literal( "|" ),
                                        placeholder( PieceKind::boolean ), literal( "|" ),
                                        placeholder( PieceKind::text ) } ) );
   for ( std::size_t length = 0; length <= 32; ++length ) {
      const Vex::String a( length, 'a' );
      file.write( mixed, IntfId( a ), "|", ~std::uint64_t{ 0 }, "|", true, "|", IntfId( "b" ) );
      ASSERT_EQ( messagesOf( file.bytes() ).back(), a + "|18446744073709551615|true|b" );
   }
}

// What an argument leaves of its cell is zero, whatever the record before has left on the stack.
TEST_F( TraceFileTest, TheRestOfACellIsZero ) {
   const auto words = [ & ]( std::size_t place ) {
      const auto * const cells = reinterpret_cast< const Jotter::Layout::Cell * >(
         file.bytes().data() + file.bytes().size() - fewest * sizeof( Jotter::Layout::Cell ) );
      std::vector< std::uint64_t > content;
      for ( const Jotter::Layout::Word & word : cells[ place ].content ) {
         content.push_back( word.load() );
      }
      return std::vector< std::uint64_t >( content.begin() + 3, content.end() );
   };
   file.write( twoTexts, IntfId( Vex::String( 15, 'x' ) ), IntfId( Vex::String( 15, 'y' ) ) );
   file.write( bare );
   file.write( text, IntfId( "ab" ) );
   file.write( number, 7U );
   EXPECT_THAT( words( 1 ), ElementsAre( 0, 0, 0, 0 ) );
   EXPECT_THAT( words( 2 ), ElementsAre( 0x626102, 0, 0, 0 ) );
   EXPECT_THAT( words( 3 ), ElementsAre( 7, 0, 0, 0 ) );
}

TEST_F( TraceFileTest, LongRecordsGoRoundTheRing ) {
   std::vector< Vex::String > wanted;
   for ( std::size_t at = 0; at < 3'000; ++at ) {
      const Vex::String first( at * 37 % 1'100, 'a' );
      const Vex::String second = "second" + std::to_string( at );
      file.write( twoTexts, IntfId( first ), IntfId( second ) );
      const bool cut = first.size() > 1'024;
      wanted.push_back( " memberIntf : " + first.substr( 0, 1'024 ) + ( cut ? "…" : "" ) +
                        " lag : " + second );
      if ( at % 100 == 99 ) {
         const auto messages = messagesOf( file.bytes() );
         ASSERT_GT( messages.size(), 10 );
         ASSERT_TRUE( std::ranges::equal( messages, std::span( wanted ).last( messages.size() ) ) )
            << at;
      }
   }
}

TEST_F( TraceFileTest, ARecordWhoseTailIsOverwrittenIsLeftOut ) {
   file.write( text, IntfId( Vex::String( 1'000, 'x' ) ) ); // begins at place 0
   for ( std::uint64_t at = 0; at < fewest - 18; ++at ) {
      file.write( bare );
   }
   EXPECT_EQ( sequencesOf( file.bytes() ).front(), 2 );
   EXPECT_EQ( sequencesOf( file.bytes() ).size(), fewest - 18 );
}

// --- descriptors in the file ---

TEST_F( TraceFileTest, ADescriptorThatIsKnownIsLeftAsItIs ) {
   file.describe( bare, describedBy( { literal( "other" ) } ) );
   file.write( bare );
   EXPECT_THAT( messagesOf( file.bytes() ), ElementsAre( "bare" ) );
}

TEST_F( TraceFileTest, RecordsOfDescriptorsThatFoundNoRoomSayWhichCallSiteTheyAreOf ) {
   const Vex::String large( 60'000, 'd' );
   file.describe( 5, describedBy( { literal( large ) } ) );
   file.describe( 6, describedBy( { literal( large ) } ) );
   file.describe( 7, describedBy( { literal( "small" ) } ) );
   file.write( 6, IntfId( "Ethernet1" ) );
   file.write( 5 );
   file.write( 7 );
   EXPECT_THAT( messagesOf( file.bytes() ),
                ElementsAre( "(call site 6 unknown)", large, "small" ) );
}

TEST_F( TraceFileTest, ManyDescriptorsFillTheAreaAndTheRestAreUnknown ) {
   for ( Jotter::DescriptorId id = 5; id <= 2'000; ++id ) {
      file.describe( id, describedBy( { literal( "site " + std::to_string( id ) ) } ) );
   }
   file.write( 5 );
   file.write( 1'000 );
   file.write( 2'000 );
   EXPECT_THAT( messagesOf( file.bytes() ),
                ElementsAre( "site 5", "site 1000", "(call site 2000 unknown)" ) );
}

TEST( TraceFileDeathTest, DescriptorsThatComeOutOfOrderAreAnAssertion ) {
   Jotter::TraceFile file( 1 );
   EXPECT_DEATH( file.describe( 2, {} ), "assertion failed: id == described_ \\+ 1" );
}

} // namespace
