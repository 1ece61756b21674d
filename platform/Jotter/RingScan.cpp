#include "platform/Jotter/RingScan.h"

#include "platform/Jotter/TraceFileError.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string>

namespace Jotter {

namespace {

// How far cell `a` is ahead of cell `b`, given their tags. Exact while they are less than 2^30
// cells apart, and a ring is far smaller.
std::int32_t ahead( std::uint32_t a, std::uint32_t b ) noexcept {
   return static_cast< std::int32_t >( ( a & ~1U ) - ( b & ~1U ) ) / 2;
}

std::uint32_t tagIn( std::uint64_t stamp ) noexcept {
   return static_cast< std::uint32_t >( stamp );
}

void checkHeader( std::span< const std::byte > bytes ) {
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
   if ( header.check != Layout::checkOf( bytes.first( offsetof( Layout::Header, check ) ) ) ||
        header.descriptorOffset < sizeof( Layout::Header ) || descriptorEnd > header.cellOffset ||
        header.cellOffset % alignof( Layout::Cell ) != 0 ||
        !std::has_single_bit( header.cellCount ) ) {
      throw TraceFileError( "damaged trace file: its header contradicts itself" );
   }
}

} // namespace

FileParts partsOf( std::span< const std::byte > bytes ) {
   checkHeader( bytes );
   const auto & header = *reinterpret_cast< const Layout::Header * >( bytes.data() );
   const std::size_t from = std::min< std::size_t >( header.cellOffset, bytes.size() );
   const auto * const cells = reinterpret_cast< const Layout::Cell * >( bytes.data() + from );
   const std::size_t there = ( bytes.size() - from ) / sizeof( Layout::Cell );
   return { bytes, header, { cells, std::min< std::size_t >( there, header.cellCount ) } };
}

DescriptorArea descriptorAreaOf( const FileParts & file ) noexcept {
   // The bytes in use, with their complement; where they contradict each other, all are looked at.
   const std::uint64_t word = file.header.descriptorBytes.load( std::memory_order_acquire );
   const auto said = static_cast< std::uint32_t >( word );
   const bool sound = word == Layout::complemented( said ) && said <= file.header.descriptorRoom;
   const std::size_t offset =
      std::min< std::size_t >( file.header.descriptorOffset, file.bytes.size() );
   const std::size_t wanted = sound ? said : file.header.descriptorRoom;
   const auto used = file.bytes.subspan( offset );
   return { used.first( std::min( wanted, used.size() ) ), !sound || wanted > used.size() };
}

RingScan::RingScan( const FileParts & file ) : cellCount_( file.header.cellCount ) {
   // A writer may be at work: what is missing because of that is there, or claimed by a later
   // record, when one looks again.
   for ( int attempt = 0; attempt < 4 && !whole_; ++attempt ) {
      scan( file );
   }
}

// Sequence first: the cells of every record that it counts are then counted too.
RingScan::Counters RingScan::countersOf( const Layout::Header & header ) noexcept {
   const std::uint64_t sequence = header.nextSequence.load( std::memory_order_acquire );
   return { sequence, header.nextCell.load( std::memory_order_acquire ) };
}

RingScan::Copy RingScan::copyOf( const Layout::Cell & cell ) noexcept {
   const std::uint64_t stamp = cell.stamp.load( std::memory_order_acquire );
   if ( stamp == 0 || stamp == Layout::busy ) {
      return { 0, {} };
   }
   Layout::Content content{};
   for ( std::size_t word = 0; word < content.size(); ++word ) {
      content[ word ] = cell.content[ word ].load( std::memory_order_relaxed );
   }
   std::atomic_thread_fence( std::memory_order_acquire );
   if ( cell.stamp.load( std::memory_order_relaxed ) != stamp ||
        Layout::stampOf( tagIn( stamp ), content ) != stamp ) {
      return { 0, {} }; // overwritten meanwhile, or damaged
   }
   return { stamp, content };
}

void RingScan::scan( const FileParts & file ) {
   before_ = countersOf( file.header );
   copies_.clear();
   copies_.reserve( file.cells.size() );
   for ( std::size_t place = 0; place < file.cells.size(); ++place ) {
      copies_.push_back( copyOf( file.cells[ place ] ) );
      // Tags go round far beyond the number of cells, which is a power of two: a cell that lies at
      // another's place is none of ours.
      const std::uint32_t tag = tagIn( copies_.back().stamp );
      if ( ( ( tag / 2 - 1 ) & ( cellCount_ - 1 ) ) != place ) {
         copies_.back().stamp = 0;
      }
   }
   after_ = countersOf( file.header );
   countersFit_ = fit();
   chooseWindow();
   whole_ = !lapped();
   for ( std::uint64_t number = begin_; whole_ && number < end_; ++number ) {
      whole_ = holds( number );
   }
}

bool RingScan::fit() const noexcept {
   if ( after_.sequence > after_.cell || after_.cell / cellCount_ > after_.sequence ) {
      return false; // a record takes one cell at least, and all of them at most
   }
   const std::uint32_t newest = Layout::tagOf( after_.cell - 1, false );
   const std::uint32_t newestAtFirst = Layout::tagOf( before_.cell - 1, false );
   const auto cellCount = static_cast< std::int64_t >( cellCount_ );
   bool some = false;
   bool recent = false;
   for ( const Copy & copy : copies_ ) {
      if ( copy.stamp != 0 ) {
         if ( ahead( newest, tagIn( copy.stamp ) ) < 0 ) {
            return false;
         }
         some = true;
         recent = recent || ahead( newestAtFirst, tagIn( copy.stamp ) ) < cellCount;
      }
   }
   return recent || !some;
}

// All cells from `begin` on were claimed before the copies were made, and none of them was claimed
// again before they were finished.
void RingScan::chooseWindow() noexcept {
   if ( countersFit_ ) {
      end_ = before_.cell;
      begin_ = std::min( after_.cell - std::min( after_.cell, cellCount_ ), end_ );
      return;
   }
   std::optional< std::uint32_t > newest;
   for ( const Copy & copy : copies_ ) {
      if ( copy.stamp != 0 && ( !newest || ahead( tagIn( copy.stamp ), *newest ) > 0 ) ) {
         newest = tagIn( copy.stamp );
      }
   }
   // A number that has the right tag, and a ring below it.
   end_ = newest ? ( std::uint64_t{ 1 } << 31U ) + *newest / 2 : 0;
   begin_ = end_ - std::min( end_, cellCount_ );
}

const Layout::Content * RingScan::cell( std::uint64_t number, bool continues ) const noexcept {
   const std::uint64_t place = number & ( cellCount_ - 1 );
   if ( number < begin_ || number >= end_ || place >= copies_.size() ) {
      return nullptr;
   }
   const Copy & copy = copies_[ static_cast< std::size_t >( place ) ];
   const bool wanted = copy.stamp != 0 && tagIn( copy.stamp ) == Layout::tagOf( number, continues );
   return wanted ? &copy.content : nullptr;
}

} // namespace Jotter
