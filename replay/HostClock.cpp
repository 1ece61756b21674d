#include "replay/HostClock.h"

#include "platform/Kel/VirtualTime.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace Replay {

namespace {

// Monotonic seconds since it was made.
class RealClock final : public Vex::Clock {
 public:
   Vex::Seconds now() const noexcept override {
      const std::chrono::duration< double > passed = std::chrono::steady_clock::now() - start_;
      return Vex::Seconds( passed.count() );
   }

 private:
   std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

class RealHostClock final : public HostClock {
 public:
   explicit RealHostClock( std::function< void() > beforeEachWait )
       : beforeEachWait_( std::move( beforeEachWait ) ) {}

   const Vex::Clock & clock() const noexcept override { return clock_; }

   void advanceTo( Kel::TaskScheduler & scheduler, Vex::Seconds target ) override {
      for ( ;; ) {
         const Vex::Seconds now = clock_.now();
         const Vex::Seconds due = scheduler.nextDue().value_or( Vex::Seconds::infinity() );
         const Vex::Seconds next = std::min( due, target );
         if ( next > now ) {
            waitFor( next - now );
         } else if ( due <= target ) {
            scheduler.runDue();
         } else {
            return;
         }
      }
   }

 private:
   void waitFor( Vex::Seconds span ) {
      constexpr double atOnce = 3600; // so that no span is too long for the system
      beforeEachWait_();
      std::this_thread::sleep_for(
         std::chrono::duration< double >( std::min( span.value(), atOnce ) ) );
   }

   RealClock clock_;
   std::function< void() > beforeEachWait_;
};

} // namespace

void VirtualHostClock::advanceTo( Kel::TaskScheduler & scheduler, Vex::Seconds target ) {
   Kel::advanceTo( clock_, scheduler, target );
}

std::unique_ptr< HostClock > realHostClock( std::function< void() > beforeEachWait ) {
   return std::make_unique< RealHostClock >( std::move( beforeEachWait ) );
}

} // namespace Replay
