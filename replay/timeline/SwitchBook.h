#pragma once

// What is known of one switch while a run is followed: for each LAG its link state, for each member
// what was found about it, and the rows that come of it.
//
// Ownership: borrows the switch, whose entities it reads; not in finish().

#include "replay/Switch.h"
#include "replay/explain/Story.h"
#include "replay/pair/Admission.h"
#include "replay/timeline/Chart.h"
#include "replay/timeline/Track.h"

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Replay::Timeline {

class SwitchBook final : public Explain::StoryEvents {
 public:
   SwitchBook( std::string_view name, const Switch & device ) : device_( device ) {
      rows_.name = name;
   }

   // What happens.

   void startedIs( const Machine & machine ) {
      started_[ static_cast< std::size_t >( machine.interlock ) ] = &machine;
   }
   /// The egress-ACL interlock ends, or begins anew: it has no link states.
   void forgetLinks();
   void decided( const Explain::PairName & pair,
                 Explain::Gate gate,
                 const Explain::Decision & decision ) override;
   void exchanged( const std::string & lag,
                   const Explain::Exchange & exchange,
                   Vex::Seconds at ) override;
   void outdated( const std::string & lag ) override;
   void mark( Nodo::IntfId lag, Mark mark ) {
      touch( lag );
      lags_[ lag ].marks.push_back( std::move( mark ) );
   }
   /// Of no single LAG.
   void mark( Mark mark ) { rows_.marks.push_back( std::move( mark ) ); }
   /// Null: the LAG has none.
   Mark * lastMark( Nodo::IntfId lag ) {
      std::vector< Mark > & marks = lags_[ lag ].marks;
      return marks.empty() ? nullptr : &marks.back();
   }
   /// Things may stand otherwise for this LAG.
   void touch( Nodo::IntfId lag ) { touched_.insert( lag ); }
   /// The LAGs that were touched since the last call.
   std::set< Nodo::IntfId > takeTouched() { return std::exchange( touched_, {} ); }

   // What is so.

   /// All LAGs that there are, or were.
   void addLags( std::set< Nodo::IntfId > & lags ) const;

   /// Puts down how things stand for this LAG at `now`. `peer`: the other switch, or null.
   void look( Vex::Seconds now, Nodo::IntfId lag, const SwitchBook * peer );

   /// The rows, up to the end of the run.
   SwitchRows finish( Vex::Seconds end );

 private:
   struct MemberBook {
      // Of each interlock: why it decided as it did; nothing: it has not since the LAG changed.
      std::array< std::optional< Explain::Reason >, interlocks.size() > reasons;
      Track track;
   };
   struct LagBook {
      Explain::Link link = Explain::Link::none;
      std::optional< Peering::FailCause > failed;
      std::vector< Mark > marks;
      std::map< Nodo::IntfId, MemberBook > members;
      Track track;
   };

   std::optional< Showing > shown( const Pair & pair,
                                   const LagBook & lag,
                                   const MemberBook & member,
                                   const SwitchBook * peer ) const;
   std::optional< Peering::Standing > standing( const Pair & pair,
                                                const LagBook & lag,
                                                const MemberBook & member,
                                                const SwitchBook * peer ) const;
   std::string reasons( const Pair & pair, const MemberBook & member, bool admitted ) const;
   bool counts( Interlock interlock ) const;
   bool admits( Interlock interlock, const Pair & pair ) const;
   bool admitsAll( const Pair & pair ) const;
   bool isMember( const Pair & pair ) const;
   bool peerMode() const;

   const Switch & device_;
   std::array< const Machine *, interlocks.size() > started_{}; // last; null: never
   std::map< Nodo::IntfId, LagBook > lags_;
   std::set< Nodo::IntfId > touched_;
   SwitchRows rows_;
};

} // namespace Replay::Timeline
