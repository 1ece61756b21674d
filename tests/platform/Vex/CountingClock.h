#pragma once

// A clock of which each read is one second later than the one before: the time tells which read it
// comes from.

#include "platform/Vex/Clock.h"

class CountingClock final : public Vex::Clock {
 public:
   Vex::Seconds now() const noexcept override { return Vex::Seconds( reads_ += 1.0 ); }

 private:
   mutable double reads_ = 0.0;
};
