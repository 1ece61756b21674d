#include "platform/Vex/Module.h"

#include "platform/Vex/Ptr.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Machine final : public Vex::Object {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Machine" };
      return type;
   }
};

Vex::Ptr< Machine > machineIs() {
   return Vex::make< Machine >();
}

// The names of the modules that a test has loaded, without those of the library itself.
std::vector< Vex::String > loadedSince( const std::vector< const Vex::Module * > & before ) {
   std::vector< Vex::String > names;
   for ( const Vex::Module * module : Vex::modules() ) {
      if ( std::ranges::find( before, module ) == before.end() ) {
         names.push_back( module->name() );
      }
   }
   return names;
}

class ModuleTest : public testing::Test {
 protected:
   std::vector< Vex::String > loaded() const { return loadedSince( before_ ); }

 private:
   std::vector< const Vex::Module * > before_ = Vex::modules();
};

TEST_F( ModuleTest, ModulesAreListedInTheOrderInWhichTheyWereLoaded ) {
   const Vex::Module third( "Module3", {} );
   const Vex::Module first( "Module1", {} );
   const Vex::Module second( "Module2", {} );
   EXPECT_THAT( loaded(), ElementsAre( "Module3", "Module1", "Module2" ) );
}

TEST_F( ModuleTest, UnloadingTakesAModuleBackAndLeavesTheOthersInOrder ) {
   const Vex::Module first( "Module1", {} );
   auto second =
      std::make_unique< Vex::Module >( "Module2", std::vector< Vex::StateMachineType >() );
   const Vex::Module third( "Module3", {} );
   second.reset();
   EXPECT_THAT( loaded(), ElementsAre( "Module1", "Module3" ) );
}

TEST_F( ModuleTest, AModuleThatIsLoadedAgainComesLast ) {
   auto first =
      std::make_unique< Vex::Module >( "Module1", std::vector< Vex::StateMachineType >() );
   const Vex::Module second( "Module2", {} );
   first.reset();
   first = std::make_unique< Vex::Module >( "Module1", std::vector< Vex::StateMachineType >() );
   EXPECT_THAT( loaded(), ElementsAre( "Module2", "Module1" ) );
}

TEST_F( ModuleTest, StateMachinesAreFoundWhileTheirModuleIsLoaded ) {
   EXPECT_EQ( Vex::stateMachineType( "ModuleTestSm" ), nullptr );
   {
      const Vex::Module module( "Module1",
                                { Vex::stateMachineType( "ModuleTestSm", &machineIs ),
                                  Vex::stateMachineType( "ModuleTestOtherSm", &machineIs ) } );
      EXPECT_EQ( Vex::stateMachineType( "ModuleTestSm" ), module.stateMachines().data() );
      EXPECT_EQ( Vex::stateMachineType( "ModuleTestOtherSm" ), &module.stateMachines()[ 1 ] );
      EXPECT_EQ( Vex::stateMachineType( "ModuleTest" ), nullptr );
   }
   EXPECT_EQ( Vex::stateMachineType( "ModuleTestSm" ), nullptr );
   EXPECT_THAT( loaded(), IsEmpty() );
}

TEST( ModuleDeathTest, TwoLoadedModulesOfOneNameAreAnAssertion ) {
   const Vex::Module first( "Module1", {} );
   EXPECT_DEATH( Vex::Module( "Module1", {} ), "Module.cpp:[0-9]+: assertion failed: " );
}

} // namespace
