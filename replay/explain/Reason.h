#pragma once

// The words in which the tools speak of decisions: who decides, why a member stands as it does, and
// what an interlock checks on the way.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Explain {

/// What decides over an output of its own.
enum class Gate : std::uint8_t { egressAcl, vlanXlate };
inline constexpr std::array gates{ Gate::egressAcl, Gate::vlanXlate };
inline constexpr std::size_t gateCount = gates.size();

/// The state machine behind a gate, as far as its records tell.
enum class Decider : std::uint8_t { basic, peer, deprecated, vlanXlate };

/// What ended a decision.
enum class Reason : std::uint8_t {
   // Held.
   notMember, // the port is not in the LAG
   lagDown, // the exchange with the peer is down
   awaitingPeer, // asked, not answered, not timed out
   noLocalAcl,
   noTranslation,
   // Admitted.
   notMlag, // peer-coordinated: the LAG is no MLAG interface
   aclNotNeeded,
   aclInPlace,
   peerAnswered, // and the local egress ACL is installed, or not needed: the record does not tell
   failOpen, // the peer has not answered in time, or its answer went away
   translationNotNeeded,
   translationInPlace,
};
inline constexpr std::size_t reasonCount = 12;

/// What an interlock looks at.
enum class Check : std::uint8_t {
   memberOfLag,
   lagHasMembers,
   mlagInterface,
   request, // not a question, but done on the way
   peersAnswer,
   mlagActive,
   peerLink,
   activeOnPeer,
   aclNeeded,
   localAcl,
   translationNeeded,
   translation,
};
inline constexpr std::size_t checkCount = 12;

/// "egress-acl"
std::string_view nameOf( Gate gate ) noexcept;
/// "basic"
std::string_view nameOf( Decider decider ) noexcept;
/// "waiting-for-peer", for programs
std::string_view nameOf( Reason reason ) noexcept;
/// "waits for the peer's answer", for people
std::string_view wordsFor( Reason reason ) noexcept;
bool admits( Reason reason ) noexcept;
/// "peer's answer"
std::string_view nameOf( Check check ) noexcept;
/// The check that a reason to hold, or to admit, is about.
Check checkOf( Reason reason ) noexcept;

} // namespace Explain
