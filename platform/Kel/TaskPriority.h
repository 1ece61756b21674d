#pragma once

#include <compare>
#include <cstdint>

namespace Kel {

/// The priority that a task was created with. It is kept for the host, which may map it to whatever
/// its threads or loops know; it does not change the order in which one scheduler runs its tasks.
class TaskPriority {
 public:
   constexpr explicit TaskPriority( std::uint8_t value ) noexcept : value_( value ) {}

   constexpr std::uint8_t value() const noexcept { return value_; }

   friend constexpr auto operator<=>( TaskPriority, TaskPriority ) noexcept = default;

 private:
   std::uint8_t value_;
};

} // namespace Kel
