#pragma once

// The framework's clock: the only source of time. Monotonic: a jump of the wall clock changes
// nothing. A host that owns time itself (tests, the replay tool) puts its own clock in its place.
//
// Ownership: a clock is owned by the host and outlives its use.
// Threading: now() may be called from any thread; clocks are exchanged while nobody reads them.

#include "platform/Vex/Export.h"
#include "platform/Vex/Seconds.h"

namespace Vex {

class VEX_EXPORT Clock {
 public:
   Clock() = default;
   Clock( const Clock & ) = delete;
   Clock & operator=( const Clock & ) = delete;
   Clock( Clock && ) = delete;
   Clock & operator=( Clock && ) = delete;
   virtual ~Clock();

   /// Seconds since the clock's origin; never goes back.
   virtual Seconds now() const noexcept = 0;
};

/// A clock that stands still until it is told to move.
class VEX_EXPORT VirtualClock final : public Clock {
 public:
   explicit VirtualClock( Seconds start = Seconds( 0 ) ) noexcept : now_( start ) {}

   Seconds now() const noexcept override { return now_; }

   /// Sets the time at one stroke, without stopping on the way; asserts that it does not go back.
   void jumpTo( Seconds time );

 private:
   Seconds now_;
};

/// The current time on the framework's clock.
VEX_EXPORT Seconds now() noexcept;

/// Puts `clock` in place of the current one and returns that; null stands for the built-in
/// monotonic clock, both ways.
VEX_EXPORT const Clock * clockIs( const Clock * clock ) noexcept;

/// Puts a clock in place for as long as the scope lives.
class VEX_EXPORT ClockScope {
 public:
   explicit ClockScope( const Clock & clock ) noexcept : before_( clockIs( &clock ) ) {}
   ClockScope( const ClockScope & ) = delete;
   ClockScope & operator=( const ClockScope & ) = delete;
   ClockScope( ClockScope && ) = delete;
   ClockScope & operator=( ClockScope && ) = delete;
   ~ClockScope() { clockIs( before_ ); }

 private:
   const Clock * before_;
};

} // namespace Vex
