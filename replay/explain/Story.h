#pragma once

// What the records of one switch's interlocks tell: of each (member, LAG) how it stands, since when
// and why; of each LAG how far the exchange with the peer has come. Nothing is decided here: a
// verdict is what a record says.
//
// Records come in the order in which they were written, from a trace file, or from a run of a
// scenario, which knows more: where an event begins, what stands in the outputs, and what is
// stopped. Where records are missing, what was under way is forgotten, and that is told.
//
// A record does not say of which call it is a part. A decision begins with a record that names its
// pair and ends with its verdict; what lies between belongs to it, but for another decision that
// was set off in its middle. What set it off is the last event before it that it fits.
//
// Ownership: holds all that it was told; borrows who is told of it, who outlives it.
// Cost: a record costs a look-up or two. What is kept grows with the names, not with the records.

#include "replay/explain/Standing.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Explain {

/// Is told while a story takes a record; changes nothing itself.
class StoryEvents {
 public:
   StoryEvents() = default;
   StoryEvents( const StoryEvents & ) = delete;
   StoryEvents & operator=( const StoryEvents & ) = delete;
   StoryEvents( StoryEvents && ) = delete;
   StoryEvents & operator=( StoryEvents && ) = delete;
   virtual ~StoryEvents() = default;

   /// Each decision, also one that changes nothing.
   virtual void decided( const PairName & pair, Gate gate, const Decision & decision ) = 0;
   /// The link state, the request or the deadline of a LAG has changed; `at` that time.
   virtual void exchanged( const std::string & lag,
                           const Exchange & exchange,
                           Vex::Seconds at ) = 0;
   /// What was decided over the ports of this LAG is out of date, until it is decided anew.
   virtual void outdated( const std::string & lag ) = 0;
};

class Story {
 public:
   /// How long a requesting LAG waits for the peer's answer.
   static constexpr Vex::Seconds patience{ 0.1 };

   /// Who is told, from now on; borrowed.
   void tell( StoryEvents & events ) noexcept { events_ = &events; }
   /// The pair of which the last decision and the spans are kept. Before the first record.
   void watch( PairName pair ) { watched_ = std::move( pair ); }

   // ---- What happened ----

   void take( const Note & note );
   /// Records that are missing, or were overwritten before they could be read.
   void missing( Vex::Seconds until );
   /// What follows was set off by something new.
   void eventBegins();
   /// An output has gained or lost a pair, whoever wrote it.
   void outputIs( Gate gate, const PairName & pair, bool admitted, Vex::Seconds time );
   /// An interlock begins or ends its life; which one, where only that tells.
   void started( Gate gate, std::optional< Decider > decider );
   void stopped( Gate gate, Vex::Seconds time );
   /// A LAG is removed, or gets other members, which alone makes nobody decide: what was decided
   /// over its ports was decided over others.
   void lagReplaced( const std::string & lag, Vex::Seconds time );
   /// A port has entered or left a LAG.
   void memberIs( const PairName & pair, bool present );

   // ---- What is known ----

   /// Null: the pair was never seen at this gate.
   const Standing * standing( const PairName & pair, Gate gate ) const;
   /// Null: nothing is known of an exchange for this LAG.
   const Exchange * exchange( const std::string & lag ) const;
   /// Every pair that was seen, in the order of names.
   std::vector< PairName > pairs() const;
   std::optional< Vex::Seconds > stoppedAt( Gate gate ) const noexcept {
      return context( gate ).stopped;
   }
   /// Which interlock runs, as far as is known.
   Decider decider( Gate gate ) const noexcept;
   /// Where a run of a scenario tells: the interlock runs, and the port is in the LAG.
   bool runs( Gate gate ) const noexcept { return context( gate ).runs; }
   /// It was started at some time: its verdicts stand, also while it is stopped.
   bool counts( Gate gate ) const noexcept { return runs( gate ) || stoppedAt( gate ); }
   bool isMember( const PairName & pair ) const { return members_.contains( pair ); }

