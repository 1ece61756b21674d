#pragma once

// One pair of switches under faults, from its seed: its start, events by chance, the end of the
// faults, and recovery. After every event the books of both switches are checked.

#include "platform/Vex/Clock.h"
#include "replay/pair/Exchange.h"
#include "replay/pair/Random.h"
#include "tests/simulation/Coverage.h"
#include "tests/simulation/Exposure.h"
#include "tests/simulation/History.h"
#include "tests/simulation/Station.h"

#include <array>
#include <cstdint>
#include <string>

namespace Simulation {

class PairRun final : public Replay::Peering::ExchangeEvents {
 public:
   using Side = Replay::Peering::Side;

   PairRun( std::uint64_t seed, Coverage & coverage, Exposure & exposure );
   PairRun( const PairRun & ) = delete;
   PairRun & operator=( const PairRun & ) = delete;
   PairRun( PairRun && ) = delete;
   PairRun & operator=( PairRun && ) = delete;
   ~PairRun() override;

   /// False: a check did not hold.
   bool run();
   std::string violation() const;
   std::uint64_t events() const { return coverage_.events() - eventsBefore_; }
   const History & history() const { return history_; }
   /// What was done, for interlock-replay, and what must have come of it.
   std::string scenario() const;

   void sent( Side from,
              const Replay::Peering::Message & message,
              const Replay::Peering::Fate & fate ) override;
   void arriving( Side at, const Replay::Peering::Message & message ) override;
   void arrived( Side at, const Replay::Peering::Message & message ) override;

 private:
   class EagerHardware;

   Station & station( Side side ) { return stations_[ Replay::Peering::indexOf( side ) ]; }
   bool failed() const;

   // The course of a run.
   void prepare();
   void makeFaulty( Side side );
   void makeSound( Side side );
   void settle( double extra );
   void touch();
   void recover();

   // Time.
   void goTo( double target );
   void wait( double seconds ) { goTo( clock_.now().value() + seconds ); }
   void pass( double moment );

   // Something by chance.
   void somethingHappens( Station & station );
   void portFlaps( Station & station );
   void aclChanges( Station & station );
   void lagFlaps( Station & station );
   void mlagIntfChanges( Station & station );
   void mlagStateChanges( Station & station );
   void peerLinkChanges( Station & station );
   void modeChanges( Station & station );
   void agentDies( Station & station );
   void counterJumps( Station & station );
   void answerHeard( Station & station, LagNo lag );
   double someTime();
   std::set< PortNo > somePorts();
   LagNo someLag() { return static_cast< LagNo >( random_.below( lags_ ) ); }
   PortNo somePort() { return static_cast< PortNo >( random_.below( ports_ ) ); }

   Coverage & coverage_;
   Exposure & exposure_;
   Replay::Peering::Random random_;
   std::uint64_t eventsBefore_;
   Vex::VirtualClock clock_;
   Vex::ClockScope clockScope_{ clock_ };
   Vex::Ptr< Kel::TaskScheduler > scheduler_ = Vex::make< Kel::TaskScheduler >();
   History history_;
   std::array< Station, 2 > stations_;
   Replay::Peering::Exchange exchange_;
   std::array< Vex::Ptr< EagerHardware >, 2 > hardware_;
   std::array< std::uint64_t, 2 > lastArrived_{}; // the highest number of a message, by receiver
   std::uint32_t lags_ = 1;
   std::uint32_t ports_ = 1;
   bool faulty_ = true;
   bool eager_ = false; // ACLs change inside answers, which no scenario can tell
};

} // namespace Simulation
