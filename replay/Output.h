#pragma once

// What a run shows. Each call is one thing that happens now, on the framework's clock.

#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/Trace.h"
#include "replay/Statement.h"
#include "replay/SwitchEvents.h"
#include "replay/Writer.h"
#include "replay/pair/Wire.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Replay {

class Stage;

/// The result of an `expect`.
struct Finding {
   bool ok;
   std::string instead; // for people, when it is not ok: what was found
};

/// How things stand on a switch after the last statement; all lists in byte order.
struct SwitchOutcome {
   std::string_view name; // empty: there is only one
   std::vector< Pair > egressAcl;
   std::vector< Pair > vlanXlate;
   std::vector< std::pair< Nodo::IntfId, Token > > requests;
};
struct Outcome {
   std::vector< SwitchOutcome > switches;
   std::size_t held = 0;
   std::vector< std::size_t > failedLines;
};

class Output : public SwitchEvents {
 public:
   explicit Output( Writer & writer ) noexcept : writer_( writer ) {}

   /// Levels that are shown even if nobody asks for them, as a bit mask.
   virtual std::uint32_t levelsAlwaysShown() const noexcept = 0;

   virtual void begin( std::string_view file ) = 0;
   /// What it is played on, before the first statement; is there until the end of the run.
   virtual void stageIs( const Stage & /* stage */ ) {}
   /// A switch of a pair has sent a message, which arrives after these delays; none: it is lost.
   virtual void sent( const Peering::Message & message,
                      std::span< const Vex::Seconds > delays ) = 0;
   virtual void statement( std::size_t line, std::string_view text ) = 0;
   virtual void expectation( std::size_t line, const Finding & finding ) = 0;
   virtual void trace( const Vex::TraceRecord & record ) = 0;
   virtual void ring( std::span< const Jotter::Record > records ) = 0;
   virtual void end( const Outcome & outcome ) = 0;

   Writer & writer() const noexcept { return writer_; }

   /// Which switch of a pair the next events are about; empty: there is only one.
   void switchIs( std::string_view name ) noexcept { switch_ = name; }
   std::string_view switchName() const noexcept { return switch_; }

 private:
   Writer & writer_;
   std::string_view switch_;
};

} // namespace Replay
