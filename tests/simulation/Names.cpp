#include "tests/simulation/Names.h"

#include "platform/Vex/Assert.h"

#include <algorithm>
#include <array>

namespace Simulation {

namespace {

template < std::size_t count >
std::array< Nodo::IntfId, count > names( const std::string & kind ) {
   std::array< Nodo::IntfId, count > all;
   for ( std::size_t at = 0; at < count; ++at ) {
      all[ at ] = Nodo::IntfId( kind + std::to_string( at + 1 ) );
   }
   return all;
}

const std::array< Nodo::IntfId, lagCount > & lags() {
   static const auto all = names< lagCount >( "PortChannel" );
   return all;
}
const std::array< Nodo::IntfId, portCount > & ports() {
   static const auto all = names< portCount >( "Ethernet" );
   return all;
}

} // namespace

Nodo::IntfId lagName( LagNo lag ) {
   static const Nodo::IntfId foreign( "PortChannel999" );
   return lag == foreignLag ? foreign : lags()[ lag ];
}

Nodo::IntfId portName( PortNo port ) {
   return ports()[ port ];
}

Interface::Interlock::IntfFeature nameOf( PortInLag pair ) {
   return { portName( pair.port ), lagName( pair.lag ) };
}

LagNo lagNo( Nodo::IntfId lag ) {
   const auto found = std::ranges::find( lags(), lag );
   return found != lags().end() ? static_cast< LagNo >( found - lags().begin() ) : foreignLag;
}

PortInLag numbersOf( const Interface::Interlock::IntfFeature & pair ) {
   const auto found = std::ranges::find( ports(), pair.member );
   VEX_ASSERT( found != ports().end() );
   return { lagNo( pair.lag ), static_cast< PortNo >( found - ports().begin() ) };
}

} // namespace Simulation
