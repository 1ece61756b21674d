#include "tests/simulation/PairRun.h"

#include "platform/Vex/Entity.h"
#include "tests/simulation/Names.h"

#include <algorithm>

namespace Simulation {

using Replay::Peering::Content;
using Replay::Peering::Fate;
using Replay::Peering::Message;
using Replay::Peering::otherThan;
using Replay::Peering::sides;

namespace {

constexpr double timeOut = 0.1; // seconds
constexpr double longestHold = 0.3; // seconds

double seconds( std::uint32_t microseconds ) {
   return microseconds / 1e6;
}

} // namespace

/// The hardware of a switch that hears of an answer before the interlock does, and may change an
/// ACL there and then.
class PairRun::EagerHardware final : public Vex::ConstNotifiee< Mlag::AclInstallResponse > {
 public:
   EagerHardware( PairRun & run, Station & station ) noexcept : run_( run ), station_( station ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Simulation::PairRun::EagerHardware" };
      return type;
   }
   void onAttribute( Attribute /* attribute */, const Nodo::IntfId & lag ) override {
      run_.answerHeard( station_, lagNo( lag ) );
   }

 private:
   PairRun & run_; // holds us
   Station & station_;
};

PairRun::PairRun( std::uint64_t seed, Coverage & coverage, Exposure & exposure )
    : coverage_( coverage ), exposure_( exposure ), random_( seed ),
      eventsBefore_( coverage.events() ),
      stations_{ Station( Side::left, scheduler_, history_, coverage ),
                 Station( Side::right, scheduler_, history_, coverage ) },
      exchange_( scheduler_, stations_[ 0 ].entities(), stations_[ 1 ].entities(), *this ) {
   for ( const Side side : sides ) {
      const std::size_t at = indexOf( side );
      hardware_[ at ] = Vex::make< EagerHardware >( *this, stations_[ at ] );
      hardware_[ at ]->notifierIs( stations_[ at ].entities().aclResponseFromPeer );
   }
}

PairRun::~PairRun() = default;

bool PairRun::failed() const {
   return std::ranges::any_of(
      stations_, []( const Station & station ) { return !station.ledger().violation().empty(); } );
}

std::string PairRun::violation() const {
   std::string text;
   for ( const Side side : sides ) {
      const std::string & found = stations_[ indexOf( side ) ].ledger().violation();
      if ( !found.empty() ) {
         text += ( side == Side::left ? "left: " : "right: " ) + found + "\n";
      }
   }
   return text;
}

std::string PairRun::scenario() const {
   std::string text = history_.scenario();
   for ( const Side side : sides ) {
      const Ledger & ledger = stations_[ indexOf( side ) ].ledger();
      text += "switch " + std::string( nameOf( side ) ) + "\n";
      for ( LagNo lag = 0; lag < lags_; ++lag ) {
         const std::string & name = lagName( lag ).stringValue();
         const auto request = ledger.request( lag );
         text += request ? "expect request " + name + " " + std::to_string( *request ) + "\n"
                         : "expect no request " + name + "\n";
         for ( PortNo port = 0; port < ports_; ++port ) {
            text += std::string( "expect " ) +
                    ( ledger.admitted().contains( { lag, port } ) ? "" : "no " ) + "egress-acl " +
                    portName( port ).stringValue() + " " + name + "\n";
         }
      }
   }
   return text;
}

// ---- The course of a run ------------------------------------------------------------------------

bool PairRun::run() {
   prepare();
   constexpr std::uint32_t fewest = 40;
   const std::uint32_t events = fewest + random_.below( 160 );
   for ( std::uint32_t at = 0; at < events && !failed(); ++at ) {
      wait( someTime() );
      if ( !failed() ) {
         somethingHappens( stations_[ random_.below( 2 ) ] );
      }
   }
   if ( failed() ) {
      return false; // nothing more, so that the last event is the one that did it
   }
   faulty_ = false;
   for ( const Side side : sides ) {
      makeSound( side );
   }
   settle( 2 * longestHold ); // what was held up before comes in yet
   touch();
   settle( 0 );
   recover();
   return !failed();
}

void PairRun::prepare() {
   lags_ = 1 + random_.below( lagCount );
   ports_ = 1 + random_.below( portCount );
   eager_ = random_.percent( 50 );
   for ( const Side side : sides ) {
      Station & here = station( side );
      makeFaulty( side );
      if ( random_.percent( 20 ) ) {
         counterJumps( here );
      }
      here.mlagStateIs( side == Side::left ? 3 : 4 );
      here.linkStatusIs( 1, true );
      here.peerLinkIs( 1 );
      here.peerModeIs( random_.percent( 85 ) );
      for ( LagNo lag = 0; lag < lags_; ++lag ) {
         // One draw a statement: compilers evaluate arguments in orders of their own.
         const bool known = random_.percent( 90 );
         const bool activeOnPeer = random_.percent( 80 );
         here.mlagIntfIs( lag, known, activeOnPeer, "up" );
         if ( random_.percent( 80 ) ) {
            here.lagIs( lag, somePorts() );
         }
      }
   }
   for ( const Side side : sides ) {
      station( side ).agentIs( true );
   }
}

void PairRun::makeFaulty( Side side ) {
   auto & faults = exchange_.faults( side );
   faults.seedIs( random_.next() );
   faults.delayIs( Vex::Seconds( seconds( 200 + random_.below( 40'000 ) ) ) );
   faults.lossIs( random_.below( 31 ) );
   faults.repetitionIs( { random_.below( 21 ), Vex::Seconds( longestHold ) } );
   faults.holdingIs( { random_.below( 31 ),
                       Vex::Seconds( random_.percent( 50 ) ? longestHold : longestHold / 10 ) } );
}

void PairRun::makeSound( Side side ) {
   auto & faults = exchange_.faults( side );
   faults.lossIs( 0 );
   faults.repetitionIs( {} );
   faults.holdingIs( {} );
   if ( !station( side ).ledger().running() ) {
      station( side ).agentIs( true );
   }
}

// From the last fault on, everything is in place within the time-out and the way there and back.
void PairRun::settle( double extra ) {
   const double there = exchange_.faults( Side::left ).delay().value();
   const double back = exchange_.faults( Side::right ).delay().value();
   wait( extra + timeOut + 2 * std::max( there, back ) + 1e-6 );
   if ( failed() ) {
      return;
   }
   for ( Station & here : stations_ ) {
      if ( exchange_.underWay() > 0 || scheduler_->scheduled() > 0 ) {
         here.ledger().violated( "something is still under way, long after the last fault" );
      }
      here.ledger().checkSettled();
   }
}

// Whatever an InitialMember has left undecided is looked at.
void PairRun::touch() {
   if ( failed() ) {
      return;
   }
   for ( Station & here : stations_ ) {
      for ( LagNo lag = 0; lag < lags_; ++lag ) {
         here.mlagIntfIs( lag, true, random_.percent( 80 ), "touched" );
      }
   }
}

// Each LAG goes and comes back while all is well.
void PairRun::recover() {
   if ( failed() ) {
      return;
   }
   for ( Station & here : stations_ ) {
      for ( LagNo lag = 0; lag < lags_; ++lag ) {
         if ( !here.ledger().isThere( lag ) ) {
            here.lagIs( lag, {} );
         }
         const std::set< PortNo > before = here.ledger().members( lag );
         for ( const PortNo port : before ) {
            here.memberIs( { lag, port }, false );
         }
         settle( 0 );
         if ( failed() ) {
            return;
         }
         for ( const PortNo port : before.empty() ? somePorts() : before ) {
            here.memberIs( { lag, port }, true );
         }
      }
   }
   settle( 0 );
   for ( const Side side : sides ) {
      for ( LagNo lag = 0; lag < lags_; ++lag ) {
         station( side ).ledger().checkRecovered(
            lag, station( otherThan( side ) ).ledger().isReady( lag ) );
      }
   }
}

// ---- Time ---------------------------------------------------------------------------------------

void PairRun::goTo( double target ) {
   for ( auto due = scheduler_->nextDue(); due && due->value() <= target && !failed();
         due = scheduler_->nextDue() ) {
      pass( due->value() );
      scheduler_->runDue();
      for ( Station & here : stations_ ) {
         here.look();
      }
   }
   pass( target );
}

void PairRun::pass( double moment ) {
   const double span = moment - clock_.now().value();
   if ( span > 0 ) {
      exposure_.pass( stations_[ 0 ].ledger(), stations_[ 1 ].ledger(), span );
      exposure_.pass( stations_[ 1 ].ledger(), stations_[ 0 ].ledger(), span );
      clock_.jumpTo( Vex::Seconds( moment ) );
   }
}

// ---- Messages -----------------------------------------------------------------------------------

void PairRun::sent( Side from, const Message & message, const Fate & fate ) {
   if ( fate.delays.empty() ) {
      coverage_.hit( Fault::messageLost );
   }
   if ( fate.delays.size() > 1 ) {
      coverage_.hit( Fault::messageRepeated );
   }
   if ( fate.heldUp ) {
      coverage_.hit( Fault::messageHeldUp );
   }
   if ( std::ranges::any_of( fate.delays,
                             []( Vex::Seconds delay ) { return delay.value() > timeOut; } ) ) {
      coverage_.hit( Fault::messageBeyondTimeOut );
   }
   if ( message.content == Content::response && !message.token ) {
      coverage_.hit( Fault::answerTakenBack );
   }
   history_.note( clock_.now().value(), from,
                  "message " + std::to_string( message.sequence ) +
                     ( fate.delays.empty() ? " is lost" : " is sent" ) );
}

void PairRun::arriving( Side at, const Message & message ) {
   coverage_.event();
   // Deadlines that came at this very moment, before the message.
   for ( Station & here : stations_ ) {
      here.look();
   }
   std::uint64_t & last = lastArrived_[ indexOf( at ) ];
   if ( message.sequence < last ) {
      coverage_.hit( Fault::messageOvertaken );
   }
   last = std::max( last, message.sequence );
   history_.note( clock_.now().value(), at,
                  "message " + std::to_string( message.sequence ) + " arrives" );
   if ( message.content == Content::request ) {
      return;
   }
   Station & here = station( at );
   const LagNo lag = lagNo( message.lag );
   if ( message.token && here.ledger().isRevoked( lag, *message.token ) ) {
      coverage_.hit( Fault::answerToRevokedRequest );
   }
   if ( message.token && here.ledger().isFromEarlierLife( lag, *message.token ) ) {
      coverage_.hit( Fault::answerFromEarlierLife );
   }
   here.answerArriving( lag, message.token );
}

void PairRun::arrived( Side at, const Message & message ) {
   if ( message.content == Content::response ) {
      station( at ).answerArrived( lagNo( message.lag ) );
   }
}

} // namespace Simulation
