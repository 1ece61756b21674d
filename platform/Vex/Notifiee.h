#pragma once

// The receiving end of notifications, as an entity sees it. Whoever wants to watch one derives from
// ConstNotifiee (platform/Vex/Entity.h).
//
// Ownership: counted (platform/Vex/Object.h); an entity borrows its notifiees, and keeps those that
// leave it during a delivery until that ends.
// Threading: a notifiee belongs to the thread of its entity.
// Re-entrancy: keeping takes no memory and cannot fail; letting go may set off anything.

#include "platform/Vex/Export.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Ptr.h"

#include <utility>

namespace Vex {

class DepartedNotifiees;

/// What every notifiee has, whatever it watches: the two marks that its guards read. Delivery does
/// not look at them: each notifiee's own guards stand where its attributes are told apart.
class VEX_EXPORT NotifieeBase : public Object {
 public:
   bool hasNotificationActive() const noexcept { return notificationActive_; }
   virtual void hasNotificationActiveIs( bool active ) { notificationActive_ = active; }

   /// True: a zombie, marked for deletion.
   bool markedForDeletion() const noexcept { return markedForDeletion_; }
   virtual void vexDoZombieReactors( bool zombie ) { markedForDeletion_ = zombie; }

 protected:
   NotifieeBase() noexcept = default;

 private:
   friend class DepartedNotifiees;

   bool notificationActive_ = false;
   bool markedForDeletion_ = false;
   bool departed_ = false;
   Ptr< NotifieeBase > departedBefore_; // who left the same entity before this one
};

/// Those that left an entity during a delivery, kept until it ends. The latest comes first.
class DepartedNotifiees {
 public:
   /// One that is kept already, whoever keeps it, was left by the entity of a delivery under way
   /// before: that ends no earlier than any call that the notifiee is still in.
   void add( NotifieeBase & notifiee ) noexcept {
      if ( !notifiee.departed_ ) {
         notifiee.departed_ = true;
         notifiee.departedBefore_ = std::exchange( latest_, Ptr< NotifieeBase >( &notifiee ) );
      }
   }
   /// Lets go of them in the order in which they left. Whoever dies here may make others leave.
   void release() noexcept {
      while ( latest_ ) {
         Ptr< NotifieeBase > first;
         while ( latest_ ) {
            auto before = std::exchange( latest_->departedBefore_, std::move( first ) );
            first = std::exchange( latest_, std::move( before ) );
         }
         while ( first ) {
            first->departed_ = false;
            first = std::exchange( first->departedBefore_, nullptr );
         }
      }
   }

 private:
   Ptr< NotifieeBase > latest_;
};

/// The receiving end of notifications with this kind of attribute and key.
template < class AttributeType, class KeyType >
class VEX_EXPORT Notifiee : public NotifieeBase {
 public:
   virtual void onAttribute( AttributeType attribute, const KeyType & key ) = 0;
};

} // namespace Vex
