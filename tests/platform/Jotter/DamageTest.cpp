// Every byte of a trace file changed, and every length that it can be cut to: what comes back was
// written as it is, and what is not there is told.

#include "platform/Jotter/DescriptorEncoding.h"
#include "platform/Jotter/RingLayout.h"
#include "tests/platform/Jotter/Rings.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace {

namespace Layout = Jotter::Layout;
using Jotter::PieceKind;
using Nodo::IntfId;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Bytes = std::vector< std::byte >;

// --- the checks themselves ---

// The least distance, either way round, by which a change of one byte moves the sum.
constexpr std::uint64_t leastMove( std::uint64_t factor ) {
   std::uint64_t least = ~std::uint64_t{ 0 };
   for ( unsigned byte = 0; byte < 8; ++byte ) {
      for ( std::uint64_t difference = 1; difference < 256; ++difference ) {
         const std::uint64_t move = ( difference << 8U * byte ) * factor;
         least = std::min( { least, move, ~move + 1 } );
      }
   }
   return least;
}

TEST( RingLayoutTest, AChangeOfASingleByteAlwaysReachesTheCheckOfItsCell ) {
   static_assert( std::ranges::all_of( Layout::factors, []( std::uint64_t factor ) {
      return leastMove( factor ) >= std::uint64_t{ 1 } << 32U;
   } ) );
   Layout::Content content{ 1, 2, 3, ~std::uint64_t{ 0 }, 0, 1U << 31U, 7 };
   const std::uint64_t stamp = Layout::stampOf( 42, content );
   const auto bytes = std::as_writable_bytes( std::span( content ) );
   for ( std::byte & byte : bytes ) {
      const std::byte before = byte;
      for ( unsigned value = 0; value < 256; ++value ) {
         byte = static_cast< std::byte >( value );
         ASSERT_EQ( Layout::stampOf( 42, content ) == stamp, byte == before );
      }
      byte = before;
   }
}

TEST( RingLayoutTest, AChangeOfASingleByteAlwaysReachesTheCheckOfAnEntry ) {
   auto entry = Jotter::encodeDescriptor( 7, describedBy( { literal( "lag : " ) } ) );
   for ( std::byte & byte : entry ) {
      const std::byte before = byte;
      for ( unsigned value = 0; value < 256; ++value ) {
         byte = static_cast< std::byte >( value );
         std::size_t damaged = 0;
         const auto decoded = Jotter::decodeDescriptors( entry, &damaged );
         ASSERT_EQ( decoded.size() == 1 && damaged == 0, byte == before );
      }
      byte = before;
   }
}

// --- whole files ---

class DamageTest : public testing::Test {
 protected:
   void SetUp() override {
      file.describe( 1, describedBy( { literal( " lag : " ), placeholder( PieceKind::text ),
                                       literal( " token " ), placeholder( PieceKind::number ) } ) );
      file.describe( 2, describedBy( { placeholder( PieceKind::boolean ), literal( " at " ),
                                       placeholder( PieceKind::time ) } ) );
   }

   void write( unsigned records ) {
      for ( unsigned at = 0; at < records; ++at ) {
         if ( at % 3 == 0 ) {
            file.write( 2, at % 2 == 0, " at ", Vex::Seconds( at ) );
         } else {
            const std::size_t length = at % 5 == 0 ? 150 : at % 20;
            file.write( 1, " lag : ", IntfId( Vex::String( length, 'x' ) ), " token ", at );
         }
      }
      for ( const Jotter::Record & record : Jotter::readRecords( file.bytes() ) ) {
         written[ record.sequence ] = record;
      }
   }

   // Aligned, so that the reader reads these bytes and no copy of them.
   std::span< std::byte > copy() {
      aligned = std::vector< Layout::Cell >( file.bytes().size() / sizeof( Layout::Cell ) );
      const auto bytes = std::as_writable_bytes( std::span( aligned ) );
      std::ranges::copy( file.bytes(), bytes.begin() );
      return bytes;
   }

   // What the reader complains about; a failure if it gives what was not written.
   std::vector< Vex::String > problemsOf( std::span< const std::byte > bytes ) const {
      try {
         const auto contents = Jotter::readTraceFile( bytes );
         for ( const Jotter::Record & record : contents.records ) {
            const auto wanted = written.find( record.sequence );
            if ( wanted == written.end() || wanted->second.time != record.time ) {
               ADD_FAILURE() << record.sequence << " was not written";
               continue;
            }
            const Vex::String message = record.message();
            if ( message != wanted->second.message() &&
                 !( message.starts_with( "(call site" ) && !contents.problems.empty() ) ) {
               ADD_FAILURE() << record.sequence << ": " << message;
            }
         }
         return contents.problems;
      } catch ( const Jotter::TraceFileError & error ) {
         return { error.what() };
      }
   }

