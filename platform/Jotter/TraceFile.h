#pragma once

// The ring-buffer trace: a bounded ring of binary records that overwrites its oldest, in plain
// memory or in a file that is mapped into memory. Writing a record neither allocates nor locks nor
// blocks. Read it back with Jotter::readTraceFile (platform/Jotter/TraceReader.h); the layout is in
// platform/Jotter/RingLayout.h.
//
// Ownership: whoever creates a trace file holds it; Duplog borrows the default one.
// Threading: in the thread-safe pointer mode any thread may write, otherwise the one thread that
// owns the objects. Reading at the same time is safe, from other processes too.
// Time: a record's time is that of its event (platform/Vex/EventClock.h): never later than the
// record, and at most 15 records old; outside of a notification, and in the thread-safe mode, its
// own.
// Death: the process may be killed at any instruction of these functions. What was written is whole
// in the file, and the record under way is recognised as such.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/RecordEncoding.h"
#include "platform/Jotter/RingLayout.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/String.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <tuple>

namespace Jotter {

class MappedFile;

class VEX_EXPORT TraceFile {
 public:
   static constexpr std::uint32_t defaultCells = 1U << 14U; // 1 MiB

   /// An empty ring of at least `cells` cells (rounded up to a power of two) of 64 bytes.
   explicit TraceFile( std::uint32_t cells = defaultCells );

   /// An empty ring in a new file `path` of at most `bytes` bytes, with as many cells, in powers of
   /// two, as fit. A trace file that a process which has ended left there becomes PATH.previous. It
   /// knows every descriptor that is registered by now, and holds the newest records of `before`,
   /// where that is given and stands still meanwhile.
   /// Throws TraceFileError, and leaves everything on disk as it was, when the file cannot be made.
   TraceFile( const Vex::String & path, std::size_t bytes, const TraceFile * before = nullptr );

   static constexpr std::size_t fewestBytes = std::size_t{ 80 } * 1024; // of a file
   TraceFile( const TraceFile & ) = delete;
   TraceFile & operator=( const TraceFile & ) = delete;
   TraceFile( TraceFile && ) = delete;
   TraceFile & operator=( TraceFile && ) = delete;
   ~TraceFile();

   /// Records one message of the call site `descriptor`. Of the pieces, those that are arguments
   /// are recorded (platform/Jotter/RecordEncoding.h).
   template < class... Pieces >
   void write( DescriptorId descriptor, const Pieces &... pieces ) noexcept {
      std::apply(
         [ & ]< class... Arguments >( Arguments... arguments ) {
            if constexpr ( sizeof...( Arguments ) == 0 ) {
               writeBare( descriptor );
            } else {
               writeArguments( descriptor, arguments... );
            }
         },
         std::tuple_cat( argumentOf( pieces )... ) );
   }

   /// Makes a descriptor known to readers of this file; a known one is left as it is. Descriptors
   /// come in the order of their numbers.
   void describe( DescriptorId id, const Descriptor & descriptor );

   /// Gives up the lock on a file on disk; writing goes on.
   void unlock() noexcept;

   /// The whole file as a reader sees it.
   std::span< const std::byte > bytes() const noexcept { return { base_, size_ }; }

   /// How many records have been written, overwritten ones included.
   std::uint64_t written() const noexcept {
      return header().nextSequence.load( std::memory_order_relaxed );
   }

 private:
   struct Free {
      void operator()( std::byte * memory ) const noexcept;
   };

   void format( std::uint32_t cellCount ) noexcept;
   void continueFrom( const TraceFile & other ) noexcept;
   Layout::Cell & cell( std::uint64_t number ) const noexcept {
      return cells_[ number & cellMask_ ];
   }
   Layout::Header & header() const noexcept {
      return *reinterpret_cast< Layout::Header * >( base_ );
   }

   // One function for all messages with such arguments, so that those that trace are short.
   template < class... Arguments >
   [[gnu::noinline]] void writeArguments( DescriptorId descriptor,
                                          Arguments... arguments ) noexcept {
      ShortArguments words;
      if ( ( words.add( arguments ) && ... ) ) [[likely]] {
         const auto [ a, b, c, d ] = words.words();
         writeShort( Layout::siteWord( descriptor, words.size() ), a, b, c, d );
      } else {
         encodeAndWriteLong( descriptor, arguments... );
      }
   }
   template < class... Arguments >
   [[gnu::noinline, gnu::cold]] void encodeAndWriteLong( DescriptorId descriptor,
                                                         Arguments... arguments ) noexcept {
      const std::size_t size = ( std::size_t{ 0 } + ... + encodedSize( arguments ) );
      std::array< std::byte, longestRecord< Arguments... > > encoded; // NOLINT: filled below
      auto * end = encoded.data();
      ( ( end = encode( end, arguments ) ), ... );
      writeLong( descriptor, std::span( encoded ).first( size ) );
   }

   // All that changes from record to record goes in registers.
   void writeBare( DescriptorId descriptor ) noexcept;
   void writeShort( std::uint64_t site,
                    std::uint64_t a,
                    std::uint64_t b,
                    std::uint64_t c,
                    std::uint64_t d ) noexcept;
   void writeReadingTheClock( std::uint64_t site,
                              std::uint64_t a,
                              std::uint64_t b,
                              std::uint64_t c,
                              std::uint64_t d ) noexcept;
   void writeAlone( const Layout::Content & content ) noexcept;
   void writeLong( DescriptorId descriptor, std::span< const std::byte > arguments ) noexcept;

   std::size_t size_;
   std::unique_ptr< MappedFile > mapped_; // one of these two
   std::unique_ptr< std::byte, Free > memory_;
   std::byte * base_;
   Layout::Cell * cells_ = nullptr;
   std::uint64_t cellMask_ = 0;
   DescriptorId described_ = 0;
};

} // namespace Jotter
