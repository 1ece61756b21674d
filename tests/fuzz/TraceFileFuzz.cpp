// Any bytes as a trace file, in three ways, by the first byte: as they are; as the parts of a file
// whose header and checks are right, so that what lies behind the checks is reached; and as damage
// to a sound file, of which then nothing may be read that was not written.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/RingLayout.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Jotter/TraceReader.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Clock.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace {

using Fuzz::Bytes;
using Fuzz::require;
using File = std::vector< std::byte >;
namespace Layout = Jotter::Layout;

// What holds of every answer. Records that were `written` come in their order; forged ones, whose
// checks are right, in that of their cells.
enum class Origin { written, forged };

std::vector< Jotter::Record > read( std::span< const std::byte > file,
                                    std::uint64_t after,
                                    Origin origin ) {
   std::vector< Jotter::Record > records;
   try {
      auto contents = Jotter::readTraceFile( file, after );
      std::uint64_t last = after;
      for ( const Jotter::Record & record : contents.records ) {
         require( record.sequence > ( origin == Origin::written ? last : after ),
                  "records out of order" );
         last = record.sequence;
         require( record.descriptor != nullptr, "a record without descriptor" );
         require( record.message().size() < ( 1U << 20U ), "a message without end" );
      }
      for ( const Vex::String & problem : contents.problems ) {
         require( !problem.empty() && problem.find( '\n' ) == Vex::String::npos,
                  "a problem that is not one line" );
      }
      records = std::move( contents.records );
   } catch ( const Jotter::TraceFileError & error ) {
      require( *error.what() != '\0', "an error without words" );
   }
   return records;
}

// ---- Right checks around any content -----------------------------------------------------------

template < class Number >
void append( File & file, Number number ) {
   const auto * const bytes = reinterpret_cast< const std::byte * >( &number );
   file.insert( file.end(), bytes, bytes + sizeof number );
}

// One entry of the descriptor area: its length, then its content.
void appendEntry( File & area, Bytes & bytes ) {
   File entry;
   for ( std::size_t left = bytes.next(); left > 0; --left ) {
      entry.push_back( std::byte{ bytes.next() } );
   }
   const auto size = static_cast< std::uint32_t >( sizeof( std::uint32_t ) +
                                                   sizeof( std::uint64_t ) + entry.size() );
   append( area, size );
   append( area, Layout::checkOf( entry ) ^ size );
   area.insert( area.end(), entry.begin(), entry.end() );
}

File assembled( Bytes bytes ) {
   const std::uint32_t cellCount = 1U << bytes.below( 4 );
   const std::uint64_t nextCell = bytes.below( 2 * cellCount + 2 );
   const std::uint64_t nextSequence = bytes.below( 2 * cellCount + 2 );
   File area;
   for ( std::size_t entries = bytes.below( 4 ); entries > 0; --entries ) {
      appendEntry( area, bytes );
   }
   const auto used = static_cast< std::uint32_t >( area.size() );
   area.resize( ( area.size() + 63 ) / 64 * 64 );

   File file;
   file.reserve( sizeof( Layout::Header ) );
   append( file, Layout::magic );
   append( file, Layout::version );
   append( file, cellCount );
   append( file, static_cast< std::uint32_t >( sizeof( Layout::Header ) ) );
   append( file, static_cast< std::uint32_t >( area.size() ) );
   append( file, static_cast< std::uint32_t >( sizeof( Layout::Header ) + area.size() ) );
   append( file, std::uint32_t{ 0 } );
   append( file, Layout::checkOf( file ) );
   append( file, Layout::complemented( used ) );
   append( file, nextCell );
   append( file, nextSequence );
   file.insert( file.end(), area.begin(), area.end() );
   for ( std::uint64_t cell = 0; cell < cellCount; ++cell ) {
      Layout::Content content{};
      const std::size_t size = bytes.below( Layout::cellBytes + 1 );
      for ( std::size_t at = 0; at < size; ++at ) {
         reinterpret_cast< std::uint8_t * >( content.data() )[ at ] = bytes.next();
      }
      const std::size_t kind = bytes.below( 8 );
      const std::uint64_t number = kind < 4 ? cell : cell + cellCount;
      const std::uint64_t stamp =
         kind == 7 ? bytes.next()
                   : Layout::stampOf( Layout::tagOf( number, kind % 2 != 0 ), content );
      append( file, stamp );
      append( file, content );
   }
   return file;
}

// ---- Damage to a sound file --------------------------------------------------------------------

