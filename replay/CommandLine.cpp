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
                                "a scenario is wrong.\n\n"
                                "Why a port is held or admitted: interlock-replay explain --help.\n"
                                "A switch's own configuration as a scenario: interlock-replay "
                                "import --help.";

[[noreturn]] void wrong( const std::string & option,
                         const std::string & word,
                         const std::string & wanted ) {
   throw CLI::ValidationError( option, inQuotes( word ) + "; wanted: " + wanted );
}

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
      wrong( option, word, wanted );
   }
   return found->second;
}

// The words of the command line, before they are understood.
struct CommandWords {
   std::string output = "text";
   std::string trace = "none";
   std::string clock = "virtual";
   std::string colours = "auto";
};

void addOptions( CLI::App & app, Options & options, CommandWords & words ) {
   app.footer( footer );
   app.set_version_flag( "--version", "interlock-replay " INTERLOCK_VERSION );
   app.set_help_flag( "--help", "Print this help message and exit" );
   app.add_option( "--output", words.output, "text: a timeline; jsonl: one JSON object a line" )
      ->type_name( "text|jsonl" )
      ->capture_default_str();
   app.add_option( "--trace", words.trace,
                   "Show trace records of these levels: none, all, or as 0,2-4" )
      ->type_name( "LEVELS" )
      ->capture_default_str();
   app.add_flag( "--ring", options.run.ring, "After the run, print the ring-buffer records" );
   app.add_option( "--trace-file", options.traceFile,
                   "Write the ring-buffer records of the only scenario into a new trace file" )
      ->type_name( "FILE" );
   app.add_option( "--timeline", options.timeline,
                   "Draw what the only scenario looked like over time, as SVG" )
      ->type_name( "FILE" );
   app.add_flag(
      "--summary", options.summary,
      "After the run, how long each member was held, and by what; still: at the end, too" );
   app.add_option( "--clock", words.clock, "Time that goes at once, or that passes" )
      ->type_name( "virtual|real" )
      ->capture_default_str();
   app.add_option( "--color", words.colours, "Colours in text: auto is at a terminal" )
      ->type_name( "auto|always|never" )
      ->capture_default_str();
   app.add_flag( "--quiet", options.quiet,
                 "Show only what failed; the exit status tells the rest" );
   app.add_option( "SCENARIO", options.scenarios, "Scenario files; - is standard input" )
      ->type_name( "" )
      ->required();
}

void understand( const CommandWords & words, Options & options ) {
   options.output =
      choice< OutputKind >( { { "text", OutputKind::text }, { "jsonl", OutputKind::jsonLines } },
                            "--output", words.output );
   options.clock = choice< ClockKind >(
      { { "virtual", ClockKind::virtualTime }, { "real", ClockKind::realTime } }, "--clock",
      words.clock );
   const auto useColours = parseUseColours( words.colours );
   if ( !useColours ) {
      wrong( "--color", words.colours, "always, auto or never" );
   }
   options.colours = *useColours;
   const auto levels = Vex::parseLevelMask( words.trace );
   if ( !levels ) {
      wrong( "--trace", words.trace, "none, all, or a list of levels such as 0,2-4" );
   }
   options.run.traceLevels = *levels;
   if ( std::ranges::count( options.scenarios, standardInput ) > 1 ) {
      throw CLI::ValidationError( "SCENARIO", "'-' twice; wanted: standard input only once" );
   }
   if ( options.traceFile && options.scenarios.size() > 1 ) {
      throw CLI::ValidationError( "--trace-file", "several scenarios; wanted: only one" );
   }
   if ( options.timeline && options.scenarios.size() > 1 ) {
      throw CLI::ValidationError( "--timeline", "several scenarios; wanted: only one" );
   }
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
   CommandWords words;
   CLI::App app( description, "interlock-replay" );
   addOptions( app, options, words );
   try {
      app.parse( argc, argv );
      understand( words, options );
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
