#include "platform/Vex/Enum.h"

#include <algorithm>

namespace Vex {

std::string_view EnumType::nameOf( std::int64_t value ) const noexcept {
   const auto entry = std::ranges::find( entries, value, &EnumEntry::value );
   return entry != entries.end() ? entry->name : std::string_view();
}

std::optional< std::int64_t > EnumType::valueOf( std::string_view enumerator ) const noexcept {
   const auto entry = std::ranges::find( entries, enumerator, &EnumEntry::name );
   return entry != entries.end() ? std::optional( entry->value ) : std::nullopt;
}

} // namespace Vex
