#include "replay/explain/ExplainCommandLine.h"

#include "replay/Numbers.h"
#include "replay/Text.h"

#include <CLI/CLI.hpp>
#include <string_view>
#include <utility>

namespace Explain {

namespace {

using Replay::inQuotes;

constexpr const char * description =
   "Tells why a port is held out of its LAG, or in it: who decided, when and why, and what would\n"
   "make it be decided anew.";
constexpr const char * footer =
   "Exit status: 0 answered; 1 nothing is known of this member in this LAG; 2 the command line or\n"
   "the file is wrong, or standard output cannot be written.";

// The words of the command line, before they are understood.
struct Words {
   std::string output = "text";
   std::optional< std::string > at;
};

void addOptions( Asks asks, CLI::App & app, Question & question, Words & words ) {
   const bool scenario = asks == Asks::scenario;
   app.footer( footer );
   app.set_help_flag( "--help", "Print this help message and exit" );
   app.add_option( "--output", words.output, "text: for people; jsonl: one JSON object" )
      ->type_name( "text|jsonl" )
      ->capture_default_str();
   app.add_option( "--at", words.at,
                   "How things stood at this time, in seconds; beyond the end: as at the end" )
      ->type_name( "T" );
   if ( scenario ) {
      app.add_option( "--switch", question.switchName, "Which switch of a pair" )
         ->type_name( "left|right" );
   }
   app.add_option( "MEMBER", question.pair.member, "The port" )->type_name( "" )->required();
   app.add_option( "LAG", question.pair.lag, "The LAG that it is held out of, or in" )
      ->type_name( "" )
      ->required();
   app.add_option( scenario ? "SCENARIO" : "FILE", question.file,
                   scenario ? "The scenario file; - is standard input" : "The trace file" )
      ->type_name( "" )
      ->required();
}

void understand( const Words & words, Question & question ) {
   if ( words.output != "text" && words.output != "jsonl" ) {
      throw CLI::ValidationError( "--output",
                                  inQuotes( words.output ) + "; wanted: jsonl or text" );
   }
   question.json = words.output == "jsonl";
   if ( words.at ) {
      question.at = Replay::parseSeconds( *words.at );
      if ( !question.at ) {
         throw CLI::ValidationError( "--at",
                                     inQuotes( *words.at ) + "; wanted: seconds such as 12.5" );
      }
   }
   const auto & name = question.switchName;
   if ( name && *name != "left" && *name != "right" ) {
      throw CLI::ValidationError( "--switch", inQuotes( *name ) + "; wanted: left or right" );
   }
}

std::string wrong( std::string_view what ) {
   std::string line;
   Replay::appendPrintable( line, what );
   return line + "; see explain --help";
}

} // namespace

ExplainCommandLine parseExplainCommandLine( Asks asks, int argc, const char * const * argv ) {
   Question question;
   Words words;
   CLI::App app( description,
                 asks == Asks::scenario ? "interlock-replay explain" : "interlock-trace explain" );
   addOptions( asks, app, question, words );
   try {
      app.parse( argc - 1, argv + 1 );
      understand( words, question );
   } catch ( const CLI::CallForHelp & ) {
      return { {}, app.help(), {} };
   } catch ( const CLI::ExtrasError & ) {
      return { {}, {}, wrong( notExpected( app.remaining() ) ) };
   } catch ( const CLI::ParseError & error ) {
      return { {}, {}, wrong( error.what() ) };
   }
   return { std::move( question ), {}, {} };
}

std::string notExpected( const std::vector< std::string > & words ) {
   std::string text = words.size() == 1 ? "The following argument was not expected:"
                                        : "The following arguments were not expected:";
   for ( const std::string & word : words ) {
      text += ' ' + word;
   }
   return text;
}

bool isExplain( int argc, const char * const * argv ) noexcept {
   return argc > 1 && std::string_view( argv[ 1 ] ) == "explain";
}

} // namespace Explain
