#include "platform/Nodo/IntfId.h"

#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using Nodo::IntfId;

TEST( IntfIdThreadsTest, ManyThreadsThatSeeTheSameTextsGetTheSameIdentifiers ) {
   constexpr std::size_t texts = 5'000;
   std::array< std::vector< IntfId >, 4 > seen;
   {
      std::vector< std::jthread > threads;
      for ( std::size_t thread = 0; thread < seen.size(); ++thread ) {
         threads.emplace_back( [ thread, &ids = seen.at( thread ) ] {
            ids.resize( texts );
            for ( std::size_t at = 0; at < texts; ++at ) {
               const std::size_t number = ( at + thread * texts / 4 ) % texts;
               ids[ number ] = IntfId( "thread" + std::to_string( number ) );
               // What was made is read while others make more.
               EXPECT_EQ( ids[ number ].stringValue(), "thread" + std::to_string( number ) );
            }
         } );
      }
   }
   for ( std::size_t at = 0; at < texts; ++at ) {
      ASSERT_EQ( seen[ 0 ][ at ].stringValue(), "thread" + std::to_string( at ) );
      for ( const auto & ids : seen ) {
         ASSERT_EQ( ids[ at ], seen[ 0 ][ at ] );
      }
   }
}

} // namespace
