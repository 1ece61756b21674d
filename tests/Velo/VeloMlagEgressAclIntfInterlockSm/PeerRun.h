#pragma once

// Plays changes to the entities under a controller and to PeerModel side by side, and compares the
// two. What was played can be told as a scenario of interlock-replay.

#include "platform/Kel/VirtualTime.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/String.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerModel.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerNames.h"
#include "tests/support/Names.h"
#include "tests/support/PeerWorld.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Velo {

class PeerRun : public PeerNames {
 public:
   using String = Vex::String;
   using Mask = PeerModel::Mask;
   using Token = std::optional< std::uint32_t >;

   /// Nothing is there but an active MLAG with its peer link. A `told` run keeps its scenario.
   explicit PeerRun( bool told = false ) : told_( told ) {
      world_.lagGone( "PortChannel10" ).mlagIntfGone( "PortChannel10" );
      tell( "mlag state 3" );
      tell( "link Port-Channel1000 2" );
      tell( "mlag peer-link Port-Channel1000" );
   }

   const PeerModel & model() const { return model_; }
   const TestSupport::World & world() const { return world_; }
   const Vex::Ptr< TestSupport::ControllerSm > & controller() const { return controller_; }
   /// The scenario so far.
   const String & scenario() const { return scenario_; }

   // Each of these is one change, to both. A change that cannot be made here changes nothing.

   void start( bool asPeer ) {
      mode( asPeer );
      tell( "start controller" );
      model_.start( asPeer );
      controller_ = TestSupport::startController( world_ );
   }
   void lag( std::size_t at, Mask members ) {
      String statement = "lag " + lagName( at );
      auto im = Vex::make< Hardware::Lag::InitialMember >( lagId( at ) );
      for ( std::size_t m = 0; m < PeerModel::memberCount; ++m ) {
         if ( ( members & ( 1U << m ) ) != 0 ) {
            im->memberIs( memberId( at, m ), {} );
            statement += told_ ? ' ' + memberName( at, m ) : "";
         }
      }
      tell( statement );
      model_.lagIs( at, members );
      world_.hwLagConfig->initialMemberIs( im );
   }
   void noLag( std::size_t at ) {
      tell( "no lag " + lagName( at ) );
      model_.lagGone( at );
      world_.hwLagConfig->initialMemberDel( lagId( at ) );
   }
   void member( std::size_t at, std::size_t m, bool present ) {
      const auto im = world_.hwLagConfig->initialMember( lagId( at ) );
      if ( !im ) {
         return;
      }
      tell( no( present ) + "member " + lagName( at ) + ' ' + memberName( at, m ) );
      model_.memberIs( at, m, present );
      present ? im->memberIs( memberId( at, m ), {} ) : im->memberDel( memberId( at, m ) );
   }
   void acl( std::size_t at, std::size_t m, bool installed ) {
      tell( no( installed ) + "acl " + memberName( at, m ) + ' ' + lagName( at ) );
      model_.aclIs( at, m, installed );
      const Interface::Interlock::IntfFeature pair{ memberId( at, m ), lagId( at ) };
      installed ? world_.aclIntfFeatureStatus->intfIs( pair )
                : world_.aclIntfFeatureStatus->intfDel( pair );
   }
   /// peerState 0 is the entry that equals the default one.
   void mlagIntf( std::size_t at, unsigned peerState ) {
      tell( "mlag intf " + lagName( at ) +
            ( peerState == 0   ? " 0 0"
              : peerState == 1 ? " 2 1"
                               : " 2 2" ) );
      const Mlag::IntfStatus status =
         peerState == 0 ? Mlag::IntfStatus()
                        : Mlag::IntfStatus{ "", Mlag::IntfState::active,
                                            static_cast< Mlag::IntfState >( peerState ) };
      if ( !world_.mlagStatus->intfStatusHas( lagId( at ) ) ||
           world_.mlagStatus->intfStatus( lagId( at ) ) != status ) {
         model_.mlagIntfIs( at, peerState != 0, peerState == 2 );
      }
      world_.mlagStatus->intfStatusIs( lagId( at ), status );
   }
   void noMlagIntf( std::size_t at ) {
      tell( "no mlag intf " + lagName( at ) );
      if ( world_.mlagStatus->intfStatusHas( lagId( at ) ) ) {
         model_.mlagIntfIs( at, false, false );
      }
      world_.mlagStatus->intfStatusDel( lagId( at ) );
   }
   void mlagActive( bool active ) {
      tell( active ? "mlag state 3" : "mlag state 2" );
      model_.mlagActiveIs( active );
      world_.mlagStatus->mlagStateIs( active ? Mlag::State::primary : Mlag::State::connecting );
   }
   void response( std::size_t at, Token token ) {
      tell( no( token.has_value() ) + "response " + lagName( at ) +
            ( token ? ' ' + std::to_string( *token ) : "" ) );
      model_.responseIs( at, token );
      token ? world_.response->installResponseIs( lagId( at ), *token )
            : world_.response->installResponseDel( lagId( at ) );
   }
   void pass( double seconds ) {
      tell( "wait " + std::to_string( seconds ) );
      const double target = model_.now + seconds;
      model_.passTo( target );
      Kel::advanceTo( world_.clock, *world_.scheduler, Vex::Seconds( target ) );
   }
   /// The process is suspended: what fell due meanwhile runs at its end. No scenario can tell that.
   void suspend( double seconds ) {
      tell( "# the process was suspended: wait " + std::to_string( seconds ) );
      const double target = model_.now + seconds;
      model_.now = target;
      model_.passTo( target );
      world_.clock.jumpTo( Vex::Seconds( target ) );
      while ( world_.scheduler->runDue() != 0 ) {}
   }
   void mode( bool asPeer ) {
      tell( asPeer ? "mlag peer-interlock on" : "mlag peer-interlock off" );
      model_.modeIs( asPeer );
      world_.mlagStatus->peerInterlockIs( asPeer );
   }
   /// What an earlier owner left.
   void left( std::size_t at, std::size_t m ) {
      tell( "output egress-acl " + memberName( at, m ) + ' ' + lagName( at ) );
      model_.lags[ at ].admitted = static_cast< Mask >( model_.lags[ at ].admitted | 1U << m );
      world_.output->intfIs( { memberId( at, m ), lagId( at ) } );
   }
   void leftRequest( std::size_t at, std::uint32_t token ) {
      tell( "request " + lagName( at ) + ' ' + std::to_string( token ) );
      model_.lags[ at ].request = token;
      world_.request->installRequestIs( lagId( at ), token );
   }

