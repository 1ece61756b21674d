#pragma once

// A World with the peer-coordinated egress-ACL interlock in it, started by hand or by its
// controller, and what must hold of it whenever nothing is under way.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockControllerSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfPeerInterlockSm.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/String.h"
#include "tests/support/Names.h"
#include "tests/support/World.h"

#include <cmath>
#include <cstddef>

namespace TestSupport {

using PeerSm = Velo::MlagEgressAclIntfPeerInterlockSm;
using ControllerSm = Velo::MlagEgressAclIntfInterlockControllerSm;

inline Vex::Ptr< PeerSm > startPeer( const World & world ) {
   return PeerSm::MlagEgressAclIntfPeerInterlockSmIs(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output, world.response,
      world.request, world.scheduler );
}

inline Vex::Ptr< ControllerSm > startController( const World & world ) {
   return ControllerSm::MlagEgressAclIntfInterlockControllerSmIs(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.response,
      world.request, world.scheduler, world.output );
}

/// The LAG's link state by name, "none" where it has no entry.
inline Vex::String stateOf( const PeerSm & sm, const Vex::String & lag = "PortChannel10" ) {
   return sm.linkState().has( intf( lag ) ) ? text( sm.linkState( intf( lag ) ) ) : "none";
}

/// The LAG's token as text, "none" where there is no request.
inline Vex::String requestOf( const World & world, const Vex::String & lag = "PortChannel10" ) {
   const auto & requests = world.request->installRequest();
   return requests.has( intf( lag ) ) ? text( requests.get( intf( lag ) ) ) : "none";
}

/// The deadlines in their order, then what the task is armed for, in seconds: "PortChannel10
/// 0.100000 PortChannel20 0.110000 | PortChannel10 0.100000"; "|" when there is none.
inline Vex::String timersOf( const PeerSm & sm ) {
   Vex::String all;
   for ( const auto entry : sm.timer().entries() ) {
      all += entry.key.stringValue() + ' ' + text( entry.value ) + ' ';
   }
   all += '|';
   if ( sm.activeLag() != Nodo::IntfId() ) {
      all += ' ' + sm.activeLag().stringValue();
   }
   if ( sm.task()->due() != Vex::Seconds::infinity() ) {
      all += ' ' + text( sm.task()->due() );
   }
   return all;
}

/// What is wrong with the time-outs; empty when all is well: a LAG has a deadline exactly as long
/// as it is requesting, and the task is armed for the earliest.
inline Vex::String brokenTimeouts( const PeerSm & sm ) {
   std::size_t requesting = 0;
   for ( const auto entry : sm.linkState().entries() ) {
      requesting += entry.value == Velo::LinkState::linkRequesting ? 1U : 0U;
      if ( sm.timer().has( entry.key ) != ( entry.value == Velo::LinkState::linkRequesting ) ) {
         return "the deadline of " + text( entry.key ) + " in state " + text( entry.value );
      }
   }
   if ( requesting != sm.timer().size() ) {
      return "a deadline of a LAG that is not tracked";
   }
   const Vex::Seconds due = sm.task()->due();
   if ( sm.timer().empty() ) {
      return sm.activeLag() == Nodo::IntfId() && due == Vex::Seconds::infinity()
                ? ""
                : "armed for nothing: " + timersOf( sm );
   }
   const Vex::Seconds * const deadline = sm.timer().find( sm.activeLag() );
   if ( deadline == nullptr ) {
      return "not armed for a LAG that has a deadline: " + timersOf( sm );
   }
   for ( const auto entry : sm.timer().entries() ) {
      if ( entry.value < *deadline ) {
         return "not armed for the earliest: " + timersOf( sm );
      }
   }
   const bool inTime = std::abs( ( due - *deadline ).value() ) < 1e-9;
   const bool overdue = *deadline < due && due <= Vex::now();
   return inTime || overdue ? "" : "armed for another moment: " + timersOf( sm );
}

} // namespace TestSupport
