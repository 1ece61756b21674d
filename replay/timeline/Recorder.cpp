#include "replay/timeline/Recorder.h"

#include "replay/Numbers.h"

#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace Replay::Timeline {

using Peering::Content;

namespace {

// Which LAG a statement is about.
template < class StatementType >
std::optional< Nodo::IntfId > lagOf( const StatementType & statement ) {
   if constexpr ( requires { statement.lag; } ) {
      return statement.lag;
   } else if constexpr ( std::is_same_v< StatementType, InputEntry > ||
                         std::is_same_v< StatementType, OutputEntry > ) {
      return statement.pair.lag;
   } else if constexpr ( std::is_same_v< StatementType, Switchport > ||
                         std::is_same_v< StatementType, VlanXlate > ) {
      return statement.intf;
   } else {
      return std::nullopt;
   }
}

// What changes nothing on a switch.
template < class Type >
constexpr bool isNoChange =
   std::is_same_v< Type, ForSwitch > || std::is_same_v< Type, At > ||
   std::is_same_v< Type, Wait > || std::is_same_v< Type, ExpectOutput > ||
   std::is_same_v< Type, ExpectJoined > || std::is_same_v< Type, ExpectRequest > ||
   std::is_same_v< Type, ExpectTrace >;

// What holds for both ways of the wire.
template < class StatementType >
bool isOfBoth( const StatementType & statement ) {
   if constexpr ( std::is_same_v< StatementType, WireFault > ) {
      return statement.byChance;
   } else {
      return std::is_same_v< StatementType, WireOn > ||
             std::is_same_v< StatementType, WireDelay > ||
             std::is_same_v< StatementType, WireSeed >;
   }
}

std::string tokenText( std::optional< Token > token ) {
   return token ? "token " + std::to_string( *token ) : "withdrawn";
}

std::string answerText( std::optional< Token > token ) {
   return token ? "the peer answers: token " + std::to_string( *token )
                : "the peer takes its answer back";
}

} // namespace

Chart Recorder::takeChart() {
   return std::move( chart_ );
}

// ---- The course of a run ------------------------------------------------------------------------

void Recorder::begin( std::string_view file ) {
   chart_.title = file;
   Witness::begin( file );
}

void Recorder::stageIs( const Stage & stage ) {
   Witness::stageIs( stage );
   for ( Told & told : switches() ) {
      books_.push_back( std::make_unique< SwitchBook >( told.name, *told.device ) );
      told.story.tell( *books_.back() );
   }
}

void Recorder::momentOver( Vex::Seconds moment, Vex::Seconds /* next */ ) {
   std::set< Nodo::IntfId > lags;
   for ( const auto & book : books_ ) {
      if ( allTouched_ ) {
         book->addLags( lags );
      }
      lags.merge( book->takeTouched() );
   }
   allTouched_ = false;
   for ( std::size_t at = 0; at < books_.size(); ++at ) {
      const SwitchBook * const peer = books_.size() > 1 ? books_[ 1 - at ].get() : nullptr;
      for ( const Nodo::IntfId lag : lags ) {
         books_[ at ]->look( moment, lag, peer );
      }
   }
}

void Recorder::statement( std::size_t line, std::string_view text ) {
   doing_ = "line " + std::to_string( line ) + ": " + std::string( text );
   Witness::statement( line, text );
}

void Recorder::doing( const Statement & statement, std::size_t at ) {
   acting_ = at;
   std::visit( [ this ]( const auto & one ) { follow( one ); }, statement );
}

template < class StatementType >
void Recorder::follow( const StatementType & statement ) {
   if constexpr ( isNoChange< StatementType > ) {
      return;
   }
   SwitchBook & book = *books_[ acting_ ];
   if ( const auto lag = lagOf( statement ) ) {
      if constexpr ( std::is_same_v< StatementType, Replay::Response > ) {
         book.mark( *lag, { now(), MarkKind::answer, doing_ } );
      } else if constexpr ( !std::is_same_v< StatementType, Replay::Request > ) {
         book.mark( *lag, { now(), MarkKind::change, doing_ } ); // a request is an event, too
      }
      return;
   }
   if constexpr ( std::is_same_v< StatementType, Start > ) {
      book.startedIs( *statement.machine );
   }
   if constexpr ( std::is_same_v< StatementType, Stop > ||
                  std::is_same_v< StatementType, Restart > ) {
      if ( statement.interlock == Interlock::egressAcl ) {
         book.forgetLinks();
      }
   }
   allTouched_ = true;
   for ( std::size_t at = 0; at < books_.size(); ++at ) {
      if ( at == acting_ || isOfBoth( statement ) ) {
         books_[ at ]->mark( { now(), MarkKind::change, doing_ } );
      }
   }
}

void Recorder::expectation( std::size_t line, const Finding & finding ) {
   Witness::expectation( line, finding );
   if ( !finding.ok ) {
      books_[ acting_ ]->mark(
         { now(), MarkKind::failedExpect, doing_ + ", found: " + finding.instead } );
   }
}

void Recorder::end( const Outcome & outcome ) {
   Witness::end( outcome );
   chart_.end = now();
   for ( const auto & book : books_ ) {
      chart_.switches.push_back( book->finish( now() ) );
   }
}

// ---- What happens on a switch -------------------------------------------------------------------

void Recorder::verdict( Interlock interlock, const Pair & pair, bool admitted ) {
   Witness::verdict( interlock, pair, admitted );
   ofEventBook().touch( pair.lag );
}

void Recorder::request( Nodo::IntfId lag, std::optional< Token > token ) {
   Witness::request( lag, token );
   ofEventBook().mark( lag,
                       { now(), MarkKind::request, "request to the peer: " + tokenText( token ) } );
}

void Recorder::response( Nodo::IntfId lag, std::optional< Token > token ) {
   Witness::response( lag, token );
   ofEventBook().mark( lag, { now(), MarkKind::answer, answerText( token ) } );
}

void Recorder::sent( const Peering::Message & message, std::span< const Vex::Seconds > delays ) {
   Witness::sent( message, delays );
   SwitchBook & book = ofEventBook();
   if ( delays.empty() ) {
      book.mark(
         message.lag,
         { now(), MarkKind::lost,
           std::string( "lost on the wire: " ) +
              ( message.content == Content::request ? "request, " : "answer to the peer, " ) +
              tokenText( message.token ) } );
      return;
   }
   Mark * const mark = message.content == Content::request ? book.lastMark( message.lag ) : nullptr;
   if ( mark != nullptr && mark->kind == MarkKind::request ) {
      for ( const Vex::Seconds & delay : delays ) {
         mark->what += ( &delay == delays.data() ? ", arrives at " : " and " ) +
                       decimal( Vex::Seconds( roundedToMicroseconds( now() + delay ) ) ) + " s";
      }
   }
}

} // namespace Replay::Timeline