   /// Of the records: the first and the last one's time, how many are not known.
   bool empty() const noexcept { return records_ == 0; }
   Vex::Seconds firstTime() const noexcept { return firstTime_; }
   Vex::Seconds lastTime() const noexcept { return lastTime_; }
   std::size_t unknown() const noexcept { return unknown_; }
   /// There were records before the first one.
   bool beginningLost() const noexcept { return beginningLost_; }
   /// Until when records are missing in the middle.
   std::optional< Vex::Seconds > missingUntil() const noexcept { return missingUntil_; }
   /// A record contradicts those before it: more than one interlock has written them.
   bool mixed() const noexcept { return mixed_; }

 private:
   // A decision under way.
   struct Frame {
      PairName pair;
      bool ofPeer = false;
      bool ofDeprecated = false;
      bool asked = false; // for the local egress ACL
      std::vector< Note > notes; // of the watched pair
      std::size_t setOff = 0; // so many of them are from before it
      std::optional< Note > entered; // it set this off itself, if it is in its LAG after all
   };
   // Where the records of one gate's interlock are.
   struct Context {
      std::optional< Note > trigger; // what sets decisions off
      bool fresh = false; // nothing was decided since
      std::set< std::string > empty; // the LAGs that it has found without members
      std::uint64_t event = 0; // its number
      std::string lag; // that was named last
      std::vector< Note > around; // messages of that LAG outside of decisions
      std::vector< Frame > frames; // innermost last
      Vex::Seconds lastTime;
      std::optional< Decider > decider; // where something tells
      bool runs = false;
      std::optional< Vex::Seconds > stopped;

      void eventEnds() noexcept {
         trigger.reset();
         around.clear();
         frames.clear();
      }
   };
   struct Known {
      Standing standing;
      std::uint64_t event = 0; // in which it was decided last
      std::uint64_t times = 0; // in that event
   };

   Context & context( Gate gate ) noexcept {
      return contexts_[ static_cast< std::size_t >( gate ) ];
   }
   const Context & context( Gate gate ) const noexcept {
      return contexts_[ static_cast< std::size_t >( gate ) ];
   }
   Known & known( const PairName & pair, Gate gate ) {
      return pairs_[ pair ][ static_cast< std::size_t >( gate ) ];
   }

   void takeKnown( const Note & note );
   static void begin( Context & here, const Note & trigger );
   void beginLife( Context & here, const Note & note );
   static void lagNamed( Context & here, const Note & note );
   void keep( Context & here, const Note & note ) const;
   static void lookedFor( Context & here, const Note & note );
   bool fits( const Context & here, const PairName & pair, const Known & one ) const;
   void openDecision( Context & here, const Note & note );
   void closeDecision( Context & here, const Note & note );
   void decide( Gate gate, const Frame & frame, const Decision & decision );

   template < class Change >
   void change( const std::string & lag, Vex::Seconds at, Change apply );
   void linkIs( const std::string & lag, Link link, const Note & note );
   void checkFrom( const std::string & lag, const Note & note );
   void exchangeMessage( const Context & here, const Note & note );
   void linkMessage( const std::string & lag, Link link, const Note & note );
   void linkFailed( const std::string & lag, const Note & note );
   void deadlineSet( const std::string & lag, const Note & note );

   StoryEvents * events_ = nullptr;
   std::optional< PairName > watched_;
   std::array< Context, gateCount > contexts_;
   std::map< PairName, std::array< Known, gateCount > > pairs_;
   std::map< std::string, Exchange > exchanges_;
   std::set< PairName > members_;
   std::uint64_t lastSequence_ = 0;
   std::size_t records_ = 0;
   std::size_t unknown_ = 0;
   Vex::Seconds firstTime_;
   Vex::Seconds lastTime_;
   bool beginningLost_ = false;
   bool lifeSeen_ = false; // so that a LAG without link state has none
   bool mixed_ = false;
   std::optional< Vex::Seconds > missingUntil_;
};

} // namespace Explain
