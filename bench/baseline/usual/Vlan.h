#pragma once

// The VLAN-translation interlock of this baseline. It writes no record that the ring takes.

#include "bench/baseline/usual/Entities.h"

#include <memory>
#include <utility>

namespace Bench::Usual {

template < class Library >
class Vlan {
 public:
   using Connection = typename Library::Connection;

   Vlan( std::shared_ptr< const FeatureStatus< Library > > input,
         std::shared_ptr< const LagConfig< Library > > config,
         std::shared_ptr< const BridgingConfig< Library > > bridging,
         std::shared_ptr< FeatureStatus< Library > > output )
       : input_( std::move( input ) ), config_( std::move( config ) ),
         bridging_( std::move( bridging ) ), output_( std::move( output ) ) {
      for ( const auto & [ lag, im ] : config_->entries() ) {
         for ( const auto & [ member, type ] : im->member.entries() ) {
            update( member, lag, true );
         }
         watch( lag, im );
      }
      for ( const auto & [ intf, entry ] : bridging_->entries() ) {
         watch( intf, entry );
      }
      ofInput_ = Library::connect( input_->changed, [ this ]( const Feature & feature ) {
         handleMember( feature.member, feature.lag );
      } );
      ofConfig_ = Library::connect( config_->changed, [ this ]( Intf lag ) {
         if ( const auto im = config_->get( lag ) ) {
            watch( lag, im );
         } else {
            ofMembers_.erase( lag );
         }
      } );
      ofBridging_ = Library::connect( bridging_->changed, [ this ]( Intf intf ) {
         handleIntfConfig( intf );
         if ( const auto entry = bridging_->get( intf ) ) {
            watch( intf, entry );
         } else {
            ofMappings_.erase( intf );
         }
      } );
   }

 private:
   void watch( Intf lag, const std::shared_ptr< InitialMember< Library > > & im ) {
      ofMembers_.insert_or_assign(
         lag, Library::connect( im->member.changed,
                                [ this, lag ]( Intf member ) { handleMember( member, lag ); } ) );
   }
   void watch( Intf intf, const std::shared_ptr< SwitchIntfConfig< Library > > & entry ) {
      const auto handler = [ this, intf ]( Mapping /* key */ ) { handleIntfConfig( intf ); };
      ofMappings_.insert_or_assign(
         intf, std::pair( Library::connect( entry->ingress.changed, handler ),
                          Library::connect( entry->egress.changed, handler ) ) );
   }

   void handleMember( Intf member, Intf lag ) {
      const auto im = config_->get( lag );
      update( member, lag, im && im->member.has( member ) );
   }
   void handleIntfConfig( Intf intf ) {
      if ( const auto im = config_->get( intf ) ) {
         for ( const auto & [ member, type ] : im->member.entries() ) {
            update( member, intf, true );
         }
      }
   }
   bool needsVlanXlateProgramming( Intf lag ) const {
      const auto entry = bridging_->get( lag );
      return entry && ( !entry->ingress.entries().empty() || !entry->egress.entries().empty() );
   }
   void update( Intf member, Intf lag, bool active ) {
      const Feature entry{ member, lag };
      if ( active && ( !needsVlanXlateProgramming( lag ) || input_->has( entry ) ) ) {
         output_->is( entry );
      } else {
         output_->del( entry );
      }
   }

   std::shared_ptr< const FeatureStatus< Library > > input_;
   std::shared_ptr< const LagConfig< Library > > config_;
   std::shared_ptr< const BridgingConfig< Library > > bridging_;
   std::shared_ptr< FeatureStatus< Library > > output_;
   Connection ofInput_;
   Connection ofConfig_;
   Connection ofBridging_;
   std::map< Intf, Connection > ofMembers_;
   std::map< Intf, std::pair< Connection, Connection > > ofMappings_;
};

} // namespace Bench::Usual
