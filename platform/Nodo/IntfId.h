#pragma once

// Interface identifier: a 64-bit handle of an interned text. The empty text is the value 0 and
// means no interface. Equal texts have equal handles for the life of the process; handles are
// numbered in the order in which texts were first seen.
//
// Ownership: the interned texts live once in the process, and as long as it.
// Threading: identifiers may be made and read on any thread.

#include "platform/Nodo/InternedName.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/String.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <iosfwd>

namespace Nodo {

class VEX_EXPORT IntfId {
 public:
   /// No interface.
   constexpr IntfId() noexcept = default;
   explicit IntfId( const Vex::String & text ) { handleInitialized( text ); }

   /// Sets the identifier from its text form, any UTF-8 text.
   void handleInitialized( const Vex::String & text );

   /// The text form; the reference stays valid.
   const Vex::String & stringValue() const noexcept { return name().text; }
   /// The text and how it stands in a record; the reference stays valid.
   const InternedName & name() const noexcept { return internedName( value_ ); }

   constexpr std::uint64_t value() const noexcept { return value_; }

   /// The handle in four bytes, as collections keep it, bits 30 and 31 clear; there are never as
   /// many texts.
   constexpr std::uint32_t packed() const noexcept {
      return static_cast< std::uint32_t >( value_ );
   }
   static constexpr IntfId unpacked( std::uint32_t packed ) noexcept {
      IntfId id;
      id.value_ = packed;
      return id;
   }

   constexpr std::size_t hash() const noexcept {
      // Handles are small consecutive numbers; the multiplication (2^64 / golden ratio) spreads
      // them, the shift brings the well-mixed upper half down to where tables look.
      return static_cast< std::size_t >( value_ * 0x9E3779B97F4A7C15ULL >> 32U );
   }

   friend constexpr bool operator==( IntfId, IntfId ) noexcept = default;
   /// Natural order of the texts: runs of digits compare as numbers, Ethernet2 before Ethernet10.
   friend VEX_EXPORT std::strong_ordering operator<=>( IntfId a, IntfId b ) noexcept;
   friend VEX_EXPORT std::ostream & operator<<( std::ostream & out, IntfId intf );

 private:
   std::uint64_t value_ = 0;
};

static_assert( sizeof( IntfId ) == 8 );

} // namespace Nodo
