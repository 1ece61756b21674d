// Long random sequences of changes to several LAGs, compared with the model after each change.

#include "platform/Jotter/TraceFile.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerRun.h"
#include "tests/platform/Seed.h"
#include "tests/support/TraceRecorder.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace Velo {
namespace {

class RandomChanges {
 public:
   explicit RandomChanges( std::uint64_t from ) : random_( from ) {}

   std::size_t pick( std::size_t count ) { return random_() % count; }

   void before( PeerRun & run ) {
      for ( std::size_t at = 0; at < PeerRun::lagCount; ++at ) {
         pick( 3 ) != 0 ? run.lag( at, mask() ) : void();
         pick( 2 ) != 0 ? run.mlagIntf( at, peerState() ) : void();
         pick( 3 ) == 0 ? run.left( at, member() ) : void();
         pick( 3 ) == 0 ? run.leftRequest( at, static_cast< std::uint32_t >( pick( 9 ) ) ) : void();
         pick( 3 ) == 0 ? run.response( at, static_cast< std::uint32_t >( pick( 9 ) ) ) : void();
      }
      run.start( pick( 4 ) != 0 );
   }
   void change( PeerRun & run ) {
      const std::size_t at = pick( PeerRun::lagCount );
      switch ( pick( 20 ) ) {
      case 0:
      case 1:
      case 2:
      case 3:
         return run.toggleMember( at, member() );
      case 4:
      case 5:
         return run.toggleAcl( at, member() );
      case 6:
      case 7:
         return run.mlagIntf( at, peerState() );
      case 8:
         return run.noMlagIntf( at );
      case 9:
      case 10:
      case 11:
         return run.response( at, run.model().lags[ at ].request.value_or( 0 ) );
      case 12:
         return run.response( at, static_cast< std::uint32_t >( pick( 40 ) ) );
      case 13:
         return run.response( at, {} );
      case 14:
      case 15:
         return run.pass( static_cast< double >( pick( 60 ) ) / 1000 );
      case 16:
         return pick( 4 ) == 0 ? run.suspend( static_cast< double >( pick( 4000 ) ) / 16 )
                               : run.pass( 0.1 );
      case 17:
         return pick( 4 ) == 0 ? run.mode( !run.model().peerMode )
                               : run.mlagActive( pick( 2 ) == 0 );
      case 18:
         return run.lag( at, mask() );
      default:
         return run.noLag( at );
      }
   }

 private:
   std::size_t member() { return pick( PeerModel::memberCount ); }
   PeerRun::Mask mask() { return static_cast< PeerRun::Mask >( pick( 16 ) ); }
   unsigned peerState() { return pick( 5 ) == 0 ? 0U : 1U + static_cast< unsigned >( pick( 2 ) ); }

   std::mt19937_64 random_;
};

/// Plays `steps` changes; what differs and the scenario that leads there, empty when all is well.
std::string play( std::uint64_t from, int steps, bool told ) {
   RandomChanges random( from );
   PeerRun run( told );
   random.before( run );
   std::string difference = run.difference();
   for ( int step = 0; step < steps && difference.empty(); ++step ) {
      random.change( run );
      difference = run.difference();
   }
   return difference.empty() ? "" : difference + " after\n" + run.scenario();
}

TEST( PeerRandom, TheInterlockIsAfterEveryChangeWhatTheModelSays ) {
   Jotter::TraceFile * const before = Jotter::defaultTraceFileIs( nullptr ); // quicker
   const TestSupport::TraceRecorder quiet( "VeloMlagEgressAclIntfInterlockSm", 0 );
   const std::uint64_t first = seed( 1 );
   std::string failure;
   for ( std::uint64_t from = first; from < first + 100 && failure.empty(); ++from ) {
      failure = play( from, 1000, false );
      if ( !failure.empty() ) {
         failure = "play it again with INTERLOCK_SEED=" + std::to_string( from ) + '\n' +
                   play( from, 1000, true );
      }
   }
   Jotter::defaultTraceFileIs( before );
   EXPECT_EQ( failure, "" );
}

} // namespace
} // namespace Velo
