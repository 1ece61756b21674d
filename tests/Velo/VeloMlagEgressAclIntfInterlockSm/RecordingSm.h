#pragma once

// The egress-ACL base with hooks that only leave marks: what the wiring calls, with what, and in
// what order.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockBaseSm.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Type.h"
#include "tests/support/Marks.h"
#include "tests/support/World.h"

#include <functional>

namespace Velo {

class RecordingSm final : public MlagEgressAclIntfInterlockBaseSm {
 public:
   RecordingSm( Vex::Ptr< const IntfFeatureStatus > aclIntfFeatureStatus,
                Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
                Vex::Ptr< const Mlag::Status > mlagStatus,
                Vex::Ptr< IntfFeatureStatus > output )
       : MlagEgressAclIntfInterlockBaseSm( aclIntfFeatureStatus, hwLagConfig, mlagStatus, output ) {
   }

   static Vex::Ptr< RecordingSm > of( const TestSupport::World & world ) {
      return Vex::make< RecordingSm >( world.aclIntfFeatureStatus, world.hwLagConfig,
                                       world.mlagStatus, world.output );
   }

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "RecordingSm" };
      return type;
   }

   bool shouldInstallEgressAcl( Nodo::IntfId /* lag */ ) override { return false; }
   void handleMember( Nodo::IntfId member, Nodo::IntfId lag ) override {
      mark( "member(" + member.stringValue() + "," + lag.stringValue() + ")" );
   }
   void handleMlagIntfStatus( Nodo::IntfId lag ) override {
      mark( "mlagIntf(" + lag.stringValue() + ")" );
   }
   void handleLag( Nodo::IntfId lag ) override {
      mark( "lag(" + lag.stringValue() + ")" );
      MlagEgressAclIntfInterlockBaseSm::handleLag( lag );
   }
   /// The brackets hold the peer link that is being watched while the hook runs.
   void handleMlagStateOrPeerlink() override {
      const auto watched = vexPeerLinkIntf()->notifier();
      mark( "state[" + ( watched ? watched->intfId().stringValue() : "" ) + "]" );
   }

   using MlagEgressAclIntfInterlockBaseSm::smNameIs;

   /// The LAGs that have a watcher.
   Vex::String watchedLags() const {
      TestSupport::Marks lags;
      for ( const Nodo::IntfId lag : initialMemberSm().keys() ) {
         lags.add( lag.stringValue() );
      }
      return lags.take();
   }

   TestSupport::Marks marks;
   std::function< void() > onHook;

 private:
   ~RecordingSm() override = default;

   void mark( const Vex::String & text ) {
      marks.add( text );
      if ( onHook ) {
         onHook();
      }
   }
};

} // namespace Velo
