#include "replay/trace/BusErrors.h"

#include "tests/replay/trace/TraceTool.h"

#include <csignal>
#include <cstring>
#include <sys/mman.h>

namespace {

// A file of two pages, mapped, of which the second has gone.
class BusErrorsTest : public ::testing::Test {
 protected:
   void SetUp() override {
      TestSupport::writeInPlace( path, std::string( 2 * page, 'x' ) );
      const int file = open( path.c_str(), O_RDONLY | O_CLOEXEC );
      ASSERT_GE( file, 0 );
      void * const memory = mmap( nullptr, 2 * page, PROT_READ, MAP_SHARED, file, 0 );
      close( file );
      ASSERT_NE( memory, MAP_FAILED );
      mapping = { static_cast< std::byte * >( memory ), 2 * page };
      std::filesystem::resize_file( path, page );
   }
   void TearDown() override { munmap( mapping.data(), mapping.size() ); }
   // The byte at this place, read as the tool reads.
   bool read( std::size_t at, char & byte ) const {
      return TraceTool::readMapped( mapping,
                                    [ & ] { std::memcpy( &byte, mapping.data() + at, 1 ); } );
   }

   const std::size_t page = static_cast< std::size_t >( sysconf( _SC_PAGESIZE ) );
   TestSupport::TemporaryFolder folder;
   std::string path = folder / "file";
   std::span< std::byte > mapping;
};

TEST_F( BusErrorsTest, AReadThatSucceedsIsWhole ) {
   char byte = '?';
   EXPECT_TRUE( read( page - 1, byte ) );
   EXPECT_EQ( byte, 'x' );
}

TEST_F( BusErrorsTest, APageThatHasGoneReadsAsZeros ) {
   char byte = '?';
   EXPECT_FALSE( read( page, byte ) );
   EXPECT_EQ( byte, '\0' );
   EXPECT_TRUE( read( 0, byte ) );
   EXPECT_EQ( byte, 'x' );
}

TEST_F( BusErrorsTest, TheHandlerOfBeforeIsPutBack ) {
   char byte = '?';
   struct sigaction before{};
   struct sigaction after{};
   sigaction( SIGBUS, nullptr, &before );
   read( page, byte );
   sigaction( SIGBUS, nullptr, &after );
   EXPECT_EQ( before.sa_handler, after.sa_handler );
}

TEST_F( BusErrorsTest, AnErrorElsewhereIsNotHidden ) {
   GTEST_FLAG_SET( death_test_style, "threadsafe" );
   EXPECT_DEATH( TraceTool::readMapped( mapping.first( page ),
                                        [ & ] {
                                           volatile auto byte = mapping[ page ];
                                           static_cast< void >( byte );
                                        } ),
                 "" );
}

} // namespace
