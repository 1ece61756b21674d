#pragma once

// The interlocks of one switch: creates them through the library's exported factories, as an agent
// does, and holds them.

#include "interlock-model/Interface/Interlock/IntfFeature.h"
#include "interlock-model/StateMachine.h"
#include "platform/Vex/Ptr.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Replay {

struct Entities;

/// What decides over an output status of its own.
enum class Interlock : std::uint8_t { egressAcl, vlanXlate };

inline constexpr std::array interlocks{ Interlock::egressAcl, Interlock::vlanXlate };

std::string_view nameOf( Interlock interlock ) noexcept;

/// A state machine that `start` can run as an interlock.
struct Machine {
   std::string_view name;
   Interlock interlock;
   Vex::Ptr< InterlockModel::StateMachine > ( *factory )(
      const Entities & entities ); // null: none yet
};

/// All of them, in the order in which messages name them.
std::span< const Machine > machines() noexcept;

class Interlocks {
 public:
   /// A StatementError when the machine's interlock runs already.
   void start( const Machine & machine, const Entities & entities );
   /// Drops the interlock; a StatementError when it does not run.
   void stop( Interlock interlock );
   /// Drops the interlock and starts the same machine anew, on the entities as they stand; a
   /// StatementError when it does not run.
   void restart( Interlock interlock, const Entities & entities );

   bool runs( Interlock interlock ) const noexcept {
      return static_cast< bool >( running_[ static_cast< std::size_t >( interlock ) ] );
   }

 private:
   std::array< Vex::Ptr< InterlockModel::StateMachine >, interlocks.size() > running_;
   std::array< const Machine *, interlocks.size() > started_{}; // last
};

} // namespace Replay
