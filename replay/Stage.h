#pragma once

// What a scenario is played on: one switch, or a pair of them with the exchange between them, on
// one scheduler.
//
// Ownership: holds the switches; borrows `output`, which outlives it, and tells it which switch it
// hears from.

#include "platform/Kel/TaskScheduler.h"
#include "platform/Vex/Ptr.h"
#include "replay/Output.h"
#include "replay/Statement.h"
#include "replay/Switch.h"
#include "replay/pair/Exchange.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace Replay {

enum class StageKind : std::uint8_t { oneSwitch, pair };

class Stage {
 public:
   Stage( StageKind kind, const Vex::Ptr< Kel::TaskScheduler > & scheduler, Output & output );
   Stage( const Stage & ) = delete;
   Stage & operator=( const Stage & ) = delete;
   Stage( Stage && ) = delete;
   Stage & operator=( Stage && ) = delete;
   ~Stage();

   /// The switch that statements are for; at first the left one.
   Switch & current() noexcept { return *switches_[ indexOf( current_ ) ]; }
   Peering::Side currentSide() const noexcept { return current_; }
   /// Calls with the name and the switch, of each.
   template < class Visitor >
   void forEach( Visitor visit ) const {
      for ( const Peering::Side side : Peering::sides ) {
         if ( const auto & device = switches_[ indexOf( side ) ] ) {
            visit( exchange_ ? nameOf( side ) : std::string_view(), *device );
         }
      }
   }

   void apply( const ForSwitch & which );
   void apply( const WireOn & wire );
   void apply( const WireDelay & wire );
   void apply( const WireSeed & wire );
   void apply( const WireFault & fault );
   void apply( const ResponderOn & responder );
   /// A StatementError on a pair, where the other switch answers.
   void apply( const PeerEcho & echo );

 private:
   class Teller;
   class WireTeller;

   std::array< std::unique_ptr< Teller >, Peering::sides.size() > tellers_;
   std::unique_ptr< WireTeller > wireTeller_;
   std::array< std::unique_ptr< Switch >, Peering::sides.size() > switches_; // right: of a pair
   // Of a pair; statements that need it stand only in scenarios of pairs.
   std::unique_ptr< Peering::Exchange > exchange_;
   Peering::Side current_ = Peering::Side::left;
};

} // namespace Replay
