#include "replay/ScenarioFile.h"

#include "replay/ScenarioError.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace Replay {

namespace {

constexpr std::size_t largest = std::size_t{ 1 } << 30U; // an endless device is no scenario

struct Close {
   void operator()( std::FILE * file ) const noexcept {
      if ( file != stdin ) {
         static_cast< void >( std::fclose( file ) );
      }
   }
};

[[noreturn]] void throwUnreadable( int error, std::string_view wanted ) {
   throw ScenarioError( 0, "cannot be read: " + std::generic_category().message( error ) +
                              "; wanted: " + std::string( wanted ) + ", or - for standard input" );
}

} // namespace

std::string readScenarioFile( const std::string & name, std::string_view wanted ) {
   const std::unique_ptr< std::FILE, Close > file(
      name == standardInput ? stdin : std::fopen( name.c_str(), "re" ) );
   if ( !file ) {
      throwUnreadable( errno, wanted );
   }
   std::string text;
   std::array< char, std::size_t{ 64 } * 1024 > piece{};
   while ( const std::size_t size = std::fread( piece.data(), 1, piece.size(), file.get() ) ) {
      text.append( piece.data(), size );
      if ( text.size() > largest ) {
         throwUnreadable( EFBIG, wanted );
      }
   }
   if ( std::ferror( file.get() ) != 0 ) {
      throwUnreadable( errno, wanted );
   }
   return text;
}

} // namespace Replay
