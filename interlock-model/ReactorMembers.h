#pragma once

// The two ways in which a state machine declares its reactors:
//
//    class SomeSm : public InterlockModel::StateMachine {
//       InterlockModel::SingleReactor< VexMlagStatus > mlagStatus_{ *this };
//       InterlockModel::KeyedReactors< InitMemSm > initialMemberSm_{ *this, "initialMemberSmIs" };
//    };
//
// Both unregister and release their reactors when they are destroyed, also after a constructor that
// threw.

#include "interlock-model/StateMachine.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/NullArgumentError.h"
#include "platform/Vex/Ptr.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace InterlockModel {

/// A reactor, or none.
template < class ReactorType >
class SingleReactor final : public ReactorMember {
 public:
   using Owner = typename ReactorType::Owner;
   using EntityRef = typename ReactorType::EntityRef;

   explicit SingleReactor( Owner & owner ) noexcept
       : ReactorMember( owner, Kind::reactor ), owner_( owner ) {}
   ~SingleReactor() override { detach(); }

   const Vex::Ptr< ReactorType > & reactor() const noexcept { return reactor_; }
   /// The entity that the reactor watches; null where there is no reactor. Follows the reactor:
   /// who goes on after a notification keeps a copy.
   const EntityRef & notifier() const noexcept { return reactor_ ? reactor_->notifier() : none; }

   /// Creates the reactor, watching `entity`, which may be null; runs no handler.
   void create( EntityRef entity ) {
      auto reactor = Vex::make< ReactorType >( owner_ );
      reactor->begin( std::move( entity ) );
      reactor_ = std::move( reactor );
   }
   /// Creates the reactor if the state machine was given this input at all.
   void createIfGiven( EntityRef entity ) {
      if ( entity ) {
         create( std::move( entity ) );
      }
   }
   /// Takes the reactor out, as a zombie.
   Vex::Ptr< ReactorType > del() {
      auto removed = std::exchange( reactor_, nullptr );
      if ( removed ) {
         removed->vexDoZombieReactors( true );
         removed->ownerDel();
      }
      return removed;
   }

   void hasNotificationActiveIs( bool active ) override {
      if ( reactor_ ) {
         reactor_->hasNotificationActiveIs( active );
      }
   }
   void vexDoZombieReactors( bool zombie ) override {
      if ( reactor_ ) {
         reactor_->vexDoZombieReactors( zombie );
      }
   }
   void detach() noexcept override {
      if ( reactor_ ) {
         reactor_->ownerDel();
         reactor_.release();
      }
   }

 private:
   static constexpr EntityRef none{};

   Owner & owner_;
   Vex::Ptr< ReactorType > reactor_;
};

/// What re-pointing does to a reactor whose notifications are off.
enum class Repointing : std::uint8_t { keepsNotifications, switchesNotificationsOn };

/// One reactor for each entity of an input that exists once per key; the key is the entity's own.
template < class ReactorType >
class KeyedReactors final : public ReactorMember {
 public:
   using Owner = typename ReactorType::Owner;
   using EntityRef = typename ReactorType::EntityRef;
   using Collection = Vex::KeyMap< Nodo::IntfId, Vex::Ptr< ReactorType > >;

   /// `setter` is the name of the mutator that complains of a null argument.
   KeyedReactors( Owner & owner,
                  std::string_view setter,
                  Repointing repointing = Repointing::keepsNotifications ) noexcept
       : ReactorMember( owner, Kind::collection ), owner_( owner ), setter_( setter ),
         repointing_( repointing ) {}
   ~KeyedReactors() override { detach(); }

   const Collection & reactors() const noexcept { return reactors_; }

   /// Re-points the reactor of the entity's key at the entity, or creates it with notifications
   /// active. A null argument is the null-argument error and inserts nothing.
   Vex::Ptr< ReactorType > is( EntityRef entity ) {
      if ( !entity ) {
         throw Vex::NullArgumentError( setter_ );
      }
      const Nodo::IntfId key = entity->key();
      if ( auto existing = reactors_.get( key ) ) {
         existing->notifierIs( std::move( entity ) );
         if ( repointing_ == Repointing::switchesNotificationsOn ) {
            existing->hasNotificationActiveIs( true );
         }
         return existing;
      }
      auto created = Vex::make< ReactorType >( owner_ );
      created->begin( std::move( entity ) );
      reactors_.put( key, created );
      return created;
   }
   /// Takes the key's reactor out, as a zombie; null when there is none.
   Vex::Ptr< ReactorType > del( Nodo::IntfId key ) {
      auto removed = reactors_.take( key ).value_or( nullptr );
      if ( removed ) {
         removed->vexDoZombieReactors( true );
         removed->ownerDel();
      }
      return removed;
   }
   void delAll() {
      for ( const Nodo::IntfId key : reactors_.keys() ) {
         del( key );
      }
   }

   /// What to do when the entity that holds the watched ones is replaced: one reactor for each of
   /// `entities`, none for any other key.
   template < class Entities >
   void follow( const Entities & entities ) {
      for ( const auto entry : entities.entries() ) {
         is( entry.value );
      }
      for ( const Nodo::IntfId key : reactors_.keys() ) {
         if ( !entities.has( key ) ) {
            del( key );
         }
      }
   }

   void hasNotificationActiveIs( bool active ) override {
      for ( const auto entry : reactors_.entries() ) {
         entry.value->hasNotificationActiveIs( active );
      }
   }
   void vexDoZombieReactors( bool zombie ) override {
      for ( const auto entry : reactors_.entries() ) {
         entry.value->vexDoZombieReactors( zombie );
      }
   }
   /// The reactors themselves go with the collection: the last declared first.
   void detach() noexcept override {
      for ( const auto entry : reactors_.entries() ) {
         entry.value->ownerDel();
      }
   }

 private:
   Owner & owner_;
   std::string_view setter_;
   Repointing repointing_;
   Collection reactors_;
};

} // namespace InterlockModel
