#include "replay/explain/Summary.h"

#include "replay/JsonLine.h"
#include "replay/Numbers.h"
#include "replay/Text.h"
#include "replay/explain/Moment.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

namespace Explain {

namespace {

// By LAG, then by member: the order in which they are shown.
using Key = std::pair< Nodo::IntfId, Nodo::IntfId >;

Key keyOf( const Replay::Pair & pair ) {
   return { pair.lag, pair.member };
}

// What holds a member.
struct Cause {
   Gate gate = Gate::egressAcl;
   std::string_view name; // for programs
   std::string_view words;

   friend auto operator<=>( const Cause &, const Cause & ) = default;
};

// A verdict about a port that was no member then, or about one of a LAG that was replaced since,
// says nothing about one that is.
Cause causeAt( Gate gate, const Story & story, const PairName & pair ) {
   const Cause notLookedAt{ gate, "not-looked-at", "has not looked at it" };
   if ( !story.runs( gate ) ) {
      return { gate, "interlock-stopped", "nobody decides: the interlock is stopped" };
   }
   const Standing * const standing = story.standing( pair, gate );
   if ( standing == nullptr || !standing->last ) {
      return notLookedAt;
   }
   if ( standing->last->admitted() ) {
      return { gate, "written-by-another", "admits it, but somebody else wrote its output" };
   }
   if ( standing->outdatedSince || standing->last->reason == Reason::notMember ) {
      return notLookedAt;
   }
   const Reason reason = standing->last->reason;
   return { gate, nameOf( reason ), wordsFor( reason ) };
}

} // namespace

/// How long each member of one switch was held.
class Summary::Book final : public StoryEvents {
 public:
   struct Member {
      Vex::Seconds inLag; // up to `since`
      Vex::Seconds held;
      std::map< Cause, Vex::Seconds > by;
      bool inLagNow = false; // and so it was since then
      std::vector< Cause > causesNow;
      Vex::Seconds since;

      bool heldNow() const noexcept { return !causesNow.empty(); }
   };

   void touch( const Replay::Pair & pair ) { touched_.insert( keyOf( pair ) ); }
   void touchLag( Nodo::IntfId lag ) { lags_.insert( lag ); }
   void touchAll() noexcept { all_ = true; }

   /// Puts down how things stand for what was touched.
   void look( const Told & told, Vex::Seconds moment ) {
      if ( all_ || !lags_.empty() ) {
         touchMembers( *told.device );
      }
      for ( const Key & key : touched_ ) {
         look( told, key, moment );
      }
      touched_.clear();
      lags_.clear();
      all_ = false;
   }

   /// Of each that was in its LAG, up to `end`.
   std::vector< std::pair< Key, Member > > upTo( Vex::Seconds end ) {
      std::vector< std::pair< Key, Member > > members;
      for ( auto & [ key, member ] : members_ ) {
         pass( member, end );
         members.emplace_back( key, member );
      }
      return members;
   }

 private:
   // What an interlock has decided is looked at again at the end of its moment.
   void decided( const PairName & pair,
                 Gate /* gate */,
                 const Decision & /* decision */ ) override {
      touch( { Nodo::IntfId( pair.member ), Nodo::IntfId( pair.lag ) } );
   }
   void exchanged( const std::string & /* lag */,
                   const Exchange & /* exchange */,
                   Vex::Seconds /* at */ ) override {}
   void outdated( const std::string & lag ) override { touchLag( Nodo::IntfId( lag ) ); }

   void touchMembers( const Replay::Switch & device ) {
      for ( const auto entry : device.entities().hwLagConfig->initialMember().entries() ) {
         if ( all_ || lags_.contains( entry.key ) ) {
            for ( const Nodo::IntfId member : entry.value->member().keys() ) {
               touched_.insert( { entry.key, member } );
            }
         }
      }
      for ( const auto & [ key, member ] : members_ ) {
         if ( all_ || lags_.contains( key.first ) ) {
            touched_.insert( key );
         }
      }
   }

   void look( const Told & told, const Key & key, Vex::Seconds moment ) {
      const Replay::Pair pair{ key.second, key.first };
      const bool inLag = told.device->isMember( pair );
      if ( !inLag && !members_.contains( key ) ) {
         return;
      }
      std::vector< Cause > causes;
      for ( const Replay::Interlock interlock : Replay::interlocks ) {
         const Gate gate = gateOf( interlock );
         if ( inLag && told.story.counts( gate ) &&
              !told.device->entities().output( interlock )->intfHas( pair ) ) {
            causes.push_back( causeAt( gate, told.story, nameOf( pair ) ) );
         }
      }
      const auto [ found, isNew ] = members_.try_emplace( key );
      Member & member = found->second;
      if ( isNew ) {
         member.since = moment;
      }
      pass( member, moment );
      member.inLagNow = inLag;
      member.causesNow = std::move( causes );
   }

   // Things stood up to now as they were last.
   static void pass( Member & member, Vex::Seconds now ) {
      const Vex::Seconds span = now - std::exchange( member.since, now );
      if ( member.inLagNow ) {
         member.inLag = member.inLag + span;
      }
      if ( member.heldNow() ) {
         member.held = member.held + span;
      }
      for ( const Cause & cause : member.causesNow ) {
         member.by[ cause ] = member.by[ cause ] + span;
      }
   }

