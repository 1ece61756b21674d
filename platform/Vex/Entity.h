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
// Layout: most entities have one notifiee, so there is room for one in the entity itself; only the
// second takes memory. Leaving takes none and cannot fail.

#include "platform/Vex/Assert.h"
#include "platform/Vex/EventClock.h"
#include "platform/Vex/Notifiee.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Ptr.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace Vex {

/// The key of entities none of whose attributes has one.
struct NoKey {
   friend bool operator==( NoKey, NoKey ) = default;
};

template < class AttributeType, class KeyType = NoKey >
class VEX_EXPORT Entity : public Object {
 public:
   using Attribute = AttributeType;
   using Key = KeyType;
   using Receiver = Notifiee< Attribute, Key >;

   /// How many notifiees are registered.
   std::size_t notifiees() const noexcept {
      const auto others =
         others_ ? std::ssize( *others_ ) - std::ranges::count( *others_, nullptr ) : 0;
      return static_cast< std::size_t >( others ) + ( first_ != nullptr ? 1 : 0 );
   }

   // Registration is the business of ConstNotifiee, which pairs the two.
   void notifieeAdd( Receiver & receiver ) const {
      if ( first_ == nullptr && ( !others_ || others_->empty() ) ) {
         first_ = &receiver; // a delivery under way is past the first
         return;
      }
      if ( !others_ ) {
         others_ = std::make_unique< std::vector< Receiver * > >();
      }
      others_->push_back( &receiver );
   }
   // `dying`: the destructor runs already, as when a constructor throws, and nothing can be kept.
   void notifieeDel( Receiver & receiver, bool dying = false ) const noexcept {
      place( receiver ) = nullptr;
      if ( deliveries_ == 0 ) {
         closeGaps();
         return;
      }
      if ( ( deliveries_ & somebodyLeft ) == 0 ) {
         deliveries_ |= somebodyLeft;
         static_cast< void >( Ptr< const Object >( this ).leak() ); // farewell() drops it
      }
      if ( !dying ) {
         departed_.add( receiver );
      }
   }

 protected:
   ~Entity() override { VEX_ASSERT( notifiees() == 0 ); }

   /// Tells the notifiees; the last thing that a mutator does.
   void notify( Attribute attribute, const Key & key = Key() ) const {
      if ( others_ ) [[unlikely]] {
         notifyAll( attribute, key );
      } else if ( first_ != nullptr ) {
         const Delivery delivery( *this );
         first_->onAttribute( attribute, key ); // others may come meanwhile, and are not told
      }
   }

 private:
   class Delivery {
    public:
      explicit Delivery( const Entity & entity ) noexcept : entity_( entity ) {
         entity_.deliveries_ += oneDelivery;
      }
      Delivery( const Delivery & ) = delete;
      Delivery & operator=( const Delivery & ) = delete;
      Delivery( Delivery && ) = delete;
      Delivery & operator=( Delivery && ) = delete;
      ~Delivery() {
         if ( entity_.deliveries_ == oneDelivery ) [[likely]] {
            entity_.deliveries_ = 0; // stored as it is, so that the next delivery waits for nothing
         } else {
            entity_.endDelivery();
         }
      }

    private:
      EventScope event_; // ends last, behind the farewell
      const Entity & entity_;
   };

   // Not inline, so that a notification to one is short.
   [[gnu::noinline]] void notifyAll( Attribute attribute, const Key & key ) const {
      const Delivery delivery( *this );
      const std::size_t others = others_->size(); // later ones hear of later changes
      if ( first_ != nullptr ) {
         first_->onAttribute( attribute, key );
      }
      for ( std::size_t at = 0; at < others; ++at ) {
         if ( Receiver * const receiver = ( *others_ )[ at ]; receiver != nullptr ) {
            receiver->onAttribute( attribute, key );
         }
      }
   }

   // Ends a delivery that is a nested one, or that somebody left. Not inline, as it is rare.
   [[gnu::noinline]] void endDelivery() const noexcept {
      if ( deliveries_ == ( oneDelivery | somebodyLeft ) ) {
         farewell();
      } else {
         deliveries_ -= oneDelivery;
      }
   }

   // Ends the outermost delivery: lets go of those that left, closes the gaps, and lets go last of
   // this entity itself, so nothing may follow. Whoever dies here may set off further deliveries
   // and departures; they still count as nested.
   void farewell() const noexcept {
      const auto self = Ptr< const Object >::adopt( this );
      departed_.release();
      closeGaps();
      deliveries_ = 0;
   }

   // Where the notifiee is entered, which it has to be.
   Receiver *& place( const Receiver & receiver ) const noexcept {
      if ( first_ == &receiver ) {
         return first_;
      }
      VEX_ASSERT( others_ );
      const auto found = std::ranges::find( *others_, &receiver );
      VEX_ASSERT( found != others_->end() );
      return *found;
   }
   void closeGaps() const noexcept {
      if ( others_ ) {
         std::erase( *others_, nullptr );
         if ( first_ == nullptr && !others_->empty() ) {
            first_ = others_->front();
            others_->erase( others_->begin() );
         }
      }
   }

   // Both in one number, so that the end of a delivery is one test: the deliveries under way,
   // nested ones counted, and whether somebody left during them. From then on until farewell() the
   // entity has a reference to itself: those that left may have been the last to hold it.
   static constexpr std::uint32_t somebodyLeft = 1;
   static constexpr std::uint32_t oneDelivery = 2;
   mutable std::uint32_t deliveries_ = 0;
   // Null: left during the delivery under way. At rest the first is null only where there is none.
   mutable Receiver * first_ = nullptr;
   mutable std::unique_ptr< std::vector< Receiver * > > others_; // in order, behind the first
   mutable DepartedNotifiees departed_;
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
