#pragma once

// How often each fault was made, and each event met each link state.

#include "tests/simulation/Observed.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Simulation {

enum class Fault : std::uint8_t {
   messageLost,
   messageRepeated,
   messageHeldUp,
   messageOvertaken,
   messageBeyondTimeOut,
   answerToRevokedRequest,
   answerFromEarlierLife,
   answerTakenBack,
   aclHeardInsideAnswer,
   agentKilled,
   agentStarted,
   portIn,
   portOut,
   lagWithdrawn,
   lagEmptyThenFilled,
   lagPutWithMembers,
   lagReplaced,
   aclInstalled,
   aclLost,
   peerLinkDown,
   peerLinkReplaced,
   peerLinkGone,
   mlagStateInactive,
   mlagIntfGone,
   mlagIntfPeerInactive,
   modeToPeer,
   modeToBasic,
   modeFlipWhileAsking,
   counterNearItsEnd,
   tokenZero,
   tokenUsedAgain,
   oldAnswerFitsNewRequest,
};
inline constexpr std::size_t faultKinds = 32;
std::string_view nameOf( Fault fault ) noexcept;

/// What may happen to a LAG's link state.
enum class LinkHappening : std::uint8_t {
   inactive, // it is looked at and has no members
   matched, // it is looked at, and its request is answered
   notMatched, // it is looked at, and its request is not answered
   timeOut, // its deadline has come
   answerLost, // an answer came or went, and does not match
};
inline constexpr std::size_t linkHappenings = 5;
std::string_view nameOf( LinkHappening happening ) noexcept;
std::string_view nameOf( Link link ) noexcept;

class Coverage {
 public:
   void hit( Fault fault ) noexcept { ++faults_[ static_cast< std::size_t >( fault ) ]; }
   void hit( Link link, LinkHappening happening ) noexcept {
      ++pairs_[ static_cast< std::size_t >( link ) ][ static_cast< std::size_t >( happening ) ];
   }
   void event() noexcept { ++events_; }

   std::uint64_t events() const noexcept { return events_; }

   /// Both tables; what was never hit is marked.
   std::string report() const;
   /// Everything that can happen has happened. A deadline comes only to a LAG that is asking: a
   /// deadline anywhere else is a violation, not a hit.
   bool complete() const noexcept;

 private:
   std::uint64_t events_ = 0;
   std::array< std::uint64_t, faultKinds > faults_{};
   std::array< std::array< std::uint64_t, linkHappenings >, linkKinds > pairs_{};
};

} // namespace Simulation
