#pragma once

// The floor of the peer-coordinated interlock. What it leaves out: Basic.h.

#include "bench/baseline/floor/Basic.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace Bench::Floor {

enum class LinkState : std::uint8_t { linkDown, linkRequesting, linkUp, linkFail };

template < class RingType >
class Peer {
 public:
   Peer( PairSet & input, Members & members, MlagInputs & mlag, Output & output );

   void inputIs( const Pair & pair );
   void inputDel( const Pair & pair );
   void memberIs( const Pair & pair );
   void memberDel( const Pair & pair );
   void mlagIntfIs( Intf lag, std::uint8_t local, std::uint8_t peer );
   /// The peer's answer; 0 is none.
   void responseIs( Intf lag, std::uint32_t token );
   std::uint32_t request( Intf lag ) const { return lags_[ lag.index() ].request; }
   /// Fails the LAGs whose time is over.
   void runDue( double now );
   std::uint64_t records() const noexcept { return ring_.written(); }

 private:
   struct Lag {
      std::uint32_t request = 0;
      std::uint32_t response = 0;
      double deadline = 0; // 0: none
      LinkState state = LinkState::linkDown;
   };

   void handleMember( const Pair & pair );
   void handlePeerInterlockLag( Intf intf );
   void updateLinkState( Intf intf );
   void linkStateIs( Intf intf, LinkState state );
   void handleLag( Intf intf );
   void handleLagInactive( Intf intf );
   bool isMlagIntf( Intf intf ) const { return mlag_.known[ intf.index() ] != 0; }
   static bool matched( const Lag & lag ) {
      return lag.request != 0 && lag.response == lag.request;
   }

   PairSet & input_;
   Members & members_;
   MlagInputs & mlag_;
   Output & output_;
   RingType ring_;
   std::uint32_t watermark_ = 1;
   std::vector< Lag > lags_;
   std::deque< std::pair< double, Intf > > deadlines_; // in order: all are the same time ahead
};

} // namespace Bench::Floor
