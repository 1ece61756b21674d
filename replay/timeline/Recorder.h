#pragma once

// Follows a run and makes its chart. It stands between the run and the output that the run is shown
// on, which gets everything that it would have got alone.
//
// How things stand is looked at once for each moment, when it is over: what lasted no time leaves
// no span. Facts are read from the entities; link states and reasons are those of the interlocks'
// records.
//
// Ownership: borrows the scenario and the output, which outlive it.

#include "replay/explain/Witness.h"
#include "replay/timeline/Chart.h"
#include "replay/timeline/SwitchBook.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Replay::Timeline {

class Recorder final : public Explain::Witness {
 public:
   using Witness::Witness;

   /// After the run.
   Chart takeChart();

   void begin( std::string_view file ) override;
   void stageIs( const Stage & stage ) override;
   void sent( const Peering::Message & message, std::span< const Vex::Seconds > delays ) override;
   void statement( std::size_t line, std::string_view text ) override;
   void expectation( std::size_t line, const Finding & finding ) override;
   void end( const Outcome & outcome ) override;
   void verdict( Interlock interlock, const Pair & pair, bool admitted ) override;
   void request( Nodo::IntfId lag, std::optional< Token > token ) override;
   void response( Nodo::IntfId lag, std::optional< Token > token ) override;

 private:
   void momentOver( Vex::Seconds moment, Vex::Seconds next ) override;
   void doing( const Statement & statement, std::size_t at ) override;

   template < class StatementType >
   void follow( const StatementType & statement );
   SwitchBook & ofEventBook() { return *books_[ ofEvent() ]; }

   std::vector< std::unique_ptr< SwitchBook > > books_;
   std::string doing_; // the statement that runs, and its line
   std::size_t acting_ = 0; // the switch that it is for
   bool allTouched_ = false;
   Chart chart_;
};

} // namespace Replay::Timeline
