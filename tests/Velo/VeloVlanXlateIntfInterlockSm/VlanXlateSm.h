#pragma once

// How the tests of the VLAN-translation interlock start it, change what it reads, and see which of
// its handlers were called.

#include "Velo/VeloVlanXlateIntfInterlockSm/VlanXlateIntfInterlockSm.h"
#include "platform/Vex/Ptr.h"
#include "tests/support/Consumers.h"
#include "tests/support/Marks.h"
#include "tests/support/Names.h"
#include "tests/support/TraceRecorder.h"
#include "tests/support/World.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace Velo {

inline Vex::Ptr< VlanXlateIntfInterlockSm > startVlanXlate( const TestSupport::World & world ) {
   return VlanXlateIntfInterlockSm::VlanXlateIntfInterlockSmIs(
      world.aclIntfFeatureStatus, world.hwLagConfig, world.bridgingConfig, world.output );
}

/// A switching configuration that is in no bridging configuration yet.
inline Vex::Ptr< Bridging::SwitchIntfConfig > switchIntfConfig( const Vex::String & name,
                                                                bool translated ) {
   auto created = Vex::make< Bridging::SwitchIntfConfig >( TestSupport::intf( name ) );
   if ( translated ) {
      created->ingressVlanXlateIs( Bridging::VlanXlateKey( 10 ), Bridging::VlanId( 1000 ) );
   }
   return created;
}

inline void egressTranslated( TestSupport::World & world, std::uint16_t vlan ) {
   world.switchIntfConfig().egressVlanXlateIs( Bridging::VlanXlateKey( vlan ),
                                               Bridging::VlanId( 1000 ) );
}

inline void egressNotTranslated( TestSupport::World & world, std::uint16_t vlan ) {
   world.switchIntfConfig().egressVlanXlateDel( Bridging::VlanXlateKey( vlan ) );
}

/// The keys of a collection of reactors.
template < class Reactors >
Vex::String watched( const Reactors & reactors ) {
   TestSupport::Marks keys;
   for ( const Nodo::IntfId key : reactors.keys() ) {
      keys.add( key.stringValue() );
   }
   return keys.take();
}

struct VlanXlateInterlock : testing::Test {
   TestSupport::World world;
   Vex::Ptr< VlanXlateIntfInterlockSm > sm;
   Vex::Ptr< TestSupport::VerdictLog > verdicts;
   TestSupport::TraceRecorder trace{ "VeloVlanXlateIntfInterlockSm" };

   void start() {
      sm = startVlanXlate( world );
      verdicts = TestSupport::VerdictLog::of( world.output );
      trace.take();
   }

   /// The handlers that were called since the last time, by the first line that each traces.
   Vex::String calls() {
      Vex::String lines;
      for ( const auto & record : trace.takeRecords() ) {
         if ( record.level == 0 && record.function.starts_with( "handle" ) &&
              record.message.find( " memberIntf : " ) == Vex::String::npos ) {
            lines += ( lines.empty() ? "" : "; " ) + record.message;
         }
      }
      return lines;
   }
};

} // namespace Velo
