// interlock-simulate: random pairs of switches under faults, each event of each checked.
//
// The same seed gives the same output from every build.

#include "platform/Vex/Trace.h"
#include "replay/pair/Random.h"
#include "tests/simulation/Coverage.h"
#include "tests/simulation/Exposure.h"
#include "tests/simulation/PairRun.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace {

using Simulation::Coverage;
using Simulation::Exposure;
using Simulation::PairRun;

constexpr const char * usage =
   "usage: interlock-simulate [--seed S] [--pairs N] [--only I [--scenario]]\n";
constexpr const char * help =
   "Plays random pairs of switches under faults, and checks both after every event.\n"
   "\n"
   "  --seed S     what the pairs are drawn from, 1 unless it is given\n"
   "  --pairs N    how many are played, 1000 unless it is given\n"
   "  --only I     plays pair I of that seed alone\n"
   "  --scenario   prints it as a scenario for interlock-replay, with what must have come of it\n"
   "               as expects\n"
   "  --help       prints this\n"
   "\n"
   "Exit status: 0 all checks held and everything that can happen did; 1 a check did not hold, or\n"
   "something never happened; 2 the command line is wrong.\n";

struct Options {
   std::uint64_t seed = 1;
   std::uint64_t pairs = 1000;
   std::optional< std::uint64_t > only;
   bool scenario = false;
   bool help = false;
};

// The interlocks tell an operator of each time-out; here there are many, and the books know.
class NobodyListens final : public Vex::TraceSink {
 public:
   void write( const Vex::TraceRecord & /* record */ ) override {}
};

std::optional< std::uint64_t > number( std::string_view word ) {
   std::uint64_t value = 0;
   const auto [ end, error ] = std::from_chars( word.data(), word.data() + word.size(), value );
   const bool whole = error == std::errc() && end == word.data() + word.size();
   return whole ? std::optional( value ) : std::nullopt;
}

std::optional< Options > parse( std::span< char * const > words ) {
   Options options;
   for ( std::size_t at = 1; at < words.size(); ++at ) {
      const std::string_view name = words[ at ];
      if ( name == "--scenario" ) {
         options.scenario = true;
         continue;
      }
      if ( name == "--help" ) {
         options.help = true;
         return options; // whatever else there is
      }
      ++at;
      const auto value = at < words.size() ? number( words[ at ] ) : std::nullopt;
      if ( !value ) {
         return std::nullopt;
      }
      if ( name == "--seed" ) {
         options.seed = *value;
      } else if ( name == "--pairs" ) {
         options.pairs = *value;
      } else if ( name == "--only" ) {
         options.only = *value;
      } else {
         return std::nullopt;
      }
   }
   return options.scenario && !options.only ? std::nullopt : std::optional( options );
}

void tell( const Options & options, std::uint64_t pair, const PairRun & run ) {
   constexpr std::size_t lastEvents = 30;
   std::printf(
      "VIOLATION, play it again with --seed %llu --only %llu\n"
      "in event %llu of pair %llu: %s"
      "the last of what happened:\n%s"
      "all of it as a scenario:\n%s",
      static_cast< unsigned long long >( options.seed ), static_cast< unsigned long long >( pair ),
      static_cast< unsigned long long >( run.events() ), static_cast< unsigned long long >( pair ),
      run.violation().c_str(), run.history().last( lastEvents ).c_str(), run.scenario().c_str() );
}

int simulate( const Options & options ) {
   Coverage coverage;
   Exposure exposure;
   std::uint64_t digest = 0;
   const std::uint64_t first = options.only.value_or( 0 );
   const std::uint64_t end = options.only ? first + 1 : options.pairs;
   for ( std::uint64_t pair = first; pair < end; ++pair ) {
      PairRun run( Replay::Peering::Random::derived( options.seed, pair ), coverage, exposure );
      if ( !run.run() ) {
         tell( options, pair, run );
         return 1;
      }
      if ( options.scenario ) {
         std::printf( "%s", run.scenario().c_str() );
         return 0;
      }
      digest = Replay::Peering::Random::derived( digest ^ run.history().digest(), pair );
   }
   std::printf( "seed %llu: %llu pairs, %llu events, digest %016llx\n%s%s",
                static_cast< unsigned long long >( options.seed ),
                static_cast< unsigned long long >( end - first ),
                static_cast< unsigned long long >( coverage.events() ),
                static_cast< unsigned long long >( digest ), coverage.report().c_str(),
                exposure.report().c_str() );
   if ( !options.only && !coverage.complete() ) {
      std::printf( "something above never happened: more pairs are needed\n" );
      return 1;
   }
   return 0;
}

} // namespace

int main( int argc, char ** argv ) {
   const auto options = parse( std::span( argv, static_cast< std::size_t >( argc ) ) );
   if ( !options ) {
      std::fputs( usage, stderr );
      return 2;
   }
   if ( options->help ) {
      std::printf( "%s\n%s", usage, help );
      return 0;
   }
   NobodyListens sink;
   const Vex::TraceSinkScope scope( sink );
   return simulate( *options );
}
