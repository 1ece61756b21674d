#include "examples/agent/Agent.h"

#include "Velo/VeloIntfInterlock.h"
#include "platform/Vex/Clock.h"
#include "platform/Vex/Entity.h"
#include "replay/Grammar.h"
#include "replay/JsonText.h"
#include "replay/Lexer.h"
#include "replay/Numbers.h"
#include "replay/ScenarioError.h"
#include "replay/Text.h"

#include <array>
#include <utility>
#include <variant>
#include <vector>

namespace ForwardingAgent {

using Replay::Interlock;
using Replay::JsonText;
using Replay::StatementError;

namespace {

// One JSON object on a line of its own, appended to a text. Kinds and keys are those of
// interlock-replay's JSON Lines, so that what reads one reads the other.
class Line {
 public:
   Line( std::string & out, std::string_view kind ) : out_( out ), json_( out ) {
      json_.beginObject();
      add( "kind", kind ).add( "t", Replay::roundedToMicroseconds( Vex::now() ) );
   }
   template < class Value >
   Line & add( std::string_view key, const Value & value ) {
      json_.key( key );
      json_.value( value );
      return *this;
   }
   Line & add( Origin origin ) { return add( "client", origin.client ).add( "line", origin.line ); }
   void end() {
      json_.endObject();
      out_ += '\n';
   }

 private:
   std::string & out_;
   JsonText json_;
};

constexpr std::string_view beforeStart = "this statement before 'start'";

// [MEMBER, LAG] each, in the order in which they were admitted.
std::vector< std::array< std::string_view, 2 > > listOf(
   const Interface::Interlock::IntfFeatureStatus & status ) {
   std::vector< std::array< std::string_view, 2 > > list;
   for ( const Replay::Pair pair : status.intf().keys() ) {
      list.push_back( { pair.member.stringValue(), pair.lag.stringValue() } );
   }
   return list;
}

// LAG to token.
auto listOf( const Mlag::AclInstallRequest & requests ) {
   return [ &requests ]( JsonText & json ) {
      json.beginObject();
      for ( const auto entry : requests.installRequest().entries() ) {
         json.key( entry.key.stringValue() );
         json.value( std::uint64_t{ entry.value } );
      }
      json.endObject();
   };
}

} // namespace

std::string errorLine( Origin origin, std::string_view message ) {
   std::string text;
   Line( text, "error" ).add( origin ).add( "message", message ).end();
   return text;
}

// ---- What the agent hears of its interlocks -----------------------------------------------------

/// Hears each verdict. This is where an agent adds the port to its LAG, or takes it out, in the
/// hardware; the entry stands before it hears of it.
class Agent::VerdictWatcher final
    : public Vex::ConstNotifiee< Interface::Interlock::IntfFeatureStatus > {
 public:
   VerdictWatcher( Interlock interlock, std::string & told ) noexcept
       : interlock_( interlock ), told_( told ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "ForwardingAgent::VerdictWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Replay::Pair & pair ) override {
      switch ( attribute ) {
      case Attribute::intf:
         Line( told_, "verdict" )
            .add( "interlock", nameOf( interlock_ ) )
            .add( "member", pair.member.stringValue() )
            .add( "lag", pair.lag.stringValue() )
            .add( "admitted", notifier()->intfHas( pair ) )
            .end();
         break;
      }
   }

 private:
   Interlock interlock_;
   std::string & told_; // the agent's, which holds us
};

/// Hears what is asked of the MLAG peer. Whoever carries it there brings the answer as a line:
/// `response LAG TOKEN`.
class Agent::RequestWatcher final : public Vex::ConstNotifiee< Mlag::AclInstallRequest > {
 public:
   explicit RequestWatcher( std::string & told ) noexcept : told_( told ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "ForwardingAgent::RequestWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override {
      switch ( attribute ) {
      case Attribute::installRequest:
         const Replay::Token * const token = notifier()->installRequest().find( lag );
         Line( told_, "request" )
            .add( "lag", lag.stringValue() )
            .add( "token",
                  token != nullptr ? std::optional( std::uint64_t{ *token } ) : std::nullopt )
            .end();
         break;
      }
   }

