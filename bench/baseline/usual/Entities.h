#pragma once

// The entities as one writes them with a signal library and the standard containers. The ordered
// ones, because the order of iteration has to be defined; each signal tells of the changed key.

#include "bench/baseline/usual/Intf.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace Bench::Usual {

template < class Library >
class FeatureStatus {
 public:
   const std::set< Feature > & intf() const { return intf_; }
   bool has( const Feature & feature ) const { return intf_.contains( feature ); }
   void is( const Feature & feature ) {
      if ( intf_.insert( feature ).second ) {
         changed( feature );
      }
   }
   void del( const Feature & feature ) {
      if ( intf_.erase( feature ) != 0 ) {
         changed( feature );
      }
   }

   mutable typename Library::template Signal< const Feature & > changed;

 private:
   std::set< Feature > intf_;
};

/// A map whose changes are told, by key.
template < class Library, class Key, class Value >
class Table {
 public:
   const std::map< Key, Value > & entries() const { return entries_; }
   bool has( Key key ) const { return entries_.contains( key ); }
   Value get( Key key ) const {
      const auto found = entries_.find( key );
      return found != entries_.end() ? found->second : Value();
   }
   void is( Key key, Value value ) {
      const auto [ place, isNew ] = entries_.try_emplace( key, value );
      if ( !isNew ) {
         if ( place->second == value ) {
            return;
         }
         place->second = std::move( value );
      }
      changed( key );
   }
   void del( Key key ) {
      if ( entries_.erase( key ) != 0 ) {
         changed( key );
      }
   }

   mutable typename Library::template Signal< Key > changed;

 private:
   std::map< Key, Value > entries_;
};

template < class Library >
struct InitialMember {
   explicit InitialMember( Intf key ) : lag( key ) {}
   Intf lag;
   Table< Library, Intf, std::uint8_t > member;
};

template < class Library >
using LagConfig = Table< Library, Intf, std::shared_ptr< InitialMember< Library > > >;

struct MlagIntfStatus {
   std::uint8_t localState = 0;
   std::uint8_t peerState = 0;
   friend bool operator==( const MlagIntfStatus &, const MlagIntfStatus & ) = default;
};

/// An attribute whose change is told.
template < class Library, class Value >
class Attribute {
 public:
   const Value & get() const { return value_; }
   void is( Value value ) {
      if ( value_ != value ) {
         value_ = std::move( value );
         changed();
      }
   }
   mutable typename Library::template Signal<> changed;

 private:
   Value value_{};
};

template < class Library >
struct PeerLink {
   Intf intf;
   Attribute< Library, std::uint8_t > linkStatus;
};

template < class Library >
struct MlagStatus {
   Attribute< Library, std::uint8_t > state;
   Attribute< Library, std::shared_ptr< PeerLink< Library > > > peerLink;
   Table< Library, Intf, MlagIntfStatus > intfStatus;
};

struct Mapping {
   std::uint16_t vlan = 0;
   friend auto operator<=>( Mapping, Mapping ) = default;
};

template < class Library >
struct SwitchIntfConfig {
   explicit SwitchIntfConfig( Intf key ) : intf( key ) {}
   Intf intf;
   Table< Library, Mapping, Mapping > ingress;
   Table< Library, Mapping, Mapping > egress;
};

template < class Library >
using BridgingConfig = Table< Library, Intf, std::shared_ptr< SwitchIntfConfig< Library > > >;

template < class Library >
using Tokens = Table< Library, Intf, std::uint32_t >;

} // namespace Bench::Usual
