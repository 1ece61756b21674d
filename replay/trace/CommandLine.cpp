#include "replay/trace/CommandLine.h"

#include "platform/Vex/Trace.h"
#include "replay/Numbers.h"
#include "replay/Text.h"
#include "replay/explain/ExplainCommandLine.h"

#include <CLI/CLI.hpp>
#include <limits>

namespace TraceTool {

namespace {

constexpr const char * description =
   "Prints the records of a trace file, oldest first, whether its agent still runs or not.";
constexpr const char * footer =
   "A record is shown when it passes every filter; of several names, one is enough.\n"
   "Exit status: 0 everything was read; 1 something was damaged or missing, the rest was read;\n"
   "2 the command line is wrong, the file holds no trace, or standard output cannot be written.\n\n"
   "Why a port is held or admitted: interlock-trace explain --help.";

// The words of the command line, before they are understood.
struct Words {
   std::string output = "text";
   std::string colours = "auto";
   std::optional< std::string > levels;
   std::optional< std::string > since;
   std::optional< std::string > until;
   std::optional< std::string > last;
   bool jsonLines = false;
};

[[noreturn]] void wrong( const std::string & option,
                         const std::string & word,
                         const std::string & wanted ) {
   throw CLI::ValidationError( option, Replay::inQuotes( word ) + "; wanted: " + wanted );
}

void addOptions( CLI::App & app, Options & options, Words & words ) {
   app.footer( footer );
   app.set_version_flag( "--version", "interlock-trace " INTERLOCK_VERSION );
   app.set_help_flag( "--help", "Print this help message and exit" );
   app.add_option( "--output", words.output, "text: a line a record; jsonl: a JSON object a line" )
      ->type_name( "text|jsonl" )
      ->capture_default_str();
   app.add_flag( "--jsonl", words.jsonLines, "The same as --output jsonl" );
   app.add_option( "--color", words.colours, "Colours in text: auto is at a terminal" )
      ->type_name( "auto|always|never" )
      ->capture_default_str();
   app.add_option( "--level", words.levels, "Records of these levels: none, all, or as 0,2-4" )
      ->type_name( "LEVELS" );
   app.add_option( "--function", options.filter.functions, "Records of this function; repeatable" )
      ->type_name( "NAME" )
      ->allow_extra_args( false );
   app.add_option( "--intf", options.filter.intfs, "Records that name this interface; repeatable" )
      ->type_name( "INTF" )
      ->allow_extra_args( false );
   app.add_option( "--since", words.since, "Records from this time on, in seconds" )
      ->type_name( "T" );
   app.add_option( "--until", words.until, "Records up to this time" )->type_name( "T" );
   app.add_option( "--last", words.last, "The last N of these records" )->type_name( "N" );
   app.add_flag( "--follow", options.follow, "Go on with records as they are written" );
   app.add_option( "FILE", options.file, "The trace file" )->type_name( "" )->required();
}

std::optional< Vex::Seconds > time( const std::string & option,
                                    const std::optional< std::string > & word ) {
   const auto seconds = word ? Replay::parseSeconds( *word ) : std::nullopt;
   if ( word && !seconds ) {
      wrong( option, *word, "seconds such as 12.5" );
   }
   return seconds;
}

void understand( const Words & words, Options & options ) {
   if ( words.output != "text" && words.output != "jsonl" ) {
      wrong( "--output", words.output, "jsonl or text" );
   }
   if ( words.output == "jsonl" || words.jsonLines ) {
      options.output = OutputKind::jsonLines;
   }
   const auto colours = Replay::parseUseColours( words.colours );
   if ( !colours ) {
      wrong( "--color", words.colours, "always, auto or never" );
   }
   options.colours = *colours;
   if ( words.levels ) {
      options.filter.levels = Vex::parseLevelMask( *words.levels );
      if ( !options.filter.levels ) {
         wrong( "--level", *words.levels, "none, all, or a list of levels such as 0,2-4" );
      }
   }
   options.filter.since = time( "--since", words.since );
   options.filter.until = time( "--until", words.until );
   if ( words.last ) {
      constexpr std::uint32_t most = std::numeric_limits< std::uint32_t >::max();
      options.last = Replay::parseNumber( *words.last, 0, most );
      if ( !options.last ) {
         wrong( "--last", *words.last, "a number from 0 to " + std::to_string( most ) );
      }
   }
}

// One line, whatever the arguments hold.
std::string oneLine( std::string_view text ) {
   std::string line;
   Replay::appendPrintable( line, text );
   return line;
}

} // namespace

CommandLine parseCommandLine( int argc, const char * const * argv ) {
   Options options;
   Words words;
   CLI::App app( description, "interlock-trace" );
   addOptions( app, options, words );
   try {
      app.parse( argc, argv );
      understand( words, options );
   } catch ( const CLI::CallForHelp & ) {
      return { {}, app.help(), {} };
   } catch ( const CLI::CallForVersion & version ) {
      return { {}, version.what() + std::string( "\n" ), {} };
   } catch ( const CLI::ExtrasError & ) {
      return { {}, {}, oneLine( Explain::notExpected( app.remaining() ) ) + "; see --help" };
   } catch ( const CLI::ParseError & error ) {
      return { {}, {}, oneLine( error.what() ) + "; see --help" };
   }
   return { std::move( options ), {}, {} };
}

} // namespace TraceTool
