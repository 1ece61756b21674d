#include "platform/Kel/Deadlines.h"
#include "tests/platform/Memory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

// The places of those that went are used again: an interlock lives for months.
TEST( DeadlinesMemoryTest, ThoseThatComeAndGoNeedNoMemoryOnceThereWereAsMany ) {
   std::array< Nodo::IntfId, 100 > lags;
   for ( std::size_t at = 0; at < lags.size(); ++at ) {
      lags.at( at ) = Nodo::IntfId( "PortChannel" + std::to_string( at ) );
   }
   Kel::Deadlines deadlines;
   const auto comeAndGo = [ & ]( std::size_t rounds ) {
      for ( std::size_t at = 0; at < rounds * lags.size(); ++at ) {
         deadlines.put( lags.at( at % lags.size() ), Vex::Seconds( static_cast< double >( at ) ) );
         deadlines.erase( lags.at( ( at + 50 ) % lags.size() ) );
      }
   };
   comeAndGo( 3 );
   const std::uint64_t requested = Memory::requests();
   comeAndGo( 20 );
   EXPECT_EQ( Memory::requests(), requested );
}

} // namespace
