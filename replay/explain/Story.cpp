#include "replay/explain/Story.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

namespace Explain {

namespace {

// Records of one event follow each other faster, unless the machine halts the agent in its middle.
constexpr Vex::Seconds pauseBetweenEvents{ 0.001 };

constexpr std::size_t mostSpans = 16; // that are kept of the watched pair
constexpr std::size_t mostAround = 64; // messages
constexpr std::size_t mostFrames = 16; // decisions one within the other

const std::string & argument( const Note & note, std::int8_t which ) {
   return note.arguments[ static_cast< std::size_t >( which ) ];
}

PairName pairIn( const Note & note ) {
   return { argument( note, note.meaning->member ), argument( note, note.meaning->lag ) };
}

std::optional< Vex::Seconds > secondsIn( const std::string & text ) {
   double value = 0;
   const char * const end = text.data() + text.size();
   const auto [ last, error ] = std::from_chars( text.data(), end, value );
   return error == std::errc() && last == end ? std::optional( Vex::Seconds( value ) )
                                              : std::nullopt;
}

// A link state as the ring writes it, and as the text trace does.
std::optional< Link > linkIn( std::string_view text ) {
   struct Name {
      std::string_view number;
      std::string_view name;
      Link link;
   };
   static constexpr std::array names{
      Name{ "0", "linkDown", Link::down }, Name{ "1", "linkRequesting", Link::asking },
      Name{ "2", "linkUp", Link::answered }, Name{ "3", "linkFail", Link::failed } };
   const auto * const found = std::ranges::find_if(
      names, [ text ]( const Name & name ) { return text == name.number || text == name.name; } );
   return found != names.end() ? std::optional( found->link ) : std::nullopt;
}

} // namespace

// ---- What happened ------------------------------------------------------------------------------

void Story::take( const Note & note ) {
   if ( note.sequence != 0 ) {
      if ( records_ == 0 ) {
         beginningLost_ = note.sequence > 1;
      } else if ( note.sequence != lastSequence_ + 1 ) {
         missing( note.time );
      }
      lastSequence_ = note.sequence;
   }
   if ( records_++ == 0 ) {
      firstTime_ = note.time;
   }
   lastTime_ = note.time;
   if ( note.meaning != nullptr ) {
      takeKnown( note );
      return;
   }
   ++unknown_;
   for ( Context & one : contexts_ ) { // of whom it speaks is not known
      if ( !one.frames.empty() ) {
         keep( one, note );
      }
   }
}

void Story::takeKnown( const Note & note ) {
   Context & here = context( note.meaning->gate );
   if ( note.time > here.lastTime + pauseBetweenEvents ) {
      here.eventEnds();
   }
   here.lastTime = note.time;
   switch ( note.meaning->says ) {
   case Says::event:
   case Says::timeout:
      begin( here, note );
      break;
   case Says::start:
   case Says::switchover:
      beginLife( here, note );
      break;
   case Says::lagEvent:
      if ( !here.trigger ) {
         begin( here, note );
      }
      lagNamed( here, note );
      break;
   case Says::namesLag:
      lagNamed( here, note );
      break;
   case Says::lagEmpty:
      lagNamed( here, note );
      here.empty.insert( here.lag );
      break;
   case Says::decides:
      openDecision( here, note );
      break;
   case Says::verdict:
      closeDecision( here, note );
      break;
   case Says::asksForAcl:
   case Says::looksForMember:
      lookedFor( here, note );
      break;
   case Says::check:
      keep( here, note );
      break;
   case Says::requestSent:
   case Says::requestWithdrawn:
   case Says::mlagEnded:
   case Says::linkDown:
   case Says::linkRequesting:
   case Says::linkUp:
   case Says::linkFailed:
   case Says::timedOut:
   case Says::deadlineSet:
   case Says::deadlineGone:
   case Says::cleanup:
      exchangeMessage( here, note );
      keep( here, note );
      break;
   case Says::nothing:
      break;
   }
}

void Story::missing( Vex::Seconds until ) {
   missingUntil_ = until;
   eventBegins();
   exchanges_.clear();
   lifeSeen_ = false;
}

void Story::eventBegins() {
   for ( Context & one : contexts_ ) {
      one.eventEnds();
   }
}

void Story::outputIs( Gate gate, const PairName & pair, bool admitted, Vex::Seconds time ) {
   Standing & standing = known( pair, gate ).standing;
   standing.inOutput = admitted;
   standing.inOutputSince = time;
}

void Story::started( Gate gate, std::optional< Decider > decider ) {
   context( gate ).decider = decider;
   context( gate ).runs = true;
   context( gate ).stopped.reset();
}

void Story::stopped( Gate gate, Vex::Seconds time ) {
   context( gate ).runs = false;
   context( gate ).stopped = time;
}

void Story::lagReplaced( const std::string & lag, Vex::Seconds time ) {
   for ( auto & [ pair, atGates ] : pairs_ ) {
      for ( Known & one : atGates ) {
         if ( pair.lag == lag && one.standing.last && !one.standing.outdatedSince ) {
            one.standing.outdatedSince = time;
         }
      }
   }
   if ( events_ != nullptr ) {
      events_->outdated( lag );
   }
}

void Story::memberIs( const PairName & pair, bool present ) {
   if ( present ) {
      members_.insert( pair );
   } else {
      members_.erase( pair );
   }
}

// ---- Events -------------------------------------------------------------------------------------

void Story::begin( Context & here, const Note & trigger ) {
   here.trigger = trigger;
   here.fresh = true;
   here.empty.clear();
   ++here.event;
   here.around.clear();
   here.lag = trigger.meaning->lag >= 0 ? argument( trigger, trigger.meaning->lag ) : std::string();
}

// The controller starts, then chooses its interlock, which starts: the first is what set it off.
void Story::beginLife( Context & here, const Note & note ) {
   const bool goesOn = here.trigger && here.fresh &&
                       ( here.trigger->meaning->says == Says::start ||
                         here.trigger->meaning->says == Says::switchover );
   if ( !goesOn ) {
      begin( here, note );
   }
   here.frames.clear();
   if ( note.meaning->says == Says::switchover ) {
      const std::string & on = note.arguments.front();
      here.decider = on == "true" ? Decider::peer : Decider::basic;
   }
   if ( note.meaning->says == Says::start && note.meaning->gate == Gate::egressAcl ) {
      for ( auto & [ lag, exchange ] : exchanges_ ) {
         change( lag, note.time, []( Exchange & one ) {
            one.link = Link::none;
            one.failure.reset();
            one.deadline.reset();
         } );
      }
      lifeSeen_ = true;
   }
}

void Story::lagNamed( Context & here, const Note & note ) {
   const std::string & lag = argument( note, note.meaning->lag );
   if ( here.frames.empty() && lag != here.lag ) {
      here.around.clear();
   }
   here.lag = lag;
   if ( !here.frames.empty() && note.meaning->function == "handlePeerInterlockLag" ) {
      here.frames.back().ofPeer = true;
   }
}

void Story::keep( Context & here, const Note & note ) const {
   if ( here.frames.empty() ) {
      if ( here.around.size() < mostAround ) {
         here.around.push_back( note );
      }
   } else if ( here.frames.back().pair == watched_ ) {
      here.frames.back().notes.push_back( note );
   }
}

void Story::lookedFor( Context & here, const Note & note ) {
   if ( here.frames.empty() ) {
      return;
   }
   Frame & frame = here.frames.back();
   if ( note.meaning->says == Says::asksForAcl ) {
      frame.asked = true;
   } else if ( note.sequence != 0 ) {
      frame.ofDeprecated = true; // the basic one does not write it into the ring
   }
}

// ---- Decisions ----------------------------------------------------------------------------------

// An event decides each of its pairs once. A start does it twice where the pair stands in the
// output already. Of a LAG without members only those are decided that stand there.
bool Story::fits( const Context & here, const PairName & pair, const Known & one ) const {
   if ( !here.trigger ) {
      return false;
   }
   const Meaning & meaning = *here.trigger->meaning;
   const std::uint64_t times = one.event == here.event ? one.times : 0;
   if ( meaning.member >= 0 ) {
      return times == 0 && pair == pairIn( *here.trigger );
   }
   if ( meaning.lag >= 0 ) {
      const auto & last = one.standing.last;
      const bool inOutput = last ? last->admitted() : !lifeSeen_; // or that is not known
      return times == 0 && ( inOutput || !here.empty.contains( pair.lag ) ) &&
             pair.lag == argument( *here.trigger, meaning.lag );
   }
   const bool life = meaning.says == Says::start || meaning.says == Says::switchover;
   return times < ( life ? 2U : 1U );
}

void Story::openDecision( Context & here, const Note & note ) {
   PairName pair = pairIn( note );
   Known & one = known( pair, note.meaning->gate );
   if ( !fits( here, pair, one ) ) {
      begin( here, note );
   }
   here.fresh = false;
   here.lag = pair.lag;
   one.times = one.event == here.event ? one.times + 1 : 1;
   one.event = here.event;
   if ( here.frames.size() == mostFrames ) {
      here.frames.erase( here.frames.begin() );
   }
   Frame frame;
   frame.pair = std::move( pair );
   if ( frame.pair == watched_ && here.trigger ) {
      frame.notes.push_back( *here.trigger );
      frame.notes.insert( frame.notes.end(), here.around.begin(), here.around.end() );
      frame.setOff = frame.notes.size();
      if ( here.empty.contains( frame.pair.lag ) ) {
         frame.entered = note;
      }
   }
   here.frames.push_back( std::move( frame ) );
}

void Story::closeDecision( Context & here, const Note & note ) {
   if ( here.frames.empty() ) {
      return; // it began before the first record
   }
   keep( here, note );
   Frame frame = std::move( here.frames.back() );
   here.frames.pop_back();
   Decision decision{ note.time, Decider::basic,
                      note.meaning->reason.value_or( Reason::notMember ) };
   if ( frame.entered && decision.reason != Reason::notMember ) { // since its LAG was found empty
      frame.notes.erase( frame.notes.begin() + 1,
                         frame.notes.begin() + static_cast< std::ptrdiff_t >( frame.setOff ) );
      frame.notes.front() = *frame.entered;
   }
   if ( decision.reason == Reason::peerAnswered && !frame.asked ) {
      decision.reason = Reason::failOpen; // which asks for no ACL
   }
   if ( note.meaning->gate == Gate::vlanXlate ) {
      decision.decider = Decider::vlanXlate;
   } else if ( frame.ofPeer ) {
      decision.decider = Decider::peer;
   } else if ( frame.ofDeprecated || here.decider == Decider::deprecated ) {
      decision.decider = Decider::deprecated;
   }
   decide( note.meaning->gate, frame, decision );
}

void Story::decide( Gate gate, const Frame & frame, const Decision & decision ) {
   Standing & standing = known( frame.pair, gate ).standing;
   if ( !standing.last || standing.last->admitted() != decision.admitted() ) {
      standing.verdictSince = decision.time;
   }
   if ( frame.pair == watched_ ) {
      if ( !standing.last || standing.last->reason != decision.reason ) {
         standing.spans.push_back( { decision.time, decision.reason } );
         if ( standing.spans.size() > mostSpans ) {
            standing.spans.erase( standing.spans.begin() );
            ++standing.spansBefore;
         }
      }
      standing.notes = frame.notes;
   }
   standing.last = decision;
   standing.outdatedSince.reset();
   if ( events_ != nullptr ) {
      events_->decided( frame.pair, gate, decision );
   }
}

// ---- The exchange with the peer -----------------------------------------------------------------

template < class Change >
void Story::change( const std::string & lag, Vex::Seconds at, Change apply ) {
   Exchange & exchange = exchanges_[ lag ];
   apply( exchange );
   if ( events_ != nullptr ) {
      events_->exchanged( lag, exchange, at );
   }
}

void Story::linkIs( const std::string & lag, Link link, const Note & note ) {
   change( lag, note.time, [ & ]( Exchange & one ) {
      if ( one.link != link ) {
         one.link = link;
         one.since = note.time;
         one.failure.reset();
      }
   } );
}

// A message of a change tells from where, too. Where that is not what the records before it say,
// somebody else has written some of them.
void Story::checkFrom( const std::string & lag, const Note & note ) {
   const auto from = linkIn( note.arguments.front() );
   const auto found = exchanges_.find( lag );
   const Link before = found != exchanges_.end() ? found->second.link : Link::none;
   if ( !from || ( before == Link::none && !lifeSeen_ ) ) {
      return;
   }
   mixed_ |= *from != ( before == Link::none ? Link::down : before );
}

void Story::linkMessage( const std::string & lag, Link link, const Note & note ) {
   checkFrom( lag, note );
   linkIs( lag, link, note );
}

void Story::linkFailed( const std::string & lag, const Note & note ) {
   linkIs( lag, Link::failed, note );
   change( lag, note.time, [ &note ]( Exchange & one ) {
      const bool timedOut = note.meaning->says == Says::timedOut;
      one.failure = timedOut ? Failure::timeOut : Failure::answerLost;
   } );
}

void Story::deadlineSet( const std::string & lag, const Note & note ) {
   change( lag, note.time, [ &note ]( Exchange & one ) {
      const auto at = secondsIn( note.arguments.back() );
      one.deadline = at ? std::optional( *at + patience ) : std::nullopt;
   } );
}

void Story::exchangeMessage( const Context & here, const Note & note ) {
   const Meaning & meaning = *note.meaning;
   const std::string lag = meaning.lag >= 0 ? argument( note, meaning.lag ) : here.lag;
   const auto forget = []( Exchange & one ) { one = {}; };
   switch ( meaning.says ) {
   case Says::requestSent:
      change( lag, note.time, [ &note ]( Exchange & one ) {
         one.token = note.arguments.front();
         one.sent = note.time;
      } );
      break;
   case Says::requestWithdrawn:
      change( lag, note.time, []( Exchange & one ) { one.token.clear(); } );
      break;
   case Says::mlagEnded:
      change( lag, note.time, forget );
      break;
   case Says::cleanup:
      for ( const auto & [ one, exchange ] : exchanges_ ) {
         change( one, note.time, forget );
      }
      break;
   case Says::linkDown:
      linkMessage( lag, Link::down, note );
      break;
   case Says::linkRequesting:
      linkMessage( lag, Link::asking, note );
      break;
   case Says::linkUp:
      linkMessage( lag, Link::answered, note );
      break;
   case Says::linkFailed:
   case Says::timedOut:
      linkFailed( lag, note );
      break;
   case Says::deadlineSet:
      deadlineSet( lag, note );
      break;
   case Says::deadlineGone:
      change( lag, note.time, []( Exchange & one ) { one.deadline.reset(); } );
      break;
   case Says::event:
   case Says::start:
   case Says::switchover:
   case Says::lagEvent:
   case Says::timeout:
   case Says::decides:
   case Says::verdict:
   case Says::asksForAcl:
   case Says::looksForMember:
   case Says::check:
   case Says::namesLag:
   case Says::lagEmpty:
   case Says::nothing:
      break;
   }
}

// ---- What is known ------------------------------------------------------------------------------

const Standing * Story::standing( const PairName & pair, Gate gate ) const {
   const auto found = pairs_.find( pair );
   if ( found == pairs_.end() ) {
      return nullptr;
   }
   const Standing & standing = found->second[ static_cast< std::size_t >( gate ) ].standing;
   return standing.last || standing.inOutput ? &standing : nullptr;
}

const Exchange * Story::exchange( const std::string & lag ) const {
   const auto found = exchanges_.find( lag );
   return found != exchanges_.end() && found->second.link != Link::none ? &found->second : nullptr;
}

Decider Story::decider( Gate gate ) const noexcept {
   return context( gate ).decider.value_or( gate == Gate::vlanXlate ? Decider::vlanXlate
                                                                    : Decider::basic );
}

std::vector< PairName > Story::pairs() const {
   std::vector< PairName > names;
   names.reserve( pairs_.size() );
   for ( const auto & [ pair, known ] : pairs_ ) {
      names.push_back( pair );
   }
   return names;
}

} // namespace Explain
