#include "Velo/VeloVlanXlateIntfInterlockSm/VlanXlateIntfInterlockSm.h"

#include "Velo/VeloVlanXlateIntfInterlockSm/Trace.h"

#include <utility>

namespace Velo {

using VlanXlate::trace;

// ---- Wiring: which change of which input calls what --------------------------------------------

void VlanXlateIntfInterlockSm::VexInIntfFeatureStatus::onAttribute(
   Attribute attribute, const IntfFeature & intfFeature ) {
   const auto sm = ownerUnlessZombie();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::intf:
      sm->handleIntfFeature( intfFeature );
      break;
   }
}

// Calls no handler: members that come with a new InitialMember are decided when something next
// changes for them.
void VlanXlateIntfInterlockSm::VexHwLagConfig::onAttribute( Attribute attribute,
                                                            const Nodo::IntfId & lag ) {
   const auto sm = owner();
   if ( !sm || !notifier() ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::initialMember:
      if ( const auto initialMember = notifier()->initialMember( lag ) ) {
         sm->initialMemberSmIs( initialMember );
      } else {
         sm->initialMemberSmDel( lag );
      }
      break;
   }
}

void VlanXlateIntfInterlockSm::VexHwLagConfig::onNotifier() {
   const auto sm = owner();
   if ( sm && notifier() ) {
      sm->initialMemberSm_.follow( notifier()->initialMember() );
   }
}

void VlanXlateIntfInterlockSm::VexBridgingConfig::onAttribute( Attribute attribute,
                                                               const Nodo::IntfId & intf ) {
   const auto sm = owner();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::switchIntfConfig:
      if ( !markedForDeletion() ) {
         sm->handleIntfConfig( intf );
      }
      if ( !notifier() ) {
         break;
      }
      if ( const auto switchIntfConfig = notifier()->switchIntfConfig( intf ) ) {
         sm->switchIntfConfigSmIs( switchIntfConfig );
      } else {
         sm->switchIntfConfigSmDel( intf );
      }
      break;
   }
}

void VlanXlateIntfInterlockSm::VexBridgingConfig::onNotifier() {
   const auto sm = owner();
   if ( sm && notifier() ) {
      sm->switchIntfConfigSm_.follow( notifier()->switchIntfConfig() );
   }
}

void VlanXlateIntfInterlockSm::VexInitialMemberSm::onAttribute( Attribute attribute,
                                                                const Nodo::IntfId & member ) {
   switch ( attribute ) {
   case Attribute::member:
      vex_handleInitialMemberSm_member( member );
      break;
   }
}

void VlanXlateIntfInterlockSm::VexInitialMemberSm::vex_handleInitialMemberSm_member(
   Nodo::IntfId member ) {
   if ( const auto sm = ownerUnlessZombie() ) {
      sm->handleMember( member, notifier() ? notifier()->key() : Nodo::IntfId() );
   }
}

void VlanXlateIntfInterlockSm::VexSwitchIntfConfigSm::onAttribute(
   Attribute attribute, const Bridging::VlanXlateKey & key ) {
   switch ( attribute ) {
   case Attribute::ingressVlanXlate:
      vex_handleSwitchIntfConfigSm_ingressVlanXlate( key );
      break;
   case Attribute::egressVlanXlate:
      vex_handleSwitchIntfConfigSm_egressVlanXlate( key );
      break;
   }
}

void VlanXlateIntfInterlockSm::VexSwitchIntfConfigSm::vex_handleSwitchIntfConfigSm_ingressVlanXlate(
   Bridging::VlanXlateKey /* key */ ) {
   if ( const auto sm = ownerUnlessZombie() ) {
      sm->handleIntfConfig( notifier() ? notifier()->key() : Nodo::IntfId() );
   }
}

void VlanXlateIntfInterlockSm::VexSwitchIntfConfigSm::vex_handleSwitchIntfConfigSm_egressVlanXlate(
   Bridging::VlanXlateKey key ) {
   vex_handleSwitchIntfConfigSm_ingressVlanXlate( key );
}

// ---- Construction ------------------------------------------------------------------------------

