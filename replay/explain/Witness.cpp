#include "replay/explain/Witness.h"

#include "platform/Vex/Clock.h"
#include "replay/Stage.h"

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>
#include <variant>

namespace Explain {

namespace {

std::optional< Decider > deciderOf( const Replay::Machine & machine ) noexcept {
   if ( machine.name == "basic" ) {
      return Decider::basic;
   }
   if ( machine.name == "deprecated" ) {
      return Decider::deprecated;
   }
   return std::nullopt; // its records tell
}

} // namespace

PairName nameOf( const Replay::Pair & pair ) {
   return { pair.member.stringValue(), pair.lag.stringValue() };
}

Gate gateOf( Replay::Interlock interlock ) noexcept {
   switch ( interlock ) {
   case Replay::Interlock::egressAcl:
      return Gate::egressAcl;
   case Replay::Interlock::vlanXlate:
      return Gate::vlanXlate;
   }
   return {};
}

Witness::Witness( const Replay::Scenario & scenario,
                  std::uint32_t shownLevels,
                  Replay::Output & inner )
    : Output( inner.writer() ), scenario_( scenario ),
      shownLevels_( shownLevels | inner.levelsAlwaysShown() ), inner_( inner ) {}

// What is not shown is read.
std::uint32_t Witness::levelsAlwaysShown() const noexcept {
   return std::numeric_limits< std::uint32_t >::max();
}

void Witness::begin( std::string_view file ) {
   inner_.begin( file );
}

void Witness::ring( std::span< const Jotter::Record > records ) {
   inner_.ring( records );
}

void Witness::stageIs( const Replay::Stage & stage ) {
   inner_.stageIs( stage );
   stage_ = &stage;
   stage.forEach( [ this ]( std::string_view name, const Replay::Switch & device ) {
      switches_.push_back( { name, &device, {} } );
   } );
}

std::size_t Witness::ofEvent() const noexcept {
   const auto found = std::ranges::find( switches_, switchName(), &Told::name );
   return found != switches_.end() ? static_cast< std::size_t >( found - switches_.begin() ) : 0;
}

void Witness::timeComes() {
   const Vex::Seconds now = Vex::now();
   if ( now != now_ ) {
      resolve( acting_ );
      momentOver( std::exchange( now_, now ), now );
   }
}

void Witness::statement( std::size_t line, std::string_view text ) {
   timeComes();
   inner_.statement( line, text );
   resolve( acting_ );
   acting_ = Replay::Peering::indexOf( stage_->currentSide() );
   Story & story = switches_[ acting_ ].story;
   story.eventBegins();
   const Replay::Statement & what = scenario_.steps[ step_++ ].statement;
   if ( const auto * const start = std::get_if< Replay::Start >( &what ) ) {
      story.started( gateOf( start->machine->interlock ), deciderOf( *start->machine ) );
   } else if ( const auto * const stop = std::get_if< Replay::Stop >( &what ) ) {
      story.stopped( gateOf( stop->interlock ), now_ );
   } else if ( const auto * const lag = std::get_if< Replay::Lag >( &what ) ) {
      story.lagReplaced( lag->lag.stringValue(), now_ );
   } else if ( const auto * const noLag = std::get_if< Replay::NoLag >( &what ) ) {
      if ( switches_[ acting_ ].device->entities().hwLagConfig->initialMember( noLag->lag ) ) {
         story.lagReplaced( noLag->lag.stringValue(), now_ );
      }
   }
   doing( what, acting_ );
}

void Witness::expectation( std::size_t line, const Replay::Finding & finding ) {
   timeComes();
   inner_.expectation( line, finding );
}

void Witness::endsNow() {
   if ( !std::exchange( over_, true ) ) {
      timeComes();
      resolve( acting_ );
      momentOver( now_, Vex::Seconds::infinity() );
   }
}

void Witness::end( const Replay::Outcome & outcome ) {
   endsNow();
   inner_.end( outcome );
   for ( Told & told : switches_ ) {
      told.device = nullptr;
   }
   stage_ = nullptr;
}

// ---- What happens on a switch -------------------------------------------------------------------

void Witness::verdict( Replay::Interlock interlock, const Replay::Pair & pair, bool admitted ) {
   timeComes();
   inner_.switchIs( switchName() );
   inner_.verdict( interlock, pair, admitted );
   if ( ambiguous_ ) {
      resolve( ofEvent() );
   }
   switches_[ ofEvent() ].story.outputIs( gateOf( interlock ), nameOf( pair ), admitted, now_ );
}

void Witness::request( Nodo::IntfId lag, std::optional< Replay::Token > token ) {
   timeComes();
   inner_.switchIs( switchName() );
   inner_.request( lag, token );
}

// What follows is this switch's work.
void Witness::response( Nodo::IntfId lag, std::optional< Replay::Token > token ) {
   timeComes();
   inner_.switchIs( switchName() );
   inner_.response( lag, token );
   resolve( acting_ );
   acting_ = ofEvent();
   switches_[ acting_ ].story.eventBegins();
}

void Witness::sent( const Replay::Peering::Message & message,
                    std::span< const Vex::Seconds > delays ) {
   timeComes();
   inner_.switchIs( switchName() );
   inner_.sent( message, delays );
}

// ---- What the records say -----------------------------------------------------------------------

void Witness::trace( const Vex::TraceRecord & record ) {
   timeComes();
   if ( ( shownLevels_ >> record.level & 1U ) != 0 ) {
      inner_.trace( record );
   }
   Note note = noteOf( record, now_ );
   if ( note.meaning != nullptr && note.meaning->says == Says::timeout ) {
      timeoutOf( note );
   }
   if ( ambiguous_ ) {
      unsaid_.push_back( std::move( note ) );
   } else {
      switches_[ acting_ ].story.take( note );
   }
}

// All LAGs wait equally long.
void Witness::timeoutOf( const Note & note ) {
   resolve( acting_ );
   const std::string & lag = note.arguments[ static_cast< std::size_t >( note.meaning->lag ) ];
   std::optional< Vex::Seconds > earliest;
   for ( std::size_t at = 0; at < switches_.size(); ++at ) {
      const Exchange * const exchange = switches_[ at ].story.exchange( lag );
      if ( exchange == nullptr || exchange->link != Link::asking ) {
         continue;
      }
      if ( !earliest || exchange->since < *earliest ) {
         earliest = exchange->since;
         acting_ = at;
         ambiguous_ = false;
      } else if ( exchange->since == *earliest ) {
         ambiguous_ = true;
      }
   }
}

void Witness::resolve( std::size_t acting ) {
   acting_ = acting;
   ambiguous_ = false;
   for ( const Note & note : std::exchange( unsaid_, {} ) ) {
      switches_[ acting_ ].story.take( note );
   }
}

} // namespace Explain
