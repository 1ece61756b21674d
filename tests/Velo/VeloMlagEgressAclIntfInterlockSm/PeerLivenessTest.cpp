// From every state that a small world can reach, held members are admitted in the end: by an answer
// and the reported ACL, and by time alone.

#include "platform/Jotter/TraceFile.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerEvents.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerRun.h"
#include "tests/support/TraceRecorder.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace Velo {
namespace {

using Path = std::vector< std::size_t >;

// What tells two states apart. Tokens and times count by what they are to each other.
std::string essence( const PeerModel & model ) {
   const PeerModel::Lag & lag = model.lags[ 0 ];
   std::string all;
   for ( const int part :
         { int{ lag.present }, int{ lag.members }, int{ lag.known }, int{ lag.activeOnPeer },
           int{ lag.installed }, int{ lag.admitted }, lag.state ? int{ *lag.state } : -1,
           int{ lag.request.has_value() }, int{ lag.response.has_value() },
           int{ PeerModel::matched( lag ) }, int{ lag.response == 77 }, int{ model.mlagActive },
           int{ model.peerMode },
           model.deadlines.empty()
              ? -1
              : static_cast< int >( ( model.deadlines.front().at - model.now ) * 1000 + 0.5 ) } ) {
      all += std::to_string( part ) + ' ';
   }
   return all;
}

void start( PeerRun & run ) {
   run.lag( 0, 1 );
   run.mlagIntf( 0, 2 );
   run.start( true );
}

/// The LAG was removed or added with members on the way: nothing looks at those before their next
/// event.
bool unseen( const Path & path ) {
   return std::find( path.begin(), path.end(), peerEvents.size() - 1 ) != path.end();
}

std::string membersHeld( const PeerRun & run ) {
   const auto & lag = run.model().lags[ 0 ];
   std::string held;
   for ( std::size_t m = 0; m < 2; ++m ) {
      if ( lag.present && ( lag.members & ( 1U << m ) ) != 0 &&
           !run.world().output->intfHas( { PeerRun::memberId( 0, m ), PeerRun::lagId( 0 ) } ) ) {
         held += "Ethernet" + std::to_string( m + 1 ) + ' ';
      }
   }
   return held;
}

/// Calls `visit` with a way to each state that there is, each once.
void everyState( const std::function< void( const Path & ) > & visit ) {
   std::set< std::string > known;
   std::vector< Path > open{ {} };
   for ( std::size_t at = 0; at < open.size(); ++at ) {
      const Path path = open[ at ];
      visit( path );
      for ( std::size_t event = 0; event < peerEvents.size(); ++event ) {
         PeerRun run;
         start( run );
         for ( const std::size_t step : path ) {
            peerEvents[ step ]( run );
         }
         peerEvents[ event ]( run );
         if ( known.insert( essence( run.model() ) ).second ) {
            open.push_back( path );
            open.back().push_back( event );
         }
      }
   }
   EXPECT_GT( open.size(), 300U );
}

struct Liveness : testing::Test {
   const TestSupport::TraceRecorder quiet{ "VeloMlagEgressAclIntfInterlockSm", 0 };
   Jotter::TraceFile * const before = Jotter::defaultTraceFileIs( nullptr );

   Liveness() = default;
   Liveness( const Liveness & ) = delete;
   Liveness & operator=( const Liveness & ) = delete;
   Liveness( Liveness && ) = delete;
   Liveness & operator=( Liveness && ) = delete;
   ~Liveness() override { Jotter::defaultTraceFileIs( before ); }

   static void arrive( PeerRun & run, const Path & path ) {
      start( run );
      for ( const std::size_t step : path ) {
         peerEvents[ step ]( run );
      }
   }
   static std::string scenario( const Path & path ) {
      PeerRun run( true );
      arrive( run, path );
      return run.scenario();
   }
};

TEST_F( Liveness, AnAnswerAndTheReportedAclsAdmitWhoeverIsHeld ) {
   everyState( [ & ]( const Path & path ) {
      PeerRun run;
      arrive( run, path );
      // Nothing looks at a LAG that came or was replaced with its members until its next event,
      // which the report of an ACL is, and so is everything that follows.
      for ( const std::size_t m : { 0U, 1U } ) {
         run.acl( 0, m, false );
         run.acl( 0, m, true );
      }
      if ( run.model().lags[ 0 ].request ) {
         run.response( 0, *run.model().lags[ 0 ].request );
      }
      EXPECT_EQ( membersHeld( run ), "" ) << scenario( path );
      EXPECT_EQ( run.difference(), "" );
   } );
}

TEST_F( Liveness, TimeAloneAdmitsWhoeverIsHeldForTheAnswer ) {
   std::size_t waited = 0;
   everyState( [ & ]( const Path & path ) {
      PeerRun run;
      arrive( run, path );
      if ( !run.model().peerMode ) {
         return; // the local ACL decides, however long that takes
      }
      if ( unseen( path ) ) {
         for ( const std::size_t m : { 0U, 1U, 0U, 1U } ) {
            run.toggleAcl( 0, m );
         }
      }
      const auto & lag = run.model().lags[ 0 ];
      const bool requesting = lag.state == PeerModel::requesting;
      run.pass( 0.1 );
      if ( lag.state == PeerModel::up ) {
         return; // answered: the local ACL decides, however long that takes
      }
      waited += requesting ? 1U : 0U;
      EXPECT_EQ( membersHeld( run ), "" ) << scenario( path );
      EXPECT_NE( lag.state, PeerModel::requesting ) << scenario( path );
   } );
   EXPECT_GT( waited, 20U );
}

// The exceptions of the above, one by one: members that nothing looks at, held or admitted, until
// an event names them.
TEST_F( Liveness, ALagThatComesWithMembersWaitsForItsNextEvent ) {
   PeerRun run;
   run.mlagIntf( 0, 2 );
   run.start( true );
   run.lag( 0, 3 );
   run.pass( 10 );
   EXPECT_EQ( membersHeld( run ), "Ethernet1 Ethernet2 " );
   run.member( 0, 2, true );
   run.pass( 0.1 );
   EXPECT_EQ( membersHeld( run ), "" ) << "the event was one member's, the time-out the LAG's";
   EXPECT_EQ( run.difference(), "" );
}

TEST_F( Liveness, AFailedLagThatIsReplacedWithMembersHoldsThemUntilTheirNextEvent ) {
   PeerRun run;
   start( run );
   run.pass( 0.1 );
   run.lag( 0, 3 );
   run.pass( 10 );
   EXPECT_EQ( membersHeld( run ), "Ethernet2 " );
   run.acl( 0, 1, true );
   EXPECT_EQ( membersHeld( run ), "" );
}

TEST_F( Liveness, ALagThatGoesKeepsItsVerdictsUntilItsNextEvent ) {
   PeerRun run;
   start( run );
   run.pass( 0.1 );
   run.noLag( 0 );
   run.pass( 10 );
   EXPECT_EQ( run.world().output->intf().size(), 1U );
   run.mlagIntf( 0, 1 );
   EXPECT_EQ( run.world().output->intf().size(), 0U );
   EXPECT_EQ( run.difference(), "" );
}

} // namespace
} // namespace Velo
