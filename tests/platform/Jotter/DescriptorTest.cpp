#include "platform/Jotter/Descriptor.h"

#include "platform/Jotter/DescriptorEncoding.h"
#include "tests/platform/Jotter/Rings.h"

#include <cstddef>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Jotter::Descriptor;
using Jotter::PieceKind;
using testing::ElementsAre;
using testing::IsEmpty;

// Takes the default trace file back after each test.
class DescriptorTest : public testing::Test {
 protected:
   void SetUp() override { before_ = Jotter::defaultTraceFileIs( nullptr ); }
   void TearDown() override { Jotter::defaultTraceFileIs( before_ ); }

 private:
   Jotter::TraceFile * before_ = nullptr;
};

TEST_F( DescriptorTest, EqualDescriptorsShareANumber ) {
   const auto first = Jotter::registerDescriptor( describedBy( { literal( "shared" ) } ) );
   EXPECT_NE( first, 0 );
   EXPECT_EQ( Jotter::registerDescriptor( describedBy( { literal( "shared" ) } ) ), first );
}

TEST_F( DescriptorTest, DescriptorsThatDifferAnywhereHaveNumbersOfTheirOwn ) {
   const Descriptor base = describedBy( { literal( "differing" ) } );
   const auto first = Jotter::registerDescriptor( base );
   Descriptor other = base;
   other.line = 13;
   EXPECT_EQ( Jotter::registerDescriptor( other ), first + 1 );
   other = base;
   other.level = 4;
   EXPECT_EQ( Jotter::registerDescriptor( other ), first + 2 );
   other = base;
   other.function = "other";
   EXPECT_EQ( Jotter::registerDescriptor( other ), first + 3 );
   other = base;
   other.source = "Velo/Other";
   EXPECT_EQ( Jotter::registerDescriptor( other ), first + 4 );
   other = base;
   other.pieces.push_back( placeholder( PieceKind::text ) );
   EXPECT_EQ( Jotter::registerDescriptor( other ), first + 5 );
   other.pieces.back() = placeholder( PieceKind::number );
   EXPECT_EQ( Jotter::registerDescriptor( other ), first + 6 );
   EXPECT_EQ( Jotter::registerDescriptor( base ), first );
}

TEST_F( DescriptorTest, TheDefaultFileIsExchangedAndMayBeNone ) {
   EXPECT_EQ( Jotter::defaultTraceFile(), nullptr );
   Jotter::TraceFile file( 1 );
   EXPECT_EQ( Jotter::defaultTraceFileIs( &file ), nullptr );
   EXPECT_EQ( Jotter::defaultTraceFile(), &file );
   EXPECT_EQ( Jotter::defaultTraceFileIs( nullptr ), &file );
}

TEST_F( DescriptorTest, AFileThatIsPutInPlaceKnowsTheDescriptorsOfBefore ) {
   const auto id = Jotter::registerDescriptor( describedBy( { literal( "registered before" ) } ) );
   Jotter::TraceFile file( 1 );
   Jotter::defaultTraceFileIs( &file );
   file.write( id );
   EXPECT_THAT( messagesOf( file.bytes() ), ElementsAre( "registered before" ) );
   Jotter::defaultTraceFileIs( nullptr );
}

TEST_F( DescriptorTest, AFileThatComesBackKnowsWhatWasRegisteredMeanwhile ) {
   Jotter::TraceFile a( 1 );
   Jotter::TraceFile b( 1 );
   Jotter::defaultTraceFileIs( &a );
   const auto first = Jotter::registerDescriptor( describedBy( { literal( "in a" ) } ) );
   Jotter::defaultTraceFileIs( &b );
   const auto second = Jotter::registerDescriptor( describedBy( { literal( "in b" ) } ) );
   Jotter::defaultTraceFileIs( nullptr );
   const auto third = Jotter::registerDescriptor( describedBy( { literal( "in none" ) } ) );
   Jotter::defaultTraceFileIs( &a );
   for ( const auto id : { first, second, third } ) {
      a.write( id );
   }
   EXPECT_THAT( messagesOf( a.bytes() ), ElementsAre( "in a", "in b", "in none" ) );
   b.write( third );
   EXPECT_THAT( messagesOf( b.bytes() ),
                ElementsAre( "(call site " + std::to_string( third ) + " unknown)" ) );
   Jotter::defaultTraceFileIs( nullptr );
}

// --- as bytes ---

TEST( DescriptorEncodingTest, ComesBackAsItWas ) {
   const Descriptor descriptor{ "Velo/Source",
                                4'000'000'000U,
                                "handleMember",
                                31,
                                { literal( " memberIntf : " ), placeholder( PieceKind::text ),
                                  placeholder( PieceKind::boolean ),
                                  placeholder( PieceKind::number ), placeholder( PieceKind::time ),
                                  literal( "" ) } };
   auto area = Jotter::encodeDescriptor( 7, descriptor );
   const auto second = Jotter::encodeDescriptor( 8, Descriptor() );
   area.insert( area.end(), second.begin(), second.end() );
   const auto decoded = Jotter::decodeDescriptors( area );
   ASSERT_EQ( decoded.size(), 2 );
   EXPECT_EQ( decoded.at( 7 ), descriptor );
   EXPECT_EQ( decoded.at( 8 ), Descriptor() );
}

TEST( DescriptorEncodingTest, TextsOverTheirLimitAreCut ) {
   const auto entry =
      Jotter::encodeDescriptor( 1, describedBy( { literal( Vex::String( 70'000, 'x' ) ) } ) );
   EXPECT_EQ( Jotter::decodeDescriptors( entry ).at( 1 ),
              describedBy( { literal( Vex::String( 65'535, 'x' ) ) } ) );
}

TEST( DescriptorEncodingTest, ACutAreaKeepsItsWholeEntries ) {
   auto area = Jotter::encodeDescriptor( 1, describedBy( { literal( "first" ) } ) );
   const std::size_t first = area.size();
   const auto second = Jotter::encodeDescriptor( 2, describedBy( { literal( "second" ) } ) );
   area.insert( area.end(), second.begin(), second.end() );
   for ( std::size_t size = 0; size < area.size(); ++size ) {
      const std::vector< std::byte > cut( area.data(), area.data() + size );
      EXPECT_EQ( Jotter::decodeDescriptors( cut ).size(), size < first ? 0 : 1 ) << size;
   }
   EXPECT_EQ( Jotter::decodeDescriptors( area ).size(), 2 );
}

TEST( DescriptorEncodingTest, AnEntryOfNoSizeEndsTheArea ) {
   EXPECT_THAT( Jotter::decodeDescriptors( std::vector< std::byte >( 100 ) ), IsEmpty() );
}

} // namespace
