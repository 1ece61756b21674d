#include "replay/Runner.h"

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/Clock.h"
#include "replay/Expects.h"
#include "replay/Numbers.h"
#include "replay/Progress.h"
#include "replay/ScenarioError.h"
#include "replay/Stage.h"
#include "replay/Switch.h"
#include "replay/Text.h"
#include "replay/TraceCapture.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <variant>

namespace Replay {

namespace {

// What the ring-buffer trace is written to during one run: the file that is given, else one in
// memory, or none.
class RingScope {
 public:
   explicit RingScope( const RunOptions & options )
       : own_( options.ring && options.traceFile == nullptr
                  ? std::make_unique< Jotter::TraceFile >()
                  : nullptr ),
         file_( own_ ? own_.get() : options.traceFile ),
         before_( Jotter::defaultTraceFileIs( file_ ) ) {}
   RingScope( const RingScope & ) = delete;
   RingScope & operator=( const RingScope & ) = delete;
   RingScope( RingScope && ) = delete;
   RingScope & operator=( RingScope && ) = delete;
   ~RingScope() {
      try {
         Jotter::defaultTraceFileIs( before_ );
      } catch ( const std::bad_alloc & ) { // for call sites that it does not know yet
         Jotter::defaultTraceFileIs( nullptr ); // needs none; the own one is about to go
      }
   }

   const Jotter::TraceFile * file() const noexcept { return file_; }

 private:
   std::unique_ptr< Jotter::TraceFile > own_;
   Jotter::TraceFile * file_;
   Jotter::TraceFile * before_;
};

std::vector< Pair > inByteOrder( const Entities::IntfFeatureStatus & status ) {
   std::vector< Pair > pairs;
   for ( const Pair pair : status.intf().keys() ) {
      pairs.push_back( pair );
   }
   std::ranges::sort( pairs, {}, []( const Pair & pair ) {
      return std::tie( pair.member.stringValue(), pair.lag.stringValue() );
   } );
   return pairs;
}

SwitchOutcome outcomeOf( std::string_view name, const Entities & entities ) {
   SwitchOutcome outcome{
      name, inByteOrder( *entities.egressAclOutput ), inByteOrder( *entities.vlanOutput ), {} };
   for ( const auto entry : entities.aclRequestToPeer->installRequest().entries() ) {
      outcome.requests.emplace_back( entry.key, entry.value );
   }
   std::ranges::sort( outcome.requests, {}, []( const auto & request ) -> const std::string & {
      return request.first.stringValue();
   } );
   return outcome;
}

template < class StatementType >
concept ExpectOfSwitch = requires( const StatementType & statement, const Switch & device ) {
   { find( statement, device ) } -> std::same_as< Finding >;
};
template < class StatementType >
concept ChangeOfStage =
   requires( const StatementType & statement, Stage & stage ) { stage.apply( statement ); };
template < class StatementType >
concept ChangeOfSwitch =
   !ChangeOfStage< StatementType > &&
   requires( const StatementType & statement, Switch & device ) { device.apply( statement ); };

class Runner {
 public:
   Runner( const Scenario & scenario,
           const RunOptions & options,
           HostClock & clock,
           Output & output )
       : scenario_( scenario ), showsRing_( options.ring ), progress_( options.progress ),
         clock_( clock ), output_( output ),
         stage_( scenario.ofPair ? StageKind::pair : StageKind::oneSwitch, scheduler_, output ),
         ring_( options ), traces_( output,
                                    options.traceLevels | output.levelsAlwaysShown(),
                                    scenario.expectsTrace ? Keep::messages : Keep::nothing ) {}

   std::size_t run() {
      output_.stageIs( stage_ );
      std::size_t done = 0;
      for ( const Step & step : scenario_.steps ) {
         output_.statement( step.line, scenario_.text( step ) );
         line_ = step.line;
         try {
            std::visit( [ this ]( const auto & statement ) { execute( statement ); },
                        step.statement );
         } catch ( const StatementError & error ) {
            throw ScenarioError( step.line, error.what() );
         }
         if ( output_.writer().error() != 0 ) {
            return outcome_.failedLines.size();
         }
         if ( progress_ != nullptr ) {
            progress_->statementsDone( ++done );
         }
      }
      if ( showsRing_ ) {
         output_.ring( Jotter::readRecords( ring_.file()->bytes() ) );
      }
      finish();
      return outcome_.failedLines.size();
   }

 private:
   template < ChangeOfSwitch Change >
   void execute( const Change & change ) {
      traces_.forget();
      stage_.current().apply( change );
   }
   template < ChangeOfStage Change >
   void execute( const Change & change ) {
      traces_.forget();
      stage_.apply( change );
   }
   // Only says whom the others are meant for: the trace of what happened last stays.
   void execute( const ForSwitch & which ) { stage_.apply( which ); }
   void execute( const At & at ) {
      if ( at.time < moment_ ) {
         throw StatementError( inQuotes( decimal( at.time ) ) +
                               " is in the past; wanted: " + decimal( moment_ ) + " or later" );
      }
      goTo( at.time );
   }
   void execute( const Wait & wait ) {
      const Vex::Seconds target = moment_ + wait.duration;
      if ( std::isinf( target.value() ) ) {
         throw StatementError( inQuotes( decimal( wait.duration ) ) +
                               " is more than the clock can go on; wanted: less" );
      }
      goTo( target );
   }
   void goTo( Vex::Seconds target ) {
      traces_.forget();
      moment_ = target;
      clock_.advanceTo( *scheduler_, target );
   }
   template < ExpectOfSwitch Expect >
   void execute( const Expect & expect ) {
      report( find( expect, stage_.current() ) );
   }
   void execute( const ExpectTrace & expect ) { report( find( expect, traces_ ) ); }

   void report( const Finding & finding ) {
      output_.expectation( line_, finding );
      if ( finding.ok ) {
         ++outcome_.held;
      } else {
         outcome_.failedLines.push_back( line_ );
      }
   }

   void finish() {
      stage_.forEach( [ this ]( std::string_view name, const Switch & device ) {
         outcome_.switches.push_back( outcomeOf( name, device.entities() ) );
      } );
      output_.end( outcome_ );
   }

   const Scenario & scenario_;
   bool showsRing_;
   Progress * progress_;
   HostClock & clock_;
   Output & output_;
   Vex::ClockScope clockScope_{ clock_.clock() };
   Vex::Ptr< Kel::TaskScheduler > scheduler_ = Vex::make< Kel::TaskScheduler >();
   Stage stage_;
   // Go first: what is written while the switch is taken apart belongs to no scenario.
   RingScope ring_;
   TraceCapture traces_;
   Vex::Seconds moment_; // that the statements have reached; real time is a little later
   std::size_t line_ = 0;
   Outcome outcome_;
};

} // namespace

std::size_t runScenario( const Scenario & scenario,
                         const RunOptions & options,
                         HostClock & clock,
                         Output & output ) {
   return Runner( scenario, options, clock, output ).run();
}

} // namespace Replay
