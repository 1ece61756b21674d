#include "tests/simulation/Exposure.h"

#include "tests/simulation/Names.h"

#include <cstdio>
#include <numeric>
#include <string_view>

namespace Simulation {

namespace {

using Replay::Peering::HeldCause;
using Replay::Peering::OpenCause;
using Replay::Peering::Standing;

Standing standingOf( const Ledger & here, const Ledger & peer, PortInLag pair ) {
   Standing standing;
   standing.admitted = here.admitted().contains( pair );
   standing.ownAcl = here.hasAcl( pair );
   standing.peerReady = peer.isReady( pair.lag );
   standing.agentRuns = here.running();
   standing.decided = !here.isUndecided( pair );
   standing.peerMode = here.peerMode();
   if ( here.link( pair.lag ) == Link::failed ) {
      standing.failed = here.failCause( pair.lag );
   }
   return standing;
}

template < class Cause, std::size_t count >
std::string table( const char * title,
                   const std::array< double, count > & values,
                   double members ) {
   constexpr double hundred = 100;
   std::array< char, 128 > text{};
   const double sum = std::accumulate( values.begin(), values.end(), 0.0 );
   std::snprintf( text.data(), text.size(), "%s: %.6f of %.6f member-seconds, %.3f %%\n", title,
                  sum, members, members > 0 ? sum / members * hundred : 0.0 );
   std::string result = text.data();
   for ( std::size_t at = 0; at < count; ++at ) {
      const std::string_view name = nameOf( static_cast< Cause >( at ) );
      std::snprintf( text.data(), text.size(), "   %-34.*s %16.6f\n",
                     static_cast< int >( name.size() ), name.data(), values[ at ] );
      result += text.data();
   }
   return result;
}

} // namespace

void Exposure::pass( const Ledger & here, const Ledger & peer, double seconds ) {
   for ( LagNo lag = 0; lag < lagCount; ++lag ) {
      if ( !here.isMlag( lag ) ) {
         continue;
      }
      for ( const PortNo port : here.members( lag ) ) {
         add( here, peer, { lag, port }, seconds );
      }
   }
}

void Exposure::add( const Ledger & here, const Ledger & peer, PortInLag pair, double seconds ) {
   const Standing standing = standingOf( here, peer, pair );
   members_ += seconds;
   if ( const auto open = openCause( standing ) ) {
      open_[ static_cast< std::size_t >( *open ) ] += seconds;
   } else if ( const auto held = heldCause( standing ) ) {
      held_[ static_cast< std::size_t >( *held ) ] += seconds;
   }
}

std::string Exposure::report() const {
   return table< OpenCause >( "admitted without an ACL in place", open_, members_ ) +
          table< HeldCause >( "held although both ACLs were in place", held_, members_ );
}

} // namespace Simulation
