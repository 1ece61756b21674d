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
using testing::ElementsAre;

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
   set( bytes, offsetof( Header, version ), std::uint32_t{ 2 } );
   EXPECT_EQ( complaint( bytes ), "trace file of version 2; this reader knows version 1" );
}

TEST_F( TraceReaderTest, AHeaderThatDoesNotFitTheFileIsAnError ) {
   const std::string wanted = "damaged trace file: its header does not fit its size";
   const auto with = [ & ]( std::size_t offset, std::uint32_t value ) {
      Bytes bytes = copy();
      set( bytes, offset, value );
      return complaint( bytes );
   };
   EXPECT_EQ( with( offsetof( Header, cellCount ), 0 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellCount ), 255 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellCount ), 512 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellCount ), 0x80000000U ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellOffset ), 0 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellOffset ), 65'536 + 64 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellOffset ), 65'536 + 1 ), wanted );
   EXPECT_EQ( with( offsetof( Header, cellOffset ), 0xFFFFFFC0U ), wanted );
   EXPECT_EQ( with( offsetof( Header, descriptorOffset ), 8 ), wanted );
   EXPECT_EQ( with( offsetof( Header, descriptorRoom ), 0xFFFFFFFFU ), wanted );
}

TEST_F( TraceReaderTest, ACutFileIsAnErrorWhereverItIsCut ) {
   const Bytes bytes = copy();
   for ( std::size_t size = 0; size < bytes.size(); size += 1 + size / 50 ) {
      // A block of its own, so that reading past its end is noticed.
      const Bytes cut( bytes.begin(), bytes.begin() + static_cast< std::ptrdiff_t >( size ) );
      EXPECT_NE( complaint( cut ), "none" ) << size;
   }
}

TEST_F( TraceReaderTest, ACellWithAnotherStampIsLeftOutAndTheRestIsRead ) {
   Bytes bytes = copy();
   const auto before = sequencesOf( bytes );
   const std::size_t cells = bytes.size() - 256 * 64;
   std::size_t place = 0;
   std::uint64_t lost = 0; // the sequence of the first record of one cell
   for ( ; lost == 0; ++place ) {
      std::uint64_t stamp = 0;
      std::memcpy( &stamp, bytes.data() + cells + place * 64, sizeof stamp );
      std::uint64_t sequence = 0;
      std::memcpy( &sequence, bytes.data() + cells + place * 64 + 8, sizeof sequence );
      if ( stamp % 2 == 0 && sequence % 2 == 0 ) { // a short record
         lost = sequence;
         set( bytes, cells + place * 64, std::uint64_t{ 0 } );
      }
   }
   auto wanted = before;
   std::erase( wanted, lost );
   EXPECT_EQ( wanted.size(), before.size() - 1 );
   EXPECT_EQ( sequencesOf( bytes ), wanted );
}

TEST_F( TraceReaderTest, ADamagedArgumentSizeLosesOneRecordOnly ) {
   Jotter::TraceFile small( 1 );
   small.describe( 1, describedBy( { placeholder( PieceKind::text ) } ) );
   for ( const char * const name : { "a", "b", "c" } ) {
      small.write( 1, IntfId( name ) );
   }
   Bytes bytes( small.bytes().begin(), small.bytes().end() );
   const std::size_t size = bytes.size() - 256 * 64 + 64 + 8 + 20; // of the second record
   set( bytes, size, std::uint32_t{ 1 } );
   EXPECT_THAT( messagesOf( bytes ), ElementsAre( "a", "c" ) );
   set( bytes, size, ~std::uint32_t{ 0 } );
   EXPECT_THAT( messagesOf( bytes ), ElementsAre( "a", "c" ) );
   set( bytes, size, std::uint32_t{ 100 } ); // more cells, which are not there
   EXPECT_THAT( messagesOf( bytes ), ElementsAre( "a", "c" ) );
   set( bytes, size + 4, std::uint8_t{ 200 } ); // the text claims to be longer than the record
   set( bytes, size, std::uint32_t{ 2 } );
   EXPECT_THAT( messagesOf( bytes ), ElementsAre( "a", "c" ) );
}

TEST_F( TraceReaderTest, ADamagedDescriptorLeavesItsRecordsWithAnUnknownCallSite ) {
   Jotter::TraceFile small( 1 );
   small.describe( 1, describedBy( { literal( "one" ) } ) );
   small.describe( 2, describedBy( { literal( "two" ) } ) );
   small.write( 1 );
   small.write( 2 );
   Bytes bytes( small.bytes().begin(), small.bytes().end() );
   const auto firstLiteral = std::ranges::search( bytes, std::as_bytes( std::span( "one", 3 ) ) );
   const auto kind = firstLiteral.begin() - 3;
   *kind = std::byte{ 99 };
   EXPECT_THAT( messagesOf( bytes ), ElementsAre( "(call site 1 unknown)", "two" ) );
}

TEST_F( TraceReaderTest, FlippedBitsAreSurvivedWhereverTheyAre ) {
   SCOPED_TRACE( seedNote( 31 ) );
   std::mt19937_64 random( seed( 31 ) );
   const Bytes whole = copy();
   // Where the structure is: header, descriptors in use, cells.
   const std::vector< std::size_t > ends{ 72, 128 + 200, whole.size() };
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
