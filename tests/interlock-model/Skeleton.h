#pragma once

// A small state machine for the tests of the skeleton. It watches lamps: two single ones, a
// collection of them, and, in the derived class, one more. Everything that it does leaves a mark.

#include "interlock-model/Reactor.h"
#include "interlock-model/ReactorMembers.h"
#include "interlock-model/StateMachine.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Type.h"
#include "tests/support/Marks.h"
#include "tests/support/Names.h"

#include <cstdint>
#include <functional>

namespace InterlockModel {

enum class LampAttribute : std::uint8_t { blink };

class Lamp final : public Vex::Entity< LampAttribute > {
 public:
   explicit Lamp( const Vex::String & name ) : key_( name ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Lamp" };
      return type;
   }
   Nodo::IntfId key() const noexcept { return key_; }
   const Vex::String & name() const noexcept { return key_.stringValue(); }

   void blink() { notify( Attribute::blink ); }

 private:
   ~Lamp() override = default;
   Nodo::IntfId key_;
};

inline Vex::Ptr< Lamp > lamp( const Vex::String & name ) {
   return Vex::make< Lamp >( name );
}

class LampRoom final : public Vex::Entity< LampAttribute > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "LampRoom" };
      return type;
   }
   Vex::KeyMap< Nodo::IntfId, Vex::Ptr< Lamp > > lamps;

 private:
   ~LampRoom() override = default;
};

class LampSm : public StateMachine {
 public:
   class LampReactor final : public Reactor< LampSm, Lamp > {
    public:
      explicit LampReactor( LampSm & owner ) : Reactor( owner ), marks_( owner.marks_ ) {}
      LampReactor( const LampReactor & ) = delete;
      LampReactor & operator=( const LampReactor & ) = delete;
      LampReactor( LampReactor && ) = delete;
      LampReactor & operator=( LampReactor && ) = delete;

      void onAttribute( Attribute attribute, const Vex::NoKey & /* key */ ) override {
         switch ( attribute ) {
         case Attribute::blink:
            if ( const auto sm = forwarding() ) {
               sm->handleBlink( *notifier() );
            }
            break;
         }
      }
      void hasNotificationActiveIs( bool active ) override {
         const auto sm = owner();
         mark( active ? "on" : "off", sm && sm->hasNotificationActive() == active );
         Reactor::hasNotificationActiveIs( active );
      }
      void vexDoZombieReactors( bool zombie ) override {
         const auto sm = owner();
         mark( zombie ? "zombie" : "alive", sm && sm->markedForDeletion() == zombie );
         Reactor::vexDoZombieReactors( zombie );
      }

    private:
      ~LampReactor() override { marks_.add( "~" + name_ ); }
      // The star tells that the state machine was switched before this reactor.
      void mark( const char * what, bool ownerWasFirst ) {
         if ( !name_.empty() ) { // not while it is being created
            marks_.add( what + ( ':' + name_ ) + ( ownerWasFirst ? "*" : "" ) );
         }
      }
      void onNotifier() override {
         marks_.add( "onNotifier:" + ( notifier() ? notifier()->name() : "none" ) );
      }

      friend class LampSm;
      TestSupport::Marks & marks_;
      Vex::String name_;
   };

   using Reactors = KeyedReactors< LampReactor >;

   explicit LampSm( TestSupport::Marks & marks ) : marks_( marks ) {}
   LampSm( const LampSm & ) = delete;
   LampSm & operator=( const LampSm & ) = delete;
   LampSm( LampSm && ) = delete;
   LampSm & operator=( LampSm && ) = delete;

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "LampSm" };
      return type;
   }

   void leftIs( const Vex::Ptr< Lamp > & lamp ) { create( left, lamp ); }
   void rightIs( const Vex::Ptr< Lamp > & lamp ) { create( right, lamp ); }
   Vex::Ptr< LampReactor > lampSmIs( const Vex::Ptr< Lamp > & lamp ) {
      auto reactor = lamps.is( lamp );
      reactor->name_ = lamp->name();
      return reactor;
   }

   virtual void handleBlink( const Lamp & lamp ) {
      marks_.add( "blink:" + lamp.name() );
      if ( onBlink ) {
         onBlink();
      }
   }

   std::function< void() > onBlink;

   // In this order, the collection between the single reactors.
   SingleReactor< LampReactor > left{ *this };
   Reactors lamps{ *this, "lampSmIs" };
   SingleReactor< LampReactor > right{ *this };
   Reactors switchedOn{ *this, "switchedOnIs", Repointing::switchesNotificationsOn };

 protected:
   ~LampSm() override { marks_.add( "~sm" ); }

   static void create( SingleReactor< LampReactor > & member, const Vex::Ptr< Lamp > & lamp ) {
      member.create( lamp );
      member.reactor()->name_ = lamp->name();
   }

   TestSupport::Marks & marks_;
};

/// A derived class with a reactor of its own.
class CeilingLampSm final : public LampSm {
 public:
   using LampSm::LampSm;
   void ceilingIs( const Vex::Ptr< Lamp > & lamp ) { create( ceiling, lamp ); }
   SingleReactor< LampReactor > ceiling{ *this };

 private:
   ~CeilingLampSm() override = default;
};

} // namespace InterlockModel
