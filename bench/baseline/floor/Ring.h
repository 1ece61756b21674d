#pragma once

// The ring records of the floor: the cells of platform/Jotter/RingLayout.h, written by the shortest
// code that keeps what they promise to a reader (counters first; the stamp is busy meanwhile and
// comes back last with its check; a record whose texts are long takes a second cell), with the time
// of the framework's clock.
//
// Left out: several writers, descriptors (a site is a number), a text that is cut.

#include "bench/baseline/floor/Names.h"
#include "platform/Jotter/RingLayout.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Clock.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace Bench::Floor {

enum class Site : std::uint8_t {
   handleInitialized = 1,
   handleIntfFeature,
   handleMember,
   memberNotActive,
   memberActive,
   aclNotNeeded,
   aclNeeded,
   inInput,
   notInInput,
   handleMlagIntfStatus,
   handleMlagState,
   handlePeerInterlockLag,
   lagNotActive,
   revoking,
   sendingRequest,
   updateLinkState,
   transition,
   handleLinkState,
   startingTimeout,
   stoppingTimeout,
   handleTimer,
   resetTimer,
   handlePeerResponse,
   handleTimeout,
   responseLost,
   timeoutOccurred,
   shouldInstall,
   notMlagIntf,
   lagDown,
   notReady,
   aclMissing,
   satisfied,
   handleLag,
   handleLagInactive,
};

namespace Layout = Jotter::Layout;

// How an argument lies in a record.
inline std::size_t sizeOf( Intf intf ) noexcept {
   return 1 + nameOf( intf ).size();
}
inline std::byte * put( std::byte * to, Intf intf ) noexcept {
   const std::string_view name = nameOf( intf );
   *to = static_cast< std::byte >( name.size() );
   std::memcpy( to + 1, name.data(), name.size() );
   return to + 1 + name.size();
}
inline std::size_t sizeOf( std::uint64_t /* number */ ) noexcept {
   return sizeof( std::uint64_t );
}
inline std::byte * put( std::byte * to, std::uint64_t number ) noexcept {
   std::memcpy( to, &number, sizeof number );
   return to + sizeof number;
}

class Ring {
 public:
   template < class... Arguments >
   void operator()( Site site, Arguments... arguments ) noexcept {
      const std::size_t size = ( std::size_t{ 0 } + ... + sizeOf( arguments ) );
      // What readers see of the counters is never behind the cells.
      const std::uint64_t number = nextCell_.load( std::memory_order_relaxed );
      const std::uint64_t sequence = nextSequence_.load( std::memory_order_relaxed ) + 1;
      const bool isLong = size > Layout::inlineArgumentBytes;
      nextCell_.store( number + ( isLong ? 2 : 1 ), std::memory_order_release );
      nextSequence_.store( sequence, std::memory_order_release );
      Layout::Content content{ sequence, std::bit_cast< std::uint64_t >( Vex::now().value() ),
                               static_cast< std::uint32_t >( site ) |
                                  static_cast< std::uint64_t >( size ) << 32U };
      if ( isLong ) [[unlikely]] {
         writeLong( number, content, arguments... );
         return;
      }
      [[maybe_unused]] auto * end =
         reinterpret_cast< std::byte * >( content.data() ) + Layout::recordHeadBytes;
      ( ( end = put( end, arguments ) ), ... );
      writeCell( number, false, content );
   }

   std::uint64_t written() const noexcept {
      return nextSequence_.load( std::memory_order_relaxed );
   }

 private:
   static constexpr std::uint64_t mask = Jotter::TraceFile::defaultCells - 1;

   template < class... Arguments >
   void writeLong( std::uint64_t number,
                   const Layout::Content & head,
                   Arguments... arguments ) noexcept {
      std::array< Layout::Content, 2 > content{ head };
      [[maybe_unused]] auto * end =
         reinterpret_cast< std::byte * >( content.data() ) + Layout::recordHeadBytes;
      ( ( end = put( end, arguments ) ), ... );
      cells_[ number & mask ].stamp.store( Layout::busy, std::memory_order_release );
      writeCell( number + 1, true, content[ 1 ] );
      writeCell( number, false, content[ 0 ] );
   }

   void writeCell( std::uint64_t number,
                   bool continues,
                   const Layout::Content & content ) noexcept {
      Layout::Cell & cell = cells_[ number & mask ];
      cell.stamp.store( Layout::busy, std::memory_order_release );
      std::atomic_thread_fence( std::memory_order_release );
      for ( std::size_t word = 0; word < Layout::cellWords; ++word ) {
         cell.content[ word ].store( content[ word ], std::memory_order_relaxed );
      }
      cell.stamp.store( Layout::stampOf( Layout::tagOf( number, continues ), content ),
                        std::memory_order_release );
   }

   std::vector< Layout::Cell > cells_{ Jotter::TraceFile::defaultCells };
   Layout::Word nextCell_{ 0 };
   Layout::Word nextSequence_{ 0 };
};

/// In the place of the ring where there is none: every message is nothing at all.
class NoRing {
 public:
   template < class... Arguments >
   void operator()( Site /* site */, Arguments... /* arguments */ ) const noexcept {}
   static std::uint64_t written() noexcept { return 0; }
};

} // namespace Bench::Floor
