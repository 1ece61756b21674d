#include "platform/Vex/Clock.h"

#include "platform/Vex/Assert.h"

#include <atomic>
#include <chrono>

namespace Vex {

namespace {

std::atomic< const Clock * > current{ nullptr };

Seconds monotonicNow() noexcept {
   const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
   return Seconds( std::chrono::duration< double >( sinceBoot ).count() );
}

} // namespace

Clock::~Clock() = default;

void VirtualClock::jumpTo( Seconds time ) {
   VEX_ASSERT( time >= now_ );
   now_ = time;
}

Seconds now() noexcept {
   const Clock * const clock = current.load( std::memory_order_acquire );
   return clock != nullptr ? clock->now() : monotonicNow();
}

const Clock * clockIs( const Clock * clock ) noexcept {
   return current.exchange( clock, std::memory_order_acq_rel );
}

} // namespace Vex
