#include "platform/Kel/VirtualTime.h"

#include "platform/Vex/Assert.h"
#include "platform/Vex/Ptr.h"

#include <algorithm>

namespace Kel {

void advanceTo( Vex::VirtualClock & clock, TaskScheduler & scheduler, Vex::Seconds target ) {
   VEX_ASSERT( target >= clock.now() );
   const Vex::Ptr< TaskScheduler > alive( &scheduler );
   for ( auto due = scheduler.nextDue(); due && *due <= target; due = scheduler.nextDue() ) {
      clock.jumpTo( std::max( clock.now(), *due ) ); // a past deadline runs now
      scheduler.runDue();
   }
   clock.jumpTo( target );
}

} // namespace Kel
