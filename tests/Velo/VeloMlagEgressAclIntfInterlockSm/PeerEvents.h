#pragma once

// The changes that the small worlds of one LAG are played through with.

#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerRun.h"

#include <array>

namespace Velo {

using PeerEvent = void ( * )( PeerRun & );

inline constexpr std::array< PeerEvent, 14 > peerEvents{
   []( PeerRun & run ) { run.toggleMember( 0, 0 ); },
   []( PeerRun & run ) { run.toggleMember( 0, 1 ); },
   []( PeerRun & run ) { run.mlagIntf( 0, 2 ); },
   []( PeerRun & run ) { run.mlagIntf( 0, 1 ); },
   []( PeerRun & run ) { run.noMlagIntf( 0 ); },
   []( PeerRun & run ) { run.mlagActive( !run.model().mlagActive ); },
   []( PeerRun & run ) { run.toggleAcl( 0, 0 ); },
   []( PeerRun & run ) { run.response( 0, run.model().lags[ 0 ].request.value_or( 0 ) ); },
   // A stale answer. Higher than all tokens so far, so that the next start resumes behind it.
   []( PeerRun & run ) { run.response( 0, 77 ); },
   []( PeerRun & run ) { run.response( 0, {} ); },
   []( PeerRun & run ) { run.pass( 0.05 ); },
   []( PeerRun & run ) { run.pass( 0.1 ); },
   []( PeerRun & run ) { run.mode( !run.model().peerMode ); },
   []( PeerRun & run ) { run.model().lags[ 0 ].present ? run.noLag( 0 ) : run.lag( 0, 3 ); },
};

} // namespace Velo
