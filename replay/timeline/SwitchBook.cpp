#include "replay/timeline/SwitchBook.h"

#include <algorithm>

namespace Replay::Timeline {

using Peering::FailCause;
using Peering::OpenCause;
using Peering::Standing;

namespace {

constexpr std::size_t indexOf( Interlock interlock ) noexcept {
   return static_cast< std::size_t >( interlock );
}

bool isByRule( OpenCause cause ) noexcept {
   switch ( cause ) {
   case OpenCause::notNeeded:
   case OpenCause::basicMode:
      return true;
   case OpenCause::timeOut:
   case OpenCause::answerWithdrawn:
   case OpenCause::newsUnderWay:
   case OpenCause::agentDown:
   case OpenCause::notDecided:
      break;
   }
   return false;
}

Interlock interlockOf( Explain::Gate gate ) noexcept {
   return gate == Explain::Gate::egressAcl ? Interlock::egressAcl : Interlock::vlanXlate;
}

std::optional< FailCause > failCause( const Explain::Exchange & exchange ) noexcept {
   if ( exchange.link != Explain::Link::failed ) {
      return std::nullopt;
   }
   return exchange.failure == Explain::Failure::timeOut ? FailCause::timeOut
                                                        : FailCause::answerLost;
}

Showing openShowing( OpenCause cause, const Standing & standing, bool peerSeen ) {
   std::string why( nameOf( cause ) );
   if ( !standing.ownAcl ) {
      why += "; the local egress ACL is not installed";
   }
   if ( !standing.peerReady ) {
      why += peerSeen ? "; an egress ACL is missing on the peer"
                      : "; the peer has not confirmed its egress ACL";
   }
   return { isByRule( cause ) ? SpanKind::exempt : SpanKind::open, std::move( why ) };
}

Showing linkShowing( Explain::Link link, std::optional< FailCause > failed ) {
   switch ( link ) {
   case Explain::Link::none:
   case Explain::Link::down:
      break;
   case Explain::Link::asking:
      return { SpanKind::linkRequesting, "the peer was asked and has not answered yet" };
   case Explain::Link::answered:
      return { SpanKind::linkUp, "the peer has answered the request" };
   case Explain::Link::failed:
      return { SpanKind::linkFail, failed == FailCause::timeOut
                                      ? "the peer has not answered in time"
                                      : "the peer's answer was withdrawn, or another one came" };
   }
   return { SpanKind::linkDown, "the LAG has no members" };
}

} // namespace

// ---- What happens -------------------------------------------------------------------------------

void SwitchBook::forgetLinks() {
   for ( auto & [ name, lag ] : lags_ ) {
      lag.link = Explain::Link::none;
      lag.failed.reset();
   }
}

void SwitchBook::outdated( const std::string & lag ) {
   for ( auto & [ name, member ] : lags_[ Nodo::IntfId( lag ) ].members ) {
      member.reasons.fill( std::nullopt );
   }
}

void SwitchBook::decided( const Explain::PairName & pair,
                          Explain::Gate gate,
                          const Explain::Decision & decision ) {
   const Nodo::IntfId lag( pair.lag );
   lags_[ lag ].members[ Nodo::IntfId( pair.member ) ].reasons[ indexOf( interlockOf( gate ) ) ] =
      decision.reason;
   touch( lag );
}

// What was decided before was decided by another state; those who follow it are decided anew in the
// same go.
void SwitchBook::exchanged( const std::string & lag,
                            const Explain::Exchange & exchange,
                            Vex::Seconds at ) {
   const Nodo::IntfId name( lag );
   LagBook & book = lags_[ name ];
   const auto failed = failCause( exchange );
   if ( book.link != exchange.link ) {
      for ( auto & [ member, memberBook ] : book.members ) {
         memberBook.reasons[ indexOf( Interlock::egressAcl ) ].reset();
      }
   }
   if ( failed == FailCause::timeOut && book.failed != failed ) {
      mark( name, { at, MarkKind::timeOut, "time-out: the peer has not answered" } );
   }
   book.link = exchange.link;
   book.failed = failed;
   touch( name );
}

// ---- What is so ---------------------------------------------------------------------------------

void SwitchBook::addLags( std::set< Nodo::IntfId > & lags ) const {
   for ( const auto & [ lag, book ] : lags_ ) {
      lags.insert( lag );
   }
   for ( const Nodo::IntfId lag : device_.entities().hwLagConfig->initialMember().keys() ) {
      lags.insert( lag );
   }
}

// From its first start on: then its verdicts stand, also while it is down.
bool SwitchBook::counts( Interlock interlock ) const {
   return started_[ indexOf( interlock ) ] != nullptr;
}

bool SwitchBook::admits( Interlock interlock, const Pair & pair ) const {
   return !counts( interlock ) || device_.entities().output( interlock )->intfHas( pair );
}

bool SwitchBook::admitsAll( const Pair & pair ) const {
   return std::ranges::all_of( interlocks,
                               [ & ]( Interlock interlock ) { return admits( interlock, pair ); } );
}

bool SwitchBook::isMember( const Pair & pair ) const {
   const auto members = device_.entities().hwLagConfig->initialMember( pair.lag );
   return members && members->memberHas( pair.member );
}

bool SwitchBook::peerMode() const {
   const Machine * const machine = started_[ indexOf( Interlock::egressAcl ) ];
   return machine != nullptr && machine->name == "controller" &&
          device_.entities().mlagStatus->peerInterlock();
}

// Nothing: no egress ACL is asked for, whatever happens.
std::optional< Standing > SwitchBook::standing( const Pair & pair,
                                                const LagBook & lag,
                                                const MemberBook & member,
                                                const SwitchBook * peer ) const {
   const Entities & here = device_.entities();
   if ( !counts( Interlock::egressAcl ) || !here.mlagStatus->intfStatus( pair.lag ) ) {
      return std::nullopt;
   }
   Standing standing;
   standing.admitted = admits( Interlock::egressAcl, pair );
   standing.ownAcl = here.aclInput->intfHas( pair );
   standing.agentRuns = device_.runs( Interlock::egressAcl );
   standing.decided = member.reasons[ indexOf( Interlock::egressAcl ) ].has_value();
   standing.peerMode = peerMode();
   standing.failed = lag.failed;
   if ( peer != nullptr ) {
      const Entities & there = peer->device_.entities();
      standing.peerReady = Peering::hasEveryAcl( *there.aclInput, *there.hwLagConfig, pair.lag );
   } else { // all that is known of it is what it has said
      standing.peerReady = !( standing.peerMode && standing.failed );
   }
   return standing;
}

std::string SwitchBook::reasons( const Pair & pair,
                                 const MemberBook & member,
                                 bool admitted ) const {
   std::string text;
   for ( const Interlock interlock : interlocks ) {
      if ( !counts( interlock ) || admits( interlock, pair ) != admitted ) {
         continue;
      }
      text += text.empty() ? "" : "; ";
      text += nameOf( interlock );
      text += ": ";
      if ( !device_.runs( interlock ) ) {
         text += "the agent is down, its last verdict stands";
      } else if ( const auto & reason = member.reasons[ indexOf( interlock ) ] ) {
         text += wordsFor( *reason );
      } else {
         text += "nothing has looked at it since its LAG changed";
      }
   }
   return text.empty() ? "no interlock runs" : text;
}

std::optional< Showing > SwitchBook::shown( const Pair & pair,
                                            const LagBook & lag,
                                            const MemberBook & member,
                                            const SwitchBook * peer ) const {
   if ( !isMember( pair ) ) {
      return std::nullopt;
   }
   const auto standing = this->standing( pair, lag, member, peer );
   if ( !admitsAll( pair ) ) {
      std::string why = reasons( pair, member, false );
      if ( const auto cause = standing ? heldCause( *standing ) : std::nullopt ) {
         why += "; although all egress ACLs are in place";
      }
      return Showing{ SpanKind::held, std::move( why ) };
   }
   if ( const auto cause = standing ? openCause( *standing ) : std::nullopt ) {
      return openShowing( *cause, *standing, peer != nullptr );
   }
   return Showing{ SpanKind::admitted, reasons( pair, member, true ) };
}

void SwitchBook::look( Vex::Seconds now, Nodo::IntfId lag, const SwitchBook * peer ) {
   if ( const auto members = device_.entities().hwLagConfig->initialMember( lag ) ) {
      LagBook & book = lags_[ lag ];
      for ( const Nodo::IntfId member : members->member().keys() ) {
         book.members.try_emplace( member );
      }
   }
   const auto found = lags_.find( lag );
   if ( found == lags_.end() ) {
      return;
   }
   LagBook & book = found->second;
   book.track.show( now, book.link == Explain::Link::none
                            ? std::nullopt
                            : std::optional( linkShowing( book.link, book.failed ) ) );
   for ( auto & [ name, member ] : book.members ) {
      member.track.show( now, shown( { name, lag }, book, member, peer ) );
   }
}

SwitchRows SwitchBook::finish( Vex::Seconds end ) {
   for ( auto & [ name, book ] : lags_ ) {
      LagRow row{ name, book.track.finish( end ), std::move( book.marks ), {} };
      for ( auto & [ member, memberBook ] : book.members ) {
         if ( auto spans = memberBook.track.finish( end ); !spans.empty() ) {
            row.members.push_back( { member, std::move( spans ) } );
         }
      }
      if ( !row.links.empty() || !row.marks.empty() || !row.members.empty() ) {
         rows_.lags.push_back( std::move( row ) );
      }
   }
   return std::move( rows_ );
}

} // namespace Replay::Timeline
