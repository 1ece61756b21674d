#pragma once

#include "platform/Vex/Enum.h"

#include <array>
#include <cstdint>
#include <ostream>
#include <string_view>

namespace Velo {

/// How far the egress-ACL exchange with the MLAG peer has come for one LAG. Known to the framework
/// as MlagEgressAclIntfPeerInterlockSm::LinkState.
enum class LinkState : std::uint8_t {
   linkDown = 0, // the LAG has no initial members; nothing is asked of the peer
   linkRequesting = 1, // asked, not answered yet; a time-out runs
   linkUp = 2, // the peer has answered the current request: its ACL is installed
   linkFail = 3 // the time-out expired, or the answer went away
};

} // namespace Velo

template <>
struct Vex::EnumNames< Velo::LinkState > {
   static constexpr std::string_view type = "Velo::MlagEgressAclIntfPeerInterlockSm::LinkState";
   static constexpr std::array entries{ EnumEntry{ 0, "linkDown" },
                                        EnumEntry{ 1, "linkRequesting" }, EnumEntry{ 2, "linkUp" },
                                        EnumEntry{ 3, "linkFail" } };
};

namespace Velo {

inline std::ostream & operator<<( std::ostream & out, LinkState state ) {
   return Vex::streamEnum( out, state );
}

} // namespace Velo
