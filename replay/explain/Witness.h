#pragma once

// Follows a run and tells the stories of its switches. It stands between the run and the output
// that this is shown on, which gets everything that it would have got alone.
//
// Records come from the text trace, all levels of it: it has every message of the ring, and those
// that the ring has not. A record does not say on which switch of a pair it was written. It is that
// of the statement, or the one that an answer arrives at; when a time-out comes, the one whose LAG
// has waited longest, and where both have asked at one moment, the one whose verdict follows.
//
// Ownership: borrows the scenario and the output, which outlive it.

#include "replay/Output.h"
#include "replay/Scenario.h"
#include "replay/Switch.h"
#include "replay/explain/Story.h"
#include "replay/pair/Side.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace Explain {

PairName nameOf( const Replay::Pair & pair );
Gate gateOf( Replay::Interlock interlock ) noexcept;

class Witness : public Replay::Output {
 public:
   /// `shownLevels` of the trace go on to `inner`, besides those that it always shows.
   Witness( const Replay::Scenario & scenario, std::uint32_t shownLevels, Replay::Output & inner );

   std::uint32_t levelsAlwaysShown() const noexcept final;
   void begin( std::string_view file ) override;
   void stageIs( const Replay::Stage & stage ) override;
   void sent( const Replay::Peering::Message & message,
              std::span< const Vex::Seconds > delays ) override;
   void statement( std::size_t line, std::string_view text ) override;
   void expectation( std::size_t line, const Replay::Finding & finding ) override;
   void trace( const Vex::TraceRecord & record ) override;
   void ring( std::span< const Jotter::Record > records ) override;
   void end( const Replay::Outcome & outcome ) override;
   void verdict( Replay::Interlock interlock, const Replay::Pair & pair, bool admitted ) override;
   void request( Nodo::IntfId lag, std::optional< Replay::Token > token ) override;
   void response( Nodo::IntfId lag, std::optional< Replay::Token > token ) override;

 protected:
   /// Nothing more happens at this moment; the next thing happens at `next`. The end of the run is
   /// the end of its moment, too.
   virtual void momentOver( Vex::Seconds /* moment */, Vex::Seconds /* next */ ) {}
   /// The statement that is about to be done, by the switch of this number.
   virtual void doing( const Replay::Statement & /* statement */, std::size_t /* at */ ) {}

   struct Told {
      std::string_view name;
      const Replay::Switch * device; // until the end of the run
      Story story;
   };
   std::span< Told > switches() noexcept { return switches_; }
   std::size_t ofEvent() const noexcept; // the switch that an event is about
   Vex::Seconds now() const noexcept { return now_; }
   /// Ends the last moment of the run, unless it is over; end() does so, too.
   void endsNow();

 private:
   void timeComes(); // before anything that happens now
   void resolve( std::size_t acting );
   void timeoutOf( const Note & note );

   const Replay::Scenario & scenario_;
   std::uint32_t shownLevels_;
   Replay::Output & inner_;
   const Replay::Stage * stage_ = nullptr; // until the end of the run
   std::vector< Told > switches_;
   std::size_t step_ = 0; // of the scenario, which comes next
   Vex::Seconds now_;
   bool over_ = false; // the last moment
   std::size_t acting_ = 0; // the switch whose interlocks write the records
   bool ambiguous_ = false;
   std::vector< Note > unsaid_; // until it shows who wrote them
};

} // namespace Explain
