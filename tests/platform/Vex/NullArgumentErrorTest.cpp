#include "platform/Vex/NullArgumentError.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

TEST( NullArgumentErrorTest, NamesTheMutator ) {
   const Vex::NullArgumentError error( "initialMemberSmIs" );
   EXPECT_EQ( error.mutator(), "initialMemberSmIs" );
   EXPECT_STREQ( error.what(), "initialMemberSmIs: null argument" );
}

TEST( NullArgumentErrorTest, IsCaughtAsAnInvalidArgument ) {
   try {
      throw Vex::NullArgumentError( "peerLinkIntfIs" );
   } catch ( const std::invalid_argument & error ) {
      EXPECT_STREQ( error.what(), "peerLinkIntfIs: null argument" );
   }
}

TEST( NullArgumentErrorTest, ACopyOutlivesTheOriginal ) {
   const auto copy = [] {
      const Vex::NullArgumentError original( "aMutatorWithANameTooLongForTheStringItself" );
      return Vex::NullArgumentError( original );
   }();
   EXPECT_EQ( copy.mutator(), "aMutatorWithANameTooLongForTheStringItself" );
   EXPECT_STREQ( copy.what(), "aMutatorWithANameTooLongForTheStringItself: null argument" );
}

} // namespace
