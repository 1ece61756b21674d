#pragma once

// The deprecated egress-ACL interlock once more, as one plain rule over plain values, for the
// random test. It knows which changes lead to a decision and of which pairs; an entry stays as it
// was last decided until something touches its pair. Entities have numbers: one that is out of use
// can still change, and is heard only where a watch points to it.

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Velo::Model {

class Deprecated {
 public:
   using Name = std::string;
   using Pair = std::pair< Name, Name >;
   using Id = std::size_t;

   struct Members {
      Name lag;
      std::vector< Name > ports;
   };
   struct Link {
      bool named = true;
      unsigned status = 0;
   };
   struct IntfStatus {
      bool known = false; // differs from the default
      unsigned peerState = 0;
   };
   struct Marks {
      bool active = true;
      bool zombie = false;
      bool forwards() const { return active && !zombie; }
   };
   struct Watch {
      Id entity = 0;
      Marks marks;
   };

   // The world.
   std::vector< Members > sets;
   std::vector< Link > links;
   std::vector< std::pair< Name, Id > > lags; // in the order of the configuration
   std::vector< Pair > input;
   std::vector< Pair > output;
   unsigned mlagState = 0;
   std::optional< Id > peerLink;
   std::map< Name, IntfStatus > intfStatus;

   // The interlock's reactors, and the mark of the interlock itself.
   Marks inputMarks;
   Marks lagMarks;
   Marks mlagMarks;
   std::map< Name, Watch > lagWatch;
   std::optional< Watch > linkWatch;
   bool active = true;
   bool zombie = false;

   std::optional< Id > setOf( const Name & lag ) const {
      const auto at = std::ranges::find( lags, lag, &std::pair< Name, Id >::first );
      return at != lags.end() ? std::optional( at->second ) : std::nullopt;
   }

   // What is decided.

   bool aclNeeded( const Name & lag ) const {
      if ( ( mlagState != 3 && mlagState != 4 ) || !peerLink || !links[ *peerLink ].named ||
           links[ *peerLink ].status != 2 ) {
         return false;
      }
      const auto status = intfStatus.find( lag );
      return status != intfStatus.end() && status->second.known && status->second.peerState == 2;
   }
   void decide( const Pair & pair ) {
      const auto set = setOf( pair.second );
      const bool member = set && contains( sets[ *set ].ports, pair.first );
      const bool admitted = member && ( !aclNeeded( pair.second ) || contains( input, pair ) );
      if ( !admitted ) {
         std::erase( output, pair );
      } else if ( !contains( output, pair ) ) {
         output.push_back( pair );
      }
   }
   void decideLag( const Name & lag ) {
      if ( const auto set = setOf( lag ) ) {
         for ( const Name & port : sets[ *set ].ports ) {
            decide( { port, lag } );
         }
      }
   }
   void decideAll() {
      for ( const auto & [ lag, set ] : lags ) {
         decideLag( lag );
      }
   }

   // What happens.

   void started() {
      inputMarks = lagMarks = mlagMarks = {};
      active = true;
      zombie = false;
      lagWatch.clear();
      for ( const Pair & pair : std::vector< Pair >( output ) ) {
         decide( pair );
      }
      decideAll();
      for ( const auto & [ lag, set ] : lags ) {
         lagWatch[ lag ] = { set, {} };
      }
      linkWatch.reset();
      watchPeerLink();
   }
   void inputChanged( const Pair & pair ) {
      if ( inputMarks.forwards() ) {
         decide( pair );
      }
   }
   void lagEntryChanged( const Name & lag ) {
      if ( lagMarks.zombie ) {
         return;
      }
      if ( const auto set = setOf( lag ) ) {
         lagWatch[ lag ].entity = *set; // the marks of a watch that is there stay
      } else {
         lagWatch.erase( lag );
      }
   }
   void memberChanged( Id set, const Name & port ) {
      for ( const auto & [ lag, watch ] : lagWatch ) {
         if ( watch.entity == set && watch.marks.forwards() ) {
            decide( { port, lag } );
         }
      }
   }
   void mlagStateChanged() {
      if ( mlagMarks.forwards() ) {
         decideAll();
      }
   }
   void peerLinkChanged() {
      mlagStateChanged();
      if ( !mlagMarks.zombie ) {
         watchPeerLink();
      }
   }
   void intfStatusChanged( const Name & lag ) {
      if ( mlagMarks.forwards() ) {
         decideLag( lag );
      }
   }
   void linkStatusChanged( Id link ) {
      if ( linkWatch && linkWatch->entity == link && linkWatch->marks.forwards() ) {
         decideAll();
      }
   }
   void notificationsActive( bool on ) {
      if ( std::exchange( active, on ) != on ) {
         forEachMarks( [ & ]( Marks & marks ) { marks.active = on; } );
      }
   }
   void markedForDeletion( bool on ) {
      if ( std::exchange( zombie, on ) != on ) {
         forEachMarks( [ & ]( Marks & marks ) { marks.zombie = on; } );
      }
   }

   std::string outputText() const {
      std::string text;
      for ( const auto & [ member, lag ] : output ) {
         text += ( text.empty() ? "(" : " (" ) + member + ", " + lag + ")";
      }
      return text;
   }

   template < class T >
   static bool contains( const std::vector< T > & set, const T & element ) {
      return std::ranges::find( set, element ) != set.end();
   }

 private:
   void watchPeerLink() {
      if ( !peerLink ) {
         linkWatch.reset();
      } else if ( linkWatch ) {
         linkWatch->entity = *peerLink;
      } else {
         linkWatch = Watch{ *peerLink, {} };
      }
   }
   template < class Action >
   void forEachMarks( const Action & action ) {
      action( inputMarks );
      action( lagMarks );
      action( mlagMarks );
      for ( auto & [ lag, watch ] : lagWatch ) {
         action( watch.marks );
      }
      if ( linkWatch ) {
         action( linkWatch->marks );
      }
   }
};

} // namespace Velo::Model