   std::map< Key, Member > members_;
   std::set< Key > touched_;
   std::set< Nodo::IntfId > lags_;
   bool all_ = false;
};

namespace {

// ---- How it is shown ----------------------------------------------------------------------------

constexpr std::size_t nameColumn = 3;
constexpr std::size_t causeColumn = 6;
constexpr std::size_t inLagColumn = 40;
constexpr std::size_t heldColumn = 66;

std::string_view shownName( Nodo::IntfId intf ) noexcept {
   return intf == Nodo::IntfId() ? std::string_view( "\"\"" ) : intf.stringValue();
}

void padTo( std::string & line, std::size_t column ) {
   const std::size_t used = Replay::columns( line );
   line.append( used < column ? column - used : 1, ' ' );
}

template < class Member >
void appendText( std::string & out, const Key & key, const Member & member ) {
   std::string line( nameColumn, ' ' );
   Replay::appendPrintable( line, shownName( key.second ) );
   line += " -> ";
   Replay::appendPrintable( line, shownName( key.first ) );
   padTo( line, inLagColumn );
   line += moment( member.inLag );
   padTo( line, heldColumn );
   line += moment( member.held );
   line += member.heldNow() ? ", still" : "";
   out += line + '\n';
   for ( const auto & [ cause, time ] : member.by ) {
      line.assign( causeColumn, ' ' );
      line += nameOf( cause.gate );
      line += ": ";
      line += cause.words;
      padTo( line, heldColumn );
      line += moment( time );
      out += line + '\n';
   }
}

template < class Causes >
auto causesOf( const Causes & causes ) {
   return [ &causes ]( Replay::JsonText & json ) {
      json.beginList();
      for ( const auto & [ cause, time ] : causes ) {
         json.beginObject();
         json.key( "interlock" );
         json.value( nameOf( cause.gate ) );
         json.key( "reason" );
         json.value( cause.name );
         json.key( "for" );
         json.value( Replay::roundedToMicroseconds( time ) );
         json.endObject();
      }
      json.endList();
   };
}

} // namespace

Summary::Summary( const Replay::Scenario & scenario,
                  std::uint32_t shownLevels,
                  Replay::Output & inner,
                  SummaryForm form )
    : Witness( scenario, shownLevels, inner ), form_( form ) {}

Summary::~Summary() = default;

// ---- The course of a run ------------------------------------------------------------------------

void Summary::stageIs( const Replay::Stage & stage ) {
   Witness::stageIs( stage );
   for ( Told & told : switches() ) {
      books_.push_back( std::make_unique< Book >() );
      told.story.tell( *books_.back() );
   }
}

void Summary::verdict( Replay::Interlock interlock, const Replay::Pair & pair, bool admitted ) {
   Witness::verdict( interlock, pair, admitted );
   books_[ ofEvent() ]->touch( pair );
}

void Summary::doing( const Replay::Statement & statement, std::size_t at ) {
   Book & book = *books_[ at ];
   std::visit(
      [ &book ]( const auto & what ) {
         using Type = std::remove_cvref_t< decltype( what ) >;
         if constexpr ( std::is_same_v< Type, Replay::Member > ) {
            book.touch( { what.member, what.lag } );
         } else if constexpr ( std::is_same_v< Type, Replay::Start > ||
                               std::is_same_v< Type, Replay::Stop > ||
                               std::is_same_v< Type, Replay::Restart > ) {
            book.touchAll();
         }
      },
      statement );
}

void Summary::momentOver( Vex::Seconds moment, Vex::Seconds /* next */ ) {
   for ( std::size_t at = 0; at < books_.size(); ++at ) {
      books_[ at ]->look( switches()[ at ], moment );
   }
}

void Summary::end( const Replay::Outcome & outcome ) {
   // The end comes last in JSON, and first in text.
   switch ( form_ ) {
   case SummaryForm::text:
      Witness::end( outcome );
      showText();
      break;
   case SummaryForm::jsonLines:
      endsNow();
      showJson();
      Witness::end( outcome );
      break;
   }
}

void Summary::showText() {
   std::string & out = writer().buffer();
   for ( std::size_t at = 0; at < books_.size(); ++at ) {
      std::string title( nameColumn, ' ' );
      title += switches()[ at ].name;
      padTo( title, inLagColumn );
      title += "in the LAG";
      padTo( title, heldColumn );
      out += '\n' + title + "held\n";
      const auto members = books_[ at ]->upTo( now() );
      for ( const auto & [ key, member ] : members ) {
         appendText( out, key, member );
      }
      if ( members.empty() ) {
         out += "   no port was in a LAG\n";
      }
   }
   writer().flushIfFull();
}

void Summary::showJson() {
   for ( std::size_t at = 0; at < books_.size(); ++at ) {
      for ( const auto & [ key, member ] : books_[ at ]->upTo( now() ) ) {
         Replay::JsonLine line( writer(), "held", now() );
         if ( const auto name = switches()[ at ].name; !name.empty() ) {
            line.add( "switch", name );
         }
         line.add( "member", key.second.stringValue() )
            .add( "lag", key.first.stringValue() )
            .add( "in_lag", Replay::roundedToMicroseconds( member.inLag ) )
            .add( "held", Replay::roundedToMicroseconds( member.held ) )
            .add( "held_now", member.heldNow() )
            .add( "by", causesOf( member.by ) )
            .end();
      }
   }
}

} // namespace Explain