   // Toggles, for worlds that are played through whole.

   void toggleMember( std::size_t at, std::size_t m ) {
      member( at, m, ( model_.lags[ at ].members & ( 1U << m ) ) == 0 );
   }
   void toggleAcl( std::size_t at, std::size_t m ) {
      acl( at, m, ( model_.lags[ at ].installed & ( 1U << m ) ) == 0 );
   }

   /// What differs from the model; empty when all is well.
   String difference() const {
      const auto & peer = controller_->peerInterlockSm();
      if ( static_cast< bool >( peer ) != model_.peerMode ||
           static_cast< bool >( controller_->basicInterlockSm() ) == model_.peerMode ) {
         return "the child";
      }
      std::size_t outputs = 0;
      std::size_t requests = 0;
      std::size_t states = 0;
      for ( std::size_t at = 0; at < lagCount; ++at ) {
         const PeerModel::Lag & lag = model_.lags[ at ];
         for ( std::size_t m = 0; m < PeerModel::memberCount; ++m ) {
            const bool admitted = ( lag.admitted & ( 1U << m ) ) != 0;
            outputs += admitted ? 1U : 0U;
            if ( world_.output->intfHas( { memberId( at, m ), lagId( at ) } ) != admitted ) {
               return memberName( at, m ) + ( admitted ? " is held" : " is admitted" );
            }
         }
         requests += lag.request ? 1U : 0U;
         const std::uint32_t * const token = world_.request->installRequest().find( lagId( at ) );
         if ( ( token != nullptr ? Token( *token ) : std::nullopt ) != lag.request ) {
            return "the request of " + lagName( at );
         }
         if ( peer ) {
            states += lag.state ? 1U : 0U;
            const LinkState * const state = peer->linkState().find( lagId( at ) );
            if ( ( state != nullptr ) != lag.state.has_value() ||
                 ( state != nullptr && static_cast< int >( *state ) != *lag.state ) ) {
               return "the link state of " + lagName( at );
            }
         }
      }
      if ( world_.output->intf().size() != outputs ||
           world_.request->installRequest().size() != requests ) {
         return "too much";
      }
      return peer ? differenceOfTimeouts( *peer, states ) : "";
   }

 private:
   static String no( bool present ) { return present ? "" : "no "; }
   void tell( const String & statement ) {
      if ( told_ ) {
         scenario_ += statement + '\n';
      }
   }

   String differenceOfTimeouts( const TestSupport::PeerSm & peer, std::size_t states ) const {
      if ( peer.linkState().size() != states ) {
         return "too many link states";
      }
      if ( peer.watermark() != model_.watermark ) {
         return "the watermark";
      }
      std::size_t at = 0;
      for ( const auto entry : peer.timer().entries() ) {
         if ( at == model_.deadlines.size() || entry.key != lagId( model_.deadlines[ at ].lag ) ||
              entry.value != Vex::Seconds( model_.deadlines[ at ].at ) ) {
            return "the deadlines: " + TestSupport::timersOf( peer );
         }
         ++at;
      }
      const bool armed = !model_.deadlines.empty();
      if ( at != model_.deadlines.size() ||
           peer.activeLag() != ( armed ? lagId( model_.deadlines.front().lag ) : Nodo::IntfId() ) ||
           peer.task()->due() !=
              ( armed ? Vex::Seconds( model_.due ) : Vex::Seconds::infinity() ) ) {
         return "what the task is armed for: " + TestSupport::timersOf( peer );
      }
      return TestSupport::brokenTimeouts( peer );
   }

   bool told_;
   String scenario_;

 protected: // for runs that know more changes
   TestSupport::World world_;
   PeerModel model_;
   Vex::Ptr< TestSupport::ControllerSm > controller_;
};

} // namespace Velo
