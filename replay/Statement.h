#pragma once

// The statements of a scenario: one struct each, what it says and nothing of how it is done. Where
// a statement can be taken back by `no`, an absent value, or false, stands for that.

#include "interlock-model/Bridging/VlanXlateKey.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "interlock-model/Interface/Interlock/IntfFeature.h"
#include "interlock-model/Mlag/IntfStatus.h"
#include "interlock-model/Mlag/Status.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Seconds.h"
#include "replay/Interlocks.h"
#include "replay/pair/Side.h"

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace Replay {

using Pair = Interface::Interlock::IntfFeature;
using Token = std::uint32_t;

// ---- What the switch's other agents publish -----------------------------------------------------

struct Lag {
   Nodo::IntfId lag;
   std::vector< Nodo::IntfId > members;
};
struct NoLag {
   Nodo::IntfId lag;
};
struct Member {
   Nodo::IntfId lag;
   Nodo::IntfId member;
   std::optional< Hardware::Lag::PortProgType > type;
};
/// `acl` and `vlan-ready`.
struct InputEntry {
   Interlock interlock = Interlock::egressAcl;
   Pair pair;
   bool present = true;
};
struct MlagState {
   Mlag::State state;
};
struct MlagPeerLink {
   std::optional< Nodo::IntfId > intf;
};
struct Link {
   Nodo::IntfId intf;
   Interface::LinkStatus status = Interface::LinkStatus::unknown;
};
struct MlagIntf {
   Nodo::IntfId lag;
   std::optional< Mlag::IntfStatus > status;
};
struct MlagPeerInterlock {
   bool on;
};
struct Response {
   Nodo::IntfId lag;
   std::optional< Token > token;
};
struct Switchport {
   Nodo::IntfId intf;
   bool present = true;
};
enum class Direction : std::uint8_t { ingress, egress };
struct VlanXlate {
   Nodo::IntfId intf;
   Direction direction = Direction::ingress;
   Bridging::VlanXlateKey vlan;
   std::optional< Bridging::VlanId > newVlan;
};

// ---- What an earlier owner left behind ----------------------------------------------------------

struct OutputEntry {
   Interlock interlock = Interlock::egressAcl;
   Pair pair;
   bool present = true;
};
struct Request {
   Nodo::IntfId lag;
   std::optional< Token > token;
};

// ---- Running the interlocks, and time -----------------------------------------------------------

struct Start {
   const Machine * machine;
};
struct Stop {
   Interlock interlock = Interlock::egressAcl;
};
struct Restart {
   Interlock interlock = Interlock::egressAcl;
};
struct At {
   Vex::Seconds time;
};
struct Wait {
   Vex::Seconds duration;
};
struct PeerEcho {
   std::optional< Vex::Seconds > delay;
};

// ---- Two switches -------------------------------------------------------------------------------

/// The statements that follow are for this one.
struct ForSwitch {
   Peering::Side side = Peering::Side::left;
};
struct WireOn {
   bool on = true;
};
struct WireDelay {
   Vex::Seconds delay;
};
struct WireSeed {
   std::uint32_t seed = 0;
};
enum class WireFaultKind : std::uint8_t { lose, repeat, hold };
struct WireFault {
   WireFaultKind kind = WireFaultKind::lose;
   std::uint32_t count = 0; // of the next messages that this switch sends; by chance: percent
   bool byChance = false; // of all messages, both ways
   Vex::Seconds span; // how much later the copy, or the message; by chance: at most
};
struct ResponderOn {
   bool on = true;
};

// ---- Checks -------------------------------------------------------------------------------------

struct ExpectOutput {
   Interlock interlock = Interlock::egressAcl;
   Pair pair;
   bool present = true;
};
struct ExpectJoined {
   Pair pair;
   bool joined = true; // false: held
};
struct ExpectRequest {
   Nodo::IntfId lag;
   std::optional< Token > token;
};
struct ExpectTrace {
   std::string text;
   bool present = true;
};

using Statement = std::variant< Lag,
                                NoLag,
                                Member,
                                InputEntry,
                                MlagState,
                                MlagPeerLink,
                                Link,
                                MlagIntf,
                                MlagPeerInterlock,
                                Response,
                                Switchport,
                                VlanXlate,
                                OutputEntry,
                                Request,
                                Start,
                                Stop,
                                Restart,
                                At,
                                Wait,
                                PeerEcho,
                                ForSwitch,
                                WireOn,
                                WireDelay,
                                WireSeed,
                                WireFault,
                                ResponderOn,
                                ExpectOutput,
                                ExpectJoined,
                                ExpectRequest,
                                ExpectTrace >;

/// A scenario that has one of these plays two switches.
template < class Type >
inline constexpr bool isOfPair =
   std::is_same_v< Type, ForSwitch > || std::is_same_v< Type, WireOn > ||
   std::is_same_v< Type, WireDelay > || std::is_same_v< Type, WireSeed > ||
   std::is_same_v< Type, WireFault > || std::is_same_v< Type, ResponderOn >;

} // namespace Replay
