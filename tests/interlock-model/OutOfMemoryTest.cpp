// Memory that runs out in a mutator: the entity has the change whole or not at all, and its index
// and its content agree. Without the change nobody is told; with it, who watches was told of it up
// to the one that had no memory.

#include "interlock-model/Bridging/Config.h"
#include "interlock-model/Bridging/SwitchIntfConfig.h"
#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/Mlag/AclInstallRequest.h"
#include "interlock-model/Mlag/AclInstallResponse.h"
#include "interlock-model/Mlag/Status.h"
#include "tests/platform/Memory.h"
#include "tests/support/Names.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <vector>

namespace {

using TestSupport::intf;

constexpr int most = 200; // past the first index and its growth

// Counts what it is told.
template < class EntityType >
class Counter final : public Vex::ConstNotifiee< EntityType > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Counter" };
      return type;
   }
   void onAttribute( typename EntityType::Attribute /* attribute */,
                     const typename EntityType::Key & /* key */ ) override {
      ++told;
   }

   int told = 0;
};

std::vector< Nodo::IntfId > names() {
   std::vector< Nodo::IntfId > all;
   for ( int number = 0; number < most; ++number ) {
      all.push_back( intf( "Ethernet" + std::to_string( number ) ) );
   }
   return all;
}

// Fills the entity by `insert( entity, name )`, with memory that runs out again and again.
// `count( entity )` says how much there is, `has( entity, name )` whether it is found.
template < class EntityType, class Insert, class Count, class Has >
void fill( Vex::Ptr< EntityType > entity, Insert insert, Count count, Has has ) {
   const auto counter = Vex::make< Counter< EntityType > >();
   counter->notifierIs( entity );
   const auto all = names();
   int failures = 0;
   for ( std::size_t at = 0; at < all.size(); ++at ) {
      failures += Memory::attemptsUntilSuccess< std::bad_alloc >(
         [ & ] { insert( *entity, all[ at ] ); },
         [ & ] {
            ASSERT_EQ( count( *entity ), at );
            ASSERT_FALSE( has( *entity, all[ at ] ) );
            ASSERT_EQ( counter->told, static_cast< int >( at ) ) << "told of no change";
         } );
      for ( std::size_t other = 0; other <= at; ++other ) {
         ASSERT_TRUE( has( *entity, all[ other ] ) );
      }
   }
   EXPECT_GT( failures, 5 );
   EXPECT_EQ( count( *entity ), all.size() );
}

TEST( EntityOutOfMemory, InitialMembersGainAPortWholeOrNotAtAll ) {
   fill(
      Vex::make< Hardware::Lag::InitialMember >( intf( "PortChannel10" ) ),
      []( auto & entity, Nodo::IntfId name ) { entity.memberIs( name, {} ); },
      []( const auto & entity ) { return entity.members(); },
      []( const auto & entity, Nodo::IntfId name ) { return entity.memberHas( name ); } );
}

TEST( EntityOutOfMemory, AConfigurationGainsALagWholeOrNotAtAll ) {
   fill(
      Vex::make< Hardware::Lag::Config >(),
      []( auto & entity, Nodo::IntfId name ) {
         entity.initialMemberIs( Vex::make< Hardware::Lag::InitialMember >( name ) );
      },
      []( const auto & entity ) { return entity.initialMember().size(); },
      []( const auto & entity, Nodo::IntfId name ) { return entity.initialMember().has( name ); } );
}

TEST( EntityOutOfMemory, ABridgingConfigurationGainsAnInterfaceWholeOrNotAtAll ) {
   fill(
      Vex::make< Bridging::Config >(),
      []( auto & entity, Nodo::IntfId name ) {
         entity.switchIntfConfigIs( Vex::make< Bridging::SwitchIntfConfig >( name ) );
      },
      []( const auto & entity ) { return entity.switchIntfConfig().size(); },
      []( const auto & entity, Nodo::IntfId name ) {
         return entity.switchIntfConfig().has( name );
      } );
}

TEST( EntityOutOfMemory, AFeatureStatusGainsAnEntryWholeOrNotAtAll ) {
   const Nodo::IntfId lag = intf( "PortChannel10" );
   fill(
      Vex::make< Interface::Interlock::IntfFeatureStatus >(),
      [ lag ]( auto & entity, Nodo::IntfId name ) { entity.intfIs( { name, lag } ); },
      []( const auto & entity ) { return entity.intf().size(); },
      [ lag ]( const auto & entity, Nodo::IntfId name ) {
         return entity.intfHas( { name, lag } );
      } );
}

TEST( EntityOutOfMemory, AnMlagStatusGainsAnInterfaceWholeOrNotAtAll ) {
   const std::string text( 100, 'x' ); // on the heap
   fill(
      Vex::make< Mlag::Status >(),
      [ &text ]( auto & entity, Nodo::IntfId name ) {
         entity.intfStatusIs( name, { text, Mlag::IntfState::active, Mlag::IntfState::active } );
      },
      []( const auto & entity ) { return entity.intfStatus().size(); },
      [ &text ]( const auto & entity, Nodo::IntfId name ) {
         return entity.intfStatusHas( name ) && entity.intfStatus( name ).text == text;
      } );
}

TEST( EntityOutOfMemory, RequestsAndResponsesGainATokenWholeOrNotAtAll ) {
   fill(
      Vex::make< Mlag::AclInstallRequest >(),
      []( auto & entity, Nodo::IntfId name ) { entity.installRequestIs( name, 7 ); },
      []( const auto & entity ) { return entity.installRequest().size(); },
      []( const auto & entity, Nodo::IntfId name ) { return entity.installRequest( name ) == 7; } );
   fill(
      Vex::make< Mlag::AclInstallResponse >(),
      []( auto & entity, Nodo::IntfId name ) { entity.installResponseIs( name, 7 ); },
      []( const auto & entity ) { return entity.installResponse().size(); },
      []( const auto & entity, Nodo::IntfId name ) {
         return entity.installResponse( name ) == 7;
      } );
}

TEST( EntityOutOfMemory, WhatIsTakenOutOrOverwrittenNeedsNoMemory ) {
   const auto all = names();
   const auto entity = Vex::make< Hardware::Lag::InitialMember >( intf( "PortChannel10" ) );
   for ( const Nodo::IntfId name : all ) {
      entity->memberIs( name, {} );
   }
   const Memory::RunsOut memory( 0 );
   for ( const Nodo::IntfId name : all ) {
      entity->memberIs( name, Hardware::Lag::PortProgType( 1 ) );
   }
   for ( const Nodo::IntfId name : all ) {
      entity->memberDel( name );
   }
   EXPECT_EQ( entity->members(), 0U );
}

} // namespace
