#pragma once

// The time of the event under way, for records of what happens: one read of the clock serves a
// whole notification, because reading it costs more than writing a record.
//
//    const Vex::Seconds time = Vex::eventTime();
//
// Within the outermost notification under way (Entity.h) the first caller reads the framework's
// clock and the following ones get the same time; every 16th reads it anew, so that time does not
// stand still in a long pass. Outside of a notification, and in the thread-safe pointer mode, every
// caller reads it. The end of the outermost notification, clockIs() and a jump of a virtual clock
// end what is kept. So the time is never later than now(), and at most 15 calls old; who computes
// with time, as schedulers and time-outs do, takes now().
//
// Ownership: nothing is owned.
// Threading: in the plain mode on the one thread that owns the objects; in the thread-safe mode on
// any.

#include "platform/Vex/Export.h"
#include "platform/Vex/Seconds.h"

#include <cstdint>

namespace Vex {

/// How many callers share one read of the clock.
inline constexpr std::uint32_t callersPerClockRead = 16;

namespace Detail {

enum class Notifications : std::uint8_t {
   none,
   underWay,
   notCounted, // in the thread-safe mode
};

struct EventClock {
   Seconds time;
   std::uint32_t left = 0; // callers that still get this time; 0 in the thread-safe mode, always
   Notifications notifications = Notifications::none;
};

// Read for every record, so it is no function.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
VEX_EXPORT extern EventClock eventClock;

VEX_EXPORT Seconds readEventClock() noexcept;

/// The time that is kept is of no use any more.
inline void forgetEventTime() noexcept {
   if ( eventClock.left != 0 ) { // no thread writes in the thread-safe mode
      eventClock.left = 0;
   }
}

} // namespace Detail

/// The time of the event is known without reading the clock. Then this is the plain mode, too.
inline bool eventTimeIsKept() noexcept {
   return Detail::eventClock.left != 0;
}
/// The time that is kept; takes one of the calls that it lasts for.
inline Seconds keptEventTime() noexcept {
   --Detail::eventClock.left;
   return Detail::eventClock.time;
}

inline Seconds eventTime() noexcept {
   return eventTimeIsKept() ? keptEventTime() : Detail::readEventClock();
}

/// A notification under way. Nested ones change nothing, so that the end waits for nothing that was
/// counted.
class EventScope {
 public:
   EventScope() noexcept
       : outermost_( Detail::eventClock.notifications == Detail::Notifications::none ) {
      if ( outermost_ ) {
         Detail::eventClock.notifications = Detail::Notifications::underWay;
      }
   }
   EventScope( const EventScope & ) = delete;
   EventScope & operator=( const EventScope & ) = delete;
   EventScope( EventScope && ) = delete;
   EventScope & operator=( EventScope && ) = delete;
   ~EventScope() {
      if ( outermost_ ) {
         Detail::eventClock.notifications = Detail::Notifications::none;
         Detail::eventClock.left = 0;
      }
   }

 private:
   bool outermost_;
};

} // namespace Vex
