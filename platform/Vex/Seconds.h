#pragma once

// A moment or a span on the framework's clock: seconds in double precision. Moments count from the
// clock's own origin, which means nothing outside the process.

#include "platform/Vex/Export.h"

#include <compare>
#include <iosfwd>
#include <limits>

namespace Vex {

class Seconds {
 public:
   constexpr Seconds() noexcept = default;
   constexpr explicit Seconds( double value ) noexcept : value_( value ) {}

   /// Later than every moment: as a delay, never.
   static constexpr Seconds infinity() noexcept {
      return Seconds( std::numeric_limits< double >::infinity() );
   }

   constexpr double value() const noexcept { return value_; }

   friend constexpr Seconds operator+( Seconds a, Seconds b ) noexcept {
      return Seconds( a.value_ + b.value_ );
   }
   friend constexpr Seconds operator-( Seconds a, Seconds b ) noexcept {
      return Seconds( a.value_ - b.value_ );
   }
   friend constexpr bool operator==( Seconds, Seconds ) noexcept = default;
   friend constexpr auto operator<=>( Seconds, Seconds ) noexcept = default;

 private:
   double value_ = 0.0;
};

/// Six digits after the point, for example "12.345678".
VEX_EXPORT std::ostream & operator<<( std::ostream & out, Seconds seconds );

} // namespace Vex
