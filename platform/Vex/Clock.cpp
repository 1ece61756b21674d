#include "platform/Vex/Clock.h"

#include "platform/Vex/Assert.h"
#include "platform/Vex/EventClock.h"

#include <atomic>
#include <ctime>

namespace Vex {

namespace Detail {
EventClock eventClock; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)
} // namespace Detail

namespace {

std::atomic< const Clock * > current{ nullptr };

Seconds monotonicNow() noexcept {
   timespec time{};
   clock_gettime( CLOCK_MONOTONIC, &time );
   // Both parts are rounded to the nearest, and so is the sum: it never goes back.
   return Seconds( static_cast< double >( time.tv_sec ) +
                   1e-9 * static_cast< double >( time.tv_nsec ) );
}

} // namespace

Clock::~Clock() = default;

void VirtualClock::jumpTo( Seconds time ) {
   VEX_ASSERT( time >= now_ );
   now_ = time;
   Detail::forgetEventTime();
}

Seconds now() noexcept {
   const Clock * const clock = current.load( std::memory_order_acquire );
   return clock != nullptr ? clock->now() : monotonicNow();
}

const Clock * clockIs( const Clock * clock ) noexcept {
   Detail::forgetEventTime();
   return current.exchange( clock, std::memory_order_acq_rel );
}

Seconds Detail::readEventClock() noexcept {
   const Seconds time = now();
   if ( eventClock.notifications == Notifications::underWay ) {
      eventClock.time = time;
      eventClock.left = callersPerClockRead - 1;
   }
   return time;
}

} // namespace Vex
