#pragma once

// The transitions of a LAG's link state, all of them. An entry that is deleted reads as linkDown
// from then on; that is the one way out that stands in no column.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/LinkState.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Velo {

/// What happens to a LAG's link state.
enum class LinkEvent : std::uint8_t {
   inactive, // updateLinkState finds no initial members
   matched, // updateLinkState finds members, and a request that the response equals
   notMatched, // updateLinkState finds members, and no such request
   timeout, // the LAG's deadline has come
   responseLost, // a response came or went, and does not equal the request
};

inline constexpr std::size_t linkEvents = 5;

/// The next state; nothing: the event is ignored, nothing is stored.
using NextLinkState = std::optional< LinkState >;

namespace Detail {

inline constexpr NextLinkState ignored = std::nullopt;
inline constexpr NextLinkState down = LinkState::linkDown;
inline constexpr NextLinkState requesting = LinkState::linkRequesting;
inline constexpr NextLinkState up = LinkState::linkUp;
inline constexpr NextLinkState fail = LinkState::linkFail;

// A failed LAG never asks again: only a match, the end of its activity or the deletion of its entry
// leads out of linkFail.
// clang-format off: a table
inline constexpr std::array< std::array< NextLinkState, linkEvents >, 4 > nextLinkState{ {
   //                       inactive  matched  notMatched   timeout   responseLost
   /* linkDown       */ { { down,     up,      requesting,  ignored,  ignored } },
   /* linkRequesting */ { { down,     up,      requesting,  fail,     ignored } },
   /* linkUp         */ { { down,     up,      fail,        fail,     fail    } },
   /* linkFail       */ { { down,     up,      ignored,     fail,     ignored } },
} };
// clang-format on

} // namespace Detail

constexpr NextLinkState nextLinkState( LinkState from, LinkEvent event ) noexcept {
   return Detail::nextLinkState[ static_cast< std::size_t >( from ) ]
                               [ static_cast< std::size_t >( event ) ];
}

} // namespace Velo