   // Changes the bytes of a range one after the other.
   void damageEach( std::span< std::byte > bytes, std::size_t from, std::size_t to ) const {
      for ( std::size_t at = from; at < to; ++at ) {
         const std::byte before = bytes[ at ];
         for ( const unsigned flip : { 0x01U, 0x02U, 0x80U, 0xFFU } ) {
            bytes[ at ] = before ^ static_cast< std::byte >( flip );
            ASSERT_FALSE( problemsOf( bytes ).empty() ) << "byte " << at << " flip " << flip;
         }
         bytes[ at ] = before;
      }
      ASSERT_THAT( problemsOf( bytes ), IsEmpty() );
   }

   static constexpr std::size_t cellsFrom = 65'536;
   Jotter::TraceFile file{ 1 };
   std::map< std::uint64_t, Jotter::Record > written;
   std::vector< Layout::Cell > aligned;
};

TEST_F( DamageTest, AChangedByteOfTheHeaderIsTold ) {
   write( 25 );
   damageEach( copy(), 0, sizeof( Layout::Header ) );
}

TEST_F( DamageTest, AChangedByteOfTheDescriptorsIsTold ) {
   write( 25 );
   const auto used = Jotter::encodeDescriptor( 1, written.at( 2 ).descriptor.operator*() ).size() +
                     Jotter::encodeDescriptor( 2, written.at( 1 ).descriptor.operator*() ).size();
   damageEach( copy(), 128, 128 + used );
}

TEST_F( DamageTest, AChangedByteOfTheCellsInUseIsTold ) {
   write( 12 );
   damageEach( copy(), cellsFrom, cellsFrom + 18 * sizeof( Layout::Cell ) );
}

TEST_F( DamageTest, AChangedByteOfARingThatHasGoneRoundIsTold ) {
   write( 700 );
   const auto bytes = copy();
   for ( std::size_t at = cellsFrom; at < bytes.size(); at += 11 ) {
      bytes[ at ] ^= std::byte{ 0x10 };
      ASSERT_FALSE( problemsOf( bytes ).empty() ) << at;
      bytes[ at ] ^= std::byte{ 0x10 };
   }
}

TEST_F( DamageTest, AChangedByteOfWhatIsNotInUseChangesNothing ) {
   write( 12 );
   const auto bytes = copy();
   for ( std::size_t at = cellsFrom + 30 * sizeof( Layout::Cell ); at < bytes.size(); at += 13 ) {
      bytes[ at ] ^= std::byte{ 0x10 };
      ASSERT_THAT( problemsOf( bytes ), IsEmpty() ) << at;
      bytes[ at ] ^= std::byte{ 0x10 };
   }
}

TEST_F( DamageTest, AFileThatWasCutAnywhereIsTold ) {
   write( 700 );
   const auto bytes = copy();
   for ( std::size_t size = 0; size < bytes.size(); ++size ) {
      ASSERT_FALSE( problemsOf( bytes.first( size ) ).empty() ) << size;
   }
}

TEST_F( DamageTest, AFileThatWasCutKeepsTheRecordsThatAreThere ) {
   write( 12 );
   const auto bytes = copy();
   const auto contents = Jotter::readTraceFile( bytes.first( cellsFrom + 64 * 6 ) );
   EXPECT_THAT( contents.problems, ElementsAre( "the file is cut: 6 of 256 cells are there",
                                                "records 6 to 12 begun and not finished" ) );
   EXPECT_THAT( contents.records, SizeIs( 5 ) );
}

TEST_F( DamageTest, TheWordsOfEachProblem ) {
   write( 700 );
   const auto whole = Jotter::readTraceFile( copy() );
   const auto oldest = whole.records.front().sequence;
   const auto problemsWithZeroes = [ & ]( std::uint64_t sequence, std::uint64_t count ) {
      const auto bytes = copy();
      for ( Layout::Cell & cell : std::span( aligned ).subspan( cellsFrom / 64 ) ) {
         const std::uint64_t holds = cell.content[ 0 ];
         if ( cell.stamp % 2 == 0 && holds >= sequence && holds < sequence + count ) {
            cell.stamp = 0;
         }
      }
      return problemsOf( bytes );
   };
   EXPECT_THAT( problemsWithZeroes( 650, 1 ), ElementsAre( "record 650 damaged or missing" ) );
   EXPECT_THAT( problemsWithZeroes( 650, 3 ),
                ElementsAre( "records 650 to 652 damaged or missing" ) );
   EXPECT_THAT( problemsWithZeroes( oldest, 1 ),
                ElementsAre( "1 cell damaged before record " + std::to_string( oldest + 1 ) ) );
   EXPECT_THAT( problemsWithZeroes( 700, 1 ), ElementsAre( "record 700 begun and not finished" ) );
   EXPECT_THAT( problemsWithZeroes( oldest, 700 ), ElementsAre( "no record is whole of 700" ) );
}

} // namespace
