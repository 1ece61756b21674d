#pragma once

// One switch: its entities and interlocks, and what the statements do to them. As many as wanted
// may live side by side, on one scheduler.
//
// Ownership: holds all its entities; borrows `events`, which outlives it.
// Errors: a statement that cannot be done now is a StatementError and changes nothing.

#include "platform/Kel/TaskScheduler.h"
#include "platform/Vex/Ptr.h"
#include "replay/Entities.h"
#include "replay/EntityChanges.h"
#include "replay/Interlocks.h"
#include "replay/SimulatedPeer.h"
#include "replay/Statement.h"
#include "replay/SwitchEvents.h"

namespace Replay {

class Switch {
 public:
   Switch( Vex::Ptr< Kel::TaskScheduler > scheduler, SwitchEvents & events );
   Switch( const Switch & ) = delete;
   Switch & operator=( const Switch & ) = delete;
   Switch( Switch && ) = delete;
   Switch & operator=( Switch && ) = delete;
   ~Switch();

   const Entities & entities() const noexcept { return entities_; }

   bool runs( Interlock interlock ) const noexcept { return interlocks_.runs( interlock ); }
   bool isMember( const Pair & pair ) const;
   /// An interlock runs and does not admit the pair.
   bool isHeldBy( Interlock interlock, const Pair & pair ) const;
   /// Member of the LAG, and admitted by every interlock that runs.
   bool isJoined( const Pair & pair ) const;

   template < EntityChange Change >
   void apply( const Change & change ) {
      Replay::apply( change, entities_ );
   }
   void apply( const Start & start );
   void apply( const Stop & stop );
   void apply( const Restart & restart );
   void apply( const PeerEcho & echo );

 private:
   class OutputWatcher;
   class RequestWatcher;

   Entities entities_;
   Interlocks interlocks_;
   SimulatedPeer peer_;
   // Go first: what happens while the rest is taken apart is nobody's business.
   Vex::Ptr< OutputWatcher > egressAclWatcher_;
   Vex::Ptr< OutputWatcher > vlanXlateWatcher_;
   Vex::Ptr< RequestWatcher > requestWatcher_;
};

} // namespace Replay
