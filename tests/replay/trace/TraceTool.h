#pragma once

// interlock-trace in this process, and trace files for it on disk.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Clock.h"
#include "replay/Writer.h"
#include "replay/trace/Program.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace TestSupport {

/// A folder of its own for each test.
class TemporaryFolder {
 public:
   TemporaryFolder() {
      std::string pattern = ( std::filesystem::temp_directory_path() / "trace-XXXXXX" ).string();
      folder_ = mkdtemp( pattern.data() );
   }
   TemporaryFolder( const TemporaryFolder & ) = delete;
   TemporaryFolder & operator=( const TemporaryFolder & ) = delete;
   TemporaryFolder( TemporaryFolder && ) = delete;
   TemporaryFolder & operator=( TemporaryFolder && ) = delete;
   ~TemporaryFolder() { std::filesystem::remove_all( folder_ ); }

   std::string operator/( const std::string & name ) const { return ( folder_ / name ).string(); }

 private:
   std::filesystem::path folder_;
};

/// Writes bytes into a file, from its start; the file stays the same one.
inline void writeInPlace( const std::string & path, std::span< const std::byte > bytes ) {
   const int file = open( path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600 );
   ASSERT_GE( file, 0 ) << path;
   EXPECT_EQ( pwrite( file, bytes.data(), bytes.size(), 0 ),
              static_cast< ssize_t >( bytes.size() ) );
   close( file );
}

inline void writeInPlace( const std::string & path, std::string_view text ) {
   writeInPlace( path, std::as_bytes( std::span( text ) ) );
}

/// The ring of an agent, with three call sites: in memory and put on disk on demand, or in a file.
class Agent {
 public:
   static constexpr Jotter::DescriptorId enter = 1; // handleMember, level 0: member and LAG
   static constexpr Jotter::DescriptorId check = 2; // handleLag, level 3: LAG, bool, number, time
   static constexpr Jotter::DescriptorId failure = 3; // handleTimeout, level 4: nothing

   Agent() : ring_( 1 ) { describe(); }
   explicit Agent( const std::string & path ) : ring_( path, Jotter::TraceFile::fewestBytes ) {
      describe();
   }
   Agent( const Agent & ) = delete;
   Agent & operator=( const Agent & ) = delete;
   Agent( Agent && ) = delete;
   Agent & operator=( Agent && ) = delete;
   ~Agent() = default;

   /// Its clock; records carry this time.
   Vex::VirtualClock & clock() noexcept { return clock_; }

   void member( const Vex::String & member, const Vex::String & lag ) {
      ring_.write( enter, Nodo::IntfId( member ), Nodo::IntfId( lag ) );
   }
   void lag( const Vex::String & lag, bool active, std::uint32_t token, Vex::Seconds after ) {
      ring_.write( check, Nodo::IntfId( lag ), active, token, after );
   }
   void timeout() { ring_.write( failure ); }

   Jotter::TraceFile & ring() noexcept { return ring_; }
   void save( const std::string & path ) const { writeInPlace( path, ring_.bytes() ); }

 private:
   void describe() {
      using Jotter::PieceKind;
      ring_.describe( enter, { "Velo/A",
                               10,
                               "handleMember",
                               0,
                               { { PieceKind::literal, "memberIntf : " },
                                 { PieceKind::text, {} },
                                 { PieceKind::literal, " lag : " },
                                 { PieceKind::text, {} } } } );
      ring_.describe( check, { "Velo/B",
                               200,
                               "handleLag",
                               3,
                               { { PieceKind::text, {} },
                                 { PieceKind::literal, " active " },
                                 { PieceKind::boolean, {} },
                                 { PieceKind::literal, " token " },
                                 { PieceKind::number, {} },
                                 { PieceKind::literal, " after " },
                                 { PieceKind::time, {} } } } );
      ring_.describe( failure,
                      { "Velo/A", 30, "handleTimeout", 4, { { PieceKind::literal, "timeout" } } } );
   }

   Vex::VirtualClock clock_;
   Vex::ClockScope scope_{ clock_ };
   Jotter::TraceFile ring_;
};

struct Shown {
   int status;
   std::string out;
   std::string err;
};

class OutputFile {
 public:
   int descriptor() const noexcept { return fileno( file_.get() ); }
   std::string text() const {
      std::string text;
      std::rewind( file_.get() );
      std::array< char, 4096 > piece{};
      while ( const std::size_t size = std::fread( piece.data(), 1, piece.size(), file_.get() ) ) {
         text.append( piece.data(), size );
      }
      return text;
   }

 private:
   std::unique_ptr< std::FILE, int ( * )( std::FILE * ) > file_{ std::tmpfile(), std::fclose };
};

/// What happens between one look at a file that is followed and the next; after the last one the
/// program is told to end.
using Steps = std::vector< std::function< void() > >;

inline int runWith( std::vector< std::string > arguments,
                    const Steps & steps,
                    Replay::Writer & out,
                    Replay::Writer & err ) {
   arguments.insert( arguments.begin(), "interlock-trace" );
   std::vector< const char * > argv;
   for ( const std::string & argument : arguments ) {
      argv.push_back( argument.c_str() );
   }
   const auto startWaiting = [ &steps ] {
      return TraceTool::Waiting( [ &steps, next = std::size_t{ 0 } ]() mutable {
         if ( next == steps.size() ) {
            return false;
         }
         steps[ next++ ]();
         return true;
      } );
   };
   return TraceTool::run( static_cast< int >( argv.size() ), argv.data(), out, err, startWaiting );
}

inline Shown run( const std::vector< std::string > & arguments, const Steps & steps = {} ) {
   const OutputFile outFile;
   const OutputFile errFile;
   Replay::Writer out( outFile.descriptor() );
   Replay::Writer err( errFile.descriptor() );
   const int status = runWith( arguments, steps, out, err );
   return { status, outFile.text(), errFile.text() };
}

/// The same with standard output and standard error in one.
inline std::string runIntoOne( const std::vector< std::string > & arguments,
                               const Steps & steps = {} ) {
   const OutputFile file;
   Replay::Writer out( file.descriptor() );
   Replay::Writer err( file.descriptor() );
   runWith( arguments, steps, out, err );
   return file.text();
}

/// The sequence numbers of lines of text, for example "1 2 5".
inline std::string sequences( const std::string & out ) {
   constexpr std::size_t timeWidth = 12;
   std::string numbers;
   for ( std::size_t at = 0; at < out.size(); at = out.find( '\n', at ) + 1 ) {
      numbers += ( numbers.empty() ? "" : " " ) +
                 std::to_string( std::strtoull( out.c_str() + at + timeWidth, nullptr, 10 ) );
   }
   return numbers;
}

} // namespace TestSupport
