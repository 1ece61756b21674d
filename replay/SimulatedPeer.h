#pragma once

// The simulated MLAG peer: brings each change of an install request back as its response, a while
// later. Answers arrive in the order of the changes, each for itself.
//
// Ownership: holds the response entity and the scheduler; borrows `events`, which outlives it.
// Re-entrancy: an answer may set off new requests, which are answered in their turn.

#include "interlock-model/Mlag/AclInstallResponse.h"
#include "platform/Kel/TaskScheduler.h"
#include "platform/Vex/Ptr.h"
#include "replay/SwitchEvents.h"

#include <deque>
#include <optional>

namespace Replay {

class SimulatedPeer {
 public:
   SimulatedPeer( Vex::Ptr< Kel::TaskScheduler > scheduler,
                  Vex::Ptr< Mlag::AclInstallResponse > responses,
                  SwitchEvents & events );
   SimulatedPeer( const SimulatedPeer & ) = delete;
   SimulatedPeer & operator=( const SimulatedPeer & ) = delete;
   SimulatedPeer( SimulatedPeer && ) = delete;
   SimulatedPeer & operator=( SimulatedPeer && ) = delete;
   ~SimulatedPeer();

   /// Answers after `delay` from now on; nothing: is off, and what is under way is lost.
   void delayIs( std::optional< Vex::Seconds > delay );

   /// Is told of each change of an install request.
   void requestChanged( Nodo::IntfId lag, std::optional< Token > token );

 private:
   class Arrival;
   struct Answer {
      Vex::Ptr< Arrival > arrival;
      Nodo::IntfId lag;
      std::optional< Token > token;
   };

   void deliverFirst();

   Vex::Ptr< Kel::TaskScheduler > scheduler_;
   Vex::Ptr< Mlag::AclInstallResponse > responses_;
   SwitchEvents & events_;
   std::optional< Vex::Seconds > delay_;
   std::deque< Answer > underWay_; // in the order in which they arrive
   Vex::Seconds lastDue_;
};

} // namespace Replay
