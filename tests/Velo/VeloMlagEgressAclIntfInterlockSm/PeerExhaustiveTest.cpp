// Every sequence of a few changes to one LAG with two members, compared with the model after each
// change. INTERLOCK_EXHAUSTIVE_DEPTH says how many changes; a failure prints a scenario to replay.

#include "platform/Jotter/TraceFile.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerEvents.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerRun.h"
#include "tests/platform/Sanitized.h"
#include "tests/support/TraceRecorder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Velo {
namespace {

constexpr std::size_t usualDepth = sanitized ? 4 : 5;

std::size_t depth() {
   const char * const wanted = std::getenv( "INTERLOCK_EXHAUSTIVE_DEPTH" );
   return wanted != nullptr ? std::strtoul( wanted, nullptr, 10 ) : usualDepth;
}

using Start = void ( * )( PeerRun & );

std::string scenario( Start start,
                      const std::vector< std::size_t > & sequence,
                      std::size_t count ) {
   PeerRun run( true );
   start( run );
   for ( std::size_t at = 0; at < count; ++at ) {
      peerEvents[ sequence[ at ] ]( run );
   }
   return run.scenario();
}

// Plays all sequences of `length` changes in the order of counting, each from the start: a sequence
// needs to be compared only behind the first change that differs from the one before it.
void playAll( Start start, std::size_t length ) {
   Jotter::TraceFile * const before = Jotter::defaultTraceFileIs( nullptr ); // quicker
   const TestSupport::TraceRecorder quiet( "VeloMlagEgressAclIntfInterlockSm", 0 );
   std::vector< std::size_t > sequence( length, 0 );
   std::size_t firstNew = 0;
   std::string failure;
   while ( failure.empty() ) {
      PeerRun run;
      start( run );
      for ( std::size_t at = 0; at < length && failure.empty(); ++at ) {
         peerEvents[ sequence[ at ] ]( run );
         if ( at >= firstNew ) {
            if ( const auto difference = run.difference(); !difference.empty() ) {
               failure = difference + " after\n" + scenario( start, sequence, at + 1 );
            }
         }
      }
      std::size_t at = length;
      while ( at > 0 && ++sequence[ at - 1 ] == peerEvents.size() ) {
         sequence[ --at ] = 0;
      }
      if ( at == 0 ) {
         break;
      }
      firstNew = at - 1;
   }
   Jotter::defaultTraceFileIs( before );
   EXPECT_EQ( failure, "" );
}

void requesting( PeerRun & run ) {
   run.lag( 0, 1 );
   run.mlagIntf( 0, 2 );
   run.start( true );
}

TEST( PeerExhaustive, ALagThatHasAsked ) {
   playAll( requesting, depth() );
}

TEST( PeerExhaustive, ALagWhoseRequestIsAnswered ) {
   playAll(
      []( PeerRun & run ) {
         requesting( run );
         run.acl( 0, 0, true );
         run.response( 0, run.model().lags[ 0 ].request );
      },
      depth() - 1 );
}

TEST( PeerExhaustive, WhatAnEarlierOwnerLeft ) {
   playAll(
      []( PeerRun & run ) {
         run.left( 0, 1 );
         run.left( 0, 2 );
         run.left( 1, 0 );
         run.leftRequest( 0, 9 );
         run.leftRequest( 1, 5 );
         run.lag( 0, 1 );
         run.response( 0, 9 );
         run.mlagIntf( 0, 2 );
         run.start( true );
      },
      depth() - 1 );
}

TEST( PeerExhaustive, TokensThatWrapAround ) {
   playAll(
      []( PeerRun & run ) {
         run.response( 1, 0xfffffffe );
         run.lag( 0, 1 );
         run.mlagIntf( 0, 2 );
         run.start( true );
      },
      depth() - 1 );
}

TEST( PeerExhaustive, TheBasicInterlockFirst ) {
   playAll(
      []( PeerRun & run ) {
         run.lag( 0, 3 );
         run.mlagIntf( 0, 2 );
         run.start( false );
      },
      depth() - 1 );
}

TEST( PeerExhaustive, ALagThatMlagDoesNotKnow ) {
   playAll(
      []( PeerRun & run ) {
         run.mlagIntf( 0, 0 );
         run.lag( 0, 0 );
         run.start( true );
      },
      depth() - 1 );
}

} // namespace
} // namespace Velo
