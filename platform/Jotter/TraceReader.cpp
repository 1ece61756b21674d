#include "platform/Jotter/TraceReader.h"

#include "platform/Jotter/ByteReader.h"
#include "platform/Jotter/DescriptorEncoding.h"
#include "platform/Jotter/RingLayout.h"

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <optional>
#include <sstream>
#include <string_view>

namespace Jotter {

namespace {

using Content = std::array< std::uint64_t, Layout::cellWords >;
using Descriptors = std::map< DescriptorId, std::shared_ptr< const Descriptor > >;

// The parts of a file, checked against its size.
struct File {
   const Layout::Header & header;
   std::span< const std::byte > descriptorArea;
   std::span< const Layout::Cell > cells;
};

File open( std::span< const std::byte > bytes ) {
   if ( bytes.size() < sizeof( Layout::Header ) ) {
      throw TraceFileError( "no trace file: shorter than its header" );
   }
   const auto & header = *reinterpret_cast< const Layout::Header * >( bytes.data() );
   if ( header.magic != Layout::magic ) {
      throw TraceFileError( "no trace file: it does not begin with JOTTER" );
   }
   if ( header.version != Layout::version ) {
      throw TraceFileError( "trace file of version " + std::to_string( header.version ) +
                            "; this reader knows version " + std::to_string( Layout::version ) );
   }
   const std::uint64_t descriptorEnd =
      std::uint64_t{ header.descriptorOffset } + header.descriptorRoom;
   const std::uint64_t cellEnd =
      header.cellOffset + std::uint64_t{ header.cellCount } * sizeof( Layout::Cell );
   if ( header.descriptorOffset < sizeof( Layout::Header ) || descriptorEnd > header.cellOffset ||
        header.cellOffset % alignof( Layout::Cell ) != 0 ||
        !std::has_single_bit( header.cellCount ) || cellEnd > bytes.size() ) {
      throw TraceFileError( "damaged trace file: its header does not fit its size" );
   }
   const std::uint64_t used = std::min< std::uint64_t >(
      header.descriptorBytes.load( std::memory_order_acquire ), header.descriptorRoom );
   const auto * const cells =
      reinterpret_cast< const Layout::Cell * >( bytes.data() + header.cellOffset );
   return { header,
            bytes.subspan( header.descriptorOffset, static_cast< std::size_t >( used ) ),
            { cells, header.cellCount } };
}

// The content of cell `number` if that is what its place holds, whole.
std::optional< Content > readCell( const File & file, std::uint64_t number, bool continues ) {
   const Layout::Cell & cell = file.cells[ number & ( file.cells.size() - 1 ) ];
   const std::uint64_t wanted = Layout::stampOf( number, continues );
   if ( cell.stamp.load( std::memory_order_acquire ) != wanted ) {
      return std::nullopt;
   }
   Content content{};
   for ( std::size_t word = 0; word < content.size(); ++word ) {
      content[ word ] = cell.content[ word ].load( std::memory_order_relaxed );
   }
   std::atomic_thread_fence( std::memory_order_acquire );
   if ( cell.stamp.load( std::memory_order_relaxed ) != wanted ) {
      return std::nullopt; // overwritten meanwhile
   }
   return content;
}

std::optional< Vex::String > decodeText( ByteReader & reader ) {
   const auto shortLength = reader.number< std::uint8_t >();
   if ( !shortLength ) {
      return std::nullopt;
   }
   if ( *shortLength < Layout::longTextMark ) {
      const auto text = reader.text( *shortLength );
      return text ? std::optional( Vex::String( *text ) ) : std::nullopt;
   }
   const auto mark = reader.number< std::uint16_t >();
   const std::size_t length = mark.value_or( 0 ) & ~std::size_t{ Layout::cutBit };
   const auto text = reader.text( length );
   if ( !mark || !text ) {
      return std::nullopt;
   }
   return Vex::String( *text ) + ( ( *mark & Layout::cutBit ) != 0 ? "…" : "" );
}

std::optional< Vex::String > decodeArgument( PieceKind kind, ByteReader & reader ) {
   switch ( kind ) {
   case PieceKind::literal:
      return std::nullopt;
   case PieceKind::text:
      return decodeText( reader );
   case PieceKind::boolean: {
      const auto value = reader.number< std::uint8_t >();
      return value ? std::optional( Vex::String( *value != 0 ? "true" : "false" ) ) : std::nullopt;
   }
   case PieceKind::number: {
      const auto value = reader.number< std::uint64_t >();
      return value ? std::optional( std::to_string( *value ) ) : std::nullopt;
   }
   case PieceKind::time: {
      const auto value = reader.number< double >();
      if ( !value ) {
         return std::nullopt;
      }
      std::ostringstream text;
      text << Vex::Seconds( *value );
      return text.str();
   }
   }
   return std::nullopt;
}

std::shared_ptr< const Descriptor > unknownSite( DescriptorId id ) {
   return std::make_shared< Descriptor >( Descriptor{
      {},
      0,
      {},
      0,
      { { PieceKind::literal, "(call site " + std::to_string( id ) + " unknown)" } } } );
}

// The record whose first cell is cell `number`.
std::optional< Record > readRecord( const File & file,
                                    const Descriptors & descriptors,
                                    std::uint64_t number ) {
   const auto first = readCell( file, number, false );
   if ( !first ) {
      return std::nullopt;
   }
   const auto id = static_cast< DescriptorId >( ( *first )[ 2 ] );
   const std::size_t size = ( *first )[ 2 ] >> 32U;
   if ( size > file.cells.size() * Layout::cellBytes ) {
      return std::nullopt;
   }
   std::vector< std::byte > bytes( sizeof( Content ) );
   std::memcpy( bytes.data(), first->data(), sizeof( Content ) );
   while ( bytes.size() < Layout::recordHeadBytes + size ) {
      const auto more = readCell( file, ++number, true );
      if ( !more ) {
         return std::nullopt;
      }
      bytes.resize( bytes.size() + sizeof( Content ) );
      std::memcpy( bytes.data() + bytes.size() - sizeof( Content ), more->data(),
                   sizeof( Content ) );
   }
   const auto known = descriptors.find( id );
   Record record{ ( *first )[ 0 ],
                  Vex::Seconds( std::bit_cast< double >( ( *first )[ 1 ] ) ),
                  known != descriptors.end() ? known->second : unknownSite( id ),
                  {} };
   const std::span< const std::byte > whole( bytes );
   ByteReader reader( whole.subspan( Layout::recordHeadBytes, size ) );
   for ( const Piece & piece : record.descriptor->pieces ) {
      if ( piece.kind == PieceKind::literal ) {
         continue;
      }
      auto argument = decodeArgument( piece.kind, reader );
      if ( !argument ) {
         return std::nullopt;
      }
      record.arguments.push_back( *std::move( argument ) );
   }
   return record;
}

} // namespace

TraceFileError::~TraceFileError() = default;

Vex::String Record::message() const {
   Vex::String text;
   std::size_t next = 0;
   for ( const Piece & piece : descriptor->pieces ) {
      text += piece.kind == PieceKind::literal ? piece.literal : arguments.at( next++ );
   }
   return text;
}

std::vector< Record > readRecords( std::span< const std::byte > bytes ) {
   if ( reinterpret_cast< std::uintptr_t >( bytes.data() ) % alignof( Layout::Cell ) != 0 ) {
      // A ring in use is aligned; this is a copy, as somebody has read it from a disk.
      std::vector< Layout::Cell > aligned( bytes.size() / sizeof( Layout::Cell ) + 1 );
      const auto copy = std::as_writable_bytes( std::span( aligned ) ).first( bytes.size() );
      std::ranges::copy( bytes, copy.begin() );
      return readRecords( copy );
   }
   const File file = open( bytes );
   Descriptors descriptors;
   for ( auto & [ id, descriptor ] : decodeDescriptors( file.descriptorArea ) ) {
      descriptors.emplace( id, std::make_shared< Descriptor >( std::move( descriptor ) ) );
   }
   // No ring is written that often: beyond this the number is damaged, and stamps would wrap.
   constexpr std::uint64_t mostCells = std::uint64_t{ 1 } << 62U;
   const std::uint64_t end =
      std::min( file.header.nextCell.load( std::memory_order_acquire ), mostCells );
   const std::uint64_t begin = end - std::min< std::uint64_t >( end, file.cells.size() );
   std::vector< Record > records;
   for ( std::uint64_t number = begin; number < end; ++number ) {
      if ( auto record = readRecord( file, descriptors, number ) ) {
         records.push_back( *std::move( record ) );
      }
   }
   // Several threads may have taken their cells and their sequence numbers in different orders.
   std::ranges::sort( records, {}, &Record::sequence );
   return records;
}

} // namespace Jotter
