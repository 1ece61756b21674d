// The time-outs: a deadline for each requesting LAG, and one timer task, armed for one of them.
//
// All deadlines are `delay` after the moment at which they were set, so that a new one is never
// earlier than the one the task is armed for: the task is re-armed only when that one goes.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfPeerInterlockSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/Trace.h"
#include "platform/Vex/Assert.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/ScopedValue.h"

namespace Velo {

using EgressAcl::duplog;

// Whether notifications are active is not asked: the task runs once, and a time-out that were not
// heard would leave its LAG requesting, and every other one without a time-out, for good.
void MlagEgressAclIntfPeerInterlockSm::VexTask::onAttribute( Attribute attribute,
                                                             const Vex::NoKey & /* key */ ) {
   const auto sm = ownerUnlessZombie();
   if ( !sm ) {
      return;
   }
   switch ( attribute ) {
   case Attribute::taskCurrentlyRunning:
      sm->handleTimeout();
      break;
   }
}

void MlagEgressAclIntfPeerInterlockSm::timerIs( Nodo::IntfId lag, Vex::Seconds deadline ) {
   if ( timer_.put( lag, deadline ) ) {
      handleTimer( lag );
   }
}

void MlagEgressAclIntfPeerInterlockSm::timerDel( Nodo::IntfId lag ) {
   if ( timer_.erase( lag ) ) {
      handleTimer( lag );
   }
}

void MlagEgressAclIntfPeerInterlockSm::timerDelAll() {
   for ( const Nodo::IntfId lag : timer_.keys() ) {
      timerDel( lag );
   }
}

void MlagEgressAclIntfPeerInterlockSm::taskIs( const Vex::Ptr< Kel::TaskScheduler > & scheduler,
                                               Kel::TaskPriority priority,
                                               const Vex::String & name ) {
   task_ = Vex::make< Kel::TimerTask >( scheduler, priority, name );
   vexTask_.create( task_ );
}

void MlagEgressAclIntfPeerInterlockSm::taskDel() {
   vexTask_.del();
   task_.release();
}

void MlagEgressAclIntfPeerInterlockSm::scheduleTask( Vex::Seconds after ) {
   VEX_ASSERT( task_ );
   task_->scheduleTaskDelay( after );
}

void MlagEgressAclIntfPeerInterlockSm::handleTimer( Nodo::IntfId lag ) {
   duplog( Vex::at< 0 >(), smName(), "handleTimer", " lag : ", lag );
   if ( const Vex::Seconds * const deadline = timer_.find( lag ) ) {
      if ( activeLag_ == Nodo::IntfId() ) {
         activeLag_ = lag;
         scheduleTask( *deadline - Vex::now() );
      }
      return;
   }
   if ( lag == activeLag_ ) {
      resetTimer();
   }
}

void MlagEgressAclIntfPeerInterlockSm::resetTimer() {
   duplog( Vex::at< 0 >(), smName(), "resetTimer" );
   const Kel::Deadlines::Entry earliest = timer_.earliest();
   activeLag_ = earliest.key;
   scheduleTask( earliest.value - Vex::now() );
}

void MlagEgressAclIntfPeerInterlockSm::handleTimeout() {
   if ( !task_ || !task_->taskCurrentlyRunning() ) {
      return; // the task tells as well that it has run
   }
   const Nodo::IntfId lag = activeLag_;
   duplog( Vex::at< 0 >(), smName(), "handleTimeout", " lag : ", lag );
   const auto next = nextLinkState( linkState( lag ), LinkEvent::timeout );
   if ( !next ) {
      return;
   }
   linkStateIs( lag, *next );
   duplog( Vex::at< 4 >(), "Syslog: Timeout has occurred on lag ", lag );
   handleLag( lag );
   resetTimer();
}

void MlagEgressAclIntfPeerInterlockSm::doCleanup() {
   duplog( Vex::at< 0 >(), smName(), "doCleanup" );
   // Whoever hears of a withdrawal may change an input; the requests that this would set off would
   // have no owner.
   const Vex::ScopedValue cleaningUp( cleaningUp_, true );
   scheduleTask( Vex::Seconds::infinity() );
   try {
      for ( const Nodo::IntfId lag : aclRequestToPeer_->installRequest().keys() ) {
         aclRequestToPeer_->installRequestDel( lag );
      }
   } catch ( ... ) {
      resetTimer(); // this life goes on, and so do its deadlines
      throw;
   }
   linkStateDelAll();
}

} // namespace Velo
