#pragma once

// A reactor: watches one entity for a state machine, its owner, and turns each notification into
// the call of one handler. Its onAttribute is one switch: the wiring table of that input.
//
// A reactor's guards stand in its onAttribute, because they differ between state machines:
// - forwarding(): the owner, while notifications are active and the reactor is no zombie;
// - ownerUnlessZombie(): the owner, while the reactor is no zombie;
// - owner(): the owner, while there is one.
// Each keeps the owner alive until the call has returned.

#include "platform/Vex/Entity.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Type.h"

#include <utility>

namespace InterlockModel {

template < class OwnerType, class EntityType >
class Reactor : public Vex::ConstNotifiee< EntityType > {
 public:
   using Owner = OwnerType;
   using WatchedEntity = EntityType;
   using EntityRef = Vex::Ptr< const EntityType >;

   /// Watches nothing yet; notifications are inactive.
   explicit Reactor( Owner & owner ) noexcept : owner_( &owner ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "InterlockModel::Reactor" };
      return type;
   }

   /// The reactor as it is created: watching `entity`, notifications active. Runs no handler.
   void begin( EntityRef entity ) {
      this->hasNotificationActiveIs( true );
      this->watch( std::move( entity ) );
   }

   /// Clears the back reference: from now on there is no owner to call.
   void ownerDel() noexcept { owner_ = nullptr; }

 protected:
   ~Reactor() override = default;

   Vex::Ptr< Owner > owner() const noexcept { return Vex::Ptr< Owner >( owner_ ); }
   Vex::Ptr< Owner > ownerUnlessZombie() const noexcept {
      return this->markedForDeletion() ? nullptr : owner();
   }
   Vex::Ptr< Owner > forwarding() const noexcept {
      return this->hasNotificationActive() ? ownerUnlessZombie() : nullptr;
   }

 private:
   // Does not dangle: the owner clears it, or destroys the reactor, before it is destroyed itself.
   Owner * owner_;
};

} // namespace InterlockModel
