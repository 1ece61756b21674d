#pragma once

#include <string>

namespace Vex {

/// Text, UTF-8, owned. Names of state machines, trace prefixes, status texts.
using String = std::string;

} // namespace Vex
