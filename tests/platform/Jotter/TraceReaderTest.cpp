#include "platform/Jotter/TraceReader.h"

#include "platform/Jotter/RingLayout.h"
#include "tests/platform/Jotter/Rings.h"
#include "tests/platform/Seed.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace {

using Jotter::PieceKind;
using Jotter::Layout::Header;
using Nodo::IntfId;
using testing::IsEmpty;

// The bytes of a file, as somebody has read them from a disk: anywhere in memory.
using Bytes = std::vector< std::byte >;

class TraceReaderTest : public testing::Test {
 protected:
   // A small ring that has gone round, with records of every kind and length.
   void SetUp() override {
      file.describe( 1, describedBy( { literal( " lag : " ), placeholder( PieceKind::text ) } ) );
      file.describe( 2, describedBy( { placeholder( PieceKind::boolean ), literal( "," ),
                                       placeholder( PieceKind::number ), literal( "," ),
                                       placeholder( PieceKind::time ) } ) );
      for ( unsigned at = 0; at < 300; ++at ) {
         file.write( 1, IntfId( Vex::String( at % 60 == 0 ? 1'100 : at % 50, 'x' ) ) );
         file.write( 2, at % 2 == 0, at, Vex::Seconds( at ) );
      }
   }

   Bytes copy() const { return { file.bytes().begin(), file.bytes().end() }; }

   // The complaint about these bytes.
   static std::string complaint( std::span< const std::byte > bytes ) {
      try {
         Jotter::readRecords( bytes );
      } catch ( const Jotter::TraceFileError & error ) {
         return error.what();
      }
      return "none";
   }

   static std::vector< Vex::String > problemsOf( std::span< const std::byte > bytes ) {
      try {
         return Jotter::readTraceFile( bytes ).problems;
      } catch ( const Jotter::TraceFileError & error ) {
         return { error.what() };
      }
   }

   // Reads what may be damaged; whatever comes back can be written out.
   static std::size_t readAnyway( std::span< const std::byte > bytes ) {
      std::size_t letters = 0;
      try {
         for ( const Jotter::Record & record : Jotter::readRecords( bytes ) ) {
            letters += record.message().size();
         }
      } catch ( const Jotter::TraceFileError & ) {
         return 0;
      }
      return letters;
   }

   template < class T >
   static void set( Bytes & bytes, std::size_t offset, T value ) {
      std::memcpy( bytes.data() + offset, &value, sizeof value );
   }

   Jotter::TraceFile file{ 1 };
};

TEST_F( TraceReaderTest, ReadsACopyAsItReadsTheFile ) {
   EXPECT_EQ( messagesOf( copy() ), messagesOf( file.bytes() ) );
   EXPECT_GT( messagesOf( copy() ).size(), 100 );
}

TEST_F( TraceReaderTest, ReadsBytesThatLieAnywhereInMemory ) {
   const auto wanted = messagesOf( file.bytes() );
   for ( std::size_t shift = 0; shift < 64; shift += 3 ) {
      Bytes shifted( shift );
      shifted.insert( shifted.end(), file.bytes().begin(), file.bytes().end() );
      ASSERT_EQ( messagesOf( std::span( shifted ).subspan( shift ) ), wanted ) << shift;
   }
}

TEST_F( TraceReaderTest, TellsWhyBytesAreNoTraceFile ) {
   EXPECT_EQ( complaint( {} ), "no trace file: shorter than its header" );
   Bytes bytes = copy();
   bytes[ 0 ] = std::byte{ 'X' };
   EXPECT_EQ( complaint( bytes ), "no trace file: it does not begin with JOTTER" );
   bytes = copy();
   set( bytes, offsetof( Header, version ), std::uint32_t{ 1 } );
   EXPECT_EQ( complaint( bytes ), "trace file of version 1; this reader knows version 2" );
}

TEST_F( TraceReaderTest, AHeaderThatContradictsItselfIsAnErrorEvenIfItsCheckIsRight ) {
   const std::string wanted = "damaged trace file: its header contradicts itself";
   const auto with = [ & ]( std::size_t offset, std::uint32_t value ) {
      Bytes bytes = copy();
      set( bytes, offset, value );
      set( bytes, offsetof( Header, check ),
           Jotter::Layout::checkOf( std::span( bytes ).first( offsetof( Header, check ) ) ) );
      return complaint( bytes );
   };
   EXPECT_EQ( with( offsetof( Header, cellCount ), 0 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellCount ), 255 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellOffset ), 0 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellOffset ), 65'536 + 1 ), wanted );
   EXPECT_EQ( with( offsetof( Header, descriptorOffset ), 8 ), wanted );
   EXPECT_EQ( with( offsetof( Header, descriptorRoom ), 0xFFFFFFFFU ), wanted );
}

TEST_F( TraceReaderTest, MoreCellsThanBytesAreAFileThatWasCut ) {
   const auto with = [ & ]( std::size_t offset, std::uint32_t value ) {
      Bytes bytes = copy();
      set( bytes, offset, value );
      set( bytes, offsetof( Header, check ),
           Jotter::Layout::checkOf( std::span( bytes ).first( offsetof( Header, check ) ) ) );
      return Jotter::readTraceFile( bytes ).problems.front();
   };
   EXPECT_EQ( with( offsetof( Header, cellCount ), 512 ),
              "the file is cut: 256 of 512 cells are there" );
   EXPECT_EQ( with( offsetof( Header, cellCount ), 0x80000000U ),
              "the file is cut: 256 of 2147483648 cells are there" );
   EXPECT_EQ( with( offsetof( Header, cellOffset ), 65'536 + 64 ),
              "the file is cut: 255 of 256 cells are there" );
   EXPECT_EQ( with( offsetof( Header, cellOffset ), 0xFFFFFFC0U ),
              "the file is cut: 0 of 256 cells are there" );
}

TEST_F( TraceReaderTest, ASoundFileHasNoProblemsAndTellsItsLastRecord ) {
   const auto contents = Jotter::readTraceFile( file.bytes() );
   EXPECT_THAT( contents.problems, IsEmpty() );
   EXPECT_EQ( contents.lastSequence, 600 );
   EXPECT_EQ( contents.records.back().sequence, 600 );
}

TEST_F( TraceReaderTest, AnEmptyFileHasNoProblems ) {
   const Jotter::TraceFile empty( 1 );
   const auto contents = Jotter::readTraceFile( empty.bytes() );
   EXPECT_THAT( contents.problems, IsEmpty() );
   EXPECT_EQ( contents.lastSequence, 0 );
}

TEST_F( TraceReaderTest, GivesTheRecordsAfterTheOnesThatAreKnown ) {
   const auto contents = Jotter::readTraceFile( file.bytes(), 598 );
   ASSERT_EQ( contents.records.size(), 2 );
   EXPECT_EQ( contents.records.front().sequence, 599 );
   EXPECT_EQ( contents.lastSequence, 600 );
   EXPECT_THAT( Jotter::readTraceFile( file.bytes(), 600 ).records, IsEmpty() );
   EXPECT_THAT( Jotter::readTraceFile( file.bytes(), 600 ).problems, IsEmpty() );
}

TEST_F( TraceReaderTest, ACutFileHasAProblemWhereverItIsCut ) {
   const Bytes bytes = copy();
   for ( std::size_t size = 0; size < bytes.size(); size += 1 + size / 50 ) {
      // A block of its own, so that reading past its end is noticed.
      const Bytes cut( bytes.begin(), bytes.begin() + static_cast< std::ptrdiff_t >( size ) );
      EXPECT_FALSE( problemsOf( cut ).empty() ) << size;
   }
}

TEST_F( TraceReaderTest, FlippedBitsAreSurvivedWhereverTheyAre ) {
   SCOPED_TRACE( seedNote( 31 ) );
   std::mt19937_64 random( seed( 31 ) );
   const Bytes whole = copy();
   // Where the structure is: header, descriptors in use, cells.
   const std::vector< std::size_t > ends{ 64, 128 + 200, whole.size() };
   std::size_t letters = 0;
   for ( int round = 0; round < 600; ++round ) {
      Bytes bytes = whole;
      for ( auto flips = 1 + random() % 8; flips > 0; --flips ) {
         const std::size_t end = ends[ random() % ends.size() ];
         bytes[ random() % end ] ^= std::byte{ 1 } << static_cast< int >( random() % 8 );
      }
      letters += readAnyway( bytes );
   }
   EXPECT_GT( letters, 0 );
}

TEST_F( TraceReaderTest, OverwrittenStretchesAreSurvivedWhereverTheyAre ) {
   SCOPED_TRACE( seedNote( 32 ) );
   std::mt19937_64 random( seed( 32 ) );
   const Bytes whole = copy();
   std::size_t letters = 0;
   for ( int round = 0; round < 200; ++round ) {
      Bytes bytes = whole;
      const std::size_t begin = 8 + random() % ( bytes.size() - 8 );
      const std::size_t end = std::min( begin + 1 + random() % 5'000, bytes.size() );
      for ( std::size_t at = begin; at < end; ++at ) {
         bytes[ at ] = static_cast< std::byte >( random() );
      }
      letters += readAnyway( bytes );
   }
   EXPECT_GT( letters, 0 );
}

TEST_F( TraceReaderTest, EachByteOfTheHeaderMayBeAnything ) {
   for ( std::size_t at = 0; at < sizeof( Header ); ++at ) {
      for ( const int value : { 0x00, 0x01, 0x7F, 0x80, 0xFF } ) {
         Bytes bytes = copy();
         bytes[ at ] = static_cast< std::byte >( value );
         const std::size_t letters = readAnyway( bytes );
         EXPECT_LT( letters, bytes.size() * 4 ) << at;
      }
   }
}

} // namespace
