#include "bench/measures/Register.h"

#include "bench/Registry.h"
#include "bench/baseline/signals2/Library.h"
#include "bench/baseline/usual/Worlds.h"

namespace Bench::Usual {

void registerSignals2Worlds() {
   registerTimes< BasicWorld< Signals2 > >( { "basic", "signals2", true } );
   registerTimes< BasicWorld< Signals2 > >( { "basic", "signals2", false } );
   registerSpace< BasicWorld< Signals2 > >( { "basic", "signals2", true } );
   registerTimes< PeerWorld< Signals2 > >( { "peer", "signals2", true } );
   registerTimes< PeerWorld< Signals2 > >( { "peer", "signals2", false } );
   registerSpace< PeerWorld< Signals2 > >( { "peer", "signals2", true } );
   registerTimes< VlanWorld< Signals2 > >( { "vlan", "signals2", true } );
   registerSpace< VlanWorld< Signals2 > >( { "vlan", "signals2", true } );
}

void addSignals2Contestants( Contestants & contestants ) {
   contestants.push_back( contestant< BasicWorld< Signals2 > >( "basic", "signals2" ) );
   contestants.push_back( contestant< PeerWorld< Signals2 > >( "peer", "signals2" ) );
   contestants.push_back( contestant< VlanWorld< Signals2 > >( "vlan", "signals2" ) );
}

} // namespace Bench::Usual
