#pragma once

#include "replay/Output.h"

#include <cstddef>
#include <string>

namespace Replay {

/// Shows what failed on another output, as that one shows it, and nothing else: each expect that
/// did not hold, with its statement. Borrows the other one, which outlives it.
class QuietOutput final : public Output {
 public:
   explicit QuietOutput( Output & shown ) noexcept : Output( shown.writer() ), shown_( shown ) {}

   std::uint32_t levelsAlwaysShown() const noexcept override { return 0; }

   void begin( std::string_view file ) override;
   void statement( std::size_t line, std::string_view text ) override;
   void expectation( std::size_t line, const Finding & finding ) override;

   void sent( const Peering::Message & /* message */,
              std::span< const Vex::Seconds > /* delays */ ) override {}
   void verdict( Interlock /* interlock */,
                 const Pair & /* pair */,
                 bool /* admitted */ ) override {}
   void request( Nodo::IntfId /* lag */, std::optional< Token > /* token */ ) override {}
   void response( Nodo::IntfId /* lag */, std::optional< Token > /* token */ ) override {}
   void trace( const Vex::TraceRecord & /* record */ ) override {}
   void ring( std::span< const Jotter::Record > /* records */ ) override {}
   void end( const Outcome & /* outcome */ ) override {}

 private:
   Output & shown_;
   std::string file_;
   bool begun_ = false; // on the other output
   std::string_view statement_; // the one that runs
};

} // namespace Replay
