#include "bench/measures/Register.h"

#include "bench/Registry.h"
#include "bench/ours/Worlds.h"

namespace Bench::Ours {

void nameAll() {
   const Shape largest{ .pairs = static_cast< std::size_t >( sizes.back() ) };
   for ( std::size_t lag = 0; lag < lags( largest ); ++lag ) {
      static_cast< void >( Nodo::IntfId( lagName( lag ) ) );
   }
   for ( std::size_t at = 0; at < largest.pairs; ++at ) {
      static_cast< void >( Nodo::IntfId( memberName( at ) ) );
   }
}

void registerWorlds() {
   registerTimes< BasicWorld >( { "basic", "ours", true } );
   registerTimes< BasicWorld >( { "basic", "ours", false } );
   registerSpace< BasicWorld >( { "basic", "ours", true } );
   registerTimes< PeerWorld >( { "peer", "ours", true } );
   registerTimes< PeerWorld >( { "peer", "ours", false } );
   registerSpace< PeerWorld >( { "peer", "ours", true } );
   registerTimes< VlanWorld >( { "vlan", "ours", true } );
   registerSpace< VlanWorld >( { "vlan", "ours", true } );
}

void addContestants( Contestants & contestants ) {
   contestants.push_back( contestant< BasicWorld >( "basic", "ours" ) );
   contestants.push_back( contestant< PeerWorld >( "peer", "ours" ) );
   contestants.push_back( contestant< VlanWorld >( "vlan", "ours" ) );
}

} // namespace Bench::Ours
