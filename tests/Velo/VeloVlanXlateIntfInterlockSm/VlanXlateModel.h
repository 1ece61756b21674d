#pragma once

// The VLAN-translation interlock once more, as one plain rule over plain values, for the random
// test. It knows which changes lead to a decision and of which pairs; everything else it leaves as
// it is: an entry stays as it was last decided until something touches its pair.
//
// Entities have numbers here: a set of members, a switching configuration or an input status that
// is no longer in use can still change, and is heard only where a watch points to it.

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Velo::Model {

using Name = std::string;
using Pair = std::pair< Name, Name >;
using Id = int;

/// Sets in the order of insertion.
template < class T >
bool has( const std::vector< T > & set, const T & element ) {
   return std::ranges::find( set, element ) != set.end();
}
template < class T >
bool add( std::vector< T > & set, const T & element ) {
   if ( has( set, element ) ) {
      return false;
   }
   set.push_back( element );
   return true;
}
template < class T >
bool remove( std::vector< T > & set, const T & element ) {
   return std::erase( set, element ) != 0;
}

class VlanXlate {
 public:
   struct Members {
      Name lag;
      std::vector< Name > ports;
   };
   struct Switching {
      Name intf;
      int mappings = 0;
   };
   struct Watch {
      Id entity = 0;
      bool zombie = false;
   };
   /// A collection of a configuration, in its order: the key and the entity.
   using Entries = std::vector< std::pair< Name, Id > >;

   // The world.
   std::map< Id, Members > members;
   std::map< Id, Switching > switching;
   Entries lags;
   Entries configs;
   std::vector< Pair > input;
   std::vector< Pair > output;

   // What the interlock watches.
   std::map< Name, Watch > lagWatch;
   std::map< Name, Watch > configWatch;
   bool inputsAreZombies = false;

   static const Id * find( const Entries & entries, const Name & key ) {
      const auto at = std::ranges::find( entries, key, &Entries::value_type::first );
      return at != entries.end() ? &at->second : nullptr;
   }

   // What is decided.

   bool isMember( const Pair & pair ) const {
      const Id * const set = find( lags, pair.second );
      return set != nullptr && has( members.at( *set ).ports, pair.first );
   }
   void decide( const Pair & pair, bool member ) {
      const Id * const config = find( configs, pair.second );
      const bool translated = config != nullptr && switching.at( *config ).mappings > 0;
      if ( member && ( !translated || has( input, pair ) ) ) {
         add( output, pair );
      } else {
         remove( output, pair );
      }
   }
   void decideLag( const Name & lag ) {
      if ( const Id * const set = find( lags, lag ) ) {
         for ( const Name & port : members.at( *set ).ports ) {
            decide( { port, lag }, true );
         }
      }
   }

   // What happens.

   void started() {
      inputsAreZombies = false;
      lagWatch.clear();
      configWatch.clear();
      for ( const Pair & pair : std::vector< Pair >( output ) ) {
         decide( pair, isMember( pair ) );
      }
      for ( const auto & [ lag, set ] : lags ) {
         decideLag( lag );
         lagWatch[ lag ] = { set, false };
      }
      for ( const auto & [ intf, config ] : configs ) {
         configWatch[ intf ] = { config, false };
      }
   }
   void inputChanged( const Pair & pair ) {
      if ( !inputsAreZombies ) {
         decide( pair, isMember( pair ) );
      }
   }
   void memberChanged( Id set, const Name & port ) {
      for ( const auto & [ lag, watch ] : lagWatch ) {
         if ( watch.entity == set && !watch.zombie ) {
            decide( { port, lag }, isMember( { port, lag } ) );
         }
      }
   }
   void mappingChanged( Id config ) {
      for ( const auto & [ intf, watch ] : configWatch ) {
         if ( watch.entity == config && !watch.zombie ) {
            decideLag( intf );
         }
      }
   }
   void lagEntryChanged( const Name & lag ) { point( lagWatch, lags, lag ); }
   void configEntryChanged( const Name & intf ) {
      if ( !inputsAreZombies ) {
         decideLag( intf );
      }
      point( configWatch, configs, intf );
   }
   void lagConfigReplaced() { follow( lagWatch, lags ); }
   void bridgingConfigReplaced() { follow( configWatch, configs ); }
   void markedForDeletion( bool zombies ) {
      if ( zombies == inputsAreZombies ) {
         return;
      }
      inputsAreZombies = zombies;
      for ( auto & [ lag, watch ] : lagWatch ) {
         watch.zombie = zombies;
      }
      for ( auto & [ intf, watch ] : configWatch ) {
         watch.zombie = zombies;
      }
   }

   std::string outputText() const {
      std::string text;
      for ( const auto & [ member, lag ] : output ) {
         text += ( text.empty() ? "(" : " (" ) + member + ", " + lag + ")";
      }
      return text;
   }

 private:
   static void point( std::map< Name, Watch > & watches,
                      const Entries & entries,
                      const Name & key ) {
      if ( const Id * const entity = find( entries, key ) ) {
         watches[ key ].entity = *entity; // a zombie stays one, a new watch is none
      } else {
         watches.erase( key );
      }
   }
   static void follow( std::map< Name, Watch > & watches, const Entries & entries ) {
      for ( const auto & [ key, entity ] : entries ) {
         watches[ key ].entity = entity;
      }
      std::erase_if(
         watches, [ & ]( const auto & watch ) { return find( entries, watch.first ) == nullptr; } );
   }
};

} // namespace Velo::Model
