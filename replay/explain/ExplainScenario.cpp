#include "replay/explain/ExplainScenario.h"

#include "replay/HostClock.h"
#include "replay/Parser.h"
#include "replay/Runner.h"
#include "replay/ScenarioError.h"
#include "replay/ScenarioFile.h"
#include "replay/Text.h"
#include "replay/explain/ExplainCommandLine.h"
#include "replay/explain/Explanation.h"
#include "replay/explain/Witness.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace Explain {

namespace {

enum Status : std::uint8_t { answered = 0, unknown = 1, wrong = 2 };

// A run is not shown; it is explained.
class Unshown final : public Replay::Output {
 public:
   using Output::Output;

   std::uint32_t levelsAlwaysShown() const noexcept override { return 0; }
   void begin( std::string_view /* file */ ) override {}
   void sent( const Replay::Peering::Message & /* message */,
              std::span< const Vex::Seconds > /* delays */ ) override {}
   void statement( std::size_t /* line */, std::string_view /* text */ ) override {}
   void expectation( std::size_t /* line */, const Replay::Finding & /* finding */ ) override {}
   void trace( const Vex::TraceRecord & /* record */ ) override {}
   void ring( std::span< const Jotter::Record > /* records */ ) override {}
   void end( const Replay::Outcome & /* outcome */ ) override {}
   void verdict( Replay::Interlock /* interlock */,
                 const Replay::Pair & /* pair */,
                 bool /* admitted */ ) override {}
   void request( Nodo::IntfId /* lag */, std::optional< Replay::Token > /* token */ ) override {}
   void response( Nodo::IntfId /* lag */, std::optional< Replay::Token > /* token */ ) override {}
};

/// Gives the answer for each switch, as things stand at the moment that is asked for.
class Examination final : public Witness {
 public:
   struct Finding {
      std::string_view switchName;
      Answer answer;
   };

   Examination( const Replay::Scenario & scenario, const Question & question, Output & inner )
       : Witness( scenario, 0, inner ), question_( question ) {}

   void stageIs( const Replay::Stage & stage ) override {
      Witness::stageIs( stage );
      for ( Told & told : switches() ) {
         told.story.watch( question_.pair );
      }
   }

   const std::vector< Finding > & findings() const noexcept { return findings_; }

 private:
   void momentOver( Vex::Seconds moment, Vex::Seconds next ) override {
      const bool last = next == Vex::Seconds::infinity();
      const bool wanted = question_.at ? *question_.at < next : last;
      if ( !wanted || !findings_.empty() ) {
         return;
      }
      const Replay::Pair pair{ Nodo::IntfId( question_.pair.member ),
                               Nodo::IntfId( question_.pair.lag ) };
      Asked asked{
         question_.pair, Source::run, question_.at && !last ? *question_.at : moment, {}, {} };
      if ( last && question_.at && *question_.at > moment ) {
         asked.beyond = question_.at;
      }
      for ( Told & told : switches() ) {
         asked.switchName = told.name;
         told.story.memberIs( question_.pair, told.device->isMember( pair ) );
         findings_.push_back( { told.name, explain( told.story, asked ) } );
      }
   }

   const Question & question_;
   std::vector< Finding > findings_;
};

class Program {
 public:
   Program( const Question & question, Replay::Writer & out, Replay::Writer & err )
       : question_( question ), out_( out ), err_( err ) {}

   Status run() {
      try {
         const Replay::Scenario scenario =
            Replay::parseScenario( Replay::readScenarioFile( question_.file ) );
         if ( question_.switchName && !scenario.ofPair ) {
            tell( "--switch: the scenario has only one switch; wanted: none" );
            return wrong;
         }
         Replay::VirtualHostClock clock;
         Unshown unshown( out_ );
         Examination examination( scenario, question_, unshown );
         Replay::runScenario( scenario, {}, clock, examination );
         return choose( examination.findings() );
      } catch ( const Replay::ScenarioError & error ) {
         tell( error.what(), error.line() );
      }
      return wrong;
   }

 private:
   using Finding = Examination::Finding;

   Status choose( const std::vector< Finding > & findings ) {
      std::vector< const Explanation * > known;
      std::vector< const Finding * > meant;
      for ( const Finding & finding : findings ) {
         if ( !question_.switchName || finding.switchName == *question_.switchName ) {
            meant.push_back( &finding );
            if ( const auto & explanation = finding.answer.explanation ) {
               known.push_back( &*explanation );
            }
         }
      }
      if ( known.size() > 1 ) {
         tell( Replay::inQuotes( question_.pair.member ) + " is known in " +
               Replay::inQuotes( question_.pair.lag ) +
               " on both switches; wanted: --switch left or --switch right" );
         return wrong;
      }
      if ( known.empty() ) {
         for ( const Finding * const finding : meant ) {
            const std::string where( finding->switchName );
            tell( ( where.empty() ? "" : where + ": " ) + finding->answer.error );
         }
         return unknown;
      }
      if ( question_.json ) {
         showAsJson( *known.front(), out_ );
      } else {
         showAsText( *known.front(), out_ );
      }
      return answered;
   }

   void tell( std::string_view what, std::size_t line = 0 ) {
      std::string & text = err_.buffer();
      Replay::appendPrintable( text, question_.file == Replay::standardInput ? "<stdin>"
                                                                             : question_.file );
      text += line != 0 ? ":" + std::to_string( line ) + ": " : ": ";
      Replay::appendPrintable( text, what );
      text += '\n';
   }

   const Question & question_;
   Replay::Writer & out_;
   Replay::Writer & err_;
};

} // namespace

int explainScenario( int argc,
                     const char * const * argv,
                     Replay::Writer & out,
                     Replay::Writer & err ) {
   const ExplainCommandLine commandLine = parseExplainCommandLine( Asks::scenario, argc, argv );
   Status status = answered;
   if ( commandLine.question ) {
      status = Program( *commandLine.question, out, err ).run();
   } else if ( commandLine.error.empty() ) {
      out.buffer() += commandLine.text;
   } else {
      err.buffer() += "interlock-replay: " + commandLine.error + '\n';
      status = wrong;
   }
   out.flush();
   if ( out.error() != 0 ) {
      if ( out.error() != EPIPE ) { // a reader who has seen enough is no error to tell him of
         err.buffer() +=
            "interlock-replay: standard output: " + std::generic_category().message( out.error() ) +
            '\n';
      }
      status = wrong;
   }
   err.flush();
   return status;
}

} // namespace Explain
