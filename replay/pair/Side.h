#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Replay::Peering {

/// The two switches of a pair.
enum class Side : std::uint8_t { left, right };

inline constexpr std::array sides{ Side::left, Side::right };

constexpr Side otherThan( Side side ) noexcept {
   return side == Side::left ? Side::right : Side::left;
}
constexpr std::size_t indexOf( Side side ) noexcept {
   return static_cast< std::size_t >( side );
}
constexpr std::string_view nameOf( Side side ) noexcept {
   return side == Side::left ? "left" : "right";
}

} // namespace Replay::Peering
