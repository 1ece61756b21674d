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

#include <cstdint>
#include <optional>
#include <string>
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

// ---- Running the interlocks, time and checks ----------------------------------------------------

struct Start {
   const Machine * machine;
};
struct Stop {
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
                                At,
                                Wait,
                                PeerEcho,
                                ExpectOutput,
                                ExpectJoined,
                                ExpectRequest,
                                ExpectTrace >;

} // namespace Replay
