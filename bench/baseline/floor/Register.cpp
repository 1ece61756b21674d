#include "bench/measures/Register.h"

#include "bench/Registry.h"
#include "bench/baseline/floor/Worlds.h"

namespace Bench::Floor {

namespace {

// What it is worth to read the clock once an event.
void registerClockForEachRecord() {
   for ( const std::int64_t size : sizes ) {
      const Label label{ "basic", "floor-clock-each", true };
      benchmark::RegisterBenchmark( label.name( "event-input" ).c_str(), []( benchmark::State &
                                                                                state ) {
         eventToVerdict< BasicWorldWith< ClockedRing >, InputEvent >( state, true );
      } )->Arg( size );
   }
}

} // namespace

void registerWorlds() {
   registerClockForEachRecord();
   registerTimes< BasicWorld< true > >( { "basic", "floor", true } );
   registerTimes< BasicWorld< false > >( { "basic", "floor", false } );
   registerSpace< BasicWorld< false > >( { "basic", "floor", true } );
   registerTimes< PeerWorld< true > >( { "peer", "floor", true } );
   registerTimes< PeerWorld< false > >( { "peer", "floor", false } );
   registerSpace< PeerWorld< false > >( { "peer", "floor", true } );
   registerTimes< VlanWorld >( { "vlan", "floor", true } );
   registerSpace< VlanWorld >( { "vlan", "floor", true } );
}

void addContestants( Contestants & contestants ) {
   contestants.push_back( contestant< BasicWorld< true > >( "basic", "floor" ) );
   contestants.push_back( contestant< BasicWorld< false > >( "basic", "floor", false ) );
   contestants.push_back( contestant< PeerWorld< true > >( "peer", "floor" ) );
   contestants.push_back( contestant< PeerWorld< false > >( "peer", "floor", false ) );
   contestants.push_back( contestant< VlanWorld >( "vlan", "floor" ) );
}

} // namespace Bench::Floor
