#pragma once

#include "replay/Statement.h"

#include <optional>

namespace Replay {

/// Is told what happens on a switch, while it happens; changes nothing itself.
class SwitchEvents {
 public:
   SwitchEvents() = default;
   SwitchEvents( const SwitchEvents & ) = delete;
   SwitchEvents & operator=( const SwitchEvents & ) = delete;
   SwitchEvents( SwitchEvents && ) = delete;
   SwitchEvents & operator=( SwitchEvents && ) = delete;
   virtual ~SwitchEvents() = default;

   /// An output status gained or lost a pair.
   virtual void verdict( Interlock interlock, const Pair & pair, bool admitted ) = 0;
   /// An install request changed; nothing: it was withdrawn.
   virtual void request( Nodo::IntfId lag, std::optional< Token > token ) = 0;
   /// The simulated peer is about to answer.
   virtual void response( Nodo::IntfId lag, std::optional< Token > token ) = 0;
};

} // namespace Replay
