#pragma once

// How far the exchange with the peer has come for one LAG, and its name in a record.

#include <cstdint>
#include <string_view>

namespace Bench::Usual {

enum class LinkState : std::uint8_t { linkDown, linkRequesting, linkUp, linkFail };

inline std::string_view nameOf( LinkState state ) {
   switch ( state ) {
   case LinkState::linkDown:
      return "linkDown";
   case LinkState::linkRequesting:
      return "linkRequesting";
   case LinkState::linkUp:
      return "linkUp";
   case LinkState::linkFail:
      return "linkFail";
   }
   return "";
}

} // namespace Bench::Usual
