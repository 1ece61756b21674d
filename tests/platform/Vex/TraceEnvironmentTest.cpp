#include "platform/Vex/Trace.h"

#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace {

// A handle takes its mask from the environment once, on first use: each test has names of its own.
class TraceEnvironmentTest : public testing::Test {
 protected:
   void SetUp() override {
      const char * const variable = std::getenv( "VEX_TRACE" );
      before_ = variable != nullptr ? std::optional< std::string >( variable ) : std::nullopt;
   }
   void TearDown() override {
      if ( before_ ) {
         ::setenv( "VEX_TRACE", before_->c_str(), 1 );
      } else {
         ::unsetenv( "VEX_TRACE" );
      }
   }

   static void variableIs( const char * value ) { ::setenv( "VEX_TRACE", value, 1 ); }

   // The mask of a handle that did not exist before; complaints are kept.
   std::uint32_t newMask( const std::string & name ) {
      testing::internal::CaptureStderr();
      const std::uint32_t mask = Vex::traceHandle( "Environment" + name ).levelMask();
      complaints = testing::internal::GetCapturedStderr();
      return mask;
   }

   std::string complaints;

 private:
   std::optional< std::string > before_;
};

constexpr std::uint32_t failuresOnly = 1U << 4U;

TEST_F( TraceEnvironmentTest, WithoutTheVariableOnlyFailuresAreWritten ) {
   ::unsetenv( "VEX_TRACE" );
   EXPECT_EQ( newMask( "Unset" ), failuresOnly );
   variableIs( "" );
   EXPECT_EQ( newMask( "Empty" ), failuresOnly );
   EXPECT_EQ( complaints, "" );
}

TEST_F( TraceEnvironmentTest, AnEntryNamesOneHandle ) {
   variableIs( "EnvironmentNamed=0,2-3;EnvironmentSilent=none" );
   EXPECT_EQ( newMask( "Named" ), 0b1101U );
   EXPECT_EQ( newMask( "Silent" ), 0U );
   EXPECT_EQ( newMask( "Name" ), failuresOnly );
   EXPECT_EQ( newMask( "NamedMore" ), failuresOnly );
   EXPECT_EQ( complaints, "" );
}

TEST_F( TraceEnvironmentTest, AStarNamesEveryHandle ) {
   variableIs( "*=all" );
   EXPECT_EQ( newMask( "Any" ), 0xFFFFFFFFU );
   EXPECT_EQ( newMask( "Other" ), 0xFFFFFFFFU );
}

TEST_F( TraceEnvironmentTest, TheLastEntryThatNamesTheHandleDecides ) {
   variableIs( "EnvironmentLast=0;*=1;EnvironmentLast=2" );
   EXPECT_EQ( newMask( "Last" ), 1U << 2U );
   variableIs( "EnvironmentStarLast=0;*=1" );
   EXPECT_EQ( newMask( "StarLast" ), 1U << 1U );
}

TEST_F( TraceEnvironmentTest, AMalformedEntryIsReportedAndIgnored ) {
   variableIs( "EnvironmentGood=0;EnvironmentBad=7-;EnvironmentGood=1" );
   EXPECT_EQ( newMask( "Good" ), 1U << 1U );
   EXPECT_EQ( complaints, "VEX_TRACE: 'EnvironmentBad=7-': HANDLE=LEVELS wanted, LEVELS none, all "
                          "or a list such as 0,2-4\n" );
   EXPECT_EQ( newMask( "Bad" ), failuresOnly );
}

TEST_F( TraceEnvironmentTest, AnEntryWithoutLevelsIsReported ) {
   variableIs( "EnvironmentNoLevels" );
   EXPECT_EQ( newMask( "NoLevels" ), failuresOnly );
   EXPECT_TRUE( complaints.starts_with( "VEX_TRACE: 'EnvironmentNoLevels': " ) ) << complaints;
   variableIs( "EnvironmentEmptyLevels=" );
   EXPECT_EQ( newMask( "EmptyLevels" ), failuresOnly );
   EXPECT_TRUE( complaints.starts_with( "VEX_TRACE: 'EnvironmentEmptyLevels=': " ) ) << complaints;
}

TEST_F( TraceEnvironmentTest, AHandleThatExistsKeepsItsMask ) {
   variableIs( "*=0" );
   EXPECT_EQ( newMask( "Kept" ), 1U );
   variableIs( "*=1" );
   EXPECT_EQ( newMask( "Kept" ), 1U );
}

} // namespace
