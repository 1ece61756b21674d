#include "platform/Jotter/TraceReader.h"

#include "platform/Jotter/ByteReader.h"
#include "platform/Jotter/DescriptorEncoding.h"
#include "platform/Jotter/RingLayout.h"
#include "platform/Jotter/RingScan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <map>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

namespace Jotter {

namespace {

using Descriptors = std::map< DescriptorId, std::shared_ptr< const Descriptor > >;

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

// "record 7" or "records 7 to 9"
Vex::String recordsFrom( std::uint64_t first, std::uint64_t last ) {
   return first == last ? "record " + std::to_string( first )
                        : "records " + std::to_string( first ) + " to " + std::to_string( last );
}

Vex::String counted( std::uint64_t count, const Vex::String & one, const Vex::String & many ) {
   return std::to_string( count ) + " " + ( count == 1 ? one : many );
}

// Makes records of the cells of one scan, and finds out what is missing.
class Reading {
 public:
   Reading( const FileParts & file, std::uint64_t after )
       : file_( file ), scan_( file ), after_( after ) {}

   TraceFileContents contents() && {
      readDescriptors();
      if ( file_.cells.size() < file_.header.cellCount ) {
         tell( "the file is cut: " + std::to_string( file_.cells.size() ) + " of " +
               counted( file_.header.cellCount, "cell is", "cells are" ) + " there" );
      }
      readCells();
      // Several threads may have taken their cells and their sequence numbers in different orders.
      std::ranges::sort( found_, {}, &Found::sequence );
      checkCounters();
      tellGaps();
      for ( Found & found : found_ ) {
         if ( found.record.sequence > after_ ) {
            contents_.records.push_back( std::move( found.record ) );
         }
      }
      return std::move( contents_ );
   }

 private:
   struct Found {
      std::uint64_t sequence;
      std::uint64_t cell; // its first
      Record record;
   };

   void tell( Vex::String problem ) { contents_.problems.push_back( std::move( problem ) ); }
   void readDescriptors();
   void readCells();
   std::optional< Record > readRecord( std::uint64_t number );
   static bool readArguments( Record & record, std::span< const std::byte > bytes );
   std::shared_ptr< const Descriptor > site( DescriptorId id );
   void checkCounters();
   void tellGaps();
   void tellDamageWithoutGap();

