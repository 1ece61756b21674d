#pragma once

// The peer-coordinated egress-ACL interlock of this baseline.

#include "bench/baseline/usual/Base.h"
#include "bench/baseline/usual/LinkState.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <set>

namespace Bench::Usual {

template < class Library >
class Peer final : public EgressAcl< Library > {
 public:
   Peer( std::shared_ptr< const FeatureStatus< Library > > input,
         std::shared_ptr< const LagConfig< Library > > config,
         std::shared_ptr< const MlagStatus< Library > > mlag,
         std::shared_ptr< const Tokens< Library > > response,
         std::shared_ptr< Tokens< Library > > request,
         std::shared_ptr< FeatureStatus< Library > > output,
         Trace trace )
       : EgressAcl< Library >( std::move( input ),
                               std::move( config ),
                               std::move( mlag ),
                               std::move( output ),
                               std::move( trace ) ),
         response_( std::move( response ) ), request_( std::move( request ) ) {
      this->trace_.entry( "handleInitialized" );
      for ( const auto & [ lag, token ] : response_->entries() ) {
         watermark_ = std::max( watermark_, token );
      }
      for ( const auto & [ lag, im ] : this->config_->entries() ) {
         handleLag( lag );
      }
      ofResponse_ = Library::connect( response_->changed,
                                      [ this ]( Intf lag ) { handlePeerResponse( lag ); } );
   }

   /// Fails the LAGs whose time is over.
   void runDue( double now ) {
      while ( !deadlines_.empty() && deadlines_.begin()->first <= now ) {
         const Intf lag = deadlines_.begin()->second;
         this->trace_.entry( "handleTimeout lag : {}", Usual::nameOf( lag ) );
         linkStateIs( lag, LinkState::linkFail );
         this->trace_.failure( "Syslog: Timeout has occurred on lag {}", Usual::nameOf( lag ) );
         handleLag( lag );
      }
   }

 private:
   static double now() {
      return std::chrono::duration< double >( std::chrono::steady_clock::now().time_since_epoch() )
         .count();
   }
   bool lagActive( Intf lag ) const {
      const auto im = this->config_->get( lag );
      return im && !im->member.entries().empty();
   }
   LinkState linkState( Intf lag ) const {
      const auto found = linkState_.find( lag );
      return found != linkState_.end() ? found->second : LinkState::linkDown;
   }
   bool matched( Intf lag ) const {
      const std::uint32_t request = request_->get( lag );
      return request != 0 && response_->get( lag ) == request;
   }

   void handleMember( Intf member, Intf lag ) override {
      this->trace_.entry( "handleMember memberIntf : {} lag : {}", Usual::nameOf( member ),
                          Usual::nameOf( lag ) );
      handlePeerInterlockLag( lag );
      const Feature entry{ member, lag };
      if ( !this->lagMemberActive( member, lag ) ) {
         this->trace_.decision( "lag member is not active" );
         this->output_->del( entry );
         return;
      }
      decide( entry, lag );
   }

   void decide( const Feature & entry, Intf lag ) {
      if ( !this->mlag_->intfStatus.has( lag ) ) {
         this->trace_.decision( "lag is not an mlag intf" );
         this->output_->is( entry );
         return;
      }
      const LinkState state = linkState( lag );
      if ( state == LinkState::linkDown ) {
         this->trace_.decision( "lag is down, member cannot be added" );
         this->output_->del( entry );
         return;
      }
      if ( state == LinkState::linkRequesting ) {
         this->trace_.decision( "member is not ready to be added to lag" );
         this->output_->del( entry );
         return;
      }
      if ( state == LinkState::linkUp && shouldInstallEgressAcl( lag ) &&
           !this->input_->has( entry ) ) {
         this->trace_.decision( "mlag intf is 'linkUp' but local acl is not installed" );
         this->output_->del( entry );
         return;
      }
      this->trace_.decision(
         "acl criteria satisfied (or linkFail), allowing member to join the lag" );
      this->output_->is( entry );
   }

   bool shouldInstallEgressAcl( Intf lag ) const {
      this->trace_.entry( "shouldInstallEgressAcl lag : {}", Usual::nameOf( lag ) );
      return this->mlag_->intfStatus.get( lag ).peerState == 2;
   }

