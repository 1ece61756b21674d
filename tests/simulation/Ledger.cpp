#include "tests/simulation/Ledger.h"

#include "tests/simulation/Names.h"

#include <algorithm>

namespace Simulation {

namespace {

constexpr double timeOut = 0.1; // seconds
constexpr double rounding = 1e-9; // seconds

} // namespace

void Ledger::violated( const std::string & what ) {
   if ( violation_.empty() ) {
      violation_ = what;
   }
}

const Ledger::Book & Ledger::book( LagNo lag ) const {
   static const Book none;
   const auto found = books_.find( lag );
   return found != books_.end() ? found->second : none;
}

bool Ledger::asks() const {
   return std::ranges::any_of(
      books_, []( const auto & entry ) { return entry.second.link == Link::asking; } );
}

bool Ledger::isReady( LagNo lag ) const {
   return std::ranges::all_of( book( lag ).members,
                               [ & ]( PortNo port ) { return hasAcl( { lag, port } ); } );
}

bool Ledger::isFromEarlierLife( LagNo lag, Token token ) const {
   const auto found = issued_.find( { lag, token } );
   return found != issued_.end() && found->second < life_;
}

// ---- What changed -------------------------------------------------------------------------------

// An InitialMember that is put, replaced or withdrawn decides nothing by itself.
void Ledger::touchNothing( LagNo lag ) {
   for ( const PortNo port : book( lag ).members ) {
      undecided_.insert( { lag, port } );
   }
   for ( const PortInLag pair : admitted_ ) {
      if ( pair.lag == lag ) {
         undecided_.insert( pair );
      }
   }
}

void Ledger::lagIs( LagNo lag, std::set< PortNo > members ) {
   books_[ lag ].present = true;
   books_[ lag ].members = std::move( members );
   touchNothing( lag );
}

void Ledger::lagGone( LagNo lag ) {
   books_[ lag ].present = false;
   books_[ lag ].members.clear();
   touchNothing( lag );
}

void Ledger::memberIs( PortInLag pair, bool in ) {
   if ( in ) {
      books_[ pair.lag ].members.insert( pair.port );
   } else {
      books_[ pair.lag ].members.erase( pair.port );
   }
   decide( pair );
}

void Ledger::aclIs( PortInLag pair, bool installed ) {
   if ( installed ) {
      acl_.insert( pair );
   } else {
      acl_.erase( pair );
   }
   decide( pair );
}

void Ledger::mlagIntfIs( LagNo lag, bool known, bool activeOnPeer ) {
   books_[ lag ].known = known;
   books_[ lag ].activeOnPeer = activeOnPeer;
   if ( running_ ) {
      decideLag( lag );
   }
}

void Ledger::mlagIs( bool active ) {
   mlagActive_ = active;
   decideAllOfBasic();
}

void Ledger::peerLinkIs( bool up ) {
   peerLinkUp_ = up;
   decideAllOfBasic();
}

void Ledger::peerModeIs( bool peer ) {
   const bool changes = peer != peerMode_;
   peerMode_ = peer;
   if ( !running_ || !changes ) {
      return;
   }
   if ( peer ) {
      startPeer();
      return;
   }
   for ( auto & [ lag, book ] : books_ ) {
      revoke( lag );
      book.link.reset();
   }
   startBasic();
}

void Ledger::answerIs( LagNo lag, std::optional< Token > token ) {
   books_[ lag ].answer = token;
}

void Ledger::answerTold( LagNo lag ) {
   Book & book = books_[ lag ];
   if ( !peerRuns() ) {
      return;
   }
   if ( matched( book ) ) {
      decideLag( lag );
      return;
   }
   coverage_.hit( link( lag ), LinkHappening::answerLost );
   if ( book.link == Link::up ) {
      linkIs( lag, Link::failed );
      book.cause = FailCause::answerLost;
      decideLag( lag );
   }
}

void Ledger::agentStarted() {
   running_ = true;
   if ( peerMode_ ) {
      startPeer();
   } else {
      for ( auto & [ lag, book ] : books_ ) {
         book.link.reset(); // of an earlier life
      }
      startBasic();
   }
}

void Ledger::deadlinesCome() {
   if ( !peerRuns() ) {
      return;
   }
   for ( auto & [ lag, book ] : books_ ) {
      const auto seen = seen_.links.find( lag );
      // A LAG that lost its members unheard asks on, and is found to be down when its deadline
      // comes.
      const bool asksNoMore = seen == seen_.links.end() || seen->second != Link::asking;
      if ( book.link == Link::asking && book.deadline <= now_ + rounding && asksNoMore ) {
         coverage_.hit( Link::asking, LinkHappening::timeOut );
         linkIs( lag, Link::failed );
         book.cause = FailCause::timeOut;
         decideLag( lag );
      }
   }
}

// ---- Decisions ----------------------------------------------------------------------------------

bool Ledger::matched( const Book & book ) const {
   return book.request && *book.request != 0 && book.answer == book.request;
}

bool Ledger::aclNeededByBasic( LagNo lag ) const {
   return mlagActive_ && peerLinkUp_ && book( lag ).known && book( lag ).activeOnPeer;
}

void Ledger::decide( PortInLag pair ) {
   if ( !running_ ) {
      return;
   }
   if ( peerMode_ ) {
      decidePeer( pair );
   } else {
      decideBasic( pair );
   }
}

void Ledger::decideBasic( PortInLag pair ) {
   undecided_.erase( pair );
   const bool member = members( pair.lag ).contains( pair.port );
   if ( member && ( !aclNeededByBasic( pair.lag ) || hasAcl( pair ) ) ) {
      admitted_.insert( pair );
   } else {
      admitted_.erase( pair );
   }
}

void Ledger::decidePeer( PortInLag pair ) {
   lookAt( pair.lag );
   undecided_.erase( pair );
   if ( mayJoin( pair ) ) {
      admitted_.insert( pair );
   } else {
      admitted_.erase( pair );
   }
}

bool Ledger::mayJoin( PortInLag pair ) const {
   if ( !members( pair.lag ).contains( pair.port ) ) {
      return false;
   }
   if ( !isMlag( pair.lag ) ) {
      return true;
   }
   switch ( link( pair.lag ) ) {
   case Link::down:
   case Link::asking:
      return false;
   case Link::up:
      return hasAcl( pair ) || !book( pair.lag ).activeOnPeer;
   case Link::failed:
      return true;
   }
   return false;
}

void Ledger::lookAt( LagNo lag ) {
   Book & book = books_[ lag ];
   if ( !active( lag ) || !book.known ) {
      revoke( lag );
      if ( !book.known ) {
         book.link.reset();
         return;
      }
      coverage_.hit( link( lag ), LinkHappening::inactive );
      linkIs( lag, Link::down );
      return;
   }
   const bool asked = book.request.has_value();
   askFor( lag );
   if ( matched( book ) ) {
      coverage_.hit( link( lag ), LinkHappening::matched );
      if ( !asked ) {
         coverage_.hit( Fault::oldAnswerFitsNewRequest );
      }
      linkIs( lag, Link::up );
      return;
   }
   coverage_.hit( link( lag ), LinkHappening::notMatched );
   switch ( link( lag ) ) {
   case Link::down:
      linkIs( lag, Link::asking );
      book.deadline = now_ + timeOut;
      break;
   case Link::up:
      linkIs( lag, Link::failed );
      book.cause = FailCause::answerLost;
      break;
   case Link::asking:
   case Link::failed:
      break;
   }
}

// Whoever is not looked at in the same go has a verdict of before.
void Ledger::linkIs( LagNo lag, Link link ) {
   Book & book = books_[ lag ];
   if ( book.link != link ) {
      book.link = link;
      touchNothing( lag );
   }
}

void Ledger::decideLag( LagNo lag ) {
   if ( active( lag ) ) {
      const std::set< PortNo > now = members( lag );
      for ( const PortNo port : now ) {
         decide( { lag, port } );
      }
      return;
   }
   if ( !peerMode_ ) {
      return;
   }
   lookAt( lag );
   const std::set< PortInLag > before = admitted_;
   for ( const PortInLag pair : before ) {
      if ( pair.lag == lag ) {
         decidePeer( pair );
      }
   }
}

void Ledger::decideAllOfBasic() {
   if ( !basicRuns() ) {
      return;
   }
   for ( const auto & [ lag, book ] : books_ ) {
      for ( const PortNo port : book.members ) {
         decideBasic( { lag, port } );
      }
   }
}

void Ledger::askFor( LagNo lag ) {
   Book & book = books_[ lag ];
   if ( book.request ) {
      return;
   }
   const auto found = seen_.requests.find( lag );
   if ( found == seen_.requests.end() ) {
      violated( lagName( lag ).stringValue() + " is active and asks nothing of the peer" );
      return;
   }
   const Token token = found->second;
   book.request = token;
   fresh_.push_back( token );
   book.tokenIsOld = issued_.contains( { lag, token } );
   issued_[ { lag, token } ] = life_;
   if ( revoked_.erase( { lag, token } ) > 0 ) {
      coverage_.hit( Fault::tokenUsedAgain );
   }
   if ( token == 0 ) {
      coverage_.hit( Fault::tokenZero );
   }
}

void Ledger::revoke( LagNo lag ) {
   Book & book = books_[ lag ];
   if ( book.request ) {
      revoked_.insert( { lag, *book.request } );
      book.request.reset();
   }
}

// A pass over all that is there, and over all that an earlier life has left.
void Ledger::startPeer() {
   ++life_;
   lastToken_ = 1;
   for ( auto & [ lag, book ] : books_ ) {
      book.link.reset();
      lastToken_ = std::max( lastToken_, book.answer.value_or( 0 ) );
   }
   for ( const auto & [ lag, book ] : books_ ) {
      if ( book.present || book.request ) {
         decideLag( lag );
      }
   }
   const std::set< PortInLag > left = admitted_;
   for ( const PortInLag pair : left ) {
      if ( !active( pair.lag ) ) {
         decideLag( pair.lag );
      } else if ( !members( pair.lag ).contains( pair.port ) ) {
         decidePeer( pair );
      }
   }
}

void Ledger::startBasic() {
   const std::set< PortInLag > left = admitted_;
   for ( const PortInLag pair : left ) {
      decideBasic( pair );
   }
   decideAllOfBasic();
}

} // namespace Simulation
