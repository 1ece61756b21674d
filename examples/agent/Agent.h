#pragma once

// A forwarding agent without its socket: the entities of one switch, the interlocks that watch
// them, and what happens there as text, one JSON object a line. The loop in Main.cpp drives it.
//
// Ownership: holds its entities, its interlocks and their scheduler.
// Threading: one thread, that of the loop. Nothing here waits for anything.
// Errors: what is wrong with a line is told to its sender, and nothing has changed. When memory
// runs out, std::bad_alloc leaves every call; the agent is not to be used after that, because what
// it has told may lack something.

#include "interlock-model/StateMachine.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Seconds.h"
#include "replay/Entities.h"
#include "replay/EntityChanges.h"
#include "replay/Statement.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ForwardingAgent {

/// Where a line comes from.
struct Origin {
   std::uint64_t client;
   std::uint64_t line; // of that client, from 1
};

/// Whole lines, each with its end; often none.
struct Told {
   std::string text;
   bool onlyToSender = false;
};

/// Why the sender's line was not done.
std::string errorLine( Origin origin, std::string_view message );

class Agent {
 public:
   Agent();
   Agent( const Agent & ) = delete;
   Agent & operator=( const Agent & ) = delete;
   Agent( Agent && ) = delete;
   Agent & operator=( Agent && ) = delete;
   ~Agent();

   /// Does what a line of the scenario language says; tells of it and of what came of it.
   Told execute( std::string_view line, Origin origin );

   /// When runDue() has something to do next, on Vex::now()'s clock.
   std::optional< Vex::Seconds > nextDue() const noexcept { return entities_.scheduler->nextDue(); }
   std::string runDue();

   /// How things stand, as a line of this kind, for this client.
   std::string standing( std::string_view kind, std::uint64_t client ) const;

   /// No verdict changes any more: those that are there stand until the next start.
   void stop() noexcept;

 private:
   class VerdictWatcher;
   class RequestWatcher;

   // A statement without one of these makes sense only in a story that is played.
   template < Replay::EntityChange Change >
   void apply( const Change & change ) {
      Replay::apply( change, entities_ );
   }
   void apply( const Replay::OutputEntry & entry );
   void apply( const Replay::Request & request );
   void apply( const Replay::Start & start );

   void wantStopped( Replay::Interlock interlock, std::string_view wanted ) const;

   std::string told_; // by the call under way
   Replay::Entities entities_;
   Vex::Ptr< InterlockModel::StateMachine > egressAcl_; // null until it is started
   Vex::Ptr< InterlockModel::StateMachine > vlanXlate_;
   // Go first: nobody is to be told of how the rest is taken apart.
   Vex::Ptr< VerdictWatcher > egressAclWatcher_;
   Vex::Ptr< VerdictWatcher > vlanXlateWatcher_;
   Vex::Ptr< RequestWatcher > requestWatcher_;
};

} // namespace ForwardingAgent
