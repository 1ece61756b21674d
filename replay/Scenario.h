#pragma once

#include "replay/Statement.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Replay {

/// One statement and where it stands.
struct Step {
   std::size_t line; // from 1
   std::size_t textAt;
   std::size_t textSize;
   Statement statement;
};

/// A scenario that was read and found right.
struct Scenario {
   std::vector< Step > steps;
   std::string texts; // of all steps, one after the other: one memory block, not one a statement
   bool expectsTrace = false;
   bool ofPair = false; // two switches, and a wire between them

   /// The statement as it was written, without comment, blanks collapsed.
   std::string_view text( const Step & step ) const noexcept {
      return std::string_view( texts ).substr( step.textAt, step.textSize );
   }
};

} // namespace Replay
