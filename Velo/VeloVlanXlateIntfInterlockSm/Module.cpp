// What the VLAN-translation interlock registers with the framework, and its exported factory.

#include "platform/Vex/Module.h"

#include "Velo/VeloIntfInterlock.h"
#include "Velo/VeloVlanXlateIntfInterlockSm/VlanXlateIntfInterlockSm.h"

#include <utility>

namespace Velo {

namespace {

const Vex::Module vlanXlateModule(
   "VeloVlanXlateIntfInterlockSm",
   { Vex::stateMachineType( "VlanXlateIntfInterlockSm",
                            &VlanXlateIntfInterlockSm::VlanXlateIntfInterlockSmIs ) } );

} // namespace

Vex::Ptr< InterlockModel::StateMachine > vlanXlateIntfInterlockSmFactory(
   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Bridging::Config > bridgingConfig,
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > outIntfFeatureStatus ) {
   return VlanXlateIntfInterlockSm::VlanXlateIntfInterlockSmIs(
      std::move( inIntfFeatureStatus ), std::move( hwLagConfig ), std::move( bridgingConfig ),
      std::move( outIntfFeatureStatus ) );
}

} // namespace Velo
