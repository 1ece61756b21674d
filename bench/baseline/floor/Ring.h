#pragma once

// The ring records of the floor: the cells of platform/Jotter/RingLayout.h, written by the shortest
// code that keeps what they promise to a reader (counters first; the stamp is busy meanwhile and
// comes back last with its check; a record whose texts are long takes a second cell), with the time
// of the framework's clock, which is read as the library reads it: once an event, anew for every
// 16th record, and for each record outside of an event. ClockedRing reads it for each record.
//
// Left out: several writers, descriptors (a site is a number), a text that is cut.

#include "bench/baseline/floor/Names.h"
#include "platform/Jotter/RecordEncoding.h"
#include "platform/Jotter/RingLayout.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/EventClock.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
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

/// Made by whoever changes an input, for as long as that lasts.
template < class Ring >
class Event {
 public:
   explicit Event( Ring & ring ) noexcept : ring_( ring ) { ring_.eventIs( true ); }
   Event( const Event & ) = delete;
   Event & operator=( const Event & ) = delete;
   Event( Event && ) = delete;
   Event & operator=( Event && ) = delete;
   ~Event() { ring_.eventIs( false ); }

 private:
   Ring & ring_;
};

template < bool clockForEachRecord >
class RingOf {
 public:
   void eventIs( bool underWay ) noexcept {
      left_ = 0;
      shared_ = underWay && !clockForEachRecord ? Vex::callersPerClockRead - 1 : 0;
   }

   template < class... Arguments >
   void operator()( Site site, Arguments... arguments ) noexcept {
      Jotter::ShortArguments all;
      if ( !( add( all, arguments ) && ... ) ) [[unlikely]] {
         writeLong( site, arguments... );
         return;
      }
      const auto [ number, sequence ] = claim( 1 );
      const auto [ a, b, c, d ] = all.words();
      writeCell(
         number, false,
         { sequence, time(), Layout::siteWord( numberOf( site ), all.size() ), a, b, c, d } );
   }

   std::uint64_t written() const noexcept {
      return nextSequence_.load( std::memory_order_relaxed );
   }

 private:
   static constexpr std::uint64_t mask = Jotter::TraceFile::defaultCells - 1;

   struct Claim {
      std::uint64_t cell;
      std::uint64_t sequence;
   };

   static constexpr std::uint32_t numberOf( Site site ) noexcept {
      return static_cast< std::uint32_t >( site );
   }
   static bool add( Jotter::ShortArguments & all, Intf intf ) noexcept {
      return all.add( Names::instance().of( intf ) );
   }
   static bool add( Jotter::ShortArguments & all, std::uint64_t number ) noexcept {
      return all.add( number );
   }
   static std::byte * put( std::byte * to, Intf intf ) noexcept {
      const std::string & name = nameOf( intf );
      *to = static_cast< std::byte >( name.size() );
      std::memcpy( to + 1, name.data(), name.size() );
      return to + 1 + name.size();
   }
   static std::byte * put( std::byte * to, std::uint64_t number ) noexcept {
      std::memcpy( to, &number, sizeof number );
      return to + sizeof number;
   }

   std::uint64_t time() noexcept {
      if ( left_ == 0 ) [[unlikely]] {
         left_ = shared_;
         time_ = std::bit_cast< std::uint64_t >( Vex::now().value() );
         return time_;
      }
      --left_;
      return time_;
   }

   // What readers see of the counters is never behind the cells.
   Claim claim( std::uint64_t cells ) noexcept {
      const std::uint64_t number = nextCell_.load( std::memory_order_relaxed );
      const std::uint64_t sequence = nextSequence_.load( std::memory_order_relaxed ) + 1;
      nextCell_.store( number + cells, std::memory_order_release );
      nextSequence_.store( sequence, std::memory_order_release );
      return { number, sequence };
   }

   template < class... Arguments >
   [[gnu::noinline, gnu::cold]] void writeLong( Site site, Arguments... arguments ) noexcept {
      const auto [ number, sequence ] = claim( 2 );
      std::array< Layout::Content, 2 > content{};
      auto * const begin =
         reinterpret_cast< std::byte * >( content.data() ) + Layout::recordHeadBytes;
      auto * end = begin;
      ( ( end = put( end, arguments ) ), ... );
      content[ 0 ][ 0 ] = sequence;
      content[ 0 ][ 1 ] = time();
      content[ 0 ][ 2 ] =
         Layout::siteWord( numberOf( site ), static_cast< std::size_t >( end - begin ) );
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
      Layout::forEachWord( [ & ]( std::size_t word ) {
         cell.content[ word ].store( content[ word ], std::memory_order_relaxed );
      } );
      cell.stamp.store( Layout::stampOf( Layout::tagOf( number, continues ), content ),
                        std::memory_order_release );
   }

   std::vector< Layout::Cell > cells_{ Jotter::TraceFile::defaultCells };
   Layout::Word nextCell_{ 0 };
   Layout::Word nextSequence_{ 0 };
   std::uint64_t time_ = 0;
   std::uint32_t left_ = 0; // records that still get this time
   std::uint32_t shared_ = 0; // how many get the time that one of them has read
};

using Ring = RingOf< false >;
/// Reads the clock for each record.
using ClockedRing = RingOf< true >;

/// In the place of the ring where there is none: every message is nothing at all.
class NoRing {
 public:
   static void eventIs( bool /* underWay */ ) noexcept {}
   template < class... Arguments >
   void operator()( Site /* site */, Arguments... /* arguments */ ) const noexcept {}
   static std::uint64_t written() noexcept { return 0; }
};

} // namespace Bench::Floor
