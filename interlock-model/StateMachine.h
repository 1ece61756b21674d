#pragma once

// The skeleton of a reactive state machine. A state machine declares its reactors as members
// (interlock-model/ReactorMembers.h); their order of declaration is the order in which
// notifications are switched, reactors become zombies, and everything is taken apart. It is stated
// nowhere else.
//
// Ownership: whoever created a state machine holds it; it holds its reactors, its inputs read-only
// and its outputs writable. Reactors hold no reference to it.
// Threading: one thread, that of its inputs.
// Re-entrancy: a handler may do anything to any entity, and may drop the last reference to its own
// state machine: that lives until the reactor's call has returned.

#include "platform/Vex/Export.h"
#include "platform/Vex/Object.h"

#include <cstdint>

namespace InterlockModel {

class StateMachine;

/// One reactor of a state machine, or one collection of them.
class VEX_EXPORT ReactorMember {
 public:
   enum class Kind : std::uint8_t { reactor, collection };

   ReactorMember( const ReactorMember & ) = delete;
   ReactorMember & operator=( const ReactorMember & ) = delete;
   ReactorMember( ReactorMember && ) = delete;
   ReactorMember & operator=( ReactorMember && ) = delete;

   virtual void hasNotificationActiveIs( bool active ) = 0;
   virtual void vexDoZombieReactors( bool zombie ) = 0;
   /// Clears the reactors' back references; a single reactor is released as well.
   virtual void detach() noexcept = 0;

 protected:
   /// Enters itself behind the members declared before it.
   ReactorMember( StateMachine & owner, Kind kind ) noexcept;
   virtual ~ReactorMember();

 private:
   friend class StateMachine;
   ReactorMember * next_ = nullptr;
   Kind kind_;
};

class VEX_EXPORT StateMachine : public Vex::Object {
 public:
   bool hasNotificationActive() const noexcept { return notificationActive_; }
   /// Switches the notifications of this state machine, then of each reactor; a no-op when nothing
   /// changes. What a reactor does while they are off is told by its guards; switching them on
   /// again decides nothing by itself.
   virtual void hasNotificationActiveIs( bool active );

   bool markedForDeletion() const noexcept { return markedForDeletion_; }
   /// Turns every reactor into a zombie, or back, and marks this state machine last; a no-op when
   /// nothing changes.
   virtual void vexDoZombieReactors( bool zombie );

 protected:
   StateMachine() noexcept = default;
   ~StateMachine() override = default;

   /// Takes the state machine apart while it is whole: reactors to zombies, so that nothing reaches
   /// a half-destroyed object; then the single reactors are detached and go, then those in
   /// collections are detached. What is left goes with the members, the last declared first.
   void lastReferenceGone() noexcept override;

 private:
   friend class ReactorMember;

   ReactorMember * firstMember_ = nullptr;
   ReactorMember * lastMember_ = nullptr;
   bool notificationActive_ = false;
   bool markedForDeletion_ = false;
};

} // namespace InterlockModel
