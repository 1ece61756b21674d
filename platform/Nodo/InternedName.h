#pragma once

// A text that identifiers stand for: as people read it, and as records have it. Names are numbered
// in blocks that double in size and never move, so that reading takes no lock: block b holds the
// numbers 2^b - 1 to 2^(b+1) - 2.
//
// Ownership: names live once in the process, and as long as it.
// Threading: a name does not change any more once an identifier with its number exists.

#include "platform/Vex/Export.h"
#include "platform/Vex/String.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Nodo {

/// One cache line. The text stands before the record form, so that a record is put together from
/// whole words, of which some begin before that.
struct alignas( 64 ) InternedName {
   static constexpr std::size_t recordFormBytes = 32;
   static constexpr std::size_t longestRecordForm = recordFormBytes - 1; // bytes of the text
   static constexpr std::byte noRecordForm{ 255 };

   Vex::String text;
   /// The length of the text in one byte, then the text, then zeros. A text that is too long for
   /// that has `noRecordForm` in place of its length.
   alignas( 32 ) std::array< std::byte, recordFormBytes > recordForm{};

   void textIs( const Vex::String & newText ) {
      text = newText; // first, because it is the one step that can fail
      recordForm.fill( std::byte{ 0 } );
      if ( text.size() > longestRecordForm ) {
         recordForm[ 0 ] = noRecordForm;
         return;
      }
      recordForm[ 0 ] = static_cast< std::byte >( text.size() );
      std::memcpy( &recordForm[ 1 ], text.data(), text.size() );
   }
};
static_assert( sizeof( InternedName ) == 64 );

namespace Detail {

// More than there are handles: a power of two, so that the remainder below costs nothing.
inline constexpr unsigned nameBlocks = 32;
// Collections use the other bits of four bytes themselves (platform/Vex/StoredKey.h).
inline constexpr unsigned handleBits = 30;

// Read for every name in a record, so it is no function. The name of no interface is there from the
// start.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
VEX_EXPORT extern std::array< std::atomic< InternedName * >, nameBlocks > names;

constexpr unsigned nameBlockOf( std::uint64_t number ) noexcept {
   // The remainder changes nothing: it shows the compiler that the block is one of those there are.
   return ( static_cast< unsigned >( std::bit_width( number + 1 ) ) - 1 ) % nameBlocks;
}
constexpr std::uint64_t namesIn( unsigned block ) noexcept {
   return std::uint64_t{ 1 } << block;
}

} // namespace Detail

inline const InternedName & internedName( std::uint64_t number ) noexcept {
   const unsigned block = Detail::nameBlockOf( number );
   return Detail::names[ block ].load(
      std::memory_order_acquire )[ number + 1 - Detail::namesIn( block ) ];
}

} // namespace Nodo
