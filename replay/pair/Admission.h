#pragma once

// What it means that a member of an MLAG LAG fails open, and why it does: one definition, for the
// figures of the simulation and for the pictures of a run.
//
// A member fails open while it is admitted and an egress ACL is not in place: its own, or that of
// some member that the LAG has on the peer. The other way round, a member waits although both are
// in place.

#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "platform/Nodo/IntfId.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Replay::Peering {

/// Each member that the LAG has here has its egress ACL here. True of a LAG without members.
bool hasEveryAcl( const Interface::Interlock::IntfFeatureStatus & acl,
                  const Hardware::Lag::Config & config,
                  Nodo::IntfId lag );

/// Why the members of a failed LAG may join.
enum class FailCause : std::uint8_t { timeOut, answerLost };

/// How things stand for one member of an MLAG LAG.
struct Standing {
   bool admitted = false;
   bool ownAcl = false;
   bool peerReady = false; // it has every egress ACL of the LAG
   bool agentRuns = false; // the one that decides
   bool decided = false; // something has looked at the member since its LAG changed under it
   bool peerMode = false; // the peer is asked
   std::optional< FailCause > failed; // the link state is linkFail

   bool aclsInPlace() const noexcept { return ownAcl && peerReady; }
};

enum class OpenCause : std::uint8_t {
   timeOut, // the peer has not answered in time
   answerWithdrawn, // the peer took its answer back, or another one came
   notNeeded, // no local ACL is asked for
   basicMode, // the peer is not asked at all
   newsUnderWay, // the peer has taken its answer back, and that has not arrived, or never does
   agentDown, // verdicts stand while nobody decides
   notDecided, // nothing has looked at the member since
};
inline constexpr std::size_t openCauses = 7;

enum class HeldCause : std::uint8_t {
   asking, // the answer is under way
   agentDown,
   notDecided,
};
inline constexpr std::size_t heldCauses = 3;

/// Nothing: the member does not fail open.
std::optional< OpenCause > openCause( const Standing & standing ) noexcept;
/// Nothing: the member is admitted, or an ACL is missing.
std::optional< HeldCause > heldCause( const Standing & standing ) noexcept;

std::string_view nameOf( OpenCause cause ) noexcept;
std::string_view nameOf( HeldCause cause ) noexcept;

} // namespace Replay::Peering
