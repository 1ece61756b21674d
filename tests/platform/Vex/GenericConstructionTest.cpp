#include "platform/Vex/GenericConstruction.h"

#include "platform/Vex/Module.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using Vex::Argument;
using Vex::Ptr;

template < int which >
class Input : public Vex::Object {
 public:
   static const Vex::Type & staticFwkType() noexcept {
      static constexpr std::array names{ "Test::Config", "Test::Status", "Test::Output" };
      static constexpr Vex::Type type{ names[ which ] };
      return type;
   }
   const Vex::Type & fwkType() const noexcept override { return staticFwkType(); }
};

using Config = Input< 0 >;
using Status = Input< 1 >;
using Output = Input< 2 >;

class DerivedConfig final : public Config {};

class Machine final : public Vex::Object {
 public:
   Machine( Ptr< const Config > theConfig, Ptr< const Status > theStatus, Ptr< Output > theOutput )
       : config( std::move( theConfig ) ), status( std::move( theStatus ) ),
         output( std::move( theOutput ) ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Machine" };
      return type;
   }

   Ptr< const Config > config;
   Ptr< const Status > status;
   Ptr< Output > output;
};

int machinesMade = 0;

Ptr< Machine > machineIs( Ptr< const Config > config,
                          Ptr< const Status > status,
                          Ptr< Output > output ) {
   ++machinesMade;
   return Vex::make< Machine >( std::move( config ), std::move( status ), std::move( output ) );
}

Ptr< Machine > lonelyMachineIs() {
   return Vex::make< Machine >( nullptr, nullptr, nullptr );
}

class GenericConstructionTest : public testing::Test {
 protected:
   void SetUp() override { machinesMade = 0; }

   Ptr< Machine > constructed( const std::vector< Argument > & arguments ) const {
      return Vex::ptrCast< Machine >( Vex::construct( "TestSm", arguments ) );
   }

   // The complaint about these arguments.
   std::string complaint( const std::vector< Argument > & arguments ) const {
      try {
         Vex::construct( "TestSm", arguments );
      } catch ( const Vex::ConstructionError & error ) {
         EXPECT_EQ( machinesMade, 0 );
         return error.what();
      }
      return "none";
   }

   const Ptr< Config > config = Vex::make< Config >();
   const Ptr< Status > status = Vex::make< Status >();
   const Ptr< Output > output = Vex::make< Output >();

 private:
   const Vex::Module module_{ "GenericConstructionTestModule",
                              { Vex::stateMachineType( "TestSm", &machineIs ),
                                Vex::stateMachineType( "LonelySm", &lonelyMachineIs ) } };
};

TEST_F( GenericConstructionTest, GivesTheArgumentsToTheCreatorInOrder ) {
   const auto machine = constructed( { config, status, output } );
   ASSERT_NE( machine, nullptr );
   EXPECT_EQ( machine->config, config );
   EXPECT_EQ( machine->status, status );
   EXPECT_EQ( machine->output, output );
   EXPECT_EQ( machinesMade, 1 );
}

TEST_F( GenericConstructionTest, WritableAndDerivedObjectsFitReadOnlyParameters ) {
   const Ptr< const Status > readOnly = status;
   const auto derived = Vex::make< DerivedConfig >();
   const auto machine = constructed( { derived, readOnly, output } );
   EXPECT_EQ( machine->config, derived );
   EXPECT_EQ( machine->status, status );
}

TEST_F( GenericConstructionTest, ObjectsKnownByTheirBaseOnlyFitByWhatTheyAre ) {
   const Ptr< Vex::Object > object = output;
   EXPECT_EQ( constructed( { config, status, object } )->output, output );
}

TEST_F( GenericConstructionTest, NullFitsEveryPosition ) {
   const auto machine = constructed( { nullptr, Ptr< const Output >(), nullptr } );
   ASSERT_NE( machine, nullptr );
   EXPECT_EQ( machine->config, nullptr );
   EXPECT_EQ( machine->status, nullptr );
   EXPECT_EQ( machine->output, nullptr );
}

TEST_F( GenericConstructionTest, AReferenceToNoWritableObjectIsNullAndFits ) {
   EXPECT_EQ( constructed( { config, status, Ptr< const Output >() } )->output, nullptr );
}

TEST_F( GenericConstructionTest, ACreatorWithoutParametersTakesNoArguments ) {
   EXPECT_NE( Vex::construct( "LonelySm", {} ), nullptr );
}

TEST_F( GenericConstructionTest, FewerArgumentsNameTheFirstOneThatIsMissing ) {
   EXPECT_EQ( complaint( { config, status } ),
              "TestSm: argument 3: Test::Output (writable) wanted, none given (3 arguments wanted, "
              "2 given)" );
   EXPECT_EQ(
      complaint( {} ),
      "TestSm: argument 1: Test::Config (read-only) wanted, none given (3 arguments wanted, "
      "0 given)" );
}

TEST_F( GenericConstructionTest, MoreArgumentsNameTheFirstOneTooMany ) {
   EXPECT_EQ( complaint( { config, status, output, output, output } ),
              "TestSm: argument 4: none wanted (3 arguments wanted, 5 given)" );
}

TEST_F( GenericConstructionTest, TheNumberIsCheckedBeforeTheKinds ) {
   EXPECT_EQ( complaint( { status, config, config, config } ),
              "TestSm: argument 4: none wanted (3 arguments wanted, 4 given)" );
}

TEST_F( GenericConstructionTest, AWrongKindNamesThePositionAndBothTypes ) {
   EXPECT_EQ(
      complaint( { config, output, output } ),
      "TestSm: argument 2: Test::Status (read-only) wanted, Test::Output (writable) given" );
}

TEST_F( GenericConstructionTest, TheFirstOfSeveralWrongArgumentsIsNamed ) {
   const Ptr< const Status > readOnly = status;
   EXPECT_EQ(
      complaint( { readOnly, output, config } ),
      "TestSm: argument 1: Test::Config (read-only) wanted, Test::Status (read-only) given" );
}

TEST_F( GenericConstructionTest, AReadOnlyObjectDoesNotFitAWritableParameter ) {
   const Ptr< const Output > readOnly = output;
   EXPECT_EQ(
      complaint( { config, status, readOnly } ),
      "TestSm: argument 3: Test::Output (writable) wanted, Test::Output (read-only) given" );
}

TEST_F( GenericConstructionTest, AnUnknownNameIsAnErrorThatNamesIt ) {
   try {
      Vex::construct( "NobodySm", {} );
      FAIL() << "constructed";
   } catch ( const Vex::ConstructionError & error ) {
      EXPECT_STREQ( error.what(), "NobodySm: no loaded module has a state machine of this name" );
   }
}

TEST_F( GenericConstructionTest, ARefusedConstructionKeepsNoReference ) {
   complaint( { config, output, output } );
   EXPECT_EQ( config->referenceCount(), 1 );
   EXPECT_EQ( output->referenceCount(), 1 );
}

TEST_F( GenericConstructionTest, ATypeTellsItsParameters ) {
   const Vex::StateMachineType * const type = Vex::stateMachineType( "TestSm" );
   ASSERT_NE( type, nullptr );
   ASSERT_EQ( type->parameters.size(), 3 );
   EXPECT_EQ( Vex::describe( type->parameters[ 0 ] ), "Test::Config (read-only)" );
   EXPECT_EQ( Vex::describe( type->parameters[ 2 ] ), "Test::Output (writable)" );
   EXPECT_EQ( type->parameters[ 1 ].type, &Status::staticFwkType() );
}

} // namespace
