#pragma once

// What the inputs imply for the basic egress-ACL interlock, reckoned without it: plain sets, and
// the rule of admission in three short functions. A verdict stands until a change touches its pair;
// each change says what it touches. A LAG that comes, goes or is replaced touches nothing.

#include "platform/Vex/String.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

namespace Velo {

struct BasicModel {
   using String = Vex::String;
   using Pair = std::pair< String, String >; // member, LAG

   struct PeerLink {
      String name;
      int linkStatus;
   };

   std::map< String, std::map< String, int > > lags; // members with their type
   std::map< String, int > peerStates; // absent: unknown to MLAG; -1: an entry like the default
   std::set< Pair > installed;
   std::set< Pair > verdicts;
   std::optional< PeerLink > peerLink;
   int mlagState = 0;
   bool running = false;

   bool isMember( const Pair & pair ) const {
      const auto lag = lags.find( pair.second );
      return lag != lags.end() && lag->second.contains( pair.first );
   }
   bool needsAcl( const String & lag ) const {
      const bool mlagUp = mlagState == 3 || mlagState == 4;
      const bool linkUp = peerLink && !peerLink->name.empty() && peerLink->linkStatus == 2;
      const auto peerState = peerStates.find( lag );
      return mlagUp && linkUp && peerState != peerStates.end() && peerState->second == 2;
   }
   bool admits( const Pair & pair ) const {
      return isMember( pair ) && ( !needsAcl( pair.second ) || installed.contains( pair ) );
   }

   void touch( const Pair & pair ) {
      if ( running ) {
         if ( admits( pair ) ) {
            verdicts.insert( pair );
         } else {
            verdicts.erase( pair );
         }
      }
   }
   void touchLag( const String & lag ) {
      for ( const auto & member :
            lags.contains( lag ) ? lags.at( lag ) : std::map< String, int >() ) {
         touch( { member.first, lag } );
      }
   }
   void touchAll() {
      for ( const auto & lag : lags ) {
         touchLag( lag.first );
      }
   }

   void member( const String & port, const String & lag, int type ) {
      const auto known = lags.at( lag ).find( port );
      if ( known == lags.at( lag ).end() || known->second != type ) {
         lags.at( lag )[ port ] = type;
         touch( { port, lag } );
      }
   }
   void memberGone( const String & port, const String & lag ) {
      if ( lags.at( lag ).erase( port ) != 0 ) {
         touch( { port, lag } );
      }
   }
   void aclIs( const Pair & pair, bool present ) {
      if ( present ? installed.insert( pair ).second : installed.erase( pair ) != 0 ) {
         touch( pair );
      }
   }
   void mlagStateIs( int state ) {
      if ( std::exchange( mlagState, state ) != state ) {
         touchAll();
      }
   }
   void peerStateIs( const String & lag, std::optional< int > state ) {
      const auto known = peerStates.find( lag );
      const auto before = known == peerStates.end() ? std::nullopt : std::optional( known->second );
      if ( before != state ) {
         if ( state ) {
            peerStates[ lag ] = *state;
         } else {
            peerStates.erase( lag );
         }
         touchLag( lag );
      }
   }
   /// Always another entity.
   void peerLinkIs( const String & name, int linkStatus ) {
      peerLink = { name, linkStatus };
      touchAll();
   }
   void peerLinkGone() {
      if ( std::exchange( peerLink, std::nullopt ) ) {
         touchAll();
      }
   }
   void linkStatusIs( int linkStatus ) {
      if ( peerLink && std::exchange( peerLink->linkStatus, linkStatus ) != linkStatus ) {
         touchAll();
      }
   }
   void start() {
      running = true;
      for ( const Pair & pair : std::set( verdicts ) ) {
         touch( pair );
      }
      touchAll();
   }
};

} // namespace Velo