// A small ring that has gone round, with short records and long ones.
struct SoundFile {
   SoundFile() {
      const Vex::VirtualClock clock( Vex::Seconds( 12.5 ) );
      const Vex::ClockScope scope( clock );
      Jotter::TraceFile ring( cells );
      const Jotter::DescriptorId id = Jotter::registerDescriptor( described );
      ring.describe( id, described );
      for ( std::uint64_t number = 1; number <= written; ++number ) {
         ring.write( id, "handled ", Nodo::IntfId( argument( number ) ), " with ", number );
      }
      bytes.assign( ring.bytes().begin(), ring.bytes().end() );
      sound = Jotter::readRecords( bytes );
      require( sound.size() > 100 && sound.size() < written && sound.back().sequence == written,
               "no sound file" );
   }

   static Vex::String argument( std::uint64_t number ) {
      return Vex::String( number % 4 == 0 ? 150 : 3, static_cast< char >( 'a' + number % 26 ) );
   }

   static constexpr std::uint32_t cells = 256; // the smallest ring
   static constexpr std::uint64_t written = 300;
   const Jotter::Descriptor described{ "Velo/Source",
                                       12,
                                       "handle",
                                       3,
                                       { { Jotter::PieceKind::literal, "handled " },
                                         { Jotter::PieceKind::text, {} },
                                         { Jotter::PieceKind::literal, " with " },
                                         { Jotter::PieceKind::number, {} } } };
   File bytes;
   std::vector< Jotter::Record > sound;
};

// One byte of a cell, of the header or of the descriptor area; or cells that are lost or displaced,
// as by a disk. Bytes of one cell are changed once, because more might give another sound one.
File damaged( const SoundFile & sound, Bytes & bytes ) {
   File file = sound.bytes;
   const std::size_t cellArea = SoundFile::cells * sizeof( Layout::Cell );
   const std::size_t firstCell = file.size() - cellArea;
   std::array< bool, SoundFile::cells > touched{};
   bool headTouched = false;
   for ( int edits = 0; edits < 12 && bytes.more(); ++edits ) {
      const std::size_t kind = bytes.below( 8 );
      const std::size_t at = bytes.below( SoundFile::cells );
      const std::byte change{ static_cast< std::uint8_t >( bytes.next() | 1U ) };
      const std::size_t place = bytes.below( sizeof( Layout::Cell ) );
      const auto cell = std::span( file ).subspan( firstCell + at * sizeof( Layout::Cell ),
                                                   sizeof( Layout::Cell ) );
      if ( kind == 0 && !headTouched ) { // the header, or the first descriptor behind it
         headTouched = true;
         file[ ( at % 4 ) * sizeof( Layout::Cell ) + place ] ^= change;
      } else if ( kind == 1 ) {
         std::ranges::fill( cell, std::byte{ 0 } );
         touched[ at ] = true;
      } else if ( kind == 2 ) { // an old cell, or one of another place
         const auto from =
            std::span( sound.bytes )
               .subspan( firstCell + ( at + place ) % SoundFile::cells * sizeof( Layout::Cell ),
                         sizeof( Layout::Cell ) );
         std::ranges::copy( from, cell.begin() );
         touched[ at ] = true;
      } else if ( kind == 3 ) { // the file ends here
         file.resize( file.size() - std::min( file.size(), at * 64 + place ) );
         return file;
      } else if ( !touched[ at ] ) {
         cell[ place ] ^= change;
         touched[ at ] = true;
      }
   }
   return file;
}

// Where its descriptor is lost, a record says so instead of what it said.
bool same( const Jotter::Record & read, const Jotter::Record & written ) {
   const bool siteKnown = !read.descriptor->source.empty();
   return read.sequence == written.sequence && read.time == written.time &&
          ( !siteKnown || read.message() == written.message() );
}

void readDamaged( Bytes bytes ) {
   static const auto & sound = *new SoundFile;
   const std::uint64_t after = bytes.below( 256 ) + bytes.below( 64 );
   for ( const Jotter::Record & record : read( damaged( sound, bytes ), after, Origin::written ) ) {
      const auto written =
         std::ranges::find( sound.sound, record.sequence, &Jotter::Record::sequence );
      require( written != sound.sound.end() && same( record, *written ),
               "a record that was not written" );
   }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const std::uint8_t * data, std::size_t size ) {
   Bytes bytes( { data, size } );
   switch ( bytes.below( 3 ) ) {
   case 0: {
      const auto rest = bytes.rest();
      File file( rest.size() ); // as aligned as a file is
      std::ranges::transform( rest, file.begin(), []( std::uint8_t b ) { return std::byte{ b }; } );
      read( file, 0, Origin::forged );
      break;
   }
   case 1: {
      const File file = assembled( bytes );
      read( file, 0, Origin::forged );
      read( file, 1, Origin::forged );
      break;
   }
   default:
      readDamaged( bytes );
      break;
   }
   return 0;
}
