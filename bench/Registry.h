#pragma once

// What each source adds to the program. Registration by call, so that the order is this one.

#include "bench/Check.h"

#include <vector>

namespace Bench {

using Contestants = std::vector< Contestant >;

namespace Ours {
/// Names all ports and LAGs, so that their handles follow each other as the floor's numbers do,
/// whatever the process measures first.
void nameAll();
void registerWorlds();
void addContestants( Contestants & contestants );
void registerBurst();
} // namespace Ours

namespace Floor {
void registerWorlds();
void addContestants( Contestants & contestants );
} // namespace Floor

namespace Usual {
void registerSignals2Worlds();
void addSignals2Contestants( Contestants & contestants );
void registerSigcWorlds();
void addSigcContestants( Contestants & contestants );
} // namespace Usual

namespace Parts {
void registerNotification();
void registerRingRecord();
void registerReferences();
void registerTimers();
} // namespace Parts

} // namespace Bench
