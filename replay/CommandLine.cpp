#include "replay/CommandLine.h"

#include "platform/Vex/Trace.h"
#include "replay/ScenarioFile.h"
#include "replay/Text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

namespace Replay {

namespace {

constexpr const char * description =
   "Plays scenarios of entity changes to the interlocks and shows what they decide.";
constexpr const char * footer = "Exit status: 0 all ran and every expect held; 1 some expect did "
                                "not hold; 2 the command line or\n"
                                "a scenario is wrong.";

template < class Value >
Value choice( const std::map< std::string, Value > & values,
              const std::string & option,
              const std::string & word ) {
   const auto found = values.find( word );
   if ( found == values.end() ) {
      std::string wanted;
      for ( const auto & [ name, value ] : values ) {
         wanted += ( wanted.empty() ? "" : " or " ) + name;
      }
      throw CLI::ValidationError( option, inQuotes( word ) + "; wanted: " + wanted );
   }
   return found->second;
}

// One line, whatever the arguments hold.
std::string oneLine( std::string_view text ) {
   std::string line;
   appendPrintable( line, text );
   return line;
}

} // namespace

CommandLine parseCommandLine( int argc, const char * const * argv ) {
   Options options;
   std::string output = "text";
   std::string trace = "none";
   std::string clock = "virtual";
   CLI::App app( description, "interlock-replay" );
   app.footer( footer );
   app.set_version_flag( "--version", "interlock-replay " INTERLOCK_VERSION );
   app.set_help_flag( "--help", "Print this help message and exit" );
   app.add_option( "--output", output, "text: a timeline; jsonl: one JSON object a line" )
      ->type_name( "text|jsonl" )
      ->capture_default_str();
   app.add_option( "--trace", trace, "Show trace records of these levels: none, all, or as 0,2-4" )
      ->type_name( "LEVELS" )
      ->capture_default_str();
   app.add_flag( "--ring", options.run.ring, "After the run, print the ring-buffer records" );
   app.add_option( "--trace-file", options.traceFile,
                   "Write the ring-buffer records of the only scenario into a new trace file" )
      ->type_name( "FILE" );
   app.add_option( "--clock", clock, "Time that goes at once, or that passes" )
      ->type_name( "virtual|real" )
      ->capture_default_str();
   app.add_option( "SCENARIO", options.scenarios, "Scenario files; - is standard input" )
      ->type_name( "" )
      ->required();
   try {
      app.parse( argc, argv );
      options.output = choice< OutputKind >(
         { { "text", OutputKind::text }, { "jsonl", OutputKind::jsonLines } }, "--output", output );
      options.clock = choice< ClockKind >(
         { { "virtual", ClockKind::virtualTime }, { "real", ClockKind::realTime } }, "--clock",
         clock );
      const auto levels = Vex::parseLevelMask( trace );
      if ( !levels ) {
         throw CLI::ValidationError( "--trace",
                                     inQuotes( trace ) +
                                        "; wanted: none, all, or a list of levels such as 0,2-4" );
      }
      options.run.traceLevels = *levels;
      if ( std::ranges::count( options.scenarios, standardInput ) > 1 ) {
         throw CLI::ValidationError( "SCENARIO", "'-' twice; wanted: standard input only once" );
      }
      if ( options.traceFile && options.scenarios.size() > 1 ) {
         throw CLI::ValidationError( "--trace-file", "several scenarios; wanted: only one" );
      }
   } catch ( const CLI::CallForHelp & ) {
      return { {}, app.help(), {} };
   } catch ( const CLI::CallForVersion & version ) {
      return { {}, version.what() + std::string( "\n" ), {} };
   } catch ( const CLI::ParseError & error ) {
      return { {}, {}, oneLine( error.what() ) + "; see --help" };
   }
   return { std::move( options ), {}, {} };
}

} // namespace Replay
