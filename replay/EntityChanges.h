#pragma once

// What the statements about a switch's entities do to them: those that its other agents publish,
// and those that an earlier owner left behind. Whoever holds entities may be told by statements
// what becomes of them: a switch that is played, or an agent that runs.
//
// Errors: a statement that cannot be done now is a StatementError and changes nothing.

#include "replay/Entities.h"
#include "replay/Statement.h"

namespace Replay {

// What the switch's other agents publish.
void apply( const Lag & lag, const Entities & entities );
void apply( const NoLag & lag, const Entities & entities );
void apply( const Member & member, const Entities & entities );
void apply( const InputEntry & entry, const Entities & entities );
void apply( const MlagState & state, const Entities & entities );
void apply( const MlagPeerLink & peerLink, Entities & entities );
void apply( const Link & link, Entities & entities );
void apply( const MlagIntf & intf, const Entities & entities );
void apply( const MlagPeerInterlock & peerInterlock, const Entities & entities );
void apply( const Response & response, const Entities & entities );
void apply( const Switchport & switchport, const Entities & entities );
void apply( const VlanXlate & mapping, const Entities & entities );

// What an earlier owner left behind.
void apply( const OutputEntry & entry, const Entities & entities );
void apply( const Request & request, const Entities & entities );

template < class StatementType >
concept EntityChange = requires( const StatementType & statement, Entities & entities ) {
   Replay::apply( statement, entities );
};

} // namespace Replay