   void handlePeerInterlockLag( Intf lag ) {
      this->trace_.entry( "handlePeerInterlockLag lag : {}", Usual::nameOf( lag ) );
      const bool isMlagIntf = this->mlag_->intfStatus.has( lag );
      if ( !lagActive( lag ) ) {
         this->trace_.decision( "lag is not active" );
         this->trace_.decision( "Revoking install request for lag (no longer active)" );
         request_->del( lag );
         isMlagIntf ? updateLinkState( lag ) : linkStateDel( lag );
         return;
      }
      if ( !isMlagIntf ) {
         this->trace_.decision( "Revoking install request for lag (no longer mlag intf)" );
         request_->del( lag );
         linkStateDel( lag );
         return;
      }
      if ( !request_->has( lag ) ) {
         ++watermark_;
         this->trace_.decision( "Sending install request to peer with value {}", watermark_ );
         request_->is( lag, watermark_ );
      }
      updateLinkState( lag );
   }

   void updateLinkState( Intf lag ) {
      this->trace_.entry( "updateLinkState lag : {}", Usual::nameOf( lag ) );
      const LinkState from = linkState( lag );
      LinkState next = LinkState::linkRequesting;
      if ( !lagActive( lag ) ) {
         next = LinkState::linkDown;
      } else if ( matched( lag ) ) {
         next = LinkState::linkUp;
      } else if ( from == LinkState::linkFail ) {
         return;
      } else if ( from == LinkState::linkUp ) {
         next = LinkState::linkFail;
      }
      this->trace_.decision( "Transitioning link state from {} to {}", Usual::nameOf( from ),
                             Usual::nameOf( next ) );
      linkStateIs( lag, next );
   }

   void linkStateIs( Intf lag, LinkState state ) {
      const auto [ place, isNew ] = linkState_.try_emplace( lag, state );
      if ( isNew || std::exchange( place->second, state ) != state ) {
         handleLinkState( lag );
      }
   }
   void linkStateDel( Intf lag ) {
      if ( linkState_.erase( lag ) != 0 ) {
         handleLinkState( lag );
      }
   }

   void handleLinkState( Intf lag ) {
      this->trace_.entry( "handleLinkState lag : {}", Usual::nameOf( lag ) );
      const auto timer = timer_.find( lag );
      if ( linkState( lag ) == LinkState::linkRequesting ) {
         if ( timer == timer_.end() ) {
            const double time = now();
            this->trace_.decision( "Starting timeout for lag {} at time {}", Usual::nameOf( lag ),
                                   time );
            timer_.emplace( lag, time + 0.1 );
            deadlines_.emplace( time + 0.1, lag );
         }
         return;
      }
      this->trace_.decision( "Stopping timeout for lag {}", Usual::nameOf( lag ) );
      if ( timer != timer_.end() ) {
         deadlines_.erase( { timer->second, lag } );
         timer_.erase( timer );
      }
   }

   void handlePeerResponse( Intf lag ) {
      this->trace_.entry( "handlePeerResponse lag: {}", Usual::nameOf( lag ) );
      if ( matched( lag ) ) {
         handleLag( lag );
      } else if ( linkState( lag ) == LinkState::linkUp ) {
         linkStateIs( lag, LinkState::linkFail );
         this->trace_.failure(
            "Syslog: Lag {} is linkUp, but has not gotten a response from the peer yet",
            Usual::nameOf( lag ) );
         handleLag( lag );
      }
   }

   void handleMlagIntfStatus( Intf lag ) override {
      this->trace_.entry( "handleMlagIntfStatus mlagIntf: {}", Usual::nameOf( lag ) );
      handleLag( lag );
   }

   void handleLag( Intf lag ) {
      this->trace_.entry( "handleLag (top-level) lag : {}", Usual::nameOf( lag ) );
      if ( !lagActive( lag ) ) {
         handleLagInactive( lag );
         return;
      }
      const auto im = this->config_->get( lag );
      for ( const auto & [ member, type ] : im->member.entries() ) {
         handleMember( member, lag );
      }
   }

   void handleLagInactive( Intf lag ) {
      this->trace_.entry( "handleLagInactive lag : {}", Usual::nameOf( lag ) );
      handlePeerInterlockLag( lag );
      const auto entries = this->output_->intf(); // a copy: entries go on the way
      for ( const Feature & entry : entries ) {
         if ( entry.lag == lag ) {
            handleMember( entry.member, lag );
         }
      }
   }

   std::shared_ptr< const Tokens< Library > > response_;
   std::shared_ptr< Tokens< Library > > request_;
   std::uint32_t watermark_ = 1;
   std::map< Intf, LinkState > linkState_;
   std::map< Intf, double > timer_;
   std::set< std::pair< double, Intf > > deadlines_;
   typename Library::Connection ofResponse_;
};

} // namespace Bench::Usual
