#include "platform/Jotter/Duplog.h"

#include "platform/Vex/Trace.h"
#include "tests/platform/Jotter/Rings.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Jotter::PieceKind;
using Nodo::IntfId;
using testing::ElementsAre;
using testing::IsEmpty;

class Messages final : public Vex::TraceSink {
 public:
   void write( const Vex::TraceRecord & record ) override { texts.emplace_back( record.message ); }

   std::vector< std::string > texts;
};

// One call site, reached from wherever a test likes.
constexpr std::uint32_t handleMemberLine = __LINE__ + 4;
void handleMember( const Jotter::Duplog & duplog, IntfId member, IntfId lag ) {
   static const Vex::String smName = "TestSm::";

   duplog( Vex::at< 0 >(), smName, "handleMember", " memberIntf : ", member, " lag : ", lag );
}

class DuplogTest : public testing::Test {
 protected:
   void SetUp() override {
      Vex::traceHandle( "DuplogTest" ).levelMaskIs( 0xFFFFFFFFU );
      before_ = Jotter::defaultTraceFileIs( &file );
   }
   void TearDown() override { Jotter::defaultTraceFileIs( before_ ); }

   const Vex::TextTrace trace{ "DuplogTest", "Velo/DuplogTest" };
   const Jotter::Duplog duplog{ trace };
   Messages messages;
   const Vex::TraceSinkScope scope{ messages };
   Jotter::TraceFile file{ 1 };
   const IntfId member{ "Ethernet1" };
   const IntfId lag{ "PortChannel10" };

 private:
   Jotter::TraceFile * before_ = nullptr;
};

TEST_F( DuplogTest, TheTextCopyHasThePrefixAndTheRingDoesNot ) {
   handleMember( duplog, member, lag );
   EXPECT_THAT( messages.texts,
                ElementsAre( "TestSm::handleMember memberIntf : Ethernet1 lag : PortChannel10" ) );
   EXPECT_THAT( messagesOf( file.bytes() ),
                ElementsAre( "handleMember memberIntf : Ethernet1 lag : PortChannel10" ) );
}

TEST_F( DuplogTest, TheDescriptorHoldsTheSiteAndTheLiteralsAndTheRecordTheArguments ) {
   handleMember( duplog, member, lag );
   const auto records = Jotter::readRecords( file.bytes() );
   ASSERT_EQ( records.size(), 1 );
   const Jotter::Descriptor wanted{ "Velo/DuplogTest",
                                    handleMemberLine,
                                    "handleMember",
                                    0,
                                    { literal( "handleMember" ), literal( " memberIntf : " ),
                                      placeholder( PieceKind::text ), literal( " lag : " ),
                                      placeholder( PieceKind::text ) } };
   EXPECT_EQ( *records[ 0 ].descriptor, wanted );
   EXPECT_THAT( records[ 0 ].arguments, ElementsAre( "Ethernet1", "PortChannel10" ) );
}

TEST_F( DuplogTest, TheRingTakesARecordWhateverTheLevelMaskSays ) {
   Vex::traceHandle( "DuplogTest" ).levelMaskIs( 0 );
   handleMember( duplog, member, lag );
   EXPECT_THAT( messages.texts, IsEmpty() );
   EXPECT_EQ( messagesOf( file.bytes() ).size(), 1 );
}

TEST_F( DuplogTest, WithoutADefaultFileNothingIsRecordedAndTheTextGoesOn ) {
   Jotter::defaultTraceFileIs( nullptr );
   handleMember( duplog, member, lag );
   EXPECT_EQ( messages.texts.size(), 1 );
   EXPECT_EQ( file.written(), 0 );
}

TEST_F( DuplogTest, ASiteRegistersItsDescriptorOnce ) {
   handleMember( duplog, member, lag );
   const auto next = Jotter::registerDescriptor( describedBy( { literal( "the next one" ) } ) );
   for ( int round = 0; round < 10; ++round ) {
      handleMember( duplog, lag, member );
   }
   EXPECT_EQ( Jotter::registerDescriptor( describedBy( { literal( "and the next" ) } ) ),
              next + 1 );
   EXPECT_EQ( messagesOf( file.bytes() ).size(), 11 );
}

TEST_F( DuplogTest, TwoSitesOfOneLineKeepTheirLiterals ) {
   duplog( Vex::at< 2 >(), "first" ), duplog( Vex::at< 3 >(), "second", lag ); // NOLINT: one line
   EXPECT_THAT( messagesOf( file.bytes() ), ElementsAre( "first", "secondPortChannel10" ) );
}

TEST_F( DuplogTest, ArgumentsOfEachKindReachBothCopies ) {
   enum class Link : std::uint8_t { up = 2 };
   duplog( Vex::at< 3 >(), "bool ", true, " token ", std::uint32_t{ 7 }, " at ",
           Vex::Seconds( 1.5 ), " of ", lag );
   EXPECT_THAT( messages.texts, ElementsAre( "bool true token 7 at 1.500000 of PortChannel10" ) );
   EXPECT_THAT( messagesOf( file.bytes() ),
                ElementsAre( "bool true token 7 at 1.500000 of PortChannel10" ) );
   static_assert( Jotter::Number< Link > && Jotter::Number< std::uint32_t > );
   static_assert( !Jotter::Number< bool > && !Jotter::Number< int > );
}

TEST_F( DuplogTest, SwitchingTheFileAndBackKeepsTheSitesKnown ) {
   Jotter::TraceFile other( 1 );
   const auto site = [ & ]( IntfId intf ) { duplog( Vex::at< 2 >(), "site of ", intf ); };
   site( member );
   Jotter::defaultTraceFileIs( &other );
   site( lag );
   duplog( Vex::at< 2 >(), "seen by the other first" );
   Jotter::defaultTraceFileIs( &file );
   site( lag );
   EXPECT_THAT( messagesOf( file.bytes() ),
                ElementsAre( "site of Ethernet1", "site of PortChannel10" ) );
   EXPECT_THAT( messagesOf( other.bytes() ),
                ElementsAre( "site of PortChannel10", "seen by the other first" ) );
}

} // namespace