Vex::Ptr< VlanXlateIntfInterlockSm > VlanXlateIntfInterlockSm::VlanXlateIntfInterlockSmIs(
   Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Bridging::Config > bridgingConfig,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus ) {
   auto sm = Vex::make< VlanXlateIntfInterlockSm >(
      std::move( inIntfFeatureStatus ), std::move( hwLagConfig ), std::move( bridgingConfig ),
      std::move( outIntfFeatureStatus ) );
   sm->hasNotificationActiveIs( true );
   return sm;
}

// The full pass comes before the per-entity reactors, on purpose: it reads the inputs directly.
VlanXlateIntfInterlockSm::VlanXlateIntfInterlockSm(
   Vex::Ptr< const IntfFeatureStatus > inIntfFeatureStatus,
   Vex::Ptr< const Hardware::Lag::Config > hwLagConfig,
   Vex::Ptr< const Bridging::Config > bridgingConfig,
   Vex::Ptr< IntfFeatureStatus > outIntfFeatureStatus )
    : outIntfFeatureStatus_( std::move( outIntfFeatureStatus ) ) {
   inIntfFeatureStatus_.createIfGiven( std::move( inIntfFeatureStatus ) );
   hwLagConfig_.createIfGiven( hwLagConfig );
   bridgingConfig_.createIfGiven( bridgingConfig );
   handleInitialized();
   for ( const auto entry : hwLagConfig->initialMember().entries() ) {
      initialMemberSmIs( entry.value );
   }
   if ( bridgingConfig ) {
      for ( const auto entry : bridgingConfig->switchIntfConfig().entries() ) {
         switchIntfConfigSmIs( entry.value );
      }
   }
}

const Vex::Type & VlanXlateIntfInterlockSm::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Velo::VlanXlateIntfInterlockSm" };
   return type;
}

const Vex::Type & VlanXlateIntfInterlockSm::fwkType() const noexcept {
   return staticFwkType();
}

// ---- Collections -------------------------------------------------------------------------------

Vex::Ptr< VlanXlateIntfInterlockSm::VexInitialMemberSm >
VlanXlateIntfInterlockSm::initialMemberSmIs(
   Vex::Ptr< const Hardware::Lag::InitialMember > initialMember ) {
   return initialMemberSm_.is( std::move( initialMember ) );
}

Vex::Ptr< VlanXlateIntfInterlockSm::VexInitialMemberSm >
VlanXlateIntfInterlockSm::initialMemberSmDel( Nodo::IntfId lagIntfId ) {
   return initialMemberSm_.del( lagIntfId );
}

void VlanXlateIntfInterlockSm::initialMemberSmDelAll() {
   initialMemberSm_.delAll();
}

Vex::Ptr< VlanXlateIntfInterlockSm::VexSwitchIntfConfigSm >
VlanXlateIntfInterlockSm::switchIntfConfigSmIs(
   Vex::Ptr< const Bridging::SwitchIntfConfig > switchIntfConfig ) {
   return switchIntfConfigSm_.is( std::move( switchIntfConfig ) );
}

Vex::Ptr< VlanXlateIntfInterlockSm::VexSwitchIntfConfigSm >
VlanXlateIntfInterlockSm::switchIntfConfigSmDel( Nodo::IntfId intfId ) {
   return switchIntfConfigSm_.del( intfId );
}

void VlanXlateIntfInterlockSm::switchIntfConfigSmDelAll() {
   switchIntfConfigSm_.delAll();
}

// ---- Handlers. The texts are read by tools; "memeber" stays as it is. --------------------------

bool VlanXlateIntfInterlockSm::lagMemberActive( Nodo::IntfId memberIntf,
                                                Nodo::IntfId lagIntfId ) const {
   trace( Vex::at< 0 >(), "lagMemberActive", " memberIntf: ", memberIntf, " lag: ", lagIntfId );
   const auto * const initialMember = hwLagConfig()->initialMemberFind( lagIntfId );
   if ( !initialMember ) {
      trace( Vex::at< 2 >(), "lagMemberActive", " member isn't active" );
      return false;
   }
   if ( initialMember->memberHas( memberIntf ) ) {
      trace( Vex::at< 3 >(), "lagMemberActive", " member is active" );
      return true;
   }
   trace( Vex::at< 2 >(), "lagMemberActive", " member isn't active" );
   return false;
}

