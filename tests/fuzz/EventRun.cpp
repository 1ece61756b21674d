#include "tests/fuzz/EventRun.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Fuzz {

using Velo::Model::add;
using Velo::Model::remove;

EventRun::EventRun() : links_{ world_.peerLinkEntity() } {
   basicModel_.mlagState = 3;
   basicModel_.peerLink = { { "Port-Channel1000", 2 } };
   deprecatedModel_.mlagState = 3;
   deprecatedModel_.links = { { true, 2 } };
   deprecatedModel_.peerLink = 0;
}

std::string EventRun::event( Bytes & bytes ) {
   using Event = std::string ( EventRun::* )( Bytes & );
   constexpr std::array< Event, 32 > events{ &EventRun::newSet,
                                             &EventRun::newSet,
                                             &EventRun::setGone,
                                             &EventRun::memberOfLag,
                                             &EventRun::memberOfLag,
                                             &EventRun::memberOfLag,
                                             &EventRun::memberOfLag,
                                             &EventRun::memberOfAnySet,
                                             &EventRun::acl,
                                             &EventRun::acl,
                                             &EventRun::acl,
                                             &EventRun::mlagIntf,
                                             &EventRun::mlagIntf,
                                             &EventRun::mlagIntf,
                                             &EventRun::mlagState,
                                             &EventRun::peerLink,
                                             &EventRun::linkStatus,
                                             &EventRun::answer,
                                             &EventRun::answer,
                                             &EventRun::answer,
                                             &EventRun::timePasses,
                                             &EventRun::timePasses,
                                             &EventRun::mode,
                                             &EventRun::switchport,
                                             &EventRun::mapping,
                                             &EventRun::mapping,
                                             &EventRun::vlanReady,
                                             &EventRun::vlanReady,
                                             &EventRun::startOrStop,
                                             &EventRun::startOrStopController,
                                             &EventRun::somebodyWrites,
                                             &EventRun::marks };
   return ( this->*events[ bytes.below( events.size() ) ] )( bytes );
}

EventRun::Port EventRun::port( Bytes & bytes ) {
   const std::size_t both = bytes.below( lagCount * Velo::PeerModel::memberCount );
   return { both % lagCount, both / lagCount };
}

EventRun::Pair EventRun::pairOf( Port port ) {
   return { memberName( port.lag, port.member ), lagName( port.lag ) };
}

Interface::Interlock::IntfFeature EventRun::featureOf( Port port ) {
   return { memberId( port.lag, port.member ), lagId( port.lag ) };
}

// ---- MLAG and the peer -------------------------------------------------------------------------

std::string EventRun::mlagIntf( Bytes & bytes ) {
   const std::size_t at = bytes.below( lagCount );
   const auto what = static_cast< unsigned >( bytes.below( 6 ) );
   const unsigned peerState = what < 2 ? what : 2; // of an entry; 0: it equals the default one
   const bool there = what != 5;
   const std::string lag = lagName( at );
   const bool had = world_.mlagStatus->intfStatusHas( lagId( at ) );
   const Mlag::IntfStatus before = world_.mlagStatus->intfStatus( lagId( at ) );
   there ? PeerRun::mlagIntf( at, peerState ) : noMlagIntf( at );
   const bool has = world_.mlagStatus->intfStatusHas( lagId( at ) );
   const bool changed = had != has || before != world_.mlagStatus->intfStatus( lagId( at ) );
   if ( there ) {
      basicModel_.peerStateIs( lag, peerState == 0 ? -1 : static_cast< int >( peerState ) );
      deprecatedModel_.intfStatus[ lag ] = { peerState != 0, peerState };
   } else {
      basicModel_.peerStateIs( lag, std::nullopt );
      deprecatedModel_.intfStatus.erase( lag );
   }
   if ( changed && deprecated_ ) {
      deprecatedModel_.intfStatusChanged( lag );
   }
   return lag +
          ( there ? " has peer state " + std::to_string( peerState ) : " is no MLAG interface" );
}

// What the basic child of the controller asks.
bool EventRun::mlagActive() const {
   const auto & link = world_.mlagStatus->peerLink();
   return Mlag::isActive( world_.mlagStatus->mlagState() ) && link &&
          link->intfId() != Nodo::IntfId() && link->linkStatus() == Interface::LinkStatus::up;
}

std::string EventRun::mlagState( Bytes & bytes ) {
   const auto number = static_cast< unsigned >( bytes.below( 6 ) );
   const auto state = static_cast< Mlag::State >( number );
   const bool changed = world_.mlagStatus->mlagState() != state;
   world_.mlagStatus->mlagStateIs( state );
   basicModel_.mlagStateIs( static_cast< int >( number ) );
   deprecatedModel_.mlagState = number;
   if ( changed ) {
      model_.mlagChanged( mlagActive() );
      if ( deprecated_ ) {
         deprecatedModel_.mlagStateChanged();
      }
   }
   return "MLAG state " + std::to_string( number );
}

