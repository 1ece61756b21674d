#include "replay/SimulatedPeer.h"

#include "platform/Kel/TaskPriority.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Entity.h"

#include <algorithm>
#include <utility>

namespace Replay {

/// One answer's way: watches the task that runs when it arrives.
class SimulatedPeer::Arrival final : public Vex::ConstNotifiee< Kel::TimerTask > {
 public:
   explicit Arrival( SimulatedPeer & peer ) noexcept : peer_( peer ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::SimulatedPeer::Arrival" };
      return type;
   }
   void onAttribute( Attribute /* attribute */, const Key & /* key */ ) override {
      if ( notifier()->taskCurrentlyRunning() ) {
         peer_.deliverFirst();
      }
   }

 private:
   // Does not dangle: the peer holds the only reference, and a task that runs is the peer's first.
   SimulatedPeer & peer_;
};

SimulatedPeer::SimulatedPeer( Vex::Ptr< Kel::TaskScheduler > scheduler,
                              Vex::Ptr< Mlag::AclInstallResponse > responses,
                              SwitchEvents & events )
    : scheduler_( std::move( scheduler ) ), responses_( std::move( responses ) ),
      events_( events ) {}

SimulatedPeer::~SimulatedPeer() = default;

void SimulatedPeer::delayIs( std::optional< Vex::Seconds > delay ) {
   delay_ = delay;
   if ( !delay ) {
      underWay_.clear();
   }
}

void SimulatedPeer::requestChanged( Nodo::IntfId lag, std::optional< Token > token ) {
   if ( !delay_ ) {
      return;
   }
   const Vex::Seconds due = Vex::now() + *delay_;
   lastDue_ = underWay_.empty() ? due : std::max( due, lastDue_ );
   auto task = Vex::make< Kel::TimerTask >( scheduler_, Kel::TaskPriority( 0 ), "simulated peer" );
   task->scheduleTaskAt( lastDue_ );
   auto arrival = Vex::make< Arrival >( *this );
   arrival->notifierIs( std::move( task ) );
   underWay_.push_back( { std::move( arrival ), lag, token } );
}

void SimulatedPeer::deliverFirst() {
   // Due in order and scheduled in order: the task that runs is that of the first.
   const Answer answer = std::move( underWay_.front() );
   underWay_.pop_front();
   events_.response( answer.lag, answer.token );
   if ( answer.token ) {
      responses_->installResponseIs( answer.lag, *answer.token );
   } else {
      responses_->installResponseDel( answer.lag );
   }
}

} // namespace Replay
