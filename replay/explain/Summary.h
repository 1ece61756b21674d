#pragma once

// How long each member was held out of its LAG during a run, and by what. It stands between the run
// and the output that this is shown on, and adds its own lines: to text behind the end, to JSON
// objects before it, because the end is the last object.
//
// A member is held while the port is in the LAG and an interlock does not admit it that was started
// at some time: the verdicts of one that is stopped stand. How things stand is looked at once for
// each moment, when nothing more happens in it, and of those members alone for which something has
// happened.

#include "replay/explain/Witness.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Explain {

enum class SummaryForm : std::uint8_t { text, jsonLines };

class Summary final : public Witness {
 public:
   Summary( const Replay::Scenario & scenario,
            std::uint32_t shownLevels,
            Replay::Output & inner,
            SummaryForm form );
   Summary( const Summary & ) = delete;
   Summary & operator=( const Summary & ) = delete;
   Summary( Summary && ) = delete;
   Summary & operator=( Summary && ) = delete;
   ~Summary() override;

   void stageIs( const Replay::Stage & stage ) override;
   void end( const Replay::Outcome & outcome ) override;
   void verdict( Replay::Interlock interlock, const Replay::Pair & pair, bool admitted ) override;

 private:
   class Book;

   void momentOver( Vex::Seconds moment, Vex::Seconds next ) override;
   void doing( const Replay::Statement & statement, std::size_t at ) override;

   void showText();
   void showJson();

   SummaryForm form_;
   std::vector< std::unique_ptr< Book > > books_; // one a switch
};

} // namespace Explain
