#include "interlock-model/Bridging/Config.h"
#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Interface/EthIntfStatus.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Mlag/AclInstallRequest.h"
#include "interlock-model/Mlag/AclInstallResponse.h"
#include "interlock-model/Mlag/Status.h"
#include "platform/Vex/Enum.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>

namespace {

template < class EntityType, class... Arguments >
std::string typeNameOf( const Arguments &... arguments ) {
   const auto entity = Vex::make< EntityType >( arguments... );
   EXPECT_EQ( &entity->fwkType(), &EntityType::staticFwkType() );
   return std::string( entity->fwkType().name );
}

TEST( Model, EachEntityHasItsNameInTheDataModel ) {
   const Nodo::IntfId intf;
   EXPECT_EQ( typeNameOf< Bridging::Config >(), "Bridging::Config" );
   EXPECT_EQ( typeNameOf< Bridging::SwitchIntfConfig >( intf ), "Bridging::SwitchIntfConfig" );
   EXPECT_EQ( typeNameOf< Hardware::Lag::Config >(), "Hardware::Lag::Config" );
   EXPECT_EQ( typeNameOf< Hardware::Lag::InitialMember >( intf ), "Hardware::Lag::InitialMember" );
   EXPECT_EQ( typeNameOf< Interface::EthIntfStatus >( intf ), "Interface::EthIntfStatus" );
   EXPECT_EQ( typeNameOf< Interface::Interlock::IntfFeatureStatus >(),
              "Interface::Interlock::IntfFeatureStatus" );
   EXPECT_EQ( typeNameOf< Mlag::AclInstallRequest >(), "Mlag::AclInstallRequest" );
   EXPECT_EQ( typeNameOf< Mlag::AclInstallResponse >(), "Mlag::AclInstallResponse" );
   EXPECT_EQ( typeNameOf< Mlag::Status >(), "Mlag::Status" );
}

// "0 name, 1 name, ..." of an enum as a host finds it by the name of its type.
std::string enumerators( const std::string & type ) {
   const Vex::EnumType * const found = Vex::enumType( type );
   if ( found == nullptr ) {
      return "unknown";
   }
   std::string result;
   for ( const Vex::EnumEntry & entry : found->entries ) {
      result += ( result.empty() ? "" : ", " ) + std::to_string( entry.value ) + ' ' +
                std::string( entry.name );
   }
   return result;
}

TEST( Model, EachEnumIsFoundByName ) {
   EXPECT_EQ( enumerators( "Bridging::Config::Attribute" ), "0 switchIntfConfig" );
   EXPECT_EQ( enumerators( "Bridging::SwitchIntfConfig::Attribute" ),
              "0 ingressVlanXlate, 1 egressVlanXlate" );
   EXPECT_EQ( enumerators( "Hardware::Lag::Config::Attribute" ), "0 initialMember" );
   EXPECT_EQ( enumerators( "Hardware::Lag::InitialMember::Attribute" ), "0 member" );
   EXPECT_EQ( enumerators( "Interface::EthIntfStatus::Attribute" ), "0 linkStatus" );
   EXPECT_EQ( enumerators( "Interface::Interlock::IntfFeatureStatus::Attribute" ), "0 intf" );
   EXPECT_EQ( enumerators( "Interface::LinkStatus" ), "0 unknown, 1 down, 2 up" );
   EXPECT_EQ( enumerators( "Mlag::AclInstallRequest::Attribute" ), "0 installRequest" );
   EXPECT_EQ( enumerators( "Mlag::AclInstallResponse::Attribute" ), "0 installResponse" );
   EXPECT_EQ( enumerators( "Mlag::IntfState" ), "0 unknown, 1 inactive, 2 active" );
   EXPECT_EQ( enumerators( "Mlag::State" ),
              "0 disabled, 1 inactive, 2 connecting, 3 primary, 4 secondary" );
   EXPECT_EQ( enumerators( "Mlag::Status::Attribute" ),
              "0 mlagState, 1 peerLink, 2 intfStatus, 3 peerInterlock" );
}

TEST( Model, TheNumbersInTheTablesAreThoseOfTheEnumerators ) {
   EXPECT_EQ( Vex::enumName( Mlag::State::secondary ), "secondary" );
   EXPECT_EQ( Vex::enumName( Mlag::IntfState::active ), "active" );
   EXPECT_EQ( Vex::enumName( Mlag::Status::Attribute::peerInterlock ), "peerInterlock" );
   EXPECT_EQ( Vex::enumName( Bridging::SwitchIntfConfig::Attribute::egressVlanXlate ),
              "egressVlanXlate" );
   EXPECT_EQ( Vex::enumName( Interface::LinkStatus::up ), "up" );
}

} // namespace
