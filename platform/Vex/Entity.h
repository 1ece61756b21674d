#pragma once

// Entities with attribute-change notification, and the base of whoever watches one.
//
// An entity names its attributes by an enum and notifies with (attribute, key of the changed
// element). Key is the one type of its keyed attributes; an attribute without a key notifies with a
// default-constructed one.
//
//    class Watcher final : public Vex::ConstNotifiee< Mlag::Status > {
//       void onAttribute( Mlag::Status::Attribute attribute, const Nodo::IntfId & key ) override;
//    };
//    auto watcher = Vex::make< Watcher >();
//    watcher->notifierIs( status );        // from now on it is told
//
// Ownership: a notifiee holds a counted reference to its notifier; the entity borrows its
// notifiees, which leave when they are re-pointed or lose their last reference.
// Threading: an entity and its notifiees belong to one thread.
// Delivery: after the change is applied, before the mutator returns, in the order of registration.
// A handler may, while it is being called:
// - leave, or make others leave: who left is not called any more;
// - register itself or others: they do not get the notification under way;
// - change this or any other entity: the nested delivery runs to its end first;
// - drop the last reference to the entity, to itself or to other notifiees: an entity whose
//   notifiees left, and a notifiee that lost its last reference, live until the delivery under way
//   has returned.

#include "platform/Vex/Assert.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Ptr.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace Vex {

/// The key of entities none of whose attributes has one.
struct NoKey {
   friend bool operator==( NoKey, NoKey ) = default;
};

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
   bool notificationActive_ = false;
   bool markedForDeletion_ = false;
};

/// The receiving end of notifications with this kind of attribute and key.
template < class AttributeType, class KeyType >
class VEX_EXPORT Notifiee : public NotifieeBase {
 public:
   virtual void onAttribute( AttributeType attribute, const KeyType & key ) = 0;
};

template < class AttributeType, class KeyType = NoKey >
class VEX_EXPORT Entity : public Object {
 public:
   using Attribute = AttributeType;
   using Key = KeyType;
   using Receiver = Notifiee< Attribute, Key >;

   /// How many notifiees are registered.
   std::size_t notifiees() const noexcept {
      return receivers_.size() -
             static_cast< std::size_t >( std::ranges::count( receivers_, nullptr ) );
   }

   // Registration is the business of ConstNotifiee, which pairs the two.
   void notifieeAdd( Receiver & receiver ) const {
      if ( departed_.capacity() <= receivers_.size() ) {
         departed_.reserve( 2 * receivers_.size() + 1 ); // so that leaving needs no memory
      }
      receivers_.push_back( &receiver );
   }
   // `dying`: the destructor runs already, as when a constructor throws, and nothing can be kept.
   void notifieeDel( Receiver & receiver, bool dying = false ) const noexcept {
      const auto slot = std::ranges::find( receivers_, &receiver );
      VEX_ASSERT( slot != receivers_.end() );
      if ( deliveries_ == 0 ) {
         receivers_.erase( slot );
         return;
      }
      *slot = nullptr;
      if ( !dying ) {
         departed_.emplace_back( &receiver );
      }
      self_ = Ptr< const Object >( this );
   }

 protected:
   ~Entity() override { VEX_ASSERT( receivers_.empty() ); }

   /// Tells the notifiees; the last thing that a mutator does.
   void notify( Attribute attribute, const Key & key = Key() ) const {
      const std::size_t registered = receivers_.size();
      if ( registered == 0 ) {
         return;
      }
      const Delivery delivery( *this );
      for ( std::size_t at = 0; at < registered; ++at ) {
         if ( Receiver * const receiver = receivers_[ at ]; receiver != nullptr ) {
            receiver->onAttribute( attribute, key );
         }
      }
   }

 private:
   class Delivery {
    public:
      explicit Delivery( const Entity & entity ) noexcept : entity_( entity ) {
         ++entity_.deliveries_;
      }
      Delivery( const Delivery & ) = delete;
      Delivery & operator=( const Delivery & ) = delete;
      Delivery( Delivery && ) = delete;
      Delivery & operator=( Delivery && ) = delete;
      ~Delivery() {
         if ( entity_.deliveries_ == 1 && entity_.self_ ) {
            entity_.farewell();
         } else {
            --entity_.deliveries_;
         }
      }

    private:
      const Entity & entity_;
   };

   // Ends the outermost delivery: lets go of those that left, closes the gaps, and lets go last of
   // this entity itself, so nothing may follow. Whoever dies here may set off further deliveries
   // and departures; they still count as nested, so this loop comes to them and the room lasts.
   void farewell() const noexcept {
      // By index, because the departed may have more to follow them.
      // NOLINTNEXTLINE(modernize-loop-convert)
      for ( std::size_t at = 0; at < departed_.size(); ++at ) {
         departed_[ at ].release();
      }
      departed_.clear();
      std::erase( receivers_, nullptr );
      deliveries_ = 0;
      const auto self = std::exchange( self_, nullptr );
   }

   mutable std::vector< Receiver * > receivers_; // null: left during the delivery under way
   mutable std::vector< Ptr< const Object > > departed_; // left during it, kept until its end
   mutable Ptr< const Object > self_; // set when somebody left: the last one may have kept us alive
   mutable std::size_t deliveries_ = 0; // nested ones counted
};

/// Watches one entity at a time, or none, through a read-only reference.
template < class EntityType >
class VEX_EXPORT ConstNotifiee
    : public Notifiee< typename EntityType::Attribute, typename EntityType::Key > {
 public:
   using Attribute = typename EntityType::Attribute;
   using Key = typename EntityType::Key;
   using EntityRef = Ptr< const EntityType >;

   /// The watched entity, or null.
   const EntityRef & notifier() const noexcept { return notifier_; }

   /// Watches `notifier` from now on, or nothing when it is null, and then runs onNotifier(); a
   /// no-op when it is watched already.
   void notifierIs( EntityRef notifier ) {
      if ( notifier != notifier_ ) {
         watch( std::move( notifier ) );
         onNotifier();
      }
   }

   ConstNotifiee( const ConstNotifiee & ) = delete;
   ConstNotifiee & operator=( const ConstNotifiee & ) = delete;
   ConstNotifiee( ConstNotifiee && ) = delete;
   ConstNotifiee & operator=( ConstNotifiee && ) = delete;

 protected:
   ConstNotifiee() = default;
   /// Watches `notifier`, which is another one than before, without running onNotifier().
   void watch( EntityRef notifier ) {
      if ( notifier ) {
         notifier->notifieeAdd( *this ); // first, because it is the one step that can fail
      }
      std::swap( notifier_, notifier );
      if ( notifier ) {
         notifier->notifieeDel( *this );
      }
   }

   ~ConstNotifiee() override { leave( true ); }

   /// Another entity, or none, is watched now: its changes reach onAttribute already, so that none
   /// can be missed while this runs.
   virtual void onNotifier() {}

   /// Leaves before the destructor, so that a delivery under way can keep this object to its end.
   void lastReferenceGone() noexcept override { leave( false ); }

 private:
   void leave( bool dying ) noexcept {
      if ( const EntityRef left = std::exchange( notifier_, nullptr ); left ) {
         left->notifieeDel( *this, dying );
      }
   }

   EntityRef notifier_;
};

} // namespace Vex
