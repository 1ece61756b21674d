#include "platform/Jotter/DescriptorEncoding.h"

#include "platform/Jotter/ByteReader.h"
#include "platform/Jotter/RingLayout.h"

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
//    size of the entry, this field included (4), check over all that follows it and over the size
//    (8), id (4), line (4), level (1), source, function, number of pieces (2), pieces: kind (1),
//    literal
//
// where a text is its length (2) and its bytes.

namespace Jotter {

namespace {

constexpr std::size_t checkedFrom = sizeof( std::uint32_t ) + sizeof( std::uint64_t );

// The size is mixed in by an operation that can be undone, so that a change of it shows as well.
std::uint64_t checkOfEntry( std::span< const std::byte > entry ) noexcept {
   return Layout::checkOf( entry.subspan( checkedFrom ) ) ^ entry.size();
}

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
      const std::uint64_t check = checkOfEntry( bytes_ );
      std::memcpy( bytes_.data() + sizeof size, &check, sizeof check );
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
   bytes.number( std::uint32_t{ 0 } ); // the size and
   bytes.number( std::uint64_t{ 0 } ); // the check, known at the end
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

std::map< DescriptorId, Descriptor > decodeDescriptors( std::span< const std::byte > area,
                                                        std::size_t * damaged ) {
   std::map< DescriptorId, Descriptor > descriptors;
   std::size_t lost = 0;
   while ( !area.empty() ) {
      ByteReader reader( area );
      const auto size = reader.number< std::uint32_t >();
      const auto check = reader.number< std::uint64_t >();
      if ( !size || !check || *size < checkedFrom || *size > area.size() ) {
         ++lost; // and there is no telling how many follow
         break;
      }
      const auto entry = area.first( *size );
      ByteReader content( entry.subspan( checkedFrom ) );
      const auto id = content.number< std::uint32_t >();
      auto descriptor = decodeDescriptor( content );
      if ( id && descriptor && *check == checkOfEntry( entry ) ) {
         descriptors.emplace( *id, *std::move( descriptor ) );
      } else {
         ++lost;
      }
      area = area.subspan( *size );
   }
   if ( damaged != nullptr ) {
      *damaged = lost;
   }
   return descriptors;
}

} // namespace Jotter
