#pragma once

// The opening of a scenario: the statements that set a switch, or a pair of them, up as its
// configuration has it, and start the interlocks. What a configuration does not tell, and a
// scenario must, is chosen, and the choice is told in a comment.

#include "replay/import/ConfigDb.h"

#include <span>
#include <string>
#include <string_view>

namespace Import {

struct Named {
   std::string_view file; // where it comes from
   const SwitchConfig & config;
};

/// Of one switch or of two. The same configuration gives the same text, in whatever order its file
/// has it.
std::string opening( std::span< const Named > switches );

} // namespace Import
