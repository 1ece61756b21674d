// What the books are held against: what is seen of the switch.

#include "tests/simulation/Ledger.h"
#include "tests/simulation/Names.h"

#include <algorithm>
#include <cmath>

namespace Simulation {

namespace {

constexpr double timeOut = 0.1; // seconds
constexpr double rounding = 1e-9; // seconds

std::string text( LagNo lag ) {
   return lagName( lag ).stringValue();
}
std::string text( PortInLag pair ) {
   return portName( pair.port ).stringValue() + " of " + text( pair.lag );
}

bool near( double a, double b ) {
   return std::abs( a - b ) <= rounding;
}

} // namespace

void Ledger::check() {
   checkTokens();
   checkSafety();
   checkTimers();
   checkBooks();
   fresh_.clear();
}

// The new tokens follow the last one without a gap, whichever LAG got which.
void Ledger::checkTokens() {
   std::ranges::sort( fresh_, {}, [ this ]( Token token ) { return Token( token - lastToken_ ); } );
   for ( const Token token : fresh_ ) {
      ++lastToken_;
      if ( token != lastToken_ ) {
         violated( "a request has token " + std::to_string( token ) + " instead of " +
                   std::to_string( lastToken_ ) );
         lastToken_ = token;
      }
   }
}

// Says nothing of how a verdict came about: who is in must have a reason, as things are seen.
void Ledger::checkSafety() {
   if ( !running_ ) {
      return;
   }
   for ( const PortInLag pair : seen_.admitted ) {
      const auto found = seen_.links.find( pair.lag );
      const Link link = found != seen_.links.end() ? found->second : Link::down;
      const bool aclOrNoNeed = hasAcl( pair ) || !book( pair.lag ).activeOnPeer;
      const bool cleared = peerMode_ ? link == Link::failed || ( link == Link::up && aclOrNoNeed )
                                     : hasAcl( pair ) || !aclNeededByBasic( pair.lag );
      if ( isMlag( pair.lag ) && !isUndecided( pair ) && !cleared ) {
         violated( text( pair ) + " is admitted without a reason" );
      }
   }
   for ( const auto & [ lag, link ] : seen_.links ) {
      const auto request = seen_.requests.find( lag );
      if ( link != Link::up ) {
         continue;
      }
      if ( request == seen_.requests.end() || request->second == 0 ||
           answer( lag ) != request->second ) {
         violated( text( lag ) + " is linkUp without an answer to its request" );
      } else if ( isRevoked( lag, request->second ) ) {
         violated( text( lag ) + " is linkUp by a token that was revoked" );
      }
   }
}

void Ledger::checkTimers() {
   double earliest = INFINITY;
   for ( const auto & [ lag, link ] : seen_.links ) {
      const auto deadline = seen_.deadlines.find( lag );
      if ( ( link == Link::asking ) != ( deadline != seen_.deadlines.end() ) ) {
         violated( text( lag ) + ( link == Link::asking ? " asks without a deadline"
                                                        : " has a deadline and does not ask" ) );
      } else if ( link == Link::asking ) {
         earliest = std::min( earliest, deadline->second );
         if ( deadline->second > now_ + timeOut + rounding || deadline->second < now_ - rounding ) {
            violated( text( lag ) + " has its deadline at " + std::to_string( deadline->second ) );
         }
      }
   }
   for ( const auto & [ lag, deadline ] : seen_.deadlines ) {
      if ( !seen_.links.contains( lag ) ) {
         violated( text( lag ) + " has a deadline and no link state" );
      }
   }
   if ( seen_.deadlines.empty() ) {
      if ( seen_.armedFor || std::isfinite( seen_.armedDue ) ) {
         violated( "the timer is armed, and no LAG asks" );
      }
   } else if ( !seen_.armedFor || !near( seen_.armedDue, std::max( earliest, now_ ) ) ) {
      violated( "the timer is not armed for the earliest deadline" );
   }
}

void Ledger::checkBooks() {
   if ( seen_.peerRuns != peerRuns() || seen_.basicRuns != basicRuns() ) {
      violated( "the wrong interlock runs" );
   }
   for ( const PortInLag pair : seen_.admitted ) {
      if ( !admitted_.contains( pair ) ) {
         violated( text( pair ) + " is admitted, and should be held" );
      }
   }
   for ( const PortInLag pair : admitted_ ) {
      if ( !seen_.admitted.contains( pair ) ) {
         violated( text( pair ) + " is held, and should be admitted" );
      }
   }
   std::map< LagNo, Token > requests;
   std::map< LagNo, Link > links;
   for ( const auto & [ lag, book ] : books_ ) {
      if ( book.request ) {
         requests[ lag ] = *book.request;
      }
      if ( book.link && peerRuns() ) {
         links[ lag ] = *book.link;
         const auto deadline = seen_.deadlines.find( lag );
         if ( book.link == Link::asking && deadline != seen_.deadlines.end() &&
              !near( deadline->second, book.deadline ) ) {
            violated( text( lag ) + " has moved its deadline" );
         }
      }
   }
   if ( requests != seen_.requests ) {
      violated( "other requests are out than should be" );
   }
   if ( links != seen_.links ) {
      violated( "link states are not as they should be" );
   }
}

void Ledger::checkSettled() {
   for ( const auto & [ lag, book ] : books_ ) {
      if ( running_ && book.link == Link::asking ) {
         violated( text( lag ) + " still asks" );
      }
      for ( const PortNo port : book.members ) {
         const PortInLag pair{ lag, port };
         const bool needed = peerMode_ ? book.link == Link::up && book.known && book.activeOnPeer
                                       : aclNeededByBasic( lag );
         const bool waitsForAcl = needed && !hasAcl( pair );
         if ( running_ && !seen_.admitted.contains( pair ) && !waitsForAcl &&
              !isUndecided( pair ) ) {
            violated( text( pair ) + " stays held, and nothing keeps it out" );
         }
      }
   }
}

void Ledger::checkRecovered( LagNo lag, bool peerReady ) {
   const Book & book = this->book( lag );
   for ( const PortNo port : book.members ) {
      if ( running_ && isUndecided( { lag, port } ) ) {
         violated( text( PortInLag{ lag, port } ) + " was not looked at" );
      }
   }
   // An old token can be matched by an old answer, whatever the peer has now.
   if ( !peerRuns() || !book.known || book.members.empty() || book.tokenIsOld ) {
      return;
   }
   const bool answers = peerReady && book.request.value_or( 0 ) != 0;
   if ( link( lag ) != ( answers ? Link::up : Link::failed ) ) {
      violated( text( lag ) + " is " + std::string( nameOf( link( lag ) ) ) + ", and the peer is " +
                ( peerReady ? "ready" : "not ready" ) );
   }
   for ( const PortNo port : book.members ) {
      const PortInLag pair{ lag, port };
      const bool wanted = !answers || !book.activeOnPeer || hasAcl( pair );
      if ( seen_.admitted.contains( pair ) != wanted ) {
         violated( text( pair ) + ( wanted ? " is held" : " is admitted" ) + " after all is well" );
      }
   }
}

} // namespace Simulation
