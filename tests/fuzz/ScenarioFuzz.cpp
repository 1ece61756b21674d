// Any bytes as a scenario file. It is refused with an error that names its line and what was
// wanted, or it is read; what was read is read again from its own words as the same scenario, and
// plays, in both outputs, to its end or to an error with its line.

#include "replay/HostClock.h"
#include "replay/JsonLinesOutput.h"
#include "replay/Parser.h"
#include "replay/Runner.h"
#include "replay/ScenarioError.h"
#include "replay/Text.h"
#include "replay/TextOutput.h"
#include "replay/Writer.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

using Fuzz::require;

constexpr std::size_t longestScenario = 8192;
constexpr std::size_t mostSteps = 400; // that are played
constexpr std::uint32_t allLevels = 0xFFFFFFFF;

void checkError( const Replay::ScenarioError & error, std::string_view text ) {
   const std::string_view what = error.what();
   const auto lines = 1 + static_cast< std::size_t >( std::ranges::count( text, '\n' ) );
   require( 1 <= error.line() && error.line() <= lines, "an error in a line that is not there" );
   require( what.find( "; wanted: " ) != std::string_view::npos,
            "an error that does not say what was wanted" );
   require( what.find( '\n' ) == std::string_view::npos, "an error of several lines" );
   require( Replay::firstMalformed( what ) == std::string_view::npos, "an error that is no UTF-8" );
}

void checkReadsAgain( const Replay::Scenario & scenario ) {
   std::string texts;
   for ( const Replay::Step & step : scenario.steps ) {
      texts += scenario.text( step );
      texts += '\n';
   }
   const Replay::Scenario again = Replay::parseScenario( texts );
   require( again.steps.size() == scenario.steps.size() && again.texts == scenario.texts &&
               again.ofPair == scenario.ofPair && again.expectsTrace == scenario.expectsTrace,
            "a scenario that its own words do not give" );
}

using MakeOutput = std::unique_ptr< Replay::Output > ( * )( Replay::Writer & );

// What a run showed, and how many expects failed; nothing when a statement could not be done.
struct Played {
   std::string shown;
   std::optional< std::size_t > failed;
};

Played play( const Replay::Scenario & scenario,
             std::string_view text,
             MakeOutput makeOutput,
             const Replay::RunOptions & options ) {
   static std::FILE * const file = std::tmpfile();
   require( file != nullptr, "no file to write to" );
   const int descriptor = fileno( file );
   require( ::ftruncate( descriptor, 0 ) == 0 && ::lseek( descriptor, 0, SEEK_SET ) == 0,
            "the file cannot be emptied" );
   Played played;
   {
      Replay::Writer writer( descriptor );
      const auto output = makeOutput( writer );
      Replay::VirtualHostClock clock;
      output->begin( "fuzzed.scenario" );
      try {
         played.failed = Replay::runScenario( scenario, options, clock, *output );
      } catch ( const Replay::ScenarioError & error ) {
         checkError( error, text );
      }
      writer.flush();
      require( writer.error() == 0, "the file cannot be written" );
   }
   std::array< char, 65536 > piece; // NOLINT: filled below
   for ( off_t at = 0;; ) {
      const ssize_t size = ::pread( descriptor, piece.data(), piece.size(), at );
      require( size >= 0, "the file cannot be read" );
      if ( size == 0 ) {
         return played;
      }
      played.shown.append( piece.data(), static_cast< std::size_t >( size ) );
      at += size;
   }
}

void checkJsonLines( const Played & played ) {
   std::string_view rest = played.shown;
   nlohmann::json object;
   while ( !rest.empty() ) {
      const std::size_t end = rest.find( '\n' );
      require( end != std::string_view::npos, "a line that does not end" );
      object = nlohmann::json::parse( rest.substr( 0, end ), nullptr, false );
      require( object.is_object() && object.contains( "kind" ), "a line that is no object" );
      rest.remove_prefix( end + 1 );
   }
   const bool ended = object.is_object() && object.at( "kind" ) == "end";
   require( ended == played.failed.has_value(), "the end of a run that has none, or none of one" );
}

void play( const Replay::Scenario & scenario, std::string_view text ) {
   // A ring is a large thing to make for each of many small scenarios.
   const bool ring = text.size() % 8 == 0;
   const Played json = play( scenario, text, &Replay::jsonLinesOutput, { allLevels, ring } );
   const Played lines = play( scenario, text, &Replay::textOutput, { allLevels, ring } );
   checkJsonLines( json );
   require( Replay::firstMalformed( lines.shown ) == std::string_view::npos,
            "output that is no UTF-8" );
   require( json.failed == lines.failed, "another outcome in the other output" );
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const std::uint8_t * data, std::size_t size ) {
   if ( size > longestScenario ) {
      return 0;
   }
   const std::string text( data, data + size );
   try {
      const Replay::Scenario scenario = Replay::parseScenario( text );
      checkReadsAgain( scenario );
      if ( scenario.steps.size() <= mostSteps ) {
         play( scenario, text );
      }
   } catch ( const Replay::ScenarioError & error ) {
      checkError( error, text );
   }
   return 0;
}
