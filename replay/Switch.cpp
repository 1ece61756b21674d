#include "replay/Switch.h"

#include "platform/Vex/Entity.h"
#include "replay/ScenarioError.h"
#include "replay/Text.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Replay {

/// Tells of each verdict, whoever wrote it.
class Switch::OutputWatcher final
    : public Vex::ConstNotifiee< Interface::Interlock::IntfFeatureStatus > {
 public:
   OutputWatcher( Interlock interlock, SwitchEvents & events ) noexcept
       : interlock_( interlock ), events_( events ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Switch::OutputWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Pair & pair ) override {
      switch ( attribute ) {
      case Attribute::intf:
         events_.verdict( interlock_, pair, notifier()->intfHas( pair ) );
         break;
      }
   }

 private:
   Interlock interlock_;
   SwitchEvents & events_;
};

/// Tells of each change of an install request, and carries it to the simulated peer.
class Switch::RequestWatcher final : public Vex::ConstNotifiee< Mlag::AclInstallRequest > {
 public:
   RequestWatcher( SwitchEvents & events, SimulatedPeer & peer ) noexcept
       : events_( events ), peer_( peer ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Switch::RequestWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override {
      switch ( attribute ) {
      case Attribute::installRequest:
         const Token * const found = notifier()->installRequest().find( lag );
         const auto token = found != nullptr ? std::optional( *found ) : std::nullopt;
         events_.request( lag, token );
         peer_.requestChanged( lag, token );
         break;
      }
   }

 private:
   SwitchEvents & events_;
   SimulatedPeer & peer_; // outlives us: declared before us in the switch
};

Switch::Switch( Vex::Ptr< Kel::TaskScheduler > scheduler, SwitchEvents & events )
    : entities_( std::move( scheduler ) ),
      peer_( entities_.scheduler, entities_.aclResponseFromPeer, events ),
      egressAclWatcher_( Vex::make< OutputWatcher >( Interlock::egressAcl, events ) ),
      vlanXlateWatcher_( Vex::make< OutputWatcher >( Interlock::vlanXlate, events ) ),
      requestWatcher_( Vex::make< RequestWatcher >( events, peer_ ) ) {
   egressAclWatcher_->notifierIs( entities_.egressAclOutput );
   vlanXlateWatcher_->notifierIs( entities_.vlanOutput );
   requestWatcher_->notifierIs( entities_.aclRequestToPeer );
}

Switch::~Switch() = default;

// ---- What is so ---------------------------------------------------------------------------------

bool Switch::isMember( const Pair & pair ) const {
   const auto initialMember = entities_.hwLagConfig->initialMember( pair.lag );
   return initialMember && initialMember->memberHas( pair.member );
}

bool Switch::isHeldBy( Interlock interlock, const Pair & pair ) const {
   return interlocks_.runs( interlock ) && !entities_.output( interlock )->intfHas( pair );
}

bool Switch::isJoined( const Pair & pair ) const {
   return isMember( pair ) && std::ranges::none_of( interlocks, [ & ]( Interlock interlock ) {
             return isHeldBy( interlock, pair );
          } );
}

// ---- Running the interlocks ---------------------------------------------------------------------

void Switch::apply( const Start & start ) {
   interlocks_.start( *start.machine, entities_ );
}

void Switch::apply( const Stop & stop ) {
   interlocks_.stop( stop.interlock );
}

void Switch::apply( const Restart & restart ) {
   interlocks_.restart( restart.interlock, entities_ );
}

void Switch::apply( const PeerEcho & echo ) {
   peer_.delayIs( echo.delay );
}

} // namespace Replay
