#pragma once

// The names that the switches know: LAGs and ports of the numbers that the books use. MLAG LAGs
// have the same name on both switches, and so have ports here, because nothing tells them apart.

#include "interlock-model/Interface/Interlock/IntfFeature.h"
#include "platform/Nodo/IntfId.h"
#include "tests/simulation/Observed.h"

#include <string>

namespace Simulation {

inline constexpr LagNo lagCount = 4;
inline constexpr PortNo portCount = 4;

Nodo::IntfId lagName( LagNo lag );
Nodo::IntfId portName( PortNo port );
Interface::Interlock::IntfFeature nameOf( PortInLag pair );

/// foreignLag for every other name.
LagNo lagNo( Nodo::IntfId lag );
PortInLag numbersOf( const Interface::Interlock::IntfFeature & pair );

} // namespace Simulation
