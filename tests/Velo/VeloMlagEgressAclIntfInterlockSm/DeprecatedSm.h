#pragma once

// How the tests of the deprecated egress-ACL interlock start it, and see which of its handlers were
// called.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedMlagEgressAclIntfInterlockSm.h"
#include "platform/Vex/Ptr.h"
#include "tests/support/Consumers.h"
#include "tests/support/Marks.h"
#include "tests/support/Names.h"
#include "tests/support/TraceRecorder.h"
#include "tests/support/World.h"

#include <gtest/gtest.h>

namespace Velo {

inline Vex::Ptr< DeprecatedMlagEgressAclIntfInterlockSm > startDeprecated(
   const TestSupport::World & world ) {
   return DeprecatedMlagEgressAclIntfInterlockSm::DeprecatedMlagEgressAclIntfInterlockSmIs(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.mlagStatus, world.output );
}

struct DeprecatedInterlock : testing::Test {
   TestSupport::World world;
   Vex::Ptr< DeprecatedMlagEgressAclIntfInterlockSm > sm;
   Vex::Ptr< TestSupport::VerdictLog > verdicts;
   TestSupport::TraceRecorder trace{ "VeloMlagEgressAclIntfInterlockSm" };

   void start() {
      sm = startDeprecated( world );
      verdicts = TestSupport::VerdictLog::of( world.output );
      trace.take();
   }

   /// The handlers that were called since the last time, "handleMember(Ethernet1,PortChannel10)".
   Vex::String calls() {
      TestSupport::Marks marks;
      for ( const auto & record : trace.takeRecords() ) {
         if ( record.level == 0 && record.function.starts_with( "handle" ) ) {
            marks.add( record.function + arguments( record.message ) );
         }
      }
      return marks.take();
   }

   Vex::String watchedLags() const {
      TestSupport::Marks lags;
      for ( const Nodo::IntfId lag : sm->initialMemberSm().keys() ) {
         lags.add( lag.stringValue() );
      }
      return lags.take();
   }
   Vex::String watchedPeerLink() const {
      const auto & reactor = sm->vexPeerLinkIntf();
      return reactor && reactor->notifier() ? reactor->notifier()->intfId().stringValue() : "none";
   }
   auto lagReactor( const Vex::String & lag = "PortChannel10" ) const {
      return sm->initialMemberSm().get( TestSupport::intf( lag ) );
   }

 private:
   // The words behind the colons.
   static Vex::String arguments( const Vex::String & message ) {
      Vex::String list;
      for ( std::size_t at = message.find( ": " ); at != Vex::String::npos;
            at = message.find( ": ", at + 2 ) ) {
         const std::size_t begin = at + 2;
         list += ( list.empty() ? "" : "," ) +
                 message.substr( begin, message.find( ' ', begin ) - begin );
      }
      return '(' + list + ')';
   }
};

} // namespace Velo
