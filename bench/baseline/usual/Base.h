#pragma once

// What the two egress-ACL interlocks of this baseline share: the inputs and the wiring.

#include "bench/baseline/usual/Entities.h"
#include "bench/baseline/usual/Trace.h"

#include <memory>
#include <utility>

namespace Bench::Usual {

template < class Library >
class EgressAcl {
 public:
   using Connection = typename Library::Connection;
   using Status = FeatureStatus< Library >;
   using Config = LagConfig< Library >;

   EgressAcl( const EgressAcl & ) = delete;
   EgressAcl & operator=( const EgressAcl & ) = delete;
   EgressAcl( EgressAcl && ) = delete;
   EgressAcl & operator=( EgressAcl && ) = delete;
   virtual ~EgressAcl() = default;

 protected:
   EgressAcl( std::shared_ptr< const Status > input,
              std::shared_ptr< const Config > config,
              std::shared_ptr< const MlagStatus< Library > > mlag,
              std::shared_ptr< Status > output,
              Trace trace )
       : trace_( std::move( trace ) ), input_( std::move( input ) ), config_( std::move( config ) ),
         mlag_( std::move( mlag ) ), output_( std::move( output ) ) {
      for ( const auto & [ lag, im ] : config_->entries() ) {
         watch( lag, im );
      }
      ofInput_ = Library::connect( input_->changed, [ this ]( const Feature & feature ) {
         trace_.entry( "handleIntfFeature memberIntf : {} lag : {}", nameOf( feature.member ),
                       nameOf( feature.lag ) );
         handleMember( feature.member, feature.lag );
      } );
      ofConfig_ = Library::connect( config_->changed, [ this ]( Intf lag ) {
         if ( const auto im = config_->get( lag ) ) {
            watch( lag, im );
         } else {
            ofMembers_.erase( lag );
         }
      } );
      ofIntfStatus_ = Library::connect( mlag_->intfStatus.changed,
                                        [ this ]( Intf lag ) { handleMlagIntfStatus( lag ); } );
   }

   virtual void handleMember( Intf member, Intf lag ) = 0;
   virtual void handleMlagIntfStatus( Intf lag ) = 0;

   bool lagMemberActive( Intf member, Intf lag ) const {
      const auto im = config_->get( lag );
      return im && im->member.has( member );
   }

   // NOLINTBEGIN(misc-non-private-member-variables-in-classes)
   Trace trace_;
   std::shared_ptr< const Status > input_;
   std::shared_ptr< const Config > config_;
   std::shared_ptr< const MlagStatus< Library > > mlag_;
   std::shared_ptr< Status > output_;
   // NOLINTEND(misc-non-private-member-variables-in-classes)

 private:
   void watch( Intf lag, const std::shared_ptr< InitialMember< Library > > & im ) {
      ofMembers_.insert_or_assign(
         lag, Library::connect( im->member.changed,
                                [ this, lag ]( Intf member ) { handleMember( member, lag ); } ) );
   }

   Connection ofInput_;
   Connection ofConfig_;
   Connection ofIntfStatus_;
   std::map< Intf, Connection > ofMembers_;
};

} // namespace Bench::Usual
