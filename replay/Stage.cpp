#include "replay/Stage.h"

#include "replay/ScenarioError.h"

namespace Replay {

using Peering::Message;
using Peering::Side;
using Peering::sides;

namespace {

// On a wire that nobody has changed.
constexpr Vex::Seconds usualDelay{ 0.01 };

} // namespace

/// Passes on what happens on one switch, under its name.
class Stage::Teller final : public SwitchEvents {
 public:
   Teller( std::string_view name, Output & output ) noexcept : name_( name ), output_( output ) {}

   void verdict( Interlock interlock, const Pair & pair, bool admitted ) override {
      output_.switchIs( name_ );
      output_.verdict( interlock, pair, admitted );
   }
   void request( Nodo::IntfId lag, std::optional< Token > token ) override {
      output_.switchIs( name_ );
      output_.request( lag, token );
   }
   void response( Nodo::IntfId lag, std::optional< Token > token ) override {
      output_.switchIs( name_ );
      output_.response( lag, token );
   }
   void sent( const Message & message, const Peering::Fate & fate ) {
      output_.switchIs( name_ );
      output_.sent( message, fate.delays );
   }

 private:
   std::string_view name_;
   Output & output_;
};

/// Passes on what happens on the wire.
class Stage::WireTeller final : public Peering::ExchangeEvents {
 public:
   explicit WireTeller( const Stage & stage ) noexcept : stage_( stage ) {}

   void sent( Side from, const Message & message, const Peering::Fate & fate ) override {
      stage_.tellers_[ indexOf( from ) ]->sent( message, fate );
   }
   void arriving( Side at, const Message & message ) override {
      if ( message.content == Peering::Content::response ) {
         stage_.tellers_[ indexOf( at ) ]->response( message.lag, message.token );
      }
   }
   void arrived( Side /* at */, const Message & /* message */ ) override {}

 private:
   const Stage & stage_; // holds us
};

Stage::Stage( StageKind kind, const Vex::Ptr< Kel::TaskScheduler > & scheduler, Output & output ) {
   const bool pair = kind == StageKind::pair;
   for ( const Side side : sides ) {
      if ( pair || side == Side::left ) {
         const std::size_t at = indexOf( side );
         tellers_[ at ] =
            std::make_unique< Teller >( pair ? nameOf( side ) : std::string_view(), output );
         switches_[ at ] = std::make_unique< Switch >( scheduler, *tellers_[ at ] );
      }
   }
   if ( pair ) {
      wireTeller_ = std::make_unique< WireTeller >( *this );
      exchange_ = std::make_unique< Peering::Exchange >( scheduler, switches_[ 0 ]->entities(),
                                                         switches_[ 1 ]->entities(), *wireTeller_ );
      apply( WireDelay{ usualDelay } );
   }
}

Stage::~Stage() = default;

void Stage::apply( const ForSwitch & which ) {
   current_ = which.side;
}

void Stage::apply( const WireOn & wire ) {
   for ( const Side side : sides ) {
      exchange_->faults( side ).onIs( wire.on );
   }
}

void Stage::apply( const WireDelay & wire ) {
   for ( const Side side : sides ) {
      exchange_->faults( side ).delayIs( wire.delay );
   }
}

void Stage::apply( const WireSeed & wire ) {
   for ( const Side side : sides ) {
      exchange_->faults( side ).seedIs( Peering::Random::derived( wire.seed, indexOf( side ) ) );
   }
}

void Stage::apply( const WireFault & fault ) {
   for ( const Side side : sides ) {
      Peering::WireFaults & faults = exchange_->faults( side );
      const bool next = !fault.byChance && side == current_;
      const Peering::Chance chance{ fault.count, fault.span };
      switch ( fault.kind ) {
      case WireFaultKind::lose:
         if ( next ) {
            faults.loseNext( fault.count );
         } else if ( fault.byChance ) {
            faults.lossIs( fault.count );
         }
         break;
      case WireFaultKind::repeat:
         if ( next ) {
            faults.repeatNext( fault.count, fault.span );
         } else if ( fault.byChance ) {
            faults.repetitionIs( chance );
         }
         break;
      case WireFaultKind::hold:
         if ( next ) {
            faults.holdNext( fault.count, fault.span );
         } else if ( fault.byChance ) {
            faults.holdingIs( chance );
         }
         break;
      }
   }
}

void Stage::apply( const ResponderOn & responder ) {
   exchange_->responder( current_ ).onIs( responder.on );
}

void Stage::apply( const PeerEcho & echo ) {
   if ( exchange_ ) {
      throw StatementError( "'peer echo' has no place here: the other switch answers; wanted: a "
                            "scenario of one switch" );
   }
   current().apply( echo );
}

} // namespace Replay
