#pragma once

// What must hold of a controller, its child and what they have written, whenever nothing is under
// way: reckoned from the entities, and compared with what an interlock would write that is started
// on copies of them now.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockSm.h"
#include "tests/support/Names.h"
#include "tests/support/PeerWorld.h"

#include <array>
#include <set>
#include <string>

namespace Velo {

inline Vex::Ptr< Mlag::Status > copyOf( const Mlag::Status & status ) {
   auto copy = Vex::make< Mlag::Status >();
   copy->mlagStateIs( status.mlagState() );
   copy->peerLinkIs( status.peerLink() );
   for ( const auto entry : status.intfStatus().entries() ) {
      copy->intfStatusIs( entry.key, entry.value );
   }
   copy->peerInterlockIs( status.peerInterlock() );
   return copy;
}

inline Vex::String sorted( const Interface::Interlock::IntfFeatureStatus & output ) {
   std::set< Vex::String > pairs;
   for ( const auto feature : output.intf().keys() ) {
      pairs.insert( TestSupport::text( feature ) );
   }
   Vex::String all;
   for ( const auto & pair : pairs ) {
      all += pair + ' ';
   }
   return all;
}

/// What the child that runs would write if it were started now.
inline Vex::String writtenAfresh( const TestSupport::World & world,
                                  const TestSupport::ControllerSm & sm ) {
   const auto output = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   for ( const auto feature : world.output->intf().keys() ) {
      output->intfIs( feature );
   }
   if ( sm.basicInterlockSm() ) {
      const auto fresh = MlagEgressAclIntfInterlockSm::MlagEgressAclIntfInterlockSmIs(
         world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, output );
      return sorted( *output );
   }
   const auto request = Vex::make< Mlag::AclInstallRequest >();
   for ( const auto entry : world.request->installRequest().entries() ) {
      request->installRequestIs( entry.key, entry.value );
   }
   const auto fresh = TestSupport::PeerSm::MlagEgressAclIntfPeerInterlockSmIs(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, output, world.response,
      request, Vex::make< Kel::TaskScheduler >() );
   for ( const auto entry : sm.peerInterlockSm()->linkState().entries() ) {
      if ( entry.value == LinkState::linkFail ) { // which only the past can tell
         fresh->linkStateIs( entry.key, LinkState::linkFail );
         fresh->handleLag( entry.key );
      }
   }
   return sorted( *output );
}

/// What is wrong with one LAG's request and link state; empty when all is well.
inline Vex::String unsettledLag( const TestSupport::World & world,
                                 const TestSupport::PeerSm & peer,
                                 Nodo::IntfId lag ) {
   const auto im = world.hwLagConfig->initialMember( lag );
   const bool active = im && im->members() != 0;
   const bool mlagIntf = static_cast< bool >( world.mlagStatus->intfStatus( lag ) );
   const std::uint32_t token = world.request->installRequest( lag );
   const bool matched = token != 0 && token == world.response->installResponse( lag );
   if ( world.request->installRequest().has( lag ) != ( active && mlagIntf ) ) {
      return "the request of " + TestSupport::text( lag );
   }
   if ( active && mlagIntf ) {
      const LinkState state = peer.linkState( lag );
      if ( matched != ( state == LinkState::linkUp ) || state == LinkState::linkDown ) {
         return TestSupport::text( lag ) + " is " + TestSupport::text( state );
      }
   } else if ( peer.linkState( lag ) != LinkState::linkDown ||
               ( !mlagIntf && peer.linkState().has( lag ) ) ) {
      return TestSupport::text( lag ) + " is tracked";
   }
   return "";
}

inline constexpr std::array sceneLags{ "PortChannel10", "PortChannel20", "PortChannel30",
                                       "PortChannel40" };

/// Makes an event for the LAG and for each of its pairs that changes nothing.
inline void lookAt( TestSupport::World & world, const Vex::String & name ) {
   const Nodo::IntfId lag = TestSupport::intf( name );
   const Mlag::IntfStatus status = world.mlagStatus->intfStatus( lag );
   auto other = status;
   other.text += status ? "'" : "";
   if ( world.mlagStatus->intfStatusHas( lag ) && !status ) {
      world.mlagStatus->intfStatusDel( lag );
      world.mlagStatus->intfStatusIs( lag, status );
   } else {
      world.mlagStatus->intfStatusIs( lag, other );
      status ? world.mlagStatus->intfStatusIs( lag, status )
             : world.mlagStatus->intfStatusDel( lag );
   }
   for ( int port = 1; port <= 13; ++port ) {
      const Interface::Interlock::IntfFeature pair{
         TestSupport::intf( "Ethernet" + std::to_string( port ) ), lag };
      const auto im = world.hwLagConfig->initialMember( lag );
      if ( world.output->intfHas( pair ) || ( im && im->memberHas( pair.member ) ) ) {
         const bool installed = world.aclIntfFeatureStatus->intfHas( pair );
         for ( const bool now : { !installed, installed } ) {
            now ? world.aclIntfFeatureStatus->intfIs( pair )
                : world.aclIntfFeatureStatus->intfDel( pair );
         }
      }
   }
}

/// What is wrong; empty when all is well. `unseen`: a LAG came, went or was replaced with its
/// members, at which nothing looks before the next event; that event is then made here.
inline Vex::String unsettled( TestSupport::World & world,
                              const TestSupport::ControllerSm & sm,
                              bool unseen ) {
   const auto & peer = sm.peerInterlockSm();
   if ( static_cast< bool >( peer ) == static_cast< bool >( sm.basicInterlockSm() ) ||
        static_cast< bool >( peer ) != world.mlagStatus->peerInterlock() ) {
      return "not the one child that the flag selects";
   }
   if ( unseen ) {
      for ( const char * const lag : sceneLags ) {
         lookAt( world, lag );
      }
   }
   if ( !peer ) {
      if ( !world.request->installRequest().empty() ) {
         return "a request that nobody owns";
      }
      if ( world.scheduler->scheduled() != 0 ) {
         return "a task that nobody owns";
      }
   } else {
      if ( peer->markedForDeletion() || !peer->hasNotificationActive() ) {
         return "a child that is not alive";
      }
      if ( auto broken = TestSupport::brokenTimeouts( *peer ); !broken.empty() ) {
         return broken;
      }
      if ( world.scheduler->scheduled() != ( peer->timer().empty() ? 0U : 1U ) ) {
         return "a task too many";
      }
      for ( const char * const name : sceneLags ) {
         if ( auto wrong = unsettledLag( world, *peer, TestSupport::intf( name ) );
              !wrong.empty() ) {
            return wrong;
         }
      }
   }
   const Vex::String wanted = writtenAfresh( world, sm );
   return sorted( *world.output ) == wanted
             ? ""
             : "the output is " + sorted( *world.output ) + "and should be " + wanted;
}

} // namespace Velo
