#include "replay/Play.h"

#include "platform/Jotter/RingLayout.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Jotter/TraceFileError.h"
#include "replay/Colours.h"
#include "replay/HostClock.h"
#include "replay/JsonLinesOutput.h"
#include "replay/Parser.h"
#include "replay/Progress.h"
#include "replay/QuietOutput.h"
#include "replay/Runner.h"
#include "replay/ScenarioError.h"
#include "replay/ScenarioFile.h"
#include "replay/Terminal.h"
#include "replay/Text.h"
#include "replay/TextOutput.h"
#include "replay/explain/Summary.h"
#include "replay/timeline/Recorder.h"
#include "replay/timeline/TimelineFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

namespace Replay {

namespace {

std::string shownName( const std::string & file ) {
   return file == standardInput ? "<stdin>" : file;
}

std::unique_ptr< Output > makeOutput( const Options & options, Writer & writer ) {
   switch ( options.output ) {
   case OutputKind::text:
      return wantsColours( options.colours, writer.descriptor() ) ? colouredTextOutput( writer )
                                                                  : textOutput( writer );
   case OutputKind::jsonLines:
      return jsonLinesOutput( writer );
   }
   return nullptr;
}

std::unique_ptr< HostClock > makeClock( ClockKind kind, Writer & writer ) {
   switch ( kind ) {
   case ClockKind::virtualTime:
      return std::make_unique< VirtualHostClock >();
   case ClockKind::realTime: // who watches wants to see what there is
      return realHostClock( [ &writer ] { writer.flush(); } );
   }
   return nullptr;
}

// As large as the ring in memory.
std::unique_ptr< Jotter::TraceFile > makeTraceFile( const std::optional< std::string > & path ) {
   constexpr std::size_t descriptors = std::size_t{ 64 } * 1024;
   constexpr std::size_t bytes =
      descriptors + Jotter::TraceFile::defaultCells * sizeof( Jotter::Layout::Cell );
   return path ? std::make_unique< Jotter::TraceFile >( *path, bytes ) : nullptr;
}

// What is read, and the trace of the run, are not drawn over. Devices may be both.
bool isSameFile( const std::string & one, const std::string & other ) {
   std::error_code error;
   return std::filesystem::is_regular_file( one, error ) &&
          std::filesystem::equivalent( one, other, error );
}

// After the trace file, which is known by its name alone until it is there.
std::unique_ptr< Timeline::TimelineFile > makeTimelineFile( const std::string & scenario,
                                                            const Options & options ) {
   if ( !options.timeline ) {
      return nullptr;
   }
   const std::string & path = *options.timeline;
   if ( isSameFile( path, scenario == standardInput ? "/dev/stdin" : scenario ) ) {
      throw Timeline::TimelineFileError( path + ": is the scenario; wanted: another file" );
   }
   if ( options.traceFile && isSameFile( path, *options.traceFile ) ) {
      throw Timeline::TimelineFileError( path + ": is the trace file; wanted: another file" );
   }
   return std::make_unique< Timeline::TimelineFile >( path );
}

std::unique_ptr< Output > makeSummary( const Options & options,
                                       const Scenario & scenario,
                                       Output & output ) {
   const auto form = options.output == OutputKind::text ? Explain::SummaryForm::text
                                                        : Explain::SummaryForm::jsonLines;
   return options.summary ? std::make_unique< Explain::Summary >( scenario, options.run.traceLevels,
                                                                  output, form )
                          : nullptr;
}

// The line on which somebody waits for the end, if somebody does. Where the output goes to a
// terminal as well, that is taken to be the same one.
class Waiting {
 public:
   Waiting( const Watched & watched, const Options & options, Writer & writer )
       : writer_( writer ) {
      if ( watched.terminal < 0 || options.quiet ) {
         return;
      }
      line_.emplace( watched.terminal, watched.realTime );
      if ( isTerminal( writer.descriptor() ) ) {
         writer.beforeWritingIs( [ this ] { line_->wipe(); } );
      }
   }
   Waiting( const Waiting & ) = delete;
   Waiting & operator=( const Waiting & ) = delete;
   Waiting( Waiting && ) = delete;
   Waiting & operator=( Waiting && ) = delete;
   ~Waiting() { writer_.beforeWritingIs( {} ); }

