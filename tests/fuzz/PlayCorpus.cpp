// Plays every file of a corpus through a fuzz target, without libFuzzer: play-TARGET FOLDER. An
// empty folder, or one that is not there, is an error: it would test nothing.

#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::vector< std::uint8_t > contents( const std::filesystem::path & path ) {
   std::ifstream file( path, std::ios::binary );
   if ( !file ) {
      Fuzz::fail( "cannot read " + path.string() );
   }
   return { std::istreambuf_iterator< char >( file ), std::istreambuf_iterator< char >() };
}

int play( const std::filesystem::path & folder ) {
   std::vector< std::filesystem::path > files;
   for ( const auto & entry : std::filesystem::directory_iterator( folder ) ) {
      files.push_back( entry.path() );
   }
   std::ranges::sort( files );
   for ( const auto & path : files ) {
      const auto bytes = contents( path );
      std::fprintf( stderr, "%s\n", path.filename().c_str() ); // the last one is the culprit
      static_cast< void >( LLVMFuzzerTestOneInput( bytes.data(), bytes.size() ) );
   }
   if ( files.empty() ) {
      std::fprintf( stderr, "fuzz: %s is empty\n", folder.c_str() );
      return EXIT_FAILURE;
   }
   std::printf( "%zu inputs\n", files.size() );
   return EXIT_SUCCESS;
}

} // namespace

int main( int count, char ** arguments ) {
   try {
      if ( count == 2 ) {
         return play( arguments[ 1 ] );
      }
      std::fprintf( stderr, "usage: %s FOLDER\n", arguments[ 0 ] );
   } catch ( const std::exception & error ) {
      std::fprintf( stderr, "fuzz: %s\n", error.what() );
   }
   return EXIT_FAILURE;
}
