#pragma once

// Enums of the data model with their names, both ways. One table an enum, written beside it:
//
//    template <>
//    struct Vex::EnumNames< Mlag::State > {
//       static constexpr std::string_view type = "Mlag::State";
//       static constexpr std::array entries{ Vex::EnumEntry{ 0, "disabled" }, ... };
//    };
//
// The table serves enumName and enumValue, and, once a module lists it, the lookup by type name.

#include "platform/Vex/Export.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <string_view>
#include <type_traits>

namespace Vex {

/// One enumerator: its number and its name.
struct EnumEntry {
   std::int64_t value;
   std::string_view name;
};

/// An enum as the framework knows it at run time.
struct EnumType {
   std::string_view name;
   std::span< const EnumEntry > entries;

   /// Empty when no enumerator has this value.
   VEX_EXPORT std::string_view nameOf( std::int64_t value ) const noexcept;
   VEX_EXPORT std::optional< std::int64_t > valueOf( std::string_view enumerator ) const noexcept;
};

template < class E >
struct EnumNames;

template < class E >
concept NamedEnum = std::is_enum_v< E > && requires { EnumNames< E >::entries; };

template < NamedEnum E >
inline constexpr EnumType enumTypeOf{ EnumNames< E >::type, EnumNames< E >::entries };

/// The enumerator's name; empty when the value has none.
template < NamedEnum E >
std::string_view enumName( E value ) noexcept {
   return enumTypeOf< E >.nameOf( static_cast< std::int64_t >( value ) );
}

template < NamedEnum E >
std::optional< E > enumValue( std::string_view name ) noexcept {
   const auto value = enumTypeOf< E >.valueOf( name );
   return value ? std::optional( static_cast< E >( *value ) ) : std::nullopt;
}

/// Writes the name, or the number of a value that has none.
template < NamedEnum E >
std::ostream & streamEnum( std::ostream & out, E value ) {
   const std::string_view name = enumName( value );
   return name.empty() ? out << static_cast< std::int64_t >( value ) : out << name;
}

/// The enum registered under this type name by some loaded module, or null.
VEX_EXPORT const EnumType * enumType( std::string_view name ) noexcept;

} // namespace Vex
