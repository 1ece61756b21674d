#pragma once

// The ring-buffer trace: a bounded ring of binary records that overwrites its oldest. Writing a
// record neither allocates nor locks nor blocks. Read it back with Jotter::readRecords
// (platform/Jotter/TraceReader.h); the layout is in platform/Jotter/RingLayout.h.
//
// Ownership: whoever creates a file holds it; Duplog borrows the default one.
// Threading: in the thread-safe pointer mode any thread may write, otherwise the one thread that
// owns the objects. Reading at the same time is safe; records that are being overwritten are left
// out.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/RecordEncoding.h"
#include "platform/Jotter/RingLayout.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Export.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

namespace Jotter {

class VEX_EXPORT TraceFile {
 public:
   static constexpr std::uint32_t defaultCells = 1U << 14U; // 1 MiB

   /// An empty ring of at least `cells` cells (rounded up to a power of two) of 64 bytes.
   explicit TraceFile( std::uint32_t cells = defaultCells );
   TraceFile( const TraceFile & ) = delete;
   TraceFile & operator=( const TraceFile & ) = delete;
   TraceFile( TraceFile && ) = delete;
   TraceFile & operator=( TraceFile && ) = delete;
   ~TraceFile();

   /// Records one message of the call site `descriptor`. Of the pieces, those that are arguments
   /// are recorded (platform/Jotter/RecordEncoding.h).
   template < class... Pieces >
   void write( DescriptorId descriptor, const Pieces &... pieces ) noexcept {
      const std::size_t size = ( std::size_t{ 0 } + ... + encodedSize( pieces ) );
      if ( size <= Layout::inlineArgumentBytes ) [[likely]] {
         std::array< std::uint64_t, Layout::cellWords > content{};
         [[maybe_unused]] auto * end =
            reinterpret_cast< std::byte * >( content.data() ) + Layout::recordHeadBytes;
         ( ( end = encode( end, pieces ) ), ... );
         writeShort( descriptor, size, content );
      } else {
         std::array< std::byte, longestRecord< Pieces... > > arguments; // NOLINT: filled below
         [[maybe_unused]] auto * end = arguments.data();
         ( ( end = encode( end, pieces ) ), ... );
         writeLong( descriptor, std::span( arguments ).first( size ) );
      }
   }

   /// Makes a descriptor known to readers of this file; a known one is left as it is. Descriptors
   /// come in the order of their numbers.
   void describe( DescriptorId id, const Descriptor & descriptor );

   /// The whole file as a reader sees it.
   std::span< const std::byte > bytes() const noexcept { return { memory_.get(), size_ }; }

   /// How many records have been written, overwritten ones included.
   std::uint64_t written() const noexcept {
      return header().nextSequence.load( std::memory_order_relaxed );
   }

 private:
   struct Free {
      void operator()( std::byte * memory ) const noexcept;
   };

   Layout::Header & header() const noexcept {
      return *reinterpret_cast< Layout::Header * >( memory_.get() );
   }

   static void setHead( std::uint64_t * content,
                        std::uint64_t sequence,
                        DescriptorId descriptor,
                        std::size_t size ) noexcept {
      content[ 0 ] = sequence;
      content[ 1 ] = std::bit_cast< std::uint64_t >( Vex::now().value() );
      content[ 2 ] = descriptor | static_cast< std::uint64_t >( size ) << 32U;
   }

   void writeShort( DescriptorId descriptor,
                    std::size_t size,
                    std::array< std::uint64_t, Layout::cellWords > & content ) noexcept;
   void writeLong( DescriptorId descriptor, std::span< const std::byte > arguments ) noexcept;
   void writeCell( std::uint64_t number,
                   bool continues,
                   const std::array< std::uint64_t, Layout::cellWords > & content ) noexcept;
   static std::uint64_t claim( Layout::Word & counter, std::uint64_t count ) noexcept;

   std::size_t size_;
   std::unique_ptr< std::byte, Free > memory_;
   Layout::Cell * cells_;
   std::uint64_t cellMask_;
   DescriptorId described_ = 0;
};

} // namespace Jotter
