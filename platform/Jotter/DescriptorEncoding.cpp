#include "platform/Jotter/DescriptorEncoding.h"

#include "platform/Jotter/ByteReader.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>

// An entry, numbers little-endian and unaligned:
//
//    size of the entry, this field included (4), id (4), line (4), level (1), source, function,
//    number of pieces (2), pieces: kind (1), literal
//
// where a text is its length (2) and its bytes.

namespace Jotter {

namespace {

class Bytes {
 public:
   template < std::unsigned_integral T >
   void number( T value ) {
      const std::size_t at = bytes_.size();
      bytes_.resize( at + sizeof value );
      std::memcpy( bytes_.data() + at, &value, sizeof value );
   }

   void text( std::string_view text ) {
      const std::string_view kept = text.substr( 0, std::numeric_limits< std::uint16_t >::max() );
      number( static_cast< std::uint16_t >( kept.size() ) );
      const auto * const first = reinterpret_cast< const std::byte * >( kept.data() );
      bytes_.insert( bytes_.end(), first, first + kept.size() );
   }

   std::vector< std::byte > finished() && {
      const auto size = static_cast< std::uint32_t >( bytes_.size() );
      std::memcpy( bytes_.data(), &size, sizeof size );
      return std::move( bytes_ );
   }

 private:
   std::vector< std::byte > bytes_;
};

std::optional< Piece > decodePiece( ByteReader & reader ) {
   const auto kind = reader.number< std::uint8_t >();
   const auto literal = reader.text();
   if ( !kind || !literal || *kind > static_cast< std::uint8_t >( PieceKind::time ) ) {
      return std::nullopt;
   }
   return Piece{ static_cast< PieceKind >( *kind ), Vex::String( *literal ) };
}

std::optional< Descriptor > decodeDescriptor( ByteReader & reader ) {
   const auto line = reader.number< std::uint32_t >();
   const auto level = reader.number< std::uint8_t >();
   const auto source = reader.text();
   const auto function = reader.text();
   const auto pieces = reader.number< std::uint16_t >();
   if ( !line || !level || !source || !function || !pieces ) {
      return std::nullopt;
   }
   Descriptor descriptor{ Vex::String( *source ), *line, Vex::String( *function ), *level, {} };
   for ( std::uint16_t at = 0; at < *pieces; ++at ) {
      const auto piece = decodePiece( reader );
      if ( !piece ) {
         return std::nullopt;
      }
      descriptor.pieces.push_back( *piece );
   }
   return descriptor;
}

} // namespace

std::vector< std::byte > encodeDescriptor( DescriptorId id, const Descriptor & descriptor ) {
   Bytes bytes;
   bytes.number( std::uint32_t{ 0 } ); // the size, known at the end
   bytes.number( id );
   bytes.number( descriptor.line );
   bytes.number( descriptor.level );
   bytes.text( descriptor.source );
   bytes.text( descriptor.function );
   bytes.number( static_cast< std::uint16_t >( descriptor.pieces.size() ) );
   for ( const Piece & piece : descriptor.pieces ) {
      bytes.number( static_cast< std::uint8_t >( piece.kind ) );
      bytes.text( piece.literal );
   }
   return std::move( bytes ).finished();
}

std::map< DescriptorId, Descriptor > decodeDescriptors( std::span< const std::byte > area ) {
   std::map< DescriptorId, Descriptor > descriptors;
   while ( !area.empty() ) {
      ByteReader reader( area );
      const auto size = reader.number< std::uint32_t >();
      const auto id = reader.number< std::uint32_t >();
      if ( !size || !id || *size < 2 * sizeof( std::uint32_t ) || *size > area.size() ) {
         break;
      }
      ByteReader entry(
         area.subspan( 2 * sizeof( std::uint32_t ), *size - 2 * sizeof( std::uint32_t ) ) );
      if ( auto descriptor = decodeDescriptor( entry ) ) {
         descriptors.emplace( *id, *std::move( descriptor ) );
      }
      area = area.subspan( *size );
   }
   return descriptors;
}

} // namespace Jotter
