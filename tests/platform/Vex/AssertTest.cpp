#include "platform/Vex/Assert.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

bool twoAreEqual( int a, int b ) {
   return a == b;
}

TEST( AssertTest, APassedAssertionEvaluatesItsExpressionOnceAndGoesOn ) {
   int evaluations = 0;
   VEX_ASSERT( ++evaluations == 1 );
   EXPECT_EQ( evaluations, 1 );
}

TEST( AssertTest, ReadsAnythingThatConvertsToBool ) {
   const int object = 1;
   const int * const pointer = &object;
   VEX_ASSERT( pointer );
   EXPECT_DEATH( VEX_ASSERT( static_cast< const int * >( nullptr ) ), "assertion failed" );
}

TEST( AssertDeathTest, AFailedAssertionPrintsTheExpressionAsWrittenWithFileAndLine ) {
   EXPECT_DEATH( VEX_ASSERT( 1 + 1 == 3 ),
                 "^tests/platform/Vex/AssertTest.cpp:[0-9]+: assertion failed: 1 \\+ 1 == 3\n$" );
   EXPECT_DEATH( Vex::assertionFailed( "mlagStatus()->intfStatusHas( lag )", "file.cpp", 7 ),
                 "^file.cpp:7: assertion failed: mlagStatus\\(\\)->intfStatusHas\\( lag \\)\n$" );
   const auto fail = [] { VEX_ASSERT( !twoAreEqual( 1, 1 ) ); };
   const std::string here = "AssertTest.cpp:" + std::to_string( __LINE__ - 1 ) + ": ";
   EXPECT_DEATH( fail(), here );
}

TEST( AssertDeathTest, AnExpressionWithCommasIsOneExpression ) {
   EXPECT_DEATH( VEX_ASSERT( twoAreEqual( 1, 2 ) ), "assertion failed: twoAreEqual\\( 1, 2 \\)" );
}

TEST( AssertTest, WhatIsAssertedIsTheTestedObjectItselfEvaluatedOnce ) {
   const std::vector< int > two{ 1, 2 };
   int evaluations = 0;
   const auto second = [ & ]() -> const int & {
      ++evaluations;
      return two[ 1 ];
   };
   EXPECT_EQ( &VEX_ASSERTED( second() ), &two[ 1 ] );
   EXPECT_EQ( evaluations, 1 );
}

TEST( AssertDeathTest, WhatIsAssertedAndDoesNotHoldPrintsTheExpressionWithFileAndLine ) {
   const std::vector< int > none{ 0, 0 };
   EXPECT_DEATH( static_cast< void >( VEX_ASSERTED( none.at( 1 ) ) ),
                 "^tests/platform/Vex/AssertTest.cpp:[0-9]+: assertion failed: "
                 "none.at\\( 1 \\)\n$" );
}

TEST( AssertDeathTest, AFailedAssertionAborts ) {
   EXPECT_EXIT( VEX_ASSERT( false ), testing::KilledBySignal( SIGABRT ), "false" );
}

} // namespace
