#include "platform/Vex/Trace.h"

#include "platform/Vex/Clock.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t allLevels = std::numeric_limits< std::uint32_t >::max();

TEST( ParseLevelMaskTest, KnowsNoneAndAll ) {
   EXPECT_EQ( Vex::parseLevelMask( "none" ), 0 );
   EXPECT_EQ( Vex::parseLevelMask( "all" ), allLevels );
}

TEST( ParseLevelMaskTest, TakesLevelsAndRanges ) {
   EXPECT_EQ( Vex::parseLevelMask( "0" ), 1U );
   EXPECT_EQ( Vex::parseLevelMask( "31" ), 0x80000000U );
   EXPECT_EQ( Vex::parseLevelMask( "0,2-4" ), 0b11101U );
   EXPECT_EQ( Vex::parseLevelMask( "4,2,4,2-3" ), 0b11100U );
   EXPECT_EQ( Vex::parseLevelMask( "3-3" ), 0b1000U );
   EXPECT_EQ( Vex::parseLevelMask( "0-31" ), allLevels );
}

TEST( ParseLevelMaskTest, RefusesWhatIsNoList ) {
   for ( const char * const bad :
         { "",    ",",    "1,",         ",1",          "-",     "1-",  "-1", "4-2",
           "32",  "0-32", "4294967296", "99999999999", "1-2-3", " 1",  "1 ", "+1",
           "0x1", "a",    "None",       "none,1",      "1,all", "all " } ) {
      EXPECT_EQ( Vex::parseLevelMask( bad ), std::nullopt ) << "'" << bad << "'";
   }
}

TEST( TraceHandleTest, IsCreatedOnFirstUseAndThenTheSame ) {
   Vex::TraceHandle & handle = Vex::traceHandle( "TraceHandleTestOnce" );
   EXPECT_EQ( handle.name(), "TraceHandleTestOnce" );
   handle.levelMaskIs( 0b101 );
   EXPECT_EQ( &Vex::traceHandle( "TraceHandleTestOnce" ), &handle );
   EXPECT_EQ( Vex::traceHandle( "TraceHandleTestOnce" ).levelMask(), 0b101U );
   EXPECT_NE( &Vex::traceHandle( "TraceHandleTestTwice" ), &handle );
}

TEST( TraceHandleTest, ALevelIsEnabledWhenItsBitIsSet ) {
   Vex::TraceHandle & handle = Vex::traceHandle( "TraceHandleTestMask" );
   handle.levelMaskIs( 0x80000001U );
   EXPECT_TRUE( handle.enabled( 0 ) );
   EXPECT_FALSE( handle.enabled( 1 ) );
   EXPECT_FALSE( handle.enabled( 30 ) );
   EXPECT_TRUE( handle.enabled( 31 ) );
}

// Keeps "source:line function level message" of each record.
class Records final : public Vex::TraceSink {
 public:
   void write( const Vex::TraceRecord & record ) override {
      lines.push_back( std::string( record.source ) + ":" + std::to_string( record.line ) + " " +
                       std::string( record.function ) + " " + std::to_string( record.level ) + " " +
                       std::string( record.message ) );
      messages.emplace_back( record.message );
   }

   std::vector< std::string > lines;
   std::vector< std::string > messages;
};

// A piece that counts how often it is written out.
struct Counted {
   int & times;

   friend std::ostream & operator<<( std::ostream & out, const Counted & counted ) {
      return out << ++counted.times;
   }
};

class TextTraceTest : public testing::Test {
 protected:
   void SetUp() override { handle.levelMaskIs( allLevels ); }

   Vex::TraceHandle & handle = Vex::traceHandle( "TextTraceTest" );
   const Vex::TextTrace trace{ "TextTraceTest", "Velo/TextTraceTest" };
   Records records;
   const Vex::TraceSinkScope scope{ records };
};

constexpr int emittingLine = __LINE__ + 2;
void emitFrom( const Vex::TextTrace & trace ) {
   trace( Vex::at< 2 >(), "lag : ", 7 );
}

TEST_F( TextTraceTest, ARecordHasSourceLineFunctionLevelAndMessage ) {
   emitFrom( trace );
   EXPECT_THAT( records.lines, ElementsAre( "Velo/TextTraceTest:" + std::to_string( emittingLine ) +
                                            " emitFrom 2 lag : 7" ) );
   EXPECT_EQ( trace.source(), "Velo/TextTraceTest" );
}

