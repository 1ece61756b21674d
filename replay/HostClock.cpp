#include "replay/HostClock.h"

#include "platform/Kel/VirtualTime.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace Replay {

namespace {

// Real time, read in steps: the reading stands still while statements run, and goes on, at each due
// moment in order, once real time has come as far. So a scenario plays as on the virtual clock;
// only the waits are real.
class RealHostClock final : public HostClock {
 public:
   explicit RealHostClock( std::function< void() > beforeEachWait )
       : beforeEachWait_( std::move( beforeEachWait ) ) {}

   const Vex::Clock & clock() const noexcept override { return reading_; }

   void advanceTo( Kel::TaskScheduler & scheduler, Vex::Seconds target ) override {
      for ( auto due = scheduler.nextDue(); due && *due <= target; due = scheduler.nextDue() ) {
         goTo( *due );
         scheduler.runDue();
      }
      goTo( target );
   }

 private:
   using Span = std::chrono::duration< double >;

   void goTo( Vex::Seconds moment ) {
      constexpr double atOnce = 3600; // so that no span is too long for the system
      for ( double left = moment.value() - passed(); left > 0; left = moment.value() - passed() ) {
         beforeEachWait_();
         std::this_thread::sleep_for( Span( std::min( left, atOnce ) ) );
      }
      reading_.jumpTo( std::max( reading_.now(), moment ) );
   }

   double passed() const { return Span( std::chrono::steady_clock::now() - start_ ).count(); }

   std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
   Vex::VirtualClock reading_;
   std::function< void() > beforeEachWait_;
};

} // namespace

void VirtualHostClock::advanceTo( Kel::TaskScheduler & scheduler, Vex::Seconds target ) {
   Kel::advanceTo( clock_, scheduler, target );
}

std::unique_ptr< HostClock > realHostClock( std::function< void() > beforeEachWait ) {
   return std::make_unique< RealHostClock >( std::move( beforeEachWait ) );
}

Vex::Seconds realTime() noexcept {
   using Span = std::chrono::duration< double >;
   return Vex::Seconds( Span( std::chrono::steady_clock::now().time_since_epoch() ).count() );
}

} // namespace Replay
