#pragma once

// The layout of a trace file, in memory or on disk, native byte order (little-endian):
//
//    Header | descriptor area | cells
//
// Header: what never changes, with a check (FNV-1a) over it; then what changes: the bytes of the
// descriptor area in use, with their complement as check, and two counters, of the cells and of the
// records that writers have claimed. A writer claims its cells, then its sequence number, and
// writes afterwards, so that the counters are never behind the cells.
//
// The descriptor area grows from its start; its size in the header is advanced after an entry is
// complete. Each entry carries a check of its own (DescriptorEncoding.cpp).
//
// A cell is one cache line: a stamp and seven words of content. Cells are numbered without end and
// written round and round; cell n lies at place n % cellCount. The stamp of a cell that was never
// written is 0, that of one being written is 1. Otherwise its low half is the tag, the low 32 bits
// of 2 * ( n + 1 ), plus 1 for a cell that continues a record; its high half is a check over tag
// and content. Any single byte of a cell that is changed shows, and of all other changes all but
// one in 2^32. Who dies in the middle of a cell leaves a 1, which is never whole.
//
// A cell that two writers have written at once, because one of them stalled while the other went
// round the ring, cannot come to be: in the thread-safe mode a writer puts the 1 into a stamp by an
// exchange of what it saw there, writes only if that succeeds, and never takes a cell that another
// one is writing or that holds a higher number; then it leaves its record out, and the gap in the
// sequence numbers tells. In the plain mode there is one writer. A reader takes a cell as whole
// when its stamp is the right one for its content, and the same before and after it has read that.
//
// A record is one cell, or several that follow one another when its arguments are long; its first
// cell is written last. Content: sequence (from 1), time (seconds, double; that of the event which
// the record belongs to, TraceFile.h), descriptor and argument size (32 bits each), then the
// arguments as the descriptor's placeholders have them:
//
//    text      length (1 byte; 255: two bytes follow, of which bit 15 says that the text was cut),
//              then the bytes
//    boolean   1 byte
//    number    8 bytes
//    time      8 bytes, double

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace Jotter::Layout {

inline constexpr std::array< char, 8 > magic{ 'J', 'O', 'T', 'T', 'E', 'R', '\n', '\0' };
inline constexpr std::uint32_t version = 2;

using Word = std::atomic< std::uint64_t >;
static_assert( Word::is_always_lock_free && sizeof( Word ) == 8 );
static_assert( std::endian::native == std::endian::little,
               "the layout is that of little-endian machines" );

/// The first 64 bytes of a trace file.
struct Header {
   std::array< char, 8 > magic;
   std::uint32_t version;
   std::uint32_t cellCount; // a power of two
   std::uint32_t descriptorOffset; // bytes from the start of the file
   std::uint32_t descriptorRoom; // bytes
   std::uint32_t cellOffset; // bytes from the start of the file, a multiple of 64
   std::uint32_t reserved; // 0
   std::uint64_t check; // over all before it
   Word descriptorBytes; // in use, as complemented() has them
   Word nextCell; // number of the next cell to be claimed
   Word nextSequence; // of the next record, less 1
};
static_assert( sizeof( Header ) == 64 );

/// FNV-1a. Each step maps different values to different ones, so that a single byte that is changed
/// changes the result.
constexpr std::uint64_t checkOf( std::span< const std::byte > bytes ) noexcept {
   std::uint64_t check = 0xCBF29CE484222325U;
   for ( const std::byte byte : bytes ) {
      check = ( check ^ static_cast< std::uint64_t >( byte ) ) * 0x100000001B3U;
   }
   return check;
}

constexpr std::uint64_t complemented( std::uint32_t value ) noexcept {
   return value | std::uint64_t{ ~value } << 32U;
}

inline constexpr std::size_t cellWords = 7;
inline constexpr std::size_t cellBytes = cellWords * sizeof( std::uint64_t );
using Content = std::array< std::uint64_t, cellWords >;

/// One cell of the ring: its content, and what the stamp says of it.
struct alignas( 64 ) Cell {
   Word stamp;
   std::array< Word, cellWords > content;
};
static_assert( sizeof( Cell ) == 64 );

/// The stamp of a cell that is being written.
inline constexpr std::uint64_t busy = 1;

constexpr std::uint32_t tagOf( std::uint64_t cell, bool continues ) noexcept {
   return static_cast< std::uint32_t >( 2 * ( cell + 1 ) + ( continues ? 1 : 0 ) );
}

/// What the words of a cell and its tag are multiplied with; the high half of the sum is the check.
/// Chosen so that no change of a single byte moves the sum by less than 2^32, in either direction:
/// such a change always reaches the high half.
inline constexpr std::array< std::uint64_t, cellWords + 1 > factors{
   0x86DC283CF0480FF9U, 0xC7EAA0992CB6916DU, 0xCA118783593942A5U, 0x9509BB0A9BF13331U,
   0x92E1BC7656670B15U, 0xF5EC52ED01088475U, 0xA909406C2E416789U, 0xD9BA1B0D5C906159U };

/// Does the same for each word of a cell, without a loop: words that are known to be zero then cost
/// no multiplication, and all others stay in registers.
template < class ForWord >
[[gnu::always_inline]] constexpr void forEachWord( ForWord forWord ) noexcept {
   [ & ]< std::size_t... word >( std::index_sequence< word... > ) {
      ( forWord( word ), ... );
   }( std::make_index_sequence< cellWords >() );
}

[[gnu::always_inline]] constexpr std::uint64_t stampOf( std::uint32_t tag,
                                                        const Content & content ) noexcept {
   std::uint64_t sum = tag * factors[ cellWords ];
   forEachWord( [ & ]( std::size_t word ) { sum += content[ word ] * factors[ word ]; } );
   return ( sum & 0xFFFFFFFF00000000U ) | tag;
}

constexpr std::uint64_t siteWord( std::uint32_t descriptor, std::size_t argumentBytes ) noexcept {
   return descriptor | std::uint64_t{ argumentBytes } << 32U;
}

/// Sequence, time, descriptor and argument size.
inline constexpr std::size_t recordHeadBytes = 24;
/// Arguments that fit into a record of one cell.
inline constexpr std::size_t inlineArgumentBytes = cellBytes - recordHeadBytes;

/// A longer text is cut here, at the end of a character, and marked.
inline constexpr std::size_t longestText = 1024;
inline constexpr std::size_t longTextMark = 255;
inline constexpr std::uint16_t cutBit = 0x8000;

} // namespace Jotter::Layout
