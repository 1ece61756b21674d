#pragma once

// An entity with one keyed attribute and an actor that watches it: the actor writes its name and
// the key into a log, and then does what the test has given it to do.

#include "platform/Vex/Entity.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

enum class WatchedAttribute : std::uint8_t { value };

class Watched final : public Vex::Entity< WatchedAttribute, int > {
 public:
   explicit Watched( std::string & log, std::string name = "entity" )
       : log_( log ), name_( std::move( name ) ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Watched" };
      return type;
   }

   void changed( int key ) const { notify( WatchedAttribute::value, key ); }

 private:
   ~Watched() override { log_ += "~" + name_ + " "; }

   std::string & log_;
   std::string name_;
};

class Actor final : public Vex::ConstNotifiee< Watched > {
 public:
   Actor( std::string & log, std::string name ) : log_( log ), name_( std::move( name ) ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Actor" };
      return type;
   }

   void onAttribute( WatchedAttribute /* attribute */, const int & key ) override {
      log_ += name_ + std::to_string( key ) + " ";
      act( key );
      log_ += quiet ? "" : "/" + name_ + " ";
   }

   std::function< void( int key ) > act = []( int /* key */ ) {};
   std::function< void() > onNewNotifier = [] {};
   std::function< void() > onDeath = [] {};
   bool quiet = true; // false: the end of each call is logged, too

 private:
   ~Actor() override {
      log_ += "~" + name_ + " ";
      onDeath();
   }

   void onNotifier() override { onNewNotifier(); }

   std::string & log_;
   std::string name_;
};
