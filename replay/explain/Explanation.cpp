#include "replay/explain/Explanation.h"

#include "platform/Nodo/IntfId.h"
#include "replay/Text.h"
#include "replay/explain/Moment.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace Explain {

namespace {

using Replay::inQuotes;

constexpr std::size_t mostNamed = 8; // in an error
constexpr std::size_t mostBefore = 4;
constexpr std::string_view notLookedAt =
   " has not looked at this member: one that comes with its LAG waits for the next change.";

// ---- What makes an interlock look again ---------------------------------------------------------

// {0} is the member, {1} the LAG.
std::string_view changeOf( Check check ) noexcept {
   switch ( check ) {
   case Check::memberOfLag:
   case Check::lagHasMembers:
      return "{0} enters, leaves or changes in {1}";
   case Check::mlagInterface:
   case Check::activeOnPeer:
      return "the MLAG status of {1} changes";
   case Check::peersAnswer:
   case Check::request:
      return {}; // it depends on how far the exchange has come
   case Check::mlagActive:
   case Check::peerLink:
   case Check::aclNeeded:
      return "the MLAG state, the peer link or its link status changes";
   case Check::localAcl:
      return "the egress ACL of {0} in {1} is installed or removed";
   case Check::translationNeeded:
      return "the switching configuration of {1}, or a mapping in it, changes";
   case Check::translation:
      return "VLAN translation is programmed or removed for {0} in {1}";
   }
   return {};
}

// Of which a change is heard, and decides the pair anew.
std::span< const Check > heardBy( Decider decider ) noexcept {
   static constexpr std::array basic{ Check::localAcl, Check::activeOnPeer, Check::mlagActive,
                                      Check::memberOfLag };
   static constexpr std::array peer{ Check::peersAnswer, Check::localAcl, Check::mlagInterface,
                                     Check::memberOfLag };
   static constexpr std::array vlan{ Check::translation, Check::translationNeeded,
                                     Check::memberOfLag };
   switch ( decider ) {
   case Decider::basic:
   case Decider::deprecated:
      return basic;
   case Decider::peer:
      return peer;
   case Decider::vlanXlate:
      return vlan;
   }
   return {};
}

// Where the records of the exchange are lost, the verdict tells how far it has come.
Link linkOf( const Exchange * exchange, const std::optional< Decision > & decision ) noexcept {
   if ( exchange != nullptr || !decision ) {
      return exchange != nullptr ? exchange->link : Link::none;
   }
   switch ( decision->reason ) {
   case Reason::awaitingPeer:
      return Link::asking;
   case Reason::noLocalAcl:
   case Reason::peerAnswered:
      return Link::answered;
   case Reason::failOpen:
      return Link::failed;
   case Reason::lagDown:
      return Link::down;
   case Reason::notMember:
   case Reason::noTranslation:
   case Reason::notMlag:
   case Reason::aclNotNeeded:
   case Reason::aclInPlace:
   case Reason::translationNotNeeded:
   case Reason::translationInPlace:
      break;
   }
   return Link::none;
}

// Of an answer that does not fit an interlock takes notice only where one that fits was there.
// Empty: of none.
std::string changeOfAnswer( const Exchange * exchange, Link link ) {
   switch ( link ) {
   case Link::none:
   case Link::down:
      break;
   case Link::asking:
   case Link::failed:
      return exchange == nullptr || exchange->token.empty()
                ? "an answer of the peer that fits the request comes"
                : "an answer of the peer that fits request " + exchange->token + " comes";
   case Link::answered:
      return "the peer's answer for {1} goes, or does not fit any more";
   }
   return {};
}

// What `first` is about comes first.
std::vector< std::string > changesFor( const Story & story,
                                       const Asked & asked,
                                       const std::optional< Decision > & decision,
                                       Decider decider,
                                       std::optional< Check > first ) {
   const std::array names{ asked.pair.member, asked.pair.lag };
   const Exchange * const exchange = story.exchange( asked.pair.lag );
   const std::string ofAnswer = changeOfAnswer( exchange, linkOf( exchange, decision ) );
   std::vector< std::string > changes;
   const auto add = [ & ]( Check check ) {
      const bool isAnswer = check == Check::peersAnswer || check == Check::request;
      std::string change = filled( isAnswer ? ofAnswer : changeOf( check ), names );
      if ( !change.empty() && std::ranges::find( changes, change ) == changes.end() ) {
         changes.push_back( std::move( change ) );
      }
   };
   if ( first ) {
      add( *first );
   }
   for ( const Check check : heardBy( decider ) ) {
      add( check );
   }
   return changes;
}

// ---- What was looked at -------------------------------------------------------------------------

// What was said before is said once more where the decision comes by.
void add( std::vector< Looked > & looked, Looked one ) {
   const auto same = std::ranges::find( looked, one.check, &Looked::check );
   if ( same == looked.end() ) {
      looked.push_back( std::move( one ) );
   } else {
      *same = std::move( one );
   }
}

std::vector< Looked > lookedAt( const std::vector< Note > & notes ) {
   std::vector< Looked > looked;
   for ( const Note & note : notes ) {
      if ( note.meaning == nullptr ) {
         looked.push_back( { "(message not known)", note.asWritten, std::nullopt } );
         continue;
      }
      for ( const Saw & saw : note.meaning->saws ) {
         add( looked,
              { std::string( nameOf( saw.check ) ), filled( saw.words, note.arguments ),
                saw.seen == Seen::done ? std::nullopt : std::optional( saw.seen == Seen::yes ) } );
      }
   }
   return looked;
}

// The check that has decided; where no record of this decision shows it, in the reason's words.
void markDecisive( std::vector< Looked > & looked, const Decision & decision ) {
   const std::string_view name = nameOf( checkOf( decision.reason ) );
   auto decisive = std::ranges::find( looked, name, &Looked::check );
   if ( decisive == looked.end() ) {
      const bool settled = decision.reason == Reason::peerAnswered;
      add( looked, { std::string( name ),
                     std::string( settled ? "yes, or not needed: its record does not tell"
                                          : wordsFor( decision.reason ) ),
                     settled } );
      decisive = std::prev( looked.end() );
   }
   decisive->decisive = true;
}

// Which of the questions behind "is an ACL needed" said no; changes of the others alter nothing.
std::optional< Check > unneededBecause( const std::vector< Looked > & looked ) {
   for ( const Check check :
         { Check::mlagActive, Check::peerLink, Check::activeOnPeer, Check::mlagInterface } ) {
      const auto found = std::ranges::find( looked, nameOf( check ), &Looked::check );
      if ( found != looked.end() && found->passed == false ) {
         return check;
      }
   }
   return std::nullopt;
}

std::string exchangeText( const Exchange & exchange ) {
   const std::string since = " since " + moment( exchange.since );
   std::string text;
   switch ( exchange.link ) {
   case Link::none:
      return {};
   case Link::down:
      text = "not asking" + since + ", the LAG has no members";
      break;
   case Link::asking:
      text = "asking" + since;
      break;
   case Link::answered:
      text = "answered" + since;
      break;
   case Link::failed:
      text = "failed" + since;
      text +=
         exchange.failure == Failure::timeOut ? ", not answered in time" : ", the answer went away";
      break;
   }
   if ( !exchange.token.empty() ) {
      text += "; request " + exchange.token + ", sent at " + moment( exchange.sent );
   }
   return text;
}

// ---- One gate -----------------------------------------------------------------------------------

std::string becauseOf( const Note & trigger ) {
   std::vector< std::string > arguments = trigger.arguments;
   if ( trigger.meaning->says == Says::switchover ) {
      arguments.front() = arguments.front() == "true" ? "on" : "off";
   }
   return filled( trigger.meaning->words, arguments );
}

void tellOfDecision( AtGate & at,
                     const Story & story,
                     const Asked & asked,
                     const Standing & standing,
                     const Decision & decision ) {
   at.decision = decision;
   at.admitted = decision.admitted();
   at.since = standing.verdictSince;
   at.orEarlier = story.beginningLost() && standing.spansBefore == 0 &&
                  std::ranges::all_of( standing.spans, [ &at ]( const Span & span ) {
                     return admits( span.reason ) == at.admitted;
                  } );
   if ( !standing.notes.empty() ) {
      const Note & trigger = standing.notes.front();
      at.because = becauseOf( trigger );
   }
   at.looked = lookedAt( standing.notes );
   const bool unneeded = decision.reason == Reason::aclNotNeeded;
   const auto first =
      unneeded ? unneededBecause( at.looked ) : std::optional( checkOf( decision.reason ) );
   markDecisive( at.looked, decision );
   // That a port is no member is so until it is one.
   if ( decision.reason != Reason::notMember || story.isMember( asked.pair ) ) {
      at.outdatedSince = standing.outdatedSince;
   }
   at.again = changesFor( story, asked, decision, decision.decider, first );
   const Exchange * const exchange = story.exchange( asked.pair.lag );
   if ( exchange != nullptr && decision.decider == Decider::peer ) {
      at.exchange = exchangeText( *exchange );
      const Vex::Seconds moment = asked.beyond.value_or( asked.at );
      at.deadline =
         exchange->deadline && *exchange->deadline < moment ? std::nullopt : exchange->deadline;
   }
   const std::size_t spans = standing.spans.size() - 1; // but the current one
   const std::size_t shown = std::min( spans, mostBefore );
   at.before.assign( standing.spans.end() - 1 - static_cast< std::ptrdiff_t >( shown ),
                     standing.spans.end() - 1 );
   at.beforeThat = standing.spansBefore + spans - shown;
}

std::optional< AtGate > lookAt( Gate gate, const Story & story, const Asked & asked ) {
   AtGate at;
   at.gate = gate;
   const Standing * const standing = story.standing( asked.pair, gate );
   if ( standing != nullptr && standing->last ) {
      tellOfDecision( at, story, asked, *standing, *standing->last );
   } else if ( standing == nullptr && !( story.runs( gate ) && story.isMember( asked.pair ) ) ) {
      return std::nullopt;
   } else if ( story.runs( gate ) ) {
      at.again = changesFor( story, asked, std::nullopt, story.decider( gate ), std::nullopt );
   }
   // The output itself, where it is known, has the last word.
   if ( standing != nullptr && standing->inOutput && *standing->inOutput != at.admitted ) {
      at.admitted = *standing->inOutput;
      at.since = standing->inOutputSince;
      at.orEarlier = false;
   }
   if ( asked.source == Source::run && !story.runs( gate ) ) {
      at.again = { "an interlock is started" };
      at.deadline.reset();
   }
   return at;
}

// ---- What else there is to say ------------------------------------------------------------------

// Empty: its output stands as it has decided.
std::string otherHand( const AtGate & at ) {
   const std::string gate( nameOf( at.gate ) );
   if ( !at.decision && at.since ) {
      return gate + " has not decided over it: somebody else wrote its output.";
   }
   if ( at.since && at.decision->admitted() != at.admitted ) {
      return gate + " has decided otherwise: somebody else wrote its output at " +
             moment( *at.since ) + ".";
   }
   return {};
}

void remarkOn( const AtGate & at,
               const Story & story,
               const Asked & asked,
               std::vector< std::string > & remarks ) {
   const std::string gate( nameOf( at.gate ) );
   if ( const auto stopped = story.stoppedAt( at.gate ) ) {
      remarks.push_back( gate + " was stopped at " + moment( *stopped ) +
                         ": its verdict stands, and nobody keeps it right." );
   }
   const bool ofNoMember = at.decision && at.decision->reason == Reason::notMember;
   if ( at.decision ? ofNoMember && story.isMember( asked.pair ) : !at.since ) {
      remarks.push_back( gate + std::string( notLookedAt ) );
   }
   if ( at.outdatedSince && !ofNoMember ) { // else that is told already
      remarks.push_back( asked.pair.lag + " was removed or replaced at " +
                         moment( *at.outdatedSince ) + ": " + gate +
                         " has not looked at it since; what stands above is from before." );
   }
   if ( at.decision && at.decision->reason == Reason::failOpen ) {
      remarks.emplace_back( "A link that has failed does not ask the peer again by itself." );
   }
   const bool unexplained =
      at.decision && asked.source == Source::ring && at.decision->decider == Decider::basic &&
      std::ranges::find( at.looked, nameOf( Check::aclNeeded ), &Looked::check ) != at.looked.end();
   if ( unexplained ) {
      remarks.emplace_back(
         "Why an egress ACL is needed, or is not, goes to the text trace alone." );
   }
}

void remarkOn( const Explanation & known,
               const Story & story,
               std::vector< std::string > & remarks ) {
   const Asked & asked = known.asked;
   if ( asked.beyond ) {
      remarks.push_back( asked.source == Source::ring
                            ? "The last record is of " + moment( story.lastTime() ) +
                                 ": what came later is not known."
                            : "The scenario ends at " + moment( asked.at ) + "." );
   }
   if ( asked.source == Source::ring ) {
      remarks.emplace_back(
         "vlan-xlate writes nothing into the ring: whether it holds the port, too, "
         "is not known here." );
   }
   if ( story.beginningLost() ) {
      remarks.push_back( "Nothing older than " + moment( story.firstTime() ) + " is in the ring." );
   }
   if ( const auto until = story.missingUntil() ) {
      remarks.push_back( "Records before " + moment( *until ) +
                         " are missing: what they changed is not known." );
   }
   if ( story.mixed() ) {
      remarks.emplace_back(
         "More than one switch's interlock wrote these records: what is said may "
         "mix them up." );
   }
   if ( story.unknown() > 0 ) {
      remarks.push_back( std::to_string( story.unknown() ) +
                         ( story.unknown() == 1 ? " message is" : " messages are" ) +
                         " not known to this program, and may say more." );
   }
   const bool saidSo = std::ranges::any_of( known.gates, []( const AtGate & at ) {
      return at.decision && at.decision->reason == Reason::notMember;
   } );
   if ( known.isMember == false && !saidSo ) {
      remarks.emplace_back( "It is no member of the LAG at this time: no verdict makes it join." );
   }
}

// ---- Nothing to explain -------------------------------------------------------------------------

std::string listed( const std::vector< std::string > & names ) {
   std::string text;
   for ( std::size_t at = 0; at < names.size(); ++at ) {
      if ( at == mostNamed ) {
         return text + " and " + std::to_string( names.size() - at ) + " more";
      }
      text += ( at == 0 ? "" : ", " ) + names[ at ];
   }
   return text;
}

std::string shown( const std::string & name ) {
   std::string text;
   Replay::appendPrintable( text, name );
   return name.empty() ? "\"\"" : text;
}

std::vector< PairName > inNaturalOrder( std::vector< PairName > pairs ) {
   std::ranges::sort( pairs, {}, []( const PairName & pair ) {
      return std::pair( Nodo::IntfId( pair.lag ), Nodo::IntfId( pair.member ) );
   } );
   return pairs;
}

std::string nothingKnown( const Story & story, const Asked & asked ) {
   std::vector< std::string > lags;
   std::vector< std::string > members;
   std::vector< std::string > all;
   bool swapped = false;
   for ( const PairName & pair : inNaturalOrder( story.pairs() ) ) {
      swapped |= pair == PairName{ asked.pair.lag, asked.pair.member };
      if ( pair.member == asked.pair.member ) {
         lags.push_back( shown( pair.lag ) );
      }
      if ( pair.lag == asked.pair.lag ) {
         members.push_back( shown( pair.member ) );
      }
      all.push_back( shown( pair.member ) + " in " + shown( pair.lag ) );
   }
   const std::string member = inQuotes( asked.pair.member );
   const std::string lag = inQuotes( asked.pair.lag );
   if ( swapped ) {
      return member + " is a LAG with member " + shown( asked.pair.lag ) +
             "; wanted: MEMBER, then LAG";
   }
   if ( !lags.empty() ) {
      return member + " was not seen in " + lag + "; it was seen in " + listed( lags );
   }
   if ( !members.empty() ) {
      return member + " was not seen; " + lag + " was seen with " + listed( members );
   }
   if ( !all.empty() ) {
      return "neither " + member + " nor " + lag + " was seen; there are " + listed( all );
   }
   const bool noneStarted =
      std::ranges::none_of( gates, [ &story ]( Gate gate ) { return story.counts( gate ); } );
   return asked.source == Source::run && noneStarted
             ? "no interlock was started up to " + moment( asked.at )
             : "no interlock has decided over any member";
}

} // namespace

Answer explain( const Story & story, const Asked & asked ) {
   Explanation explanation{ asked, true, {}, {}, {}, 0 };
   if ( asked.source == Source::run ) {
      explanation.isMember = story.isMember( asked.pair );
   }
   for ( const Gate gate : gates ) {
      if ( auto at = lookAt( gate, story, asked ) ) {
         explanation.admitted &= at->admitted;
         explanation.gates.push_back( std::move( *at ) );
      }
   }
   if ( explanation.gates.empty() ) {
      return { {}, nothingKnown( story, asked ) };
   }
   for ( const AtGate & at : explanation.gates ) {
      if ( std::string remark = otherHand( at ); !remark.empty() ) {
         explanation.remarks.push_back( std::move( remark ) );
      }
   }
   explanation.remarksAbove = explanation.remarks.size();
   for ( const AtGate & at : explanation.gates ) {
      remarkOn( at, story, asked, explanation.remarks );
   }
   remarkOn( explanation, story, explanation.remarks );
   return { std::move( explanation ), {} };
}

} // namespace Explain
