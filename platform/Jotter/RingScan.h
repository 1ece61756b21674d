#pragma once

// The cells of a trace file as they are at one moment, for whoever makes records of them.
//
// Ownership: a scan is a copy; the file may change or go away afterwards.

#include "platform/Jotter/RingLayout.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Jotter {

/// The parts of a trace file. Of a file that was cut there are fewer cells than its header says.
struct FileParts {
   std::span< const std::byte > bytes;
   const Layout::Header & header;
   std::span< const Layout::Cell > cells;
};

/// Throws TraceFileError. `bytes` are aligned as a cell is.
FileParts partsOf( std::span< const std::byte > bytes );

/// The call sites of a trace file, as they are encoded there.
struct DescriptorArea {
   std::span< const std::byte > used;
   bool cut; // there was more, or there is no telling how much is in use
};
DescriptorArea descriptorAreaOf( const FileParts & file ) noexcept;

class RingScan {
 public:
   explicit RingScan( const FileParts & file );

   /// The cells that the file should hold: those from `begin` to before `end`, by their numbers.
   std::uint64_t begin() const noexcept { return begin_; }
   std::uint64_t end() const noexcept { return end_; }

   /// The content of this cell of them; null when it is not there whole.
   const Layout::Content * cell( std::uint64_t number, bool continues ) const noexcept;
   /// Is it there whole, as a cell of either kind?
   bool holds( std::uint64_t number ) const noexcept {
      return cell( number, false ) != nullptr || cell( number, true ) != nullptr;
   }

   /// The number of records claimed, as the header has it.
   std::uint64_t claimed() const noexcept { return before_.sequence; }
   std::uint64_t claimedAfterwards() const noexcept { return after_.sequence; }

   /// The header's counters fit the cells. Otherwise the cells alone were asked.
   bool countersFit() const noexcept { return countersFit_; }
   /// Writers have been so fast that they have overwritten most of the ring meanwhile: what is not
   /// there need not be damaged.
   bool lapped() const noexcept {
      return countersFit_ && after_.cell != before_.cell && end_ - begin_ < cellCount_ / 2;
   }

 private:
   struct Counters {
      std::uint64_t sequence;
      std::uint64_t cell;
   };
   struct Copy {
      std::uint64_t stamp; // 0: not whole
      Layout::Content content;
   };

   void scan( const FileParts & file );
   static Counters countersOf( const Layout::Header & header ) noexcept;
   static Copy copyOf( const Layout::Cell & cell ) noexcept;
   bool fit() const noexcept;
   void chooseWindow() noexcept;

   std::uint64_t cellCount_;
   std::vector< Copy > copies_;
   Counters before_{}; // the copies were made
   Counters after_{};
   std::uint64_t begin_ = 0;
   std::uint64_t end_ = 0;
   bool countersFit_ = true;
   bool whole_ = false;
};

} // namespace Jotter