   ProgressLine * line() noexcept { return line_ ? &*line_ : nullptr; }

 private:
   Writer & writer_;
   std::optional< ProgressLine > line_;
};

std::size_t run( const Scenario & scenario,
                 const std::string & name,
                 const Options & options,
                 RunOptions runOptions,
                 ProgressLine * line,
                 Output & output ) {
   const auto clock = makeClock( options.clock, output.writer() );
   if ( line == nullptr ) {
      return runScenario( scenario, runOptions, *clock, output );
   }
   // Waits of the virtual clock take no time.
   const Vex::Seconds step =
      options.clock == ClockKind::realTime ? Vex::Seconds( 0.1 ) : Vex::Seconds::infinity();
   Progress progress( *line, name, scenario.steps.size() );
   WatchedHostClock watchedClock( *clock, progress, step );
   runOptions.progress = &progress;
   return runScenario( scenario, runOptions, watchedClock, output );
}

std::size_t playOne( const std::string & file,
                     const Options & options,
                     ProgressLine * line,
                     Output & output ) {
   const Scenario scenario = parseScenario( readScenarioFile( file ) );
   const auto traceFile = makeTraceFile( options.traceFile );
   RunOptions runOptions = options.run;
   runOptions.traceFile = traceFile.get();
   const auto timeline = makeTimelineFile( file, options );
   Timeline::Recorder recorder( scenario, runOptions.traceLevels, output );
   Output & shown = timeline ? recorder : output;
   const auto summary = makeSummary( options, scenario, shown );
   Output & followed = summary ? *summary : shown;
   followed.begin( shownName( file ) );
   const std::size_t failed =
      run( scenario, shownName( file ), options, runOptions, line, followed );
   output.writer().flush();
   if ( timeline && output.writer().error() == 0 ) { // else the run was not played to its end
      timeline->write( recorder.takeChart() );
   }
   return failed;
}

void printError( const std::string & file, const ScenarioError & error ) {
   std::string line;
   appendPrintable( line, shownName( file ) );
   line += error.line() != 0 ? ":" + std::to_string( error.line() ) + ": " : ": ";
   line += error.what();
   line += '\n';
   static_cast< void >( std::fputs( line.c_str(), stderr ) );
}

} // namespace

ExitStatus play( const Options & options, Writer & writer, const Watched & watched ) {
   const auto output = makeOutput( options, writer );
   QuietOutput failures( *output );
   Output & shown = options.quiet ? failures : *output;
   Waiting waiting( watched, options, writer );
   bool failed = false;
   for ( const std::string & file : options.scenarios ) {
      try {
         failed |= playOne( file, options, waiting.line(), shown ) > 0;
      } catch ( const ScenarioError & error ) {
         writer.flush(); // what came before the error is shown before it
         printError( file, error );
         return somethingWrong;
      } catch ( const Jotter::TraceFileError & error ) {
         std::string line;
         appendPrintable( line, error.what() );
         std::fprintf( stderr, "interlock-replay: --trace-file: %s\n", line.c_str() );
         return somethingWrong;
      } catch ( const Timeline::TimelineFileError & error ) {
         writer.flush();
         std::string line;
         appendPrintable( line, error.what() );
         std::fprintf( stderr, "interlock-replay: --timeline: %s\n", line.c_str() );
         return somethingWrong;
      }
      if ( writer.error() != 0 ) {
         if ( writer.error() != EPIPE ) { // a reader who has seen enough is no error to tell him of
            const std::string why = std::generic_category().message( writer.error() );
            std::fprintf( stderr, "interlock-replay: standard output: %s\n", why.c_str() );
         }
         return somethingWrong;
      }
   }
   return failed ? someFailed : allHeld;
}

} // namespace Replay
