#include "tests/simulation/Exposure.h"

#include "tests/simulation/Names.h"

#include <cstdio>
#include <numeric>
#include <string_view>

namespace Simulation {

namespace {

constexpr std::array< std::string_view, openCauses > openNames{
   "time-out",
   "answer withdrawn",
   "local ACL not needed",
   "basic mode asks no peer",
   "withdrawal under way or lost",
   "agent down",
   "not looked at since",
};
constexpr std::array< std::string_view, heldCauses > heldNames{
   "answer under way",
   "agent down",
   "not looked at since",
};

OpenCause openCause( const Ledger & here, PortInLag pair ) {
   if ( !here.running() ) {
      return OpenCause::agentDown;
   }
   if ( here.isUndecided( pair ) ) {
      return OpenCause::notDecided;
   }
   if ( here.peerMode() && here.link( pair.lag ) == Link::failed ) {
      return here.failCause( pair.lag ) == FailCause::timeOut ? OpenCause::timeOut
                                                              : OpenCause::answerWithdrawn;
   }
   if ( !here.hasAcl( pair ) ) {
      return OpenCause::notNeeded;
   }
   return here.peerMode() ? OpenCause::newsUnderWay : OpenCause::basicMode;
}

HeldCause heldCause( const Ledger & here, PortInLag pair ) {
   if ( !here.running() ) {
      return HeldCause::agentDown;
   }
   return here.isUndecided( pair ) ? HeldCause::notDecided : HeldCause::asking;
}

template < std::size_t count >
std::string table( const char * title,
                   const std::array< double, count > & values,
                   const std::array< std::string_view, count > & names,
                   double members ) {
   constexpr double hundred = 100;
   std::array< char, 128 > text{};
   const double sum = std::accumulate( values.begin(), values.end(), 0.0 );
   std::snprintf( text.data(), text.size(), "%s: %.6f of %.6f member-seconds, %.3f %%\n", title,
                  sum, members, members > 0 ? sum / members * hundred : 0.0 );
   std::string result = text.data();
   for ( std::size_t at = 0; at < count; ++at ) {
      std::snprintf( text.data(), text.size(), "   %-34.*s %16.6f\n",
                     static_cast< int >( names[ at ].size() ), names[ at ].data(), values[ at ] );
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
   const bool ready = here.hasAcl( pair ) && peer.isReady( pair.lag );
   const bool admitted = here.admitted().contains( pair );
   members_ += seconds;
   if ( admitted && !ready ) {
      open_[ static_cast< std::size_t >( openCause( here, pair ) ) ] += seconds;
   } else if ( !admitted && ready ) {
      held_[ static_cast< std::size_t >( heldCause( here, pair ) ) ] += seconds;
   }
}

std::string Exposure::report() const {
   return table( "admitted without an ACL in place", open_, openNames, members_ ) +
          table( "held although both ACLs were in place", held_, heldNames, members_ );
}

} // namespace Simulation
