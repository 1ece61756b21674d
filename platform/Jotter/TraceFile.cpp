#include "platform/Jotter/TraceFile.h"

#include "platform/Jotter/DescriptorEncoding.h"
#include "platform/Vex/Assert.h"
#include "platform/Vex/Object.h"

#include <algorithm>
#include <new>

namespace Jotter {

namespace {

constexpr std::uint32_t headerRoom = 128;
constexpr std::uint32_t descriptorRoom = 64 * 1024 - headerRoom;
constexpr std::uint32_t cellOffset = headerRoom + descriptorRoom;
// A record of the longest arguments must fit with room to spare.
constexpr std::uint32_t fewestCells = 256;
constexpr std::align_val_t alignment{ alignof( Layout::Cell ) };

static_assert( sizeof( Layout::Header ) <= headerRoom );
static_assert( cellOffset % sizeof( Layout::Cell ) == 0 );

std::uint32_t cellCountFor( std::uint32_t cells ) noexcept {
   return std::bit_ceil( std::max( cells, fewestCells ) );
}

std::size_t fileSize( std::uint32_t cells ) noexcept {
   return cellOffset + std::size_t{ cellCountFor( cells ) } * sizeof( Layout::Cell );
}

} // namespace

void TraceFile::Free::operator()( std::byte * memory ) const noexcept {
   ::operator delete( memory, alignment );
}

TraceFile::TraceFile( std::uint32_t cells )
    : size_( fileSize( cells ) ),
      memory_( static_cast< std::byte * >( ::operator new( size_, alignment ) ) ),
      cells_( reinterpret_cast< Layout::Cell * >( memory_.get() + cellOffset ) ),
      cellMask_( cellCountFor( cells ) - 1 ) {
   // Zero is the empty state of every word: no record, no descriptor.
   std::memset( memory_.get(), 0, size_ );
   auto & head = *new ( memory_.get() ) Layout::Header{};
   head.magic = Layout::magic;
   head.version = Layout::version;
   head.cellCount = cellCountFor( cells );
   head.descriptorOffset = headerRoom;
   head.descriptorRoom = descriptorRoom;
   head.cellOffset = cellOffset;
   std::uninitialized_value_construct_n( cells_, head.cellCount );
}

TraceFile::~TraceFile() = default;

void TraceFile::describe( DescriptorId id, const Descriptor & descriptor ) {
   if ( id <= described_ ) {
      return;
   }
   VEX_ASSERT( id == described_ + 1 );
   described_ = id;
   const std::vector< std::byte > entry = encodeDescriptor( id, descriptor );
   Layout::Header & head = header();
   const std::uint64_t used = head.descriptorBytes.load( std::memory_order_relaxed );
   if ( entry.size() > head.descriptorRoom - used ) {
      return; // its records will show as those of an unknown call site
   }
   std::memcpy( memory_.get() + head.descriptorOffset + used, entry.data(), entry.size() );
   head.descriptorBytes.store( used + entry.size(), std::memory_order_release );
}

std::uint64_t TraceFile::claim( Layout::Word & counter, std::uint64_t count ) noexcept {
   if ( Vex::pointerMode() == Vex::PointerMode::threadSafe ) {
      return counter.fetch_add( count, std::memory_order_relaxed );
   }
   const std::uint64_t first = counter.load( std::memory_order_relaxed );
   counter.store( first + count, std::memory_order_relaxed );
   return first;
}

void TraceFile::writeCell(
   std::uint64_t number,
   bool continues,
   const std::array< std::uint64_t, Layout::cellWords > & content ) noexcept {
   Layout::Cell & cell = cells_[ number & cellMask_ ];
   cell.stamp.store( 0, std::memory_order_relaxed );
   std::atomic_thread_fence(
      std::memory_order_release ); // the old stamp goes before the old content
   for ( std::size_t word = 0; word < Layout::cellWords; ++word ) {
      cell.content[ word ].store( content[ word ], std::memory_order_relaxed );
   }
   cell.stamp.store( Layout::stampOf( number, continues ), std::memory_order_release );
}

void TraceFile::writeShort( DescriptorId descriptor,
                            std::size_t size,
                            std::array< std::uint64_t, Layout::cellWords > & content ) noexcept {
   setHead( content.data(), claim( header().nextSequence, 1 ) + 1, descriptor, size );
   writeCell( claim( header().nextCell, 1 ), false, content );
}

void TraceFile::writeLong( DescriptorId descriptor,
                           std::span< const std::byte > arguments ) noexcept {
   const std::size_t rest = arguments.size() - Layout::inlineArgumentBytes;
   const std::uint64_t more = ( rest + Layout::cellBytes - 1 ) / Layout::cellBytes;
   const std::uint64_t sequence = claim( header().nextSequence, 1 ) + 1;
   const std::uint64_t first = claim( header().nextCell, 1 + more );
   // The first cell's old record goes before anything else; its stamp comes back last.
   cells_[ first & cellMask_ ].stamp.store( 0, std::memory_order_relaxed );
   std::span< const std::byte > left = arguments.subspan( Layout::inlineArgumentBytes );
   for ( std::uint64_t at = 1; at <= more; ++at ) {
      std::array< std::uint64_t, Layout::cellWords > content{};
      const auto part = left.first( std::min( left.size(), Layout::cellBytes ) );
      std::memcpy( content.data(), part.data(), part.size() );
      left = left.subspan( part.size() );
      writeCell( first + at, true, content );
   }
   std::array< std::uint64_t, Layout::cellWords > content{};
   setHead( content.data(), sequence, descriptor, arguments.size() );
   std::memcpy( content.data() + Layout::recordHeadBytes / sizeof( std::uint64_t ),
                arguments.data(), Layout::inlineArgumentBytes );
   writeCell( first, false, content );
}

} // namespace Jotter
