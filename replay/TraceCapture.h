#pragma once

// Takes the interlocks' text trace for as long as it lives: shows the records of some levels, and
// keeps the messages that `expect trace` asks for.
//
// Ownership: borrows `output`, which outlives it. One at a time.

#include "platform/Vex/Trace.h"
#include "replay/Output.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Replay {

enum class Keep : std::uint8_t { nothing, messages };

class TraceCapture final : public Vex::TraceSink {
 public:
   TraceCapture( Output & output, std::uint32_t shownLevels, Keep keep );
   TraceCapture( const TraceCapture & ) = delete;
   TraceCapture & operator=( const TraceCapture & ) = delete;
   TraceCapture( TraceCapture && ) = delete;
   TraceCapture & operator=( TraceCapture && ) = delete;
   ~TraceCapture() override;

   void write( const Vex::TraceRecord & record ) override;

   /// Forgets the messages kept so far.
   void forget() noexcept { messages_.clear(); }
   /// Some kept message contains `text`.
   bool contains( std::string_view text ) const noexcept;
   std::size_t kept() const noexcept { return messages_.size(); }

 private:
   struct Mask {
      Vex::TraceHandle & handle;
      std::uint32_t before;
   };

   Output & output_;
   std::uint32_t shownLevels_;
   Keep keep_;
   std::vector< std::string > messages_;
   std::vector< Mask > masks_;
   Vex::TraceSinkScope scope_; // last: from here on records come in
};

} // namespace Replay