   FileParts file_;
   RingScan scan_;
   std::uint64_t after_;
   Descriptors descriptors_;
   std::vector< Found > found_;
   std::vector< std::uint64_t > damaged_; // cells that should be there, whole, and are not
   TraceFileContents contents_;
};

void Reading::readDescriptors() {
   // After the cells: whoever has seen a record also sees its descriptor.
   const auto [ area, cut ] = descriptorAreaOf( file_ );
   std::size_t damaged = 0;
   for ( auto & [ id, descriptor ] : decodeDescriptors( area, &damaged ) ) {
      descriptors_.emplace( id, std::make_shared< Descriptor >( std::move( descriptor ) ) );
   }
   if ( cut || damaged != 0 ) {
      tell( "the descriptors of the call sites are damaged: " +
            counted( descriptors_.size(), "is", "are" ) + " whole" );
   }
}

void Reading::readCells() {
   for ( std::uint64_t number = scan_.begin(); number < scan_.end(); ++number ) {
      if ( scan_.cell( number, false ) == nullptr ) {
         if ( scan_.cell( number, true ) == nullptr ) {
            damaged_.push_back( number );
         }
      } else if ( auto record = readRecord( number ) ) {
         found_.push_back( { record->sequence, number, *std::move( record ) } );
      } else {
         damaged_.push_back( number );
      }
   }
}

// The record whose first cell is cell `number`.
std::optional< Record > Reading::readRecord( std::uint64_t number ) {
   const Layout::Content & first = *scan_.cell( number, false );
   const auto id = static_cast< DescriptorId >( first[ 2 ] );
   const std::size_t size = first[ 2 ] >> 32U;
   std::vector< std::byte > bytes( sizeof first );
   std::memcpy( bytes.data(), first.data(), sizeof first );
   while ( bytes.size() < Layout::recordHeadBytes + size ) {
      const Layout::Content * const more = scan_.cell( ++number, true );
      if ( more == nullptr ) {
         return std::nullopt;
      }
      bytes.resize( bytes.size() + sizeof *more );
      std::memcpy( bytes.data() + bytes.size() - sizeof *more, more->data(), sizeof *more );
   }
   Record record{
      first[ 0 ], Vex::Seconds( std::bit_cast< double >( first[ 1 ] ) ), site( id ), {} };
   const std::span< const std::byte > whole( bytes );
   if ( !readArguments( record, whole.subspan( Layout::recordHeadBytes, size ) ) ) {
      return std::nullopt;
   }
   return record;
}

bool Reading::readArguments( Record & record, std::span< const std::byte > bytes ) {
   ByteReader reader( bytes );
   for ( const Piece & piece : record.descriptor->pieces ) {
      if ( piece.kind != PieceKind::literal ) {
         auto argument = decodeArgument( piece.kind, reader );
         if ( !argument ) {
            return false;
         }
         record.arguments.push_back( *std::move( argument ) );
      }
   }
   return true;
}

std::shared_ptr< const Descriptor > Reading::site( DescriptorId id ) {
   auto & known = descriptors_[ id ];
   if ( known == nullptr ) {
      known = unknownSite( id );
      tell( "call site " + std::to_string( id ) + " is unknown" );
   }
   return known;
}

// The number of the newest record claimed: the header's, unless that contradicts the cells.
void Reading::checkCounters() {
   const std::uint64_t newest = found_.empty() ? 0 : found_.back().sequence;
   const std::uint64_t claimed = std::max( scan_.claimed(), newest );
   // A record that was claimed and is not there lacks a cell at least.
   const bool fit = scan_.countersFit() && newest <= scan_.claimedAfterwards() &&
                    ( scan_.lapped() || claimed - newest <= damaged_.size() || found_.empty() );
   contents_.lastSequence = fit ? claimed : newest;
   if ( !fit ) {
      tell( "the header's counters are damaged, or this is a copy of a file in use" );
   }
}

void Reading::tellGaps() {
   std::uint64_t expected = found_.empty() ? 0 : found_.front().sequence;
   for ( const Found & found : found_ ) {
      if ( found.sequence > expected && found.sequence - 1 > after_ ) {
         tell( recordsFrom( std::max( expected, after_ + 1 ), found.sequence - 1 ) +
               " damaged or missing" );
      }
      expected = found.sequence + 1;
   }
   const std::uint64_t last = contents_.lastSequence;
   if ( scan_.lapped() ) {
      return;
   }
   if ( !found_.empty() && last >= expected && last > after_ ) {
      tell( recordsFrom( std::max( expected, after_ + 1 ), last ) + " begun and not finished" );
   }
   tellDamageWithoutGap();
}

// What is damaged and leaves no gap between records: the oldest of them, or all, or cells that hold
// no record any more.
void Reading::tellDamageWithoutGap() {
   if ( damaged_.empty() || !scan_.countersFit() ) {
      return;
   }
   if ( found_.empty() ) {
      if ( contents_.lastSequence == 0 ) {
         tell( counted( damaged_.size(), "cell", "cells" ) + " claimed and not written" );
      } else if ( contents_.lastSequence == 1 ) {
         tell( "record 1 begun and not finished" );
      } else {
         tell( "no record is whole of " + std::to_string( contents_.lastSequence ) );
      }
      return;
   }
   const Found & oldest = *std::ranges::min_element( found_, {}, &Found::cell );
   const auto before = std::ranges::count_if(
      damaged_, [ & ]( std::uint64_t number ) { return number < oldest.cell; } );
   if ( after_ >= oldest.sequence ) {
      return; // of no interest any more
   }
   if ( before > 0 ) {
      tell( counted( static_cast< std::uint64_t >( before ), "cell", "cells" ) +
            " damaged before record " + std::to_string( oldest.sequence ) );
   } else if ( contents_.problems.empty() ) {
      tell( counted( damaged_.size(), "cell", "cells" ) + " claimed and not written" );
   }
}

} // namespace

Vex::String Record::message() const {
   Vex::String text;
   std::size_t next = 0;
   for ( const Piece & piece : descriptor->pieces ) {
      text += piece.kind == PieceKind::literal ? piece.literal : arguments.at( next++ );
   }
   return text;
}

TraceFileContents readTraceFile( std::span< const std::byte > bytes, std::uint64_t after ) {
   if ( reinterpret_cast< std::uintptr_t >( bytes.data() ) % alignof( Layout::Cell ) != 0 ) {
      // A ring in use is aligned; this is a copy, as somebody has read it from a disk.
      std::vector< Layout::Cell > aligned( bytes.size() / sizeof( Layout::Cell ) + 1 );
      const auto copy = std::as_writable_bytes( std::span( aligned ) ).first( bytes.size() );
      std::ranges::copy( bytes, copy.begin() );
      return readTraceFile( copy, after );
   }
   return Reading( partsOf( bytes ), after ).contents();
}

std::vector< Record > readRecords( std::span< const std::byte > file ) {
   return readTraceFile( file ).records;
}

} // namespace Jotter
