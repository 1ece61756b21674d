#pragma once

// Which pieces of a message are arguments, and how an argument is written into a record.
//
// A character literal is part of the descriptor. A Vex::String is the prefix of the text copy
// (smName) and no part of the ring's record at all. Everything else is an argument.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/RingLayout.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/Seconds.h"
#include "platform/Vex/String.h"

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Jotter {

template < class T >
concept Number = (std::unsigned_integral< T > && !std::same_as< T, bool >) || std::is_enum_v< T >;

// What the descriptor says of a piece.
template < std::size_t size >
void addPiece( std::vector< Piece > & pieces, const char ( &literal )[ size ] ) {
   pieces.push_back( { PieceKind::literal, literal } );
}
inline void addPiece( std::vector< Piece > & /* pieces */, const Vex::String & /* prefix */ ) {}
inline void addPiece( std::vector< Piece > & pieces, Nodo::IntfId ) {
   pieces.push_back( { PieceKind::text, {} } );
}
inline void addPiece( std::vector< Piece > & pieces, std::same_as< bool > auto ) {
   pieces.push_back( { PieceKind::boolean, {} } );
}
inline void addPiece( std::vector< Piece > & pieces, Number auto ) {
   pieces.push_back( { PieceKind::number, {} } );
}
inline void addPiece( std::vector< Piece > & pieces, Vex::Seconds ) {
   pieces.push_back( { PieceKind::time, {} } );
}

// The argument that a piece is, or nothing.
template < std::size_t size >
constexpr std::tuple<> argumentOf( const char ( & /* literal */ )[ size ] ) noexcept {
   return {};
}
inline std::tuple<> argumentOf( const Vex::String & /* prefix */ ) noexcept {
   return {};
}
constexpr std::tuple< Nodo::IntfId > argumentOf( Nodo::IntfId intf ) noexcept {
   return { intf };
}
template < class T >
   requires std::same_as< T, bool > || Number< T > || std::same_as< T, Vex::Seconds >
constexpr std::tuple< T > argumentOf( T value ) noexcept {
   return { value };
}

/// The arguments of a record of one cell. They are put together word by word, each word out of the
/// words of its parts, and not byte by byte in memory: to read back in words what has just been
/// written there in bytes makes the processor wait.
class ShortArguments {
 public:
   static constexpr std::size_t room = Layout::inlineArgumentBytes;
   using Words = std::array< std::uint64_t, room / sizeof( std::uint64_t ) >;

   // Each adds an argument. False: there is no room, and all of this is void.
   bool add( Nodo::IntfId intf ) noexcept { return add( intf.name() ); }
   bool add( const Nodo::InternedName & name ) noexcept {
      // A text that has no such form counts as 256 bytes, and so has no room here.
      return append( reinterpret_cast< const std::byte * >( &name ) +
                        offsetof( Nodo::InternedName, recordForm ),
                     1 + static_cast< std::size_t >( name.recordForm[ 0 ] ) );
   }
   bool add( std::same_as< bool > auto value ) noexcept { return append( value ? 1U : 0U, 1 ); }
   bool add( Number auto value ) noexcept {
      return append( static_cast< std::uint64_t >( value ), sizeof( std::uint64_t ) );
   }
   bool add( Vex::Seconds value ) noexcept {
      return append( std::bit_cast< std::uint64_t >( value.value() ), sizeof( std::uint64_t ) );
   }

   const Words & words() const noexcept { return words_; }
   std::size_t size() const noexcept { return size_; }

 private:
   static std::uint64_t wordAt( const void * from ) noexcept {
      std::uint64_t word = 0;
      std::memcpy( &word, from, sizeof word );
      return word;
   }

   // At `from` are the bytes, then zeros, `room` of them together; before it as many that can be
   // read.
   bool append( const std::byte * from, std::size_t size ) noexcept {
      if ( size > room - size_ ) [[unlikely]] {
         return false;
      }
      // As if all were moved up by what is there already.
      const std::byte * const moved = from - size_;
      const std::byte * const mask = keep.data() + room - size_;
      [ & ]< std::size_t... at >( std::index_sequence< at... > ) {
         ( ( words_[ at ] |= wordAt( moved + at * sizeof( std::uint64_t ) ) &
                             wordAt( mask + at * sizeof( std::uint64_t ) ) ),
           ... );
      }( std::make_index_sequence< std::tuple_size_v< Words > >() );
      size_ += size;
      return true;
   }
   bool append( std::uint64_t value, std::size_t size ) noexcept {
      std::array< std::uint64_t, 2 * std::tuple_size_v< Words > > around{};
      around[ std::tuple_size_v< Words > ] = value;
      return append( reinterpret_cast< const std::byte * >( around.data() ) + room, size );
   }

   static constexpr std::array< std::byte, 2 * room > keep = [] {
      std::array< std::byte, 2 * room > bytes{};
      std::fill( bytes.begin() + room, bytes.end(), std::byte{ 0xFF } );
      return bytes;
   }();

   Words words_{};
   std::size_t size_ = 0;
};
static_assert( Nodo::InternedName::recordFormBytes == ShortArguments::room );

// How many bytes its argument takes, at most and in this case.
template < class T >
inline constexpr std::size_t longestArgument =
   std::same_as< T, Nodo::IntfId > ? 3 + Layout::longestText : sizeof( std::uint64_t );
template < class... Pieces >
inline constexpr std::size_t longestRecord = ( std::size_t{ 0 } + ... + longestArgument< Pieces > );

constexpr std::size_t encodedSize( std::same_as< bool > auto ) noexcept {
   return 1;
}
constexpr std::size_t encodedSize( Number auto ) noexcept {
   return sizeof( std::uint64_t );
}
constexpr std::size_t encodedSize( Vex::Seconds ) noexcept {
   return sizeof( double );
}

/// The length of the longest front part of a UTF-8 text that fits a record and ends with a whole
/// character.
VEX_EXPORT std::size_t keptLength( std::string_view text ) noexcept;

inline std::size_t encodedSize( Nodo::IntfId intf ) noexcept {
   const std::string_view text = intf.stringValue();
   return text.size() < Layout::longTextMark ? 1 + text.size() : 3 + keptLength( text );
}

/// Writes a text of 255 bytes or more; returns its end.
VEX_EXPORT std::byte * encodeLongText( std::byte * to, std::string_view text ) noexcept;

// Each writes an argument and returns the end of what it has written.
inline std::byte * encode( std::byte * to, Nodo::IntfId intf ) noexcept {
   const std::string_view text = intf.stringValue();
   if ( text.size() >= Layout::longTextMark ) {
      return encodeLongText( to, text );
   }
   *to = static_cast< std::byte >( text.size() );
   std::memcpy( to + 1, text.data(), text.size() );
   return to + 1 + text.size();
}
inline std::byte * encode( std::byte * to, std::same_as< bool > auto value ) noexcept {
   *to = static_cast< std::byte >( value );
   return to + 1;
}
inline std::byte * encode( std::byte * to, Number auto value ) noexcept {
   const auto number = static_cast< std::uint64_t >( value );
   std::memcpy( to, &number, sizeof number );
   return to + sizeof number;
}
inline std::byte * encode( std::byte * to, Vex::Seconds value ) noexcept {
   const double seconds = value.value();
   std::memcpy( to, &seconds, sizeof seconds );
   return to + sizeof seconds;
}

} // namespace Jotter
