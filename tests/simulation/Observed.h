#pragma once

// The switches of a simulated pair in numbers: LAGs and ports are counted from 0, so that neither
// the books nor their order depend on names. And what can be seen of one switch from outside.

#include <compare>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <set>

namespace Simulation {

using LagNo = std::uint8_t;
using PortNo = std::uint8_t;
using Token = std::uint32_t;

/// Not a LAG of the pair: the key under which an answer lies that belongs to nobody.
inline constexpr LagNo foreignLag = 255;

struct PortInLag {
   LagNo lag = 0;
   PortNo port = 0;

   friend auto operator<=>( const PortInLag &, const PortInLag & ) = default;
};

enum class Link : std::uint8_t { down, asking, up, failed };
inline constexpr std::size_t linkKinds = 4;

/// What a switch shows after an event.
struct Observed {
   std::set< PortInLag > admitted;
   std::map< LagNo, Token > requests;
   bool basicRuns = false;
   bool peerRuns = false;
   // Of the peer interlock, where it runs.
   std::map< LagNo, Link > links;
   std::map< LagNo, double > deadlines; // seconds
   std::optional< LagNo > armedFor;
   double armedDue = std::numeric_limits< double >::infinity(); // seconds; infinite: not armed
};

} // namespace Simulation
