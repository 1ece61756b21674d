#pragma once

#include "platform/Vex/Enum.h"
#include "platform/Vex/String.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Mlag {

/// The state of an MLAG interface, on one of the two switches. Active is the one state that counts.
/// Other numbers may be published, too.
enum class IntfState : std::uint8_t { unknown = 0, inactive = 1, active = 2 };

/// The status of one MLAG interface, a value. A default-constructed one means that the interface is
/// not known to MLAG.
struct IntfStatus {
   Vex::String text;
   IntfState localState = IntfState::unknown;
   IntfState peerState = IntfState::unknown; // of the interface on the MLAG peer

   /// Whether it differs from a default-constructed one.
   explicit operator bool() const noexcept {
      return !text.empty() || localState != IntfState::unknown || peerState != IntfState::unknown;
   }

   friend bool operator==( const IntfStatus &, const IntfStatus & ) = default;
};

} // namespace Mlag

template <>
struct Vex::EnumNames< Mlag::IntfState > {
   static constexpr std::string_view type = "Mlag::IntfState";
   static constexpr std::array entries{ EnumEntry{ 0, "unknown" }, EnumEntry{ 1, "inactive" },
                                        EnumEntry{ 2, "active" } };
};
