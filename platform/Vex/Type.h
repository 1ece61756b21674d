#pragma once

#include <string_view>

namespace Vex {

/// What the framework knows of a class of objects: its name in the data model, for messages.
/// One static instance a class; compared by address.
struct Type {
   std::string_view name;
};

} // namespace Vex
