#pragma once

#include "replay/Writer.h"

namespace Import {

/// The command line begins with the word that asks for it.
bool isImport( int argc, const char * const * argv ) noexcept;

/// interlock-replay import FILE [FILE]: turns a switch's configuration, or that of a pair, into the
/// opening of a scenario. Returns the exit status of the program.
int importConfig( int argc,
                  const char * const * argv,
                  Replay::Writer & writer,
                  Replay::Writer & errors );

} // namespace Import
