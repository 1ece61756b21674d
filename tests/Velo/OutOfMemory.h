#pragma once

// The interlocks on entities that are well filled, for tests in which memory runs out.

#include "Velo/VeloIntfInterlock.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockControllerSm.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerWitness.h"
#include "tests/platform/Memory.h"
#include "tests/support/Consumers.h"
#include "tests/support/Names.h"
#include "tests/support/PeerWorld.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Velo {

using TestSupport::World;
using AnyInterlock = Vex::Ptr< InterlockModel::StateMachine >;

/// One of the four, as its factory creates it.
struct Kind {
   const char * name;
   bool asPeer;
   AnyInterlock ( *create )( const World & world );
};

inline AnyInterlock createController( const World & world ) {
   return mlagEgressAclIntfInterlockControllerSmFactory(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.response,
      world.request, world.scheduler, world.output );
}

inline const std::array< Kind, 5 > kinds{
   Kind{ "the basic one", false,
         []( const World & world ) {
            return mlagEgressAclIntfInterlockSmFactory(
               world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
         } },
   Kind{ "the controller", false, &createController },
   Kind{ "the controller in peer mode", true, &createController },
   Kind{ "the deprecated one", false,
         []( const World & world ) {
            return deprecatedMlagEgressAclIntfInterlockSmFactory(
               world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
         } },
   Kind{ "the VLAN one", false,
         []( const World & world ) {
            return vlanXlateIntfInterlockSmFactory( world.aclIntfFeatureStatus, world.hwLagConfig,
                                                    world.bridgingConfig, world.output );
         } },
};

/// Entities with something of everything, and a consumer that needs memory, too; `size` says how
/// full they are, so that every collection is at its limit for some size.
class Scene {
 public:
   Scene( const Kind & kind, int size ) : kind_( &kind ) {
      world.peerInterlock( kind.asPeer );
      world.mlagIntf( "PortChannel20" ).lag( "PortChannel30", { "Ethernet9" } );
      world.lag( "PortChannel20", { "Ethernet11", "Ethernet12" } );
      world.left( "Ethernet13", "PortChannel40" ).left( "Ethernet8" );
      world.translated( 10 ).installed( "Ethernet11", "PortChannel20" );
      world.answer( "PortChannel20", 7 );
      for ( int more = 0; more < size; ++more ) {
         const std::string member = "Ethernet" + std::to_string( 2 + more );
         world.member( member ).installed( member );
         lags_.push_back( "PortChannel" + std::to_string( 100 + more ) );
         world.lag( lags_.back(), { "Ethernet13" } ).mlagIntf( lags_.back() );
      }
   }

   void start() { interlock_ = kind_->create( world ); }
   void restart() {
      interlock_.release();
      start();
   }

   /// Output and requests, without their tokens.
   std::string written() const {
      std::string all = sorted( *world.output ) + "asked:";
      for ( const std::string & lag : lags_ ) {
         all += world.request->installRequest().has( TestSupport::intf( lag ) ) ? ' ' + lag : "";
      }
      return all;
   }
   /// How many watch each entity.
   std::string watchers() const {
      std::string all;
      const auto add = [ &all ]( std::size_t count ) { all += std::to_string( count ) + ' '; };
      add( world.aclIntfFeatureStatus->notifiees() );
      add( world.hwLagConfig->notifiees() );
      add( world.mlagStatus->notifiees() );
      add( world.response->notifiees() );
      add( world.request->notifiees() );
      add( world.bridgingConfig->notifiees() );
      add( world.output->notifiees() );
      add( world.peerLinkEntity()->notifiees() );
      for ( const auto entry : world.hwLagConfig->initialMember().entries() ) {
         add( entry.value->notifiees() );
      }
      for ( const auto entry : world.bridgingConfig->switchIntfConfig().entries() ) {
         add( entry.value->notifiees() );
      }
      return all + '/' + std::to_string( world.scheduler->scheduled() );
   }
   /// What is wrong with the peer interlock's deadlines, if it runs; empty when all is well.
   std::string brokenTimeouts() const {
      const auto controller = Vex::ptrCast< TestSupport::ControllerSm >( interlock_ );
      return controller && controller->peerInterlockSm()
                ? TestSupport::brokenTimeouts( *controller->peerInterlockSm() )
                : "";
   }
   /// An event for each LAG and each pair.
   void lookAtAll() {
      for ( const std::string & lag : lags_ ) {
         lookAt( world, lag );
      }
   }

   World world;

 private:
   const Kind * kind_;
   std::vector< std::string > lags_{ sceneLags.begin(), sceneLags.end() };
   AnyInterlock interlock_;
   Vex::Ptr< TestSupport::VerdictLog > consumer_ = TestSupport::VerdictLog::of( world.output );
};

} // namespace Velo
