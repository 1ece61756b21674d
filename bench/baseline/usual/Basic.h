#pragma once

// The basic egress-ACL interlock of this baseline.

#include "bench/baseline/usual/Base.h"

namespace Bench::Usual {

template < class Library >
class Basic final : public EgressAcl< Library > {
 public:
   Basic( std::shared_ptr< const FeatureStatus< Library > > input,
          std::shared_ptr< const LagConfig< Library > > config,
          std::shared_ptr< const MlagStatus< Library > > mlag,
          std::shared_ptr< FeatureStatus< Library > > output,
          Trace trace )
       : EgressAcl< Library >( std::move( input ),
                               std::move( config ),
                               std::move( mlag ),
                               std::move( output ),
                               std::move( trace ) ) {
      this->trace_.entry( "handleInitialized" );
      const auto left = this->output_->intf(); // a copy: entries may go on the way
      for ( const Feature & entry : left ) {
         handleMember( entry.member, entry.lag );
      }
      handleAllLags();
      ofState_ = Library::connect( this->mlag_->state.changed, [ this ] { handleMlagState(); } );
      ofPeerLink_ = Library::connect( this->mlag_->peerLink.changed, [ this ] {
         handleMlagState();
         watchPeerLink();
      } );
      watchPeerLink();
   }

 private:
   void watchPeerLink() {
      const auto peerLink = this->mlag_->peerLink.get();
      ofLinkStatus_ = peerLink ? Library::connect( peerLink->linkStatus.changed,
                                                   [ this ] { handleMlagState(); } )
                               : typename Library::Connection();
   }

   bool shouldInstallEgressAcl( Intf lag ) const {
      const std::uint8_t state = this->mlag_->state.get();
      if ( state != 3 && state != 4 ) {
         return false;
      }
      const auto & peerLink = this->mlag_->peerLink.get();
      if ( !peerLink || peerLink->linkStatus.get() != 2 ) {
         return false;
      }
      return this->mlag_->intfStatus.get( lag ).peerState == 2;
   }

   void handleMember( Intf member, Intf lag ) override {
      this->trace_.entry( "handleMember memberIntf : {} lag : {}", nameOf( member ),
                          nameOf( lag ) );
      const Feature entry{ member, lag };
      if ( !this->lagMemberActive( member, lag ) ) {
         this->trace_.decision( "lag member isn't active" );
         this->output_->del( entry );
         return;
      }
      this->trace_.decision( "lag member is active" );
      if ( !shouldInstallEgressAcl( lag ) ) {
         this->trace_.decision( "egress ACL shouldn't be installed" );
         this->output_->is( entry );
         return;
      }
      this->trace_.decision( "egress ACL should be installed" );
      if ( this->input_->has( entry ) ) {
         this->trace_.decision( "lag and member are in input IntfFeatureStatus" );
         this->output_->is( entry );
      } else {
         this->trace_.decision( "lag and member are not in input IntfFeatureStatus" );
         this->output_->del( entry );
      }
   }

   void handleMlagIntfStatus( Intf lag ) override {
      this->trace_.entry( "handleMlagIntfStatus mlagIntf: {}", nameOf( lag ) );
      handleLag( lag );
   }

   void handleLag( Intf lag ) {
      if ( const auto im = this->config_->get( lag ) ) {
         for ( const auto & [ member, type ] : im->member.entries() ) {
            handleMember( member, lag );
         }
      }
   }

   void handleAllLags() {
      for ( const auto & [ lag, im ] : this->config_->entries() ) {
         handleLag( lag );
      }
   }

   void handleMlagState() {
      this->trace_.entry( "handleMlagStateOrPeerlink" );
      handleAllLags();
   }

   typename Library::Connection ofState_;
   typename Library::Connection ofPeerLink_;
   typename Library::Connection ofLinkStatus_;
};

} // namespace Bench::Usual