bool VlanXlateIntfInterlockSm::needsVlanXlateProgramming( Nodo::IntfId lagIntfId ) const {
   trace( Vex::at< 0 >(), "needsVlanXlateProgramming", " lag: ", lagIntfId );
   const auto * const switchIntfConfig = bridgingConfig()->switchIntfConfigFind( lagIntfId );
   if ( !switchIntfConfig ) {
      return false;
   }
   return !switchIntfConfig->ingressVlanXlate().empty() ||
          !switchIntfConfig->egressVlanXlate().empty();
}

void VlanXlateIntfInterlockSm::updateIntfFeature( Nodo::IntfId memberIntf,
                                                  Nodo::IntfId lagIntfId,
                                                  bool active ) {
   trace( Vex::at< 0 >(), "updateIntfFeature", " memberIntf: ", memberIntf, " lag: ", lagIntfId );
   const IntfFeature entry{ memberIntf, lagIntfId };
   if ( !active ) {
      trace( Vex::at< 3 >(), "lag memeber is not active" );
      outIntfFeatureStatus_->intfDel( entry );
      return;
   }
   trace( Vex::at< 3 >(), "lag member is active" );

   if ( !needsVlanXlateProgramming( lagIntfId ) ) {
      trace( Vex::at< 3 >(), "vlan translation programming is not necessary" );
      outIntfFeatureStatus_->intfIs( entry );
      return;
   }
   trace( Vex::at< 3 >(), "vlan translation programming is necessary" );

   if ( inIntfFeatureStatus()->intfHas( entry ) ) {
      trace( Vex::at< 3 >(), "lag and member are in input IntfFeatureStatus" );
      outIntfFeatureStatus_->intfIs( entry );
   } else {
      trace( Vex::at< 3 >(), "lag and member are not in input IntfFeatureStatus" );
      outIntfFeatureStatus_->intfDel( entry );
   }
}

void VlanXlateIntfInterlockSm::handleMember( Nodo::IntfId memberIntf, Nodo::IntfId lagIntfId ) {
   trace( Vex::at< 0 >(), "handleMember", " memberIntf: ", memberIntf, " lag: ", lagIntfId );
   updateIntfFeature( memberIntf, lagIntfId, lagMemberActive( memberIntf, lagIntfId ) );
}

void VlanXlateIntfInterlockSm::handleIntfConfig( Nodo::IntfId intfId ) {
   trace( Vex::at< 0 >(), "handleIntfConfig", " intf: ", intfId );
   const auto initialMember = hwLagConfig()->initialMember( intfId );
   if ( !initialMember ) {
      trace( Vex::at< 2 >(), "handleIntfConfig",
             " intf isn't a lag or it is a lag but not active" );
      return;
   }
   for ( const Nodo::IntfId member : initialMember->member().keys() ) {
      updateIntfFeature( member, intfId, true );
   }
}

void VlanXlateIntfInterlockSm::handleIntfFeature( const IntfFeature & intfFeature ) {
   const Nodo::IntfId member = intfFeature.member;
   const Nodo::IntfId lag = intfFeature.lag;
   trace( Vex::at< 0 >(), "handleIntfFeature", " intfFeature: ", intfFeature );
   trace( Vex::at< 0 >(), "handleIntfFeature", " memberIntf : ", member, " lag : ", lag );
   updateIntfFeature( member, lag, lagMemberActive( member, lag ) );
}

void VlanXlateIntfInterlockSm::handleInitialized() {
   trace( Vex::at< 0 >(), "handleInitialized" );
   for ( const IntfFeature entry : outIntfFeatureStatus_->intf().keys() ) {
      updateIntfFeature( entry.member, entry.lag, lagMemberActive( entry.member, entry.lag ) );
   }
   const auto config = hwLagConfig(); // lives to the end of the pass, whoever replaces it
   for ( const auto entry : config->initialMember().entries() ) {
      for ( const Nodo::IntfId member : entry.value->member().keys() ) {
         updateIntfFeature( member, entry.value->key(), true );
      }
   }
}

} // namespace Velo
