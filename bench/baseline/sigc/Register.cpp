#include "bench/measures/Register.h"

#include "bench/Registry.h"
#include "bench/baseline/sigc/Library.h"
#include "bench/baseline/usual/Worlds.h"

namespace Bench::Usual {

void registerSigcWorlds() {
   registerTimes< BasicWorld< Sigc > >( { "basic", "sigc", true } );
   registerTimes< BasicWorld< Sigc > >( { "basic", "sigc", false } );
   registerSpace< BasicWorld< Sigc > >( { "basic", "sigc", true } );
   registerTimes< PeerWorld< Sigc > >( { "peer", "sigc", true } );
   registerTimes< PeerWorld< Sigc > >( { "peer", "sigc", false } );
   registerSpace< PeerWorld< Sigc > >( { "peer", "sigc", true } );
   registerTimes< VlanWorld< Sigc > >( { "vlan", "sigc", true } );
   registerSpace< VlanWorld< Sigc > >( { "vlan", "sigc", true } );
}

void addSigcContestants( Contestants & contestants ) {
   contestants.push_back( contestant< BasicWorld< Sigc > >( "basic", "sigc" ) );
   contestants.push_back( contestant< PeerWorld< Sigc > >( "peer", "sigc" ) );
   contestants.push_back( contestant< VlanWorld< Sigc > >( "vlan", "sigc" ) );
}

} // namespace Bench::Usual
