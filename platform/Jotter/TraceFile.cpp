#include "platform/Jotter/TraceFile.h"

#include "platform/Jotter/DescriptorEncoding.h"
#include "platform/Jotter/MappedFile.h"
#include "platform/Jotter/TraceFileError.h"
#include "platform/Vex/Assert.h"
#include "platform/Vex/EventClock.h"
#include "platform/Vex/Object.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <new>
#include <vector>

namespace Jotter {

namespace {

constexpr std::uint32_t headerRoom = 128;
constexpr std::uint32_t descriptorRoom = 64 * 1024 - headerRoom;
constexpr std::uint32_t cellOffset = headerRoom + descriptorRoom;
// A record of the longest arguments must fit with room to spare.
constexpr std::uint32_t fewestCells = 256;
constexpr std::uint32_t mostCells = 1U << 26U; // 4 GiB
constexpr std::align_val_t alignment{ alignof( Layout::Cell ) };

static_assert( sizeof( Layout::Header ) <= headerRoom );
static_assert( cellOffset % sizeof( Layout::Cell ) == 0 );
static_assert( TraceFile::fewestBytes == cellOffset + fewestCells * sizeof( Layout::Cell ) );

std::uint32_t cellCountFor( std::uint32_t cells ) noexcept {
   return std::bit_ceil( std::clamp( cells, fewestCells, mostCells ) );
}

std::size_t fileSize( std::uint32_t cellCount ) noexcept {
   return cellOffset + std::size_t{ cellCount } * sizeof( Layout::Cell );
}

// The size of the largest file that takes at most so many bytes.
std::size_t sizeWithin( const Vex::String & path, std::size_t bytes ) {
   if ( bytes < TraceFile::fewestBytes ) {
      throw TraceFileError( path + ": " + std::to_string( bytes ) +
                            " bytes are too few for a trace file, which takes " +
                            std::to_string( TraceFile::fewestBytes ) + " at least" );
   }
   const std::size_t cells = ( bytes - cellOffset ) / sizeof( Layout::Cell );
   return fileSize( static_cast< std::uint32_t >(
      std::bit_floor( std::min< std::size_t >( cells, mostCells ) ) ) );
}

std::uint32_t cellsIn( std::size_t size ) noexcept {
   return static_cast< std::uint32_t >( ( size - cellOffset ) / sizeof( Layout::Cell ) );
}

// A trace file gives way to a new one when it can be read by the same programs.
Vex::String reasonToKeep( std::span< const std::byte > beginning ) {
   Layout::Header header{};
   if ( beginning.size() < sizeof header ||
        std::memcmp( beginning.data(), Layout::magic.data(), sizeof Layout::magic ) != 0 ) {
      return "it is no trace file";
   }
   std::uint32_t version = 0;
   std::memcpy( &version, beginning.data() + offsetof( Layout::Header, version ), sizeof version );
   if ( version != Layout::version ) {
      return "it is a trace file of version " + std::to_string( version ) + ", not " +
             std::to_string( Layout::version );
   }
   return {};
}

} // namespace

void TraceFile::Free::operator()( std::byte * memory ) const noexcept {
   ::operator delete( memory, alignment );
}

TraceFile::TraceFile( std::uint32_t cells )
    : size_( fileSize( cellCountFor( cells ) ) ),
      memory_( static_cast< std::byte * >( ::operator new( size_, alignment ) ) ),
      base_( memory_.get() ) {
   // Zero is the empty state of every word: no record, no descriptor.
   std::memset( base_, 0, size_ );
   format( cellsIn( size_ ) );
}

TraceFile::TraceFile( const Vex::String & path, std::size_t bytes, const TraceFile * before )
    : size_( sizeWithin( path, bytes ) ),
      mapped_( std::make_unique< MappedFile >( path, size_, reasonToKeep ) ),
      base_( mapped_->data() ) {
   format( cellsIn( size_ ) );
   // What may fail, and what a reader must not see half-done, comes before it is in place.
   describeKnown( *this );
   if ( before != nullptr ) {
      continueFrom( *before );
   }
   mapped_->publish();
}

TraceFile::~TraceFile() = default;

void TraceFile::format( std::uint32_t cellCount ) noexcept {
   auto & head = *new ( base_ ) Layout::Header{};
   head.magic = Layout::magic;
   head.version = Layout::version;
   head.cellCount = cellCount;
   head.descriptorOffset = headerRoom;
   head.descriptorRoom = descriptorRoom;
   head.cellOffset = cellOffset;
   head.check = Layout::checkOf( { base_, offsetof( Layout::Header, check ) } );
   head.descriptorBytes.store( Layout::complemented( 0 ), std::memory_order_relaxed );
   cells_ = reinterpret_cast< Layout::Cell * >( base_ + cellOffset );
   cellMask_ = cellCount - 1;
   // Touches every page, so that no record pays for that.
   std::uninitialized_value_construct_n( cells_, cellCount );
}

void TraceFile::describe( DescriptorId id, const Descriptor & descriptor ) {
   if ( id <= described_ ) {
      return;
   }
   VEX_ASSERT( id == described_ + 1 );
   const std::vector< std::byte > entry = encodeDescriptor( id, descriptor );
   described_ = id;
   Layout::Header & head = header();
   const auto used =
      static_cast< std::uint32_t >( head.descriptorBytes.load( std::memory_order_relaxed ) );
   if ( entry.size() > head.descriptorRoom - used ) {
      return; // its records will show as those of an unknown call site
   }
   std::memcpy( base_ + head.descriptorOffset + used, entry.data(), entry.size() );
   head.descriptorBytes.store(
      Layout::complemented( used + static_cast< std::uint32_t >( entry.size() ) ),
      std::memory_order_release );
}

void TraceFile::continueFrom( const TraceFile & other ) noexcept {
   // A cell's number tells its place in a ring of any size, and its check goes with its number.
   const std::uint64_t end = other.header().nextCell.load( std::memory_order_acquire );
   const std::uint64_t kept = std::min( { end, cellMask_ + 1, other.cellMask_ + 1 } );
   for ( std::uint64_t number = end - kept; number < end; ++number ) {
      const Layout::Cell & from = other.cell( number );
      Layout::Cell & to = cell( number );
      for ( std::size_t word = 0; word < Layout::cellWords; ++word ) {
         to.content[ word ].store( from.content[ word ].load( std::memory_order_relaxed ),
                                   std::memory_order_relaxed );
      }
      to.stamp.store( from.stamp.load( std::memory_order_relaxed ), std::memory_order_relaxed );
   }
   header().nextCell.store( end, std::memory_order_release );
   header().nextSequence.store( other.written(), std::memory_order_release );
}

void TraceFile::unlock() noexcept {
   if ( mapped_ ) {
      mapped_->unlock();
   }
}

namespace {

struct Claim {
   std::uint64_t cell;
   std::uint64_t sequence;
};

bool manyWriters() noexcept {
   return Vex::pointerMode() == Vex::PointerMode::threadSafe;
}

// Cells first: whoever has seen the number of a record also sees that its cells are taken.
Claim claimShared( Layout::Header & head, std::uint64_t cells ) noexcept {
   const std::uint64_t cell = head.nextCell.fetch_add( cells, std::memory_order_acq_rel );
   return { cell, head.nextSequence.fetch_add( 1, std::memory_order_acq_rel ) + 1 };
}

[[gnu::always_inline]] inline Claim claim( Layout::Header & head, std::uint64_t cells ) noexcept {
   const std::uint64_t cell = head.nextCell.load( std::memory_order_relaxed );
   const std::uint64_t sequence = head.nextSequence.load( std::memory_order_relaxed ) + 1;
   head.nextCell.store( cell + cells, std::memory_order_release );
   head.nextSequence.store( sequence, std::memory_order_release );
   return { cell, sequence };
}

// Makes the writer of cell `number` the only one of this place. It is not when another one is at
// work there, or has been with a higher number: then the ring has gone round while we stalled.
bool taken( Layout::Cell & cell, std::uint64_t number ) noexcept {
   std::uint64_t before = cell.stamp.load( std::memory_order_relaxed );
   if ( before == Layout::busy ) {
      return false;
   }
   // Tags go round: the lower one is the one that is less than half a round behind.
   const std::uint32_t ahead =
      Layout::tagOf( number, false ) - static_cast< std::uint32_t >( before );
   if ( before != 0 && static_cast< std::int32_t >( ahead ) < 0 ) {
      return false;
   }
   return cell.stamp.compare_exchange_strong( before, Layout::busy, std::memory_order_acq_rel,
                                              std::memory_order_relaxed );
}

// Fills a cell whose stamp is busy.
[[gnu::always_inline]] inline void fill( Layout::Cell & cell,
                                         std::uint64_t number,
                                         bool continues,
                                         const Layout::Content & content ) noexcept {
   std::atomic_thread_fence( std::memory_order_release ); // the old stamp goes first
   Layout::forEachWord( [ & ]( std::size_t word ) {
      cell.content[ word ].store( content[ word ], std::memory_order_relaxed );
   } );
   cell.stamp.store( Layout::stampOf( Layout::tagOf( number, continues ), content ),
                     std::memory_order_release );
}

// As the only writer.
[[gnu::always_inline]] inline void writeCell( Layout::Cell & cell,
                                              std::uint64_t number,
                                              bool continues,
                                              const Layout::Content & content ) noexcept {
   cell.stamp.store( Layout::busy, std::memory_order_release ); // after the counters
   fill( cell, number, continues, content );
}

// False: another writer has this place, and the record cannot be whole.
bool writeSharedCell( Layout::Cell & cell,
                      std::uint64_t number,
                      bool continues,
                      const Layout::Content & content ) noexcept {
   if ( !taken( cell, number ) ) {
      return false;
   }
   fill( cell, number, continues, content );
   return true;
}

std::uint64_t timeWord( Vex::Seconds time ) noexcept {
   return std::bit_cast< std::uint64_t >( time.value() );
}

} // namespace

// Content without its sequence number, as the only writer.
[[gnu::always_inline]] inline void TraceFile::writeAlone(
   const Layout::Content & content ) noexcept {
   const auto [ number, sequence ] = claim( header(), 1 );
   Layout::Content numbered = content;
   numbered[ 0 ] = sequence;
   writeCell( cell( number ), number, false, numbered );
}

[[gnu::noinline]] void TraceFile::writeReadingTheClock( std::uint64_t site,
                                                        std::uint64_t a,
                                                        std::uint64_t b,
                                                        std::uint64_t c,
                                                        std::uint64_t d ) noexcept {
   const std::uint64_t time = timeWord( Vex::eventTime() );
   if ( !manyWriters() ) {
      writeAlone( { 0, time, site, a, b, c, d } );
      return;
   }
   const auto [ number, sequence ] = claimShared( header(), 1 );
   writeSharedCell( cell( number ), number, false, { sequence, time, site, a, b, c, d } );
}

// A time that is kept says, too, that nobody else writes.
void TraceFile::writeBare( DescriptorId descriptor ) noexcept {
   const std::uint64_t site = Layout::siteWord( descriptor, 0 );
   if ( Vex::eventTimeIsKept() ) [[likely]] {
      writeAlone( { 0, timeWord( Vex::keptEventTime() ), site } );
   } else {
      writeReadingTheClock( site, 0, 0, 0, 0 );
   }
}

void TraceFile::writeShort( std::uint64_t site,
                            std::uint64_t a,
                            std::uint64_t b,
                            std::uint64_t c,
                            std::uint64_t d ) noexcept {
   if ( Vex::eventTimeIsKept() ) [[likely]] {
      writeAlone( { 0, timeWord( Vex::keptEventTime() ), site, a, b, c, d } );
   } else {
      writeReadingTheClock( site, a, b, c, d );
   }
}

void TraceFile::writeLong( DescriptorId descriptor,
                           std::span< const std::byte > arguments ) noexcept {
   // A long text may be cut to very little: then all of it has room in the first cell.
   const auto inFirst =
      arguments.first( std::min( arguments.size(), Layout::inlineArgumentBytes ) );
   std::span< const std::byte > left = arguments.subspan( inFirst.size() );
   const std::uint64_t more = ( left.size() + Layout::cellBytes - 1 ) / Layout::cellBytes;
   const std::uint64_t time = timeWord( Vex::eventTime() );
   const bool shared = manyWriters();
   const auto [ first, sequence ] =
      shared ? claimShared( header(), 1 + more ) : claim( header(), 1 + more );
   const auto write = [ & ]( std::uint64_t number, const Layout::Content & content ) {
      const bool continues = number != first;
      if ( shared ) {
         return writeSharedCell( cell( number ), number, continues, content );
      }
      writeCell( cell( number ), number, continues, content );
      return true;
   };
   for ( std::uint64_t at = 1; at <= more; ++at ) {
      Layout::Content content{};
      const auto part = left.first( std::min( left.size(), Layout::cellBytes ) );
      std::memcpy( content.data(), part.data(), part.size() );
      left = left.subspan( part.size() );
      if ( !write( first + at, content ) ) {
         return;
      }
   }
   Layout::Content content{ sequence, time, Layout::siteWord( descriptor, arguments.size() ) };
   std::memcpy( content.data() + Layout::recordHeadBytes / sizeof( std::uint64_t ), inFirst.data(),
                inFirst.size() );
   write( first, content );
}

} // namespace Jotter
