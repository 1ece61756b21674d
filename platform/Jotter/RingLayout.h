#pragma once

// The layout of a trace file, in memory or on disk, native byte order:
//
//    Header | descriptor area | cells
//
// The descriptor area grows from its start; `descriptorBytes` is advanced after an entry is
// complete.
//
// A cell is one cache line: a stamp and seven words of content. Cells are numbered without end and
// written round and round; cell n lies at place n % cellCount. While a cell is being written its
// stamp is 0; then it is 2 * ( n + 1 ), plus 1 for a cell that continues a record. Who dies in the
// middle of a record leaves a cell whose stamp says so. A reader takes a cell as whole when its
// stamp is the one that belongs to n, before and after it has read the content.
//
// A record is one cell, or several that follow one another when its arguments are long; its first
// cell is stamped last. Content: sequence (from 1), time (seconds, double), descriptor and argument
// size (32 bits each), then the arguments as the descriptor's placeholders have them:
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

namespace Jotter::Layout {

inline constexpr std::array< char, 8 > magic{ 'J', 'O', 'T', 'T', 'E', 'R', '\n', '\0' };
inline constexpr std::uint32_t version = 1;

using Word = std::atomic< std::uint64_t >;
static_assert( Word::is_always_lock_free && sizeof( Word ) == 8 );
static_assert( std::endian::native == std::endian::little,
               "the layout is that of little-endian machines" );

struct Header {
   std::array< char, 8 > magic;
   std::uint32_t version;
   std::uint32_t cellCount; // a power of two
   std::uint32_t descriptorOffset; // bytes from the start of the file
   std::uint32_t descriptorRoom; // bytes
   std::uint32_t cellOffset; // bytes from the start of the file, a multiple of 64
   std::uint32_t reserved;
   Word descriptorBytes; // in use
   Word nextCell; // number of the next cell to be written
   Word nextSequence; // of the next record, less 1
};

inline constexpr std::size_t cellWords = 7;
inline constexpr std::size_t cellBytes = cellWords * sizeof( std::uint64_t );

struct alignas( 64 ) Cell {
   Word stamp;
   std::array< Word, cellWords > content;
};
static_assert( sizeof( Cell ) == 64 );

constexpr std::uint64_t stampOf( std::uint64_t cell, bool continues ) noexcept {
   return 2 * ( cell + 1 ) + ( continues ? 1 : 0 );
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
