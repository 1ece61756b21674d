// The data model's enums, for lookup by name.

#include "interlock-model/Bridging/Config.h"
#include "interlock-model/Bridging/SwitchIntfConfig.h"
#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Mlag/AclInstallRequest.h"
#include "interlock-model/Mlag/AclInstallResponse.h"
#include "interlock-model/Mlag/IntfStatus.h"
#include "interlock-model/Mlag/Status.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Module.h"

namespace InterlockModel {

namespace {

const Vex::Module modelModule(
   "InterlockModel",
   {},
   { &Vex::enumTypeOf< Bridging::ConfigAttribute >,
     &Vex::enumTypeOf< Bridging::SwitchIntfConfigAttribute >,
     &Vex::enumTypeOf< Hardware::Lag::ConfigAttribute >,
     &Vex::enumTypeOf< Hardware::Lag::InitialMemberAttribute >,
     &Vex::enumTypeOf< Interface::EthIntfStatusAttribute >,
     &Vex::enumTypeOf< Interface::Interlock::IntfFeatureStatusAttribute >,
     &Vex::enumTypeOf< Interface::LinkStatus >,
     &Vex::enumTypeOf< Mlag::AclInstallRequestAttribute >,
     &Vex::enumTypeOf< Mlag::AclInstallResponseAttribute >, &Vex::enumTypeOf< Mlag::IntfState >,
     &Vex::enumTypeOf< Mlag::State >, &Vex::enumTypeOf< Mlag::StatusAttribute > } );

} // namespace

} // namespace InterlockModel