 private:
   std::string & told_; // the agent's, which holds us
};

// ---- The agent ----------------------------------------------------------------------------------

Agent::Agent()
    : entities_( Vex::make< Kel::TaskScheduler >() ),
      egressAclWatcher_( Vex::make< VerdictWatcher >( Interlock::egressAcl, told_ ) ),
      vlanXlateWatcher_( Vex::make< VerdictWatcher >( Interlock::vlanXlate, told_ ) ),
      requestWatcher_( Vex::make< RequestWatcher >( told_ ) ) {
   egressAclWatcher_->notifierIs( entities_.egressAclOutput );
   vlanXlateWatcher_->notifierIs( entities_.vlanOutput );
   requestWatcher_->notifierIs( entities_.aclRequestToPeer );
}

Agent::~Agent() = default;

Told Agent::execute( std::string_view line, Origin origin ) {
   try {
      std::vector< Replay::Word > words;
      Replay::splitWords( line, words );
      if ( words.empty() ) {
         return {};
      }
      const Replay::Statement statement = Replay::parseStatement( words, Replay::Listener::agent );
      std::string text;
      Replay::appendWords( text, words );
      Line( told_, "statement" ).add( origin ).add( "text", text ).end();
      std::visit(
         [ & ]( const auto & change ) {
            if constexpr ( requires { apply( change ); } ) {
               apply( change );
            } else {
               Replay::throwPlayed( words );
            }
         },
         statement );
      return { std::exchange( told_, {} ) };
   } catch ( const StatementError & error ) {
      told_.clear(); // at most that there is a statement: one with an error changes nothing
      return { errorLine( origin, error.what() ), true };
   }
}

std::string Agent::runDue() {
   entities_.scheduler->runDue();
   return std::exchange( told_, {} );
}

std::string Agent::standing( std::string_view kind, std::uint64_t client ) const {
   std::string text;
   Line( text, kind )
      .add( "client", client )
      .add( "egress-acl", listOf( *entities_.egressAclOutput ) )
      .add( "vlan-xlate", listOf( *entities_.vlanOutput ) )
      .add( "requests", listOf( *entities_.aclRequestToPeer ) )
      .end();
   return text;
}

void Agent::stop() noexcept {
   egressAcl_.release();
   vlanXlate_.release();
}

// ---- Statements ---------------------------------------------------------------------------------

// `start` is the publishers' word that everything is there: the interlocks then decide all of it in
// one pass. Before it, nobody is admitted.
void Agent::apply( const Replay::Start & start ) {
   const Interlock interlock = start.machine->interlock;
   wantStopped( interlock, "one 'start'" );
   const Replay::Entities & e = entities_;
   switch ( interlock ) {
   case Interlock::egressAcl:
      if ( start.machine->name != "controller" ) {
         throw StatementError(
            "'" + std::string( start.machine->name ) +
            "' is not run here by itself; wanted: 'start controller', which runs "
            "the basic or the peer interlock as 'mlag peer-interlock' says" );
      }
      egressAcl_ = Velo::mlagEgressAclIntfInterlockControllerSmFactory(
         e.aclInput, e.hwLagConfig, e.mlagStatus, e.aclResponseFromPeer, e.aclRequestToPeer,
         e.scheduler, e.egressAclOutput );
      break;
   case Interlock::vlanXlate:
      vlanXlate_ = Velo::vlanXlateIntfInterlockSmFactory( e.vlanInput, e.hwLagConfig,
                                                          e.bridgingConfig, e.vlanOutput );
      break;
   }
}

// What an earlier life of this agent left behind comes before the start, which decides it again;
// later these belong to the interlocks alone.
void Agent::apply( const Replay::OutputEntry & entry ) {
   wantStopped( entry.interlock, beforeStart );
   Replay::apply( entry, entities_ );
}

void Agent::apply( const Replay::Request & request ) {
   wantStopped( Interlock::egressAcl, beforeStart );
   Replay::apply( request, entities_ );
}

void Agent::wantStopped( Interlock interlock, std::string_view wanted ) const {
   const auto & running = interlock == Interlock::egressAcl ? egressAcl_ : vlanXlate_;
   if ( running ) {
      throw StatementError( "the " + std::string( nameOf( interlock ) ) +
                            " interlock runs already; wanted: " + std::string( wanted ) );
   }
}

} // namespace ForwardingAgent