std::string EventRun::peerLink( Bytes & bytes ) {
   const std::size_t what = bytes.below( 8 ); // 0: none; 1, 2: a new one; else one there was
   const std::size_t which = bytes.next();
   Vex::Ptr< Interface::EthIntfStatus > link;
   Id id = which % links_.size();
   if ( what == 1 || what == 2 ) {
      const bool named = what == 2;
      id = links_.size();
      links_.push_back( Vex::make< Interface::EthIntfStatus >(
         named ? TestSupport::intf( "Port-Channel1000" ) : Nodo::IntfId() ) );
      links_.back()->linkStatusIs( Interface::LinkStatus::up );
      deprecatedModel_.links.push_back( { named, 2 } );
   }
   if ( what != 0 ) {
      link = links_[ id ];
   }
   const bool changed = world_.mlagStatus->peerLink() != link;
   world_.mlagStatus->peerLinkIs( link );
   deprecatedModel_.peerLink = link ? std::optional( id ) : std::nullopt;
   if ( changed ) {
      if ( link ) {
         basicModel_.peerLinkIs( link->intfId().stringValue(),
                                 static_cast< int >( link->linkStatus() ) );
      } else {
         basicModel_.peerLinkGone();
      }
      model_.mlagChanged( mlagActive() );
      if ( deprecated_ ) {
         deprecatedModel_.peerLinkChanged();
      }
   }
   return link ? "peer link " + std::to_string( id ) : "no peer link";
}

std::string EventRun::linkStatus( Bytes & bytes ) {
   const std::size_t which = bytes.next();
   const auto number = static_cast< unsigned >( bytes.below( 4 ) );
   const Id id = which % links_.size();
   auto & link = *links_[ id ];
   const auto status = static_cast< Interface::LinkStatus >( number );
   const bool changed = link.linkStatus() != status;
   link.linkStatusIs( status );
   deprecatedModel_.links[ id ].status = number;
   if ( world_.mlagStatus->peerLink().get() == &link ) {
      basicModel_.linkStatusIs( static_cast< int >( number ) );
      if ( changed ) {
         model_.mlagChanged( mlagActive() );
      }
   }
   if ( changed && deprecated_ ) {
      deprecatedModel_.linkStatusChanged( id );
   }
   return "link " + std::to_string( id ) + " has status " + std::to_string( number );
}

std::string EventRun::answer( Bytes & bytes ) {
   const std::size_t at = bytes.below( lagCount );
   const std::size_t what = bytes.below( 16 );
   // The echo of the request mostly; else none, or a token of interest.
   constexpr std::array< std::uint32_t, 7 > tokens{ 0, 1, 2, 3, 77, 0xFFFFFFFE, 0xFFFFFFFF };
   Token token = model_.lags[ at ].request.value_or( 0 );
   if ( what < tokens.size() ) {
      token = tokens[ what ];
   } else if ( what == tokens.size() ) {
      token.reset();
   }
   response( at, token );
   return "answer for " + lagName( at ) + ( token ? ' ' + std::to_string( *token ) : " goes" );
}

std::string EventRun::timePasses( Bytes & bytes ) {
   const std::size_t what = bytes.next();
   const double seconds = static_cast< double >( what % 64 ) / 500; // to 0.126 s
   what < 192 ? pass( seconds ) : suspend( seconds );
   return ( what < 192 ? "wait " : "suspended for " ) + std::to_string( seconds );
}

std::string EventRun::mode( Bytes & bytes ) {
   const bool asPeer = bytes.below( 4 ) != 0;
   PeerRun::mode( asPeer );
   return asPeer ? "peer interlock on" : "peer interlock off";
}

// ---- The interlocks themselves -----------------------------------------------------------------

void EventRun::begin( std::uint8_t running ) {
   if ( ( running & 1U ) != 0 ) {
      startBasic();
   }
   if ( ( running & 2U ) != 0 ) {
      startDeprecated();
   }
   if ( ( running & 4U ) != 0 ) {
      startVlan();
   }
   if ( ( running & 8U ) != 0 ) {
      start( ( running & 16U ) != 0 );
   }
}

void EventRun::startBasic() {
   basicModel_.start();
   basic_ = Velo::MlagEgressAclIntfInterlockSm::MlagEgressAclIntfInterlockSmIs(
      world_.aclIntfFeatureStatus, world_.hwLagConfig, world_.mlagStatus, basicOutput_ );
}

void EventRun::startDeprecated() {
   deprecatedModel_.started();
   using Sm = Velo::DeprecatedMlagEgressAclIntfInterlockSm;
   deprecated_ = Sm::DeprecatedMlagEgressAclIntfInterlockSmIs(
      world_.aclIntfFeatureStatus, world_.hwLagConfig, world_.mlagStatus, deprecatedOutput_ );
}

void EventRun::startVlan() {
   vlanModel_.started();
   vlan_ = Velo::VlanXlateIntfInterlockSm::VlanXlateIntfInterlockSmIs(
      vlanInput_, world_.hwLagConfig, world_.bridgingConfig, vlanOutput_ );
}

