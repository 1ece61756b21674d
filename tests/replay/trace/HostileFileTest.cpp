// Files that were cut, or damaged anywhere: the program ends as it should, and shows no record that
// was not written.

#include "platform/Jotter/RingLayout.h"
#include "tests/replay/trace/TraceTool.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace {

using Jotter::Layout::Header;

class HostileFileTest : public ::testing::Test {
 protected:
   void SetUp() override {
      agent.member( "Ethernet1", "PortChannel10" );
      agent.clock().jumpTo( Vex::Seconds( 1.5 ) );
      agent.lag( "PortChannel10", true, 7, Vex::Seconds( 0.1 ) ); // two cells
      agent.member( Vex::String( 300, 'x' ), "PortChannel10" ); // many
      agent.timeout();
      bytes.assign( agent.ring().bytes().begin(), agent.ring().bytes().end() );
      TestSupport::writeInPlace( file, bytes );
      intact = shown();
      ASSERT_EQ( intact.status, 0 );
      lines = linesOf( intact.out );
      ASSERT_EQ( lines.size(), 4U );
      for ( const std::string & line : lines ) {
         heads.insert( headOf( line ) );
      }
   }

   TestSupport::Shown shown() const { return TestSupport::run( { file } ); }

   static std::set< std::string > linesOf( const std::string & text ) {
      std::set< std::string > all;
      for ( std::size_t at = 0; at < text.size(); at = text.find( '\n', at ) + 1 ) {
         all.insert( text.substr( at, text.find( '\n', at ) - at ) );
      }
      return all;
   }
   // Time and sequence number.
   static std::string headOf( const std::string & line ) { return line.substr( 0, 19 ); }

   // Of a file that is not as it was written. `where` says in which way.
   void check( const std::string & where ) const {
      const TestSupport::Shown now = shown();
      for ( const std::string & line : linesOf( now.out ) ) {
         const bool unknownSite =
            line.find( "(call site " ) == 19 && heads.contains( headOf( line ) );
         ASSERT_TRUE( lines.contains( line ) || unknownSite ) << where << ": " << line;
      }
      switch ( now.status ) {
      case 0:
         ASSERT_EQ( now.out, intact.out ) << where;
         ASSERT_EQ( now.err, "" ) << where;
         break;
      case 1:
         ASSERT_NE( now.err, "" ) << where;
         break;
      case 2:
         ASSERT_EQ( now.out, "" ) << where;
         ASSERT_EQ( std::ranges::count( now.err, '\n' ), 1 ) << where;
         break;
      default:
         FAIL() << where << ": exit status " << now.status;
      }
   }

   // The offsets where something lies, and some of where nothing does.
   std::vector< std::size_t > offsets() const {
      std::vector< std::size_t > all;
      constexpr std::size_t sparsely = 509;
      std::size_t lastUsed = 0;
      for ( std::size_t at = 0; at < bytes.size(); ++at ) {
         lastUsed = bytes[ at ] != std::byte{ 0 } ? at : lastUsed;
         if ( at < lastUsed + 16 || at % sparsely == 0 ) {
            all.push_back( at );
         }
      }
      return all;
   }

   TestSupport::TemporaryFolder folder;
   std::string file = folder / "trace";
   TestSupport::Agent agent;
   std::vector< std::byte > bytes;
   TestSupport::Shown intact;
   std::set< std::string > lines;
   std::set< std::string > heads;
};

TEST_F( HostileFileTest, AFileMayBeCutAnywhere ) {
   const std::vector< std::size_t > sizes = offsets();
   for ( auto size = sizes.rbegin(); size != sizes.rend(); ++size ) {
      std::filesystem::resize_file( file, *size );
      check( "cut at " + std::to_string( *size ) );
      if ( HasFatalFailure() ) {
         return;
      }
   }
}

TEST_F( HostileFileTest, AnyByteMayBeAnother ) {
   for ( const std::size_t at : offsets() ) {
      const std::byte was = bytes[ at ];
      for ( const int flip : { 0x01, 0x80, 0xFF } ) {
         bytes[ at ] = was ^ static_cast< std::byte >( flip );
         TestSupport::writeInPlace( file, bytes );
         check( "byte " + std::to_string( at ) + " xor " + std::to_string( flip ) );
         if ( HasFatalFailure() ) {
            return;
         }
      }
      bytes[ at ] = was;
   }
}

TEST_F( HostileFileTest, ADamagedRecordIsToldAndTheOthersAreShown ) {
   Header header{};
   std::memcpy( static_cast< void * >( &header ), bytes.data(), sizeof header );
   bytes[ header.cellOffset + sizeof( Jotter::Layout::Cell ) + 20 ] ^= std::byte{ 1 };
   TestSupport::writeInPlace( file, bytes );
   const TestSupport::Shown now = shown();
   EXPECT_EQ( now.status, 1 );
   EXPECT_EQ( TestSupport::sequences( now.out ), "1 3 4" );
   EXPECT_EQ( now.err, "interlock-trace: " + file + ": record 2 damaged or missing\n" );
}

TEST_F( HostileFileTest, DamageIsToldBehindTheRecords ) {
   bytes.pop_back();
   std::filesystem::resize_file( file, bytes.size() );
   const std::string both = TestSupport::runIntoOne( { file } );
   EXPECT_TRUE( both.starts_with( intact.out + "interlock-trace: " + file + ": " ) ) << both;
}

} // namespace
