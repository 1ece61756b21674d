#pragma once

// What the controller's interlocks do, reckoned without them: small numbers in place of entities,
// and no notification. LAGs and members are numbered; a set of members is a mask. What no change
// looks at (a LAG that comes, goes or is replaced) is a change of the inputs here and nothing else.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace Velo {

struct PeerModel {
   static constexpr std::size_t lagCount = 3;
   static constexpr std::size_t memberCount = 4;
   using Mask = std::uint8_t;
   enum State { down, requesting, up, fail };

   struct Lag {
      bool present = false; // has an InitialMember
      Mask members = 0;
      bool known = false; // an MLAG interface
      bool activeOnPeer = false;
      Mask installed = 0;
      std::optional< std::uint32_t > response;
      std::optional< std::uint32_t > request;
      Mask admitted = 0; // the output
      std::optional< State > state;

      bool operator==( const Lag & ) const = default;
   };
   struct Deadline {
      std::size_t lag;
      double at;
   };

   std::array< Lag, lagCount > lags;
   std::vector< std::size_t > order; // of the LAGs in the configuration
   bool mlagActive = true;
   bool peerMode = false; // what runs
   bool running = false;
   double now = 0;
   std::uint32_t watermark = 0;
   std::vector< Deadline >
      deadlines; // in the order in which they were set: never an earlier one later
   double due = 0; // of the first one, as it was reckoned when that became the first

   // ---- The rules

   bool isActive( const Lag & lag ) const { return lag.present && lag.members != 0; }
   static bool matched( const Lag & lag ) {
      return lag.request.value_or( 0 ) != 0 && lag.request == lag.response;
   }

   void stateIs( std::size_t at, std::optional< State > state ) {
      lags[ at ].state = state;
      const auto own = std::find_if( deadlines.begin(), deadlines.end(),
                                     [ at ]( const Deadline & d ) { return d.lag == at; } );
      if ( state == requesting ) {
         if ( own == deadlines.end() ) {
            deadlines.push_back( { at, now + 0.1 } );
            arm( deadlines.size() == 1 );
         }
      } else if ( own != deadlines.end() ) {
         const bool first = own == deadlines.begin();
         deadlines.erase( own );
         arm( first );
      }
   }
   void arm( bool anotherFirst ) {
      if ( anotherFirst && !deadlines.empty() ) {
         due = now + std::max( 0.0, deadlines.front().at - now );
      }
   }

   /// Request and state as they are to be now.
   void ask( std::size_t at ) {
      Lag & lag = lags[ at ];
      if ( !lag.known || !isActive( lag ) ) {
         lag.request.reset();
         stateIs( at, lag.known ? std::optional( down ) : std::nullopt );
         return;
      }
      if ( !lag.request ) {
         lag.request = ++watermark;
      }
      if ( matched( lag ) ) {
         stateIs( at, up );
      } else if ( lag.state == up ) {
         stateIs( at, fail );
      } else if ( lag.state != fail ) {
         stateIs( at, requesting );
      }
   }

   void decide( std::size_t at, std::size_t member ) {
      Lag & lag = lags[ at ];
      const auto bit = static_cast< Mask >( 1U << member );
      bool joins = lag.present && ( lag.members & bit ) != 0;
      const bool installed = ( lag.installed & bit ) != 0;
      if ( !peerMode ) {
         const bool aclNeeded = mlagActive && lag.known && lag.activeOnPeer;
         joins = joins && ( !aclNeeded || installed );
      } else {
         ask( at );
         const bool answered = lag.state == up && ( !lag.activeOnPeer || installed );
         joins = joins && ( !lag.known || answered || lag.state == fail );
      }
      lag.admitted = static_cast< Mask >( joins ? lag.admitted | bit : lag.admitted & ~bit );
   }
   void decideEach( std::size_t at, Mask members ) {
      for ( std::size_t member = 0; member < memberCount; ++member ) {
         if ( ( members & ( 1U << member ) ) != 0 ) {
            decide( at, member );
         }
      }
   }
   void decideLag( std::size_t at ) {
      const Lag & lag = lags[ at ];
      if ( isActive( lag ) ) {
         decideEach( at, lag.members );
      } else if ( peerMode ) {
         ask( at );
         decideEach( at, lag.admitted );
      }
   }
   void decideAll() {
      for ( const std::size_t at : order ) {
         decideLag( at );
      }
   }

   // ---- What happens

   void memberIs( std::size_t at, std::size_t member, bool present ) {
      const auto bit = static_cast< Mask >( 1U << member );
      Mask & members = lags[ at ].members;
      if ( lags[ at ].present && ( ( members & bit ) != 0 ) != present ) {
         members = static_cast< Mask >( members ^ bit );
         if ( running ) {
            decide( at, member );
         }
      }
   }
   void aclIs( std::size_t at, std::size_t member, bool installed ) {
      const auto bit = static_cast< Mask >( 1U << member );
      if ( ( ( lags[ at ].installed & bit ) != 0 ) != installed ) {
         lags[ at ].installed = static_cast< Mask >( lags[ at ].installed ^ bit );
         if ( running ) {
            decide( at, member );
         }
      }
   }
   /// Of an interface with an entry; `known` is false where that equals the default one.
   void mlagIntfIs( std::size_t at, bool known, bool activeOnPeer ) {
      lags[ at ].known = known;
      lags[ at ].activeOnPeer = activeOnPeer;
      if ( running ) {
         decideLag( at );
      }
   }
   void mlagActiveIs( bool active ) {
      if ( mlagActive != active ) {
         mlagChanged( active );
      }
   }
   /// The MLAG state, the peer link or its link status, whatever that makes of the MLAG.
   void mlagChanged( bool active ) {
      mlagActive = active;
      if ( running && !peerMode ) {
         decideAll();
      }
   }
   void responseIs( std::size_t at, std::optional< std::uint32_t > token ) {
      Lag & lag = lags[ at ];
      if ( lag.response == token ) {
         return;
      }
      lag.response = token;
      if ( !running || !peerMode ) {
         return;
      }
      if ( matched( lag ) ) {
         decideLag( at );
      } else if ( lag.state == up ) {
         stateIs( at, fail );
         decideLag( at );
      }
   }
   void lagIs( std::size_t at, Mask members ) {
      if ( !lags[ at ].present ) {
         order.push_back( at );
      }
      lags[ at ].present = true;
      lags[ at ].members = members;
   }
   void lagGone( std::size_t at ) {
      lags[ at ].present = false;
      lags[ at ].members = 0;
      std::erase( order, at );
   }
   /// Time goes on to `target`, and what falls due on the way fails.
   void passTo( double target ) {
      while ( !deadlines.empty() && due <= target ) {
         now = std::max( now, due );
         const std::size_t at = deadlines.front().lag;
         stateIs( at, fail );
         decideLag( at );
      }
      now = target;
   }
   // Starting and stopping, in PeerModel.cpp.
   void start( bool asPeer );
   void decideLeftOver();
   void stop();
   void modeIs( bool asPeer );
};

} // namespace Velo
