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

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
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

// How many bytes its argument takes, at most and in this case.
template < class T >
inline constexpr std::size_t longestArgument =
   std::same_as< T, Nodo::IntfId > ? 3 + Layout::longestText : sizeof( std::uint64_t );
template < class... Pieces >
inline constexpr std::size_t longestRecord = ( std::size_t{ 0 } + ... + longestArgument< Pieces > );

template < std::size_t size >
constexpr std::size_t encodedSize( const char ( & )[ size ] ) noexcept {
   return 0;
}
inline std::size_t encodedSize( const Vex::String & ) noexcept {
   return 0;
}
inline std::size_t encodedSize( Nodo::IntfId intf ) noexcept;
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

// Each writes its argument, if it is one, and returns the end of what it has written.
template < std::size_t size >
constexpr std::byte * encode( std::byte * to, const char ( & )[ size ] ) noexcept {
   return to;
}
inline std::byte * encode( std::byte * to, const Vex::String & ) noexcept {
   return to;
}
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
