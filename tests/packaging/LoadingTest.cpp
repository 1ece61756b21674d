// The libraries as plug-ins: loaded and closed again and again, and twice in one process. This
// program is not linked with them itself.

#include "tests/packaging/LoadedAgent.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>
#include <malloc.h>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const char * const library = INTERLOCK_LIBRARY;
const char * const module = INTERLOCK_MODULE;
const char * const handle = "VeloMlagEgressAclIntfInterlockSm";

void * checked( void * loaded ) {
   if ( loaded == nullptr ) {
      std::cerr << dlerror() << '\n';
      std::abort();
   }
   return loaded;
}

const LoadedAgent & agentIn( void * loaded ) {
   const auto function =
      reinterpret_cast< LoadedAgentFunction >( checked( dlsym( loaded, loadedAgentSymbol ) ) );
   return *function();
}

// What is mapped of our libraries: where, and what of which file.
std::vector< std::string > mappings() {
   std::vector< std::string > ours;
   std::ifstream maps( "/proc/self/maps" );
   for ( std::string line; std::getline( maps, line ); ) {
      if ( line.find( "libVeloIntfInterlock" ) != std::string::npos ||
           line.find( "libInterlockModel" ) != std::string::npos ) {
         ours.push_back( line );
      }
   }
   return ours;
}

// The libraries in a link namespace of their own.
const LoadedAgent & anotherCopy() {
   return agentIn( checked( dlmopen( LM_ID_NEWLM, module, RTLD_NOW | RTLD_LOCAL ) ) );
}

struct Folder {
   Folder() {
      std::string name = testing::TempDir() + "loading.XXXXXX";
      path = checked( mkdtemp( name.data() ) ) != nullptr ? name : "";
   }
   Folder( const Folder & ) = delete;
   Folder & operator=( const Folder & ) = delete;
   Folder( Folder && ) = delete;
   Folder & operator=( Folder && ) = delete;
   ~Folder() { std::filesystem::remove_all( path ); }

   std::filesystem::path path;
};

// First, while nothing else has been loaded.
TEST( LoadingTest, LoadingAndClosingAThousandTimesMapsNothingAndKeepsNoMemoryAfterTheFirst ) {
   const auto load = [] { dlclose( checked( dlopen( library, RTLD_NOW ) ) ); };
   load();
   const auto mapped = mappings();
   load();
   const auto used = mallinfo2().uordblks;
   for ( int round = 0; round < 1000; ++round ) {
      load();
   }
   EXPECT_EQ( mallinfo2().uordblks, used );
   EXPECT_EQ( mappings(), mapped );
}

TEST( LoadingTest, ALibraryThatEverybodyHasClosedStays ) {
   dlclose( checked( dlopen( library, RTLD_NOW ) ) );
   EXPECT_NE( dlopen( library, RTLD_NOW | RTLD_NOLOAD ), nullptr );
   EXPECT_THAT( mappings(), Not( IsEmpty() ) );
}

TEST( LoadingTest, WhatIsLoadedAgainGoesOnWithTheSameNamesAndTheSameTrace ) {
   void * const first = checked( dlopen( module, RTLD_NOW ) );
   const std::uint64_t port = agentIn( first ).intern( "Ethernet77" );
   EXPECT_STREQ( agentIn( first ).play(), "+-" );
   const std::uint64_t recorded = agentIn( first ).recorded();
   EXPECT_GT( recorded, 0 );
   dlclose( first );

   void * const second = checked( dlopen( module, RTLD_NOW ) );
   EXPECT_NE( agentIn( second ).intern( "Ethernet78" ), port );
   EXPECT_EQ( agentIn( second ).intern( "Ethernet77" ), port );
   EXPECT_EQ( agentIn( second ).recorded(), recorded );
   EXPECT_STREQ( agentIn( second ).play(), "+-" );
   EXPECT_GT( agentIn( second ).recorded(), recorded );
   dlclose( second );
}

TEST( LoadingTest, TheFlightRecorderOfAClosedLibraryKeepsItsFile ) {
   const Folder folder;
   const std::string path = folder.path / "agent.trace";
   void * const first = checked( dlopen( module, RTLD_NOW ) );
   EXPECT_STREQ( agentIn( first ).recordInto( path.c_str() ), "" );
   dlclose( first );
   void * const second = checked( dlopen( module, RTLD_NOW ) );
   EXPECT_THAT( agentIn( second ).recordInto( path.c_str() ), HasSubstr( "it is in use" ) );
   dlclose( second );
}

// A copy has names, trace and modes of its own; what it shares with others is what belongs to the
// process: files, their locks, and the environment.
TEST( TwoCopiesTest, EachHasNamesOfItsOwn ) {
   const LoadedAgent & one = anotherCopy();
   const LoadedAgent & other = anotherCopy();
   const std::uint64_t ofOne = one.intern( "Ethernet1" );
   const std::uint64_t ofOther = other.intern( "Ethernet2" );
   EXPECT_EQ( ofOne, ofOther ); // the first of each
   EXPECT_STREQ( one.nameOf( ofOne ), "Ethernet1" );
   EXPECT_STREQ( other.nameOf( ofOther ), "Ethernet2" );
}

TEST( TwoCopiesTest, EachDecidesAndRecordsForItself ) {
   const LoadedAgent & one = anotherCopy();
   const LoadedAgent & other = anotherCopy();
   EXPECT_STREQ( one.play(), "+-" );
   EXPECT_GT( one.recorded(), 0 );
   EXPECT_EQ( other.recorded(), 0 );
   EXPECT_STREQ( other.play(), "+-" );
   EXPECT_EQ( other.recorded(), one.recorded() );
}

TEST( TwoCopiesTest, EachChoosesItsPointerMode ) {
   const LoadedAgent & one = anotherCopy();
   const LoadedAgent & other = anotherCopy();
   one.becomeThreadSafe();
   EXPECT_TRUE( one.isThreadSafe() );
   EXPECT_FALSE( other.isThreadSafe() );
   EXPECT_STREQ( one.play(), "+-" );
   EXPECT_STREQ( other.play(), "+-" );
}

TEST( TwoCopiesTest, AFlightRecorderFileIsInUseForTheOtherToo ) {
   const Folder folder;
   const std::string shared = folder.path / "shared.trace";
   const std::string own = folder.path / "own.trace";
   const LoadedAgent & one = anotherCopy();
   const LoadedAgent & other = anotherCopy();
   EXPECT_STREQ( one.recordInto( shared.c_str() ), "" );
   EXPECT_THAT( other.recordInto( shared.c_str() ), HasSubstr( "it is in use" ) );
   EXPECT_STREQ( other.recordInto( own.c_str() ), "" );
}

// The masks are taken when a handle is made, which is when the library is loaded.
TEST( TwoCopiesTest, EachReadsTheEnvironmentThatItWasLoadedIn ) {
   setenv( "VEX_TRACE", "VeloMlagEgressAclIntfInterlockSm=1,3", 1 );
   const LoadedAgent & one = anotherCopy();
   setenv( "VEX_TRACE", "VeloMlagEgressAclIntfInterlockSm=0", 1 );
   const LoadedAgent & other = anotherCopy();
   unsetenv( "VEX_TRACE" );
   EXPECT_EQ( one.levelMask( handle ), 0b1010 );
   EXPECT_EQ( other.levelMask( handle ), 0b1 );
}

} // namespace
