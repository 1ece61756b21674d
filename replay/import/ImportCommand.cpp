#include "replay/import/ImportCommand.h"

#include "replay/ScenarioError.h"
#include "replay/ScenarioFile.h"
#include "replay/Text.h"
#include "replay/import/ConfigDb.h"
#include "replay/import/Json.h"
#include "replay/import/Opening.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace Import {

namespace {

constexpr const char * description =
   "Turns the config_db.json of a switch, or of both switches of an MLAG pair, into the opening of "
   "a\nscenario, that plays as it is.";
constexpr const char * footer =
   "Exit status: 0 the opening is on standard output; 2 the command line or a file is wrong, or\n"
   "standard output cannot be written.";
constexpr int done = 0;
constexpr int wrong = 2;
constexpr std::size_t mostFiles = 2;

std::string shownName( const std::string & file ) {
   return file == Replay::standardInput ? "<stdin>" : file;
}

void say( Replay::Writer & errors, std::string_view text ) {
   Replay::appendPrintable( errors.buffer(), text );
   errors.buffer() += '\n';
   errors.flush();
}

// The files, or the status with which to end.
struct Asked {
   std::vector< std::string > files;
   int status = done;
};

Asked parse( int argc,
             const char * const * argv,
             Replay::Writer & writer,
             Replay::Writer & errors ) {
   Asked asked;
   CLI::App app( description, "interlock-replay import" );
   app.footer( footer );
   app.set_help_flag( "--help", "Print this help message and exit" );
   app.add_option( "FILE", asked.files,
                   "config_db.json of the switch, or of the left and the right one; - is standard "
                   "input" )
      ->type_name( "" )
      ->required();
   try {
      app.parse( argc - 1, argv + 1 );
      if ( asked.files.size() > mostFiles ) {
         throw CLI::ValidationError( "FILE", "three or more; wanted: one file or two" );
      }
      if ( std::ranges::count( asked.files, Replay::standardInput ) > 1 ) {
         throw CLI::ValidationError( "FILE", "'-' twice; wanted: standard input only once" );
      }
   } catch ( const CLI::CallForHelp & ) {
      writer.buffer() += app.help();
      asked.files.clear();
   } catch ( const CLI::ParseError & error ) {
      say( errors, "interlock-replay: " + std::string( error.what() ) + "; see import --help" );
      asked.files.clear();
      asked.status = wrong;
   }
   return asked;
}

// Nothing is written to standard output unless all of it is right.
bool convert( const std::vector< std::string > & files,
              Replay::Writer & writer,
              Replay::Writer & errors ) {
   std::vector< SwitchConfig > configs;
   std::vector< std::string > names;
   for ( const std::string & file : files ) {
      names.push_back( shownName( file ) );
      std::string text;
      try {
         text = Replay::readScenarioFile( file, "the config_db.json of a switch" );
         configs.push_back( parseConfigDb( text ) );
      } catch ( const Replay::ScenarioError & error ) {
         say( errors, names.back() + ": " + error.what() );
         return false;
      } catch ( const JsonError & error ) {
         const Place place = placeOf( text, error.at() );
         say( errors, names.back() + ':' + std::to_string( place.line ) + ':' +
                         std::to_string( place.column ) + ": " + error.what() );
         return false;
      }
   }
   std::vector< Named > switches;
   switches.reserve( configs.size() );
   for ( std::size_t at = 0; at < configs.size(); ++at ) {
      switches.push_back( { names[ at ], configs[ at ] } );
   }
   writer.buffer() += opening( switches );
   return true;
}

} // namespace

bool isImport( int argc, const char * const * argv ) noexcept {
   return argc > 1 && std::string_view( argv[ 1 ] ) == "import";
}

int importConfig( int argc,
                  const char * const * argv,
                  Replay::Writer & writer,
                  Replay::Writer & errors ) {
   const Asked asked = parse( argc, argv, writer, errors );
   if ( asked.status != done ||
        ( !asked.files.empty() && !convert( asked.files, writer, errors ) ) ) {
      return wrong;
   }
   writer.flush();
   if ( writer.error() != 0 && writer.error() != EPIPE ) {
      say( errors, "interlock-replay: standard output: " +
                      std::generic_category().message( writer.error() ) );
   }
   return writer.error() == 0 ? done : wrong;
}

} // namespace Import
