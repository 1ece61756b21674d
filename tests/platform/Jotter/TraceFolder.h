#pragma once

// A folder on disk for the trace files of one test; it goes with the test.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

class TraceFolder {
 public:
   explicit TraceFolder(
      const std::filesystem::path & parent = std::filesystem::temp_directory_path() )
       : path_( parent / "interlock-trace-XXXXXX" ) {
      if ( mkdtemp( path_.data() ) == nullptr ) {
         throw std::runtime_error( "no folder " + path_ );
      }
   }
   TraceFolder( const TraceFolder & ) = delete;
   TraceFolder & operator=( const TraceFolder & ) = delete;
   TraceFolder( TraceFolder && ) = delete;
   TraceFolder & operator=( TraceFolder && ) = delete;
   ~TraceFolder() {
      std::error_code ignored;
      std::filesystem::remove_all( path_, ignored );
   }

   std::string path( const std::string & name = "agent.trace" ) const { return path_ + "/" + name; }
   const std::string & folder() const { return path_; }

   /// The names in the folder, in order, each directory with a slash.
   std::vector< std::string > names() const {
      std::vector< std::string > names;
      for ( const auto & entry : std::filesystem::directory_iterator( path_ ) ) {
         names.push_back( entry.path().filename().string() + ( entry.is_directory() ? "/" : "" ) );
      }
      std::ranges::sort( names );
      return names;
   }

   void put( const std::string & name, const std::string & text ) const {
      std::ofstream( path( name ), std::ios::binary ) << text;
   }

   std::string text( const std::string & name = "agent.trace" ) const {
      std::ifstream file( path( name ), std::ios::binary );
      return { std::istreambuf_iterator< char >( file ), {} };
   }

   std::vector< std::byte > bytes( const std::string & name = "agent.trace" ) const {
      const std::string all = text( name );
      const auto view = std::as_bytes( std::span( all ) );
      return { view.begin(), view.end() };
   }

 private:
   std::string path_;
};