TEST_F( TextTraceTest, PiecesAreWrittenOneAfterTheOtherWithNothingBetween ) {
   const std::string text = "text";
   trace( Vex::at< 0 >(), text, "literal", 'c', -1, 2U, text );
   trace( Vex::at< 0 >() );
   EXPECT_THAT( records.messages, ElementsAre( "textliteralc-12text", "" ) );
}

TEST_F( TextTraceTest, ABoolIsTrueOrFalse ) {
   trace( Vex::at< 0 >(), true, false );
   EXPECT_THAT( records.messages, ElementsAre( "truefalse" ) );
}

TEST_F( TextTraceTest, OnlyEnabledLevelsAreWritten ) {
   handle.levelMaskIs( 0b10100 );
   trace( Vex::at< 0 >(), "zero" );
   trace( Vex::at< 2 >(), "two" );
   trace( Vex::at< 3 >(), "three" );
   trace( Vex::at< 4 >(), "four" );
   trace( Vex::at< 31 >(), "thirty-one" );
   EXPECT_THAT( records.messages, ElementsAre( "two", "four" ) );
}

TEST_F( TextTraceTest, TheMessageOfADisabledLevelIsNotBuilt ) {
   int times = 0;
   handle.levelMaskIs( 0b1 );
   trace( Vex::at< 1 >(), Counted{ times } );
   EXPECT_EQ( times, 0 );
   trace( Vex::at< 0 >(), Counted{ times } );
   EXPECT_EQ( times, 1 );
}

TEST_F( TextTraceTest, AMaskThatIsChangedReachesATraceThatExistsAlready ) {
   handle.levelMaskIs( 0 );
   trace( Vex::at< 0 >(), "unseen" );
   Vex::traceHandle( "TextTraceTest" ).levelMaskIs( 1 );
   trace( Vex::at< 0 >(), "seen" );
   EXPECT_THAT( records.messages, ElementsAre( "seen" ) );
}

TEST_F( TextTraceTest, AScopeRestoresTheSinkThatItFound ) {
   Records inner;
   {
      const Vex::TraceSinkScope innerScope( inner );
      trace( Vex::at< 0 >(), "inner" );
   }
   trace( Vex::at< 0 >(), "outer" );
   EXPECT_THAT( inner.messages, ElementsAre( "inner" ) );
   EXPECT_THAT( records.messages, ElementsAre( "outer" ) );
   EXPECT_EQ( Vex::traceSinkIs( &records ), &records );
}

TEST_F( TextTraceTest, TheDefaultSinkWritesALineOnStandardError ) {
   const Vex::VirtualClock clock( Vex::Seconds( 12.5 ) );
   const Vex::ClockScope clockScope( clock );
   testing::internal::CaptureStderr();
   EXPECT_EQ( Vex::traceSinkIs( nullptr ), &records );
   emitFrom( trace );
   EXPECT_EQ( Vex::traceSinkIs( &records ), nullptr );
   EXPECT_EQ( testing::internal::GetCapturedStderr(),
              "12.500000 Velo/TextTraceTest:" + std::to_string( emittingLine ) +
                 " emitFrom 2 lag : 7\n" );
   EXPECT_THAT( records.messages, IsEmpty() );
}

// Answers the first message with one of its own.
class Echo final : public Vex::TraceSink {
 public:
   explicit Echo( const Vex::TextTrace & trace ) : trace_( trace ) {}

   void write( const Vex::TraceRecord & record ) override {
      messages.emplace_back( record.message );
      if ( messages.size() == 1 ) {
         trace_( Vex::at< 0 >(), "echo of ", messages.front() );
      }
   }

   std::vector< std::string > messages;

 private:
   const Vex::TextTrace & trace_;
};

TEST_F( TextTraceTest, ASinkThatWritesAMessageGetsItBackAtOnce ) {
   Echo echo( trace );
   const Vex::TraceSinkScope echoScope( echo );
   trace( Vex::at< 0 >(), "shout" );
   EXPECT_THAT( echo.messages, ElementsAre( "shout", "echo of shout" ) );
}

struct Unwritable {
   friend std::ostream & operator<<( std::ostream &, const Unwritable & ) {
      throw std::bad_alloc();
   }
};

TEST_F( TextTraceTest, AMessageThatCannotBeBuiltIsLostAndItsWriterGoesOn ) {
   trace( Vex::at< 0 >(), "before", Unwritable() );
   trace( Vex::at< 0 >(), "after" );
   EXPECT_THAT( records.messages, ElementsAre( "after" ) );
}

} // namespace