std::string EventRun::startOrStop( Bytes & bytes ) {
   const bool starts = bytes.below( 4 ) != 0;
   switch ( bytes.below( 3 ) ) {
   case 0:
      basic_.release();
      basicModel_.running = false;
      if ( starts ) {
         startBasic();
      }
      return starts ? "start basic" : "stop basic";
   case 1:
      deprecated_.release();
      if ( starts ) {
         startDeprecated();
      }
      return starts ? "start deprecated" : "stop deprecated";
   default:
      vlan_.release();
      if ( starts ) {
         startVlan();
      }
      return starts ? "start vlan-xlate" : "stop vlan-xlate";
   }
}

std::string EventRun::startOrStopController( Bytes & bytes ) {
   const std::size_t what = bytes.below( 8 );
   controller_.release();
   model_.stop();
   if ( what == 0 ) {
      return "stop controller";
   }
   if ( what == 1 ) { // what a controller of another process left
      const std::size_t at = bytes.below( lagCount );
      leftRequest( at, static_cast< std::uint32_t >( bytes.below( 8 ) ) );
   }
   const bool asPeer = what < 6;
   start( asPeer );
   return asPeer ? "start controller, peer" : "start controller, basic";
}

std::string EventRun::somebodyWrites( Bytes & bytes ) {
   const auto owner = static_cast< Owner >( bytes.below( 4 ) );
   const Port which = port( bytes );
   const bool adds = bytes.coin();
   const Pair pair = pairOf( which );
   const auto feature = featureOf( which );
   const auto write = [ adds, feature ]( IntfFeatureStatus & output ) {
      adds ? output.intfIs( feature ) : output.intfDel( feature );
   };
   const auto writeModel = [ adds, &pair ]( std::vector< Pair > & output ) {
      adds ? add( output, pair ) : remove( output, pair );
   };
   switch ( owner ) {
   case Owner::controller: {
      auto & admitted = model_.lags[ which.lag ].admitted;
      const auto bit = static_cast< Mask >( 1U << which.member );
      admitted = static_cast< Mask >( adds ? admitted | bit : admitted & ~bit );
      write( *world_.output );
      break;
   }
   case Owner::basic:
      adds ? static_cast< void >( basicModel_.verdicts.insert( pair ) )
           : static_cast< void >( basicModel_.verdicts.erase( pair ) );
      write( *basicOutput_ );
      break;
   case Owner::deprecated:
      writeModel( deprecatedModel_.output );
      write( *deprecatedOutput_ );
      break;
   case Owner::vlanXlate:
      writeModel( vlanModel_.output );
      write( *vlanOutput_ );
      break;
   }
   return "somebody writes output " + std::to_string( static_cast< int >( owner ) ) + ", " +
          ( adds ? "adds " : "removes " ) + pair.first;
}

// Notifications and the mark of deletion, of those interlocks whose models know of them.
std::string EventRun::marks( Bytes & bytes ) {
   const std::size_t what = bytes.below( 3 );
   const bool on = bytes.coin();
   if ( what == 0 && deprecated_ ) {
      deprecatedModel_.notificationsActive( on );
      deprecated_->hasNotificationActiveIs( on );
   } else if ( what == 1 && deprecated_ ) {
      deprecatedModel_.markedForDeletion( on );
      deprecated_->vexDoZombieReactors( on );
   } else if ( what == 2 && vlan_ ) {
      vlanModel_.markedForDeletion( on );
      vlan_->vexDoZombieReactors( on );
   }
   return "marks " + std::to_string( what ) + ( on ? " on" : " off" );
}

// ---- Comparison --------------------------------------------------------------------------------

namespace {

// In the order of the output.
template < class Pairs >
bool agree( const Interface::Interlock::IntfFeatureStatus & output, const Pairs & pairs ) {
   auto at = pairs.begin();
   for ( const auto feature : output.intf().keys() ) {
      if ( at == pairs.end() || feature.member.stringValue() != at->first ||
           feature.lag.stringValue() != at->second ) {
         return false;
      }
      ++at;
   }
   return at == pairs.end();
}

} // namespace

std::string EventRun::difference() const {
   const std::string outputs = differenceOfOutputs();
   return !outputs.empty() ? outputs : controller_ ? PeerRun::difference() : "";
}

std::string EventRun::differenceOfOutputs() const {
   if ( basicOutput_->intf().size() != basicModel_.verdicts.size() ) {
      return "the size of the basic output";
   }
   for ( const auto feature : basicOutput_->intf().keys() ) {
      if ( !basicModel_.verdicts.contains(
              { feature.member.stringValue(), feature.lag.stringValue() } ) ) {
         return "the basic output admits " + feature.member.stringValue();
      }
   }
   if ( !agree( *deprecatedOutput_, deprecatedModel_.output ) ) {
      return "the deprecated output, which should be " + deprecatedModel_.outputText();
   }
   if ( !agree( *vlanOutput_, vlanModel_.output ) ) {
      return "the VLAN output, which should be " + vlanModel_.outputText();
   }
   return "";
}

} // namespace Fuzz
