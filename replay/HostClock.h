#pragma once

// The time in which a scenario runs, virtual or real. It starts at 0.

#include "platform/Kel/TaskScheduler.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Seconds.h"

#include <functional>
#include <memory>

namespace Replay {

class HostClock {
 public:
   HostClock() = default;
   HostClock( const HostClock & ) = delete;
   HostClock & operator=( const HostClock & ) = delete;
   HostClock( HostClock && ) = delete;
   HostClock & operator=( HostClock && ) = delete;
   virtual ~HostClock() = default;

   /// What the framework is to read.
   virtual const Vex::Clock & clock() const noexcept = 0;

   /// Goes to `target`, which is not in the past, and runs what falls due on the way, at each due
   /// moment in order; what is due at exactly `target` runs. Must be the framework's current clock.
   virtual void advanceTo( Kel::TaskScheduler & scheduler, Vex::Seconds target ) = 0;
};

/// Time goes at once: the same output on every machine.
class VirtualHostClock final : public HostClock {
 public:
   const Vex::Clock & clock() const noexcept override { return clock_; }
   void advanceTo( Kel::TaskScheduler & scheduler, Vex::Seconds target ) override;

 private:
   Vex::VirtualClock clock_;
};

/// Time passes, too. A moment is reached late by what the machine needs, never early, but reads as
/// that moment: the same output as in virtual time.
std::unique_ptr< HostClock > realHostClock( std::function< void() > beforeEachWait );

/// Real time since a moment in the past, the same one for the whole process. For what people at a
/// terminal are shown; nothing of a run may depend on it.
Vex::Seconds realTime() noexcept;

} // namespace Replay
