#pragma once

// Takes the words of one statement one after the other, each as what the statement wants there. All
// errors are StatementErrors that name the word and what was wanted.

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Seconds.h"
#include "replay/Lexer.h"
#include "replay/Statement.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Replay {

class Words {
 public:
   explicit Words( std::span< const Word > words ) noexcept : words_( words ) {}

   /// How the whole statement is written, for messages.
   void usageIs( std::string_view usage ) noexcept { usage_ = usage; }

   bool more() const noexcept { return at_ < words_.size(); }
   /// The next word, which stays; there is one.
   std::string_view next() const noexcept { return words_[ at_ ].text; }
   /// Takes the next word if it is this one.
   bool takeIf( std::string_view keyword ) noexcept;
   /// An error when a word is left.
   void end() const;

   /// The next word, whatever it is; `what` is its place in the usage.
   std::string_view word( std::string_view what );
   Nodo::IntfId intf( std::string_view what );
   /// A name that may be empty, as `""`.
   Nodo::IntfId intfOrNone( std::string_view what );
   std::uint8_t byte( std::string_view what );
   Token token();
   std::uint32_t seed();
   Bridging::VlanId vlan( std::string_view what );
   Vex::Seconds seconds( std::string_view what );
   Interlock interlock();
   /// Of all machines; an error names `known`, or all.
   const Machine * machine( std::span< const std::string_view > known = {} );
   Direction direction();
   bool onOrOff();
   Peering::Side side();
   /// N, or N% of all: `count` and `byChance`.
   WireFault faults( WireFaultKind kind );
   /// MEMBER LAG.
   Pair pair();

 private:
   std::uint32_t number( std::string_view what, std::uint32_t least, std::uint32_t most );

   std::span< const Word > words_;
   std::size_t at_ = 0;
   std::string_view usage_;
};

/// "a, b or c".
std::string alternatives( std::span< const std::string_view > words );

} // namespace Replay
