#include "replay/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

Replay::CommandLine parse( std::vector< const char * > arguments ) {
   arguments.insert( arguments.begin(), "interlock-replay" );
   return Replay::parseCommandLine( static_cast< int >( arguments.size() ), arguments.data() );
}

TEST( CommandLine, HasItsDefaults ) {
   const auto options = parse( { "a.scenario" } ).options;
   ASSERT_TRUE( options );
   EXPECT_EQ( options->output, Replay::OutputKind::text );
   EXPECT_EQ( options->clock, Replay::ClockKind::virtualTime );
   EXPECT_EQ( options->run.traceLevels, 0U );
   EXPECT_FALSE( options->run.ring );
   EXPECT_FALSE( options->traceFile );
   EXPECT_THAT( options->scenarios, ElementsAre( "a.scenario" ) );
}

TEST( CommandLine, TakesEveryOption ) {
   const auto options =
      parse( { "--output", "jsonl", "--trace=0,2-4", "--ring", "--clock", "real", "a", "-" } )
         .options;
   ASSERT_TRUE( options );
   EXPECT_EQ( options->output, Replay::OutputKind::jsonLines );
   EXPECT_EQ( options->clock, Replay::ClockKind::realTime );
   EXPECT_EQ( options->run.traceLevels, 0b11101U );
   EXPECT_TRUE( options->run.ring );
   EXPECT_THAT( options->scenarios, ElementsAre( "a", "-" ) );
}

TEST( CommandLine, TakesOptionsBehindScenarios ) {
   const auto options = parse( { "a", "--ring", "b" } ).options;
   ASSERT_TRUE( options );
   EXPECT_TRUE( options->run.ring );
   EXPECT_THAT( options->scenarios, ElementsAre( "a", "b" ) );
}

TEST( CommandLine, TakesATraceFileForOneScenario ) {
   EXPECT_EQ( parse( { "--trace-file", "f", "a" } ).options->traceFile, "f" );
   EXPECT_EQ( parse( { "--trace-file", "f", "a", "b" } ).error,
              "--trace-file: several scenarios; wanted: only one; see --help" );
}

TEST( CommandLine, IsQuietOrColouredOnDemand ) {
   EXPECT_EQ( parse( { "a" } ).options->colours, Replay::UseColours::automatically );
   EXPECT_EQ( parse( { "--color", "auto", "a" } ).options->colours,
              Replay::UseColours::automatically );
   EXPECT_EQ( parse( { "--color=always", "a" } ).options->colours, Replay::UseColours::always );
   EXPECT_EQ( parse( { "--color", "never", "a" } ).options->colours, Replay::UseColours::never );
   EXPECT_FALSE( parse( { "a" } ).options->quiet );
   EXPECT_TRUE( parse( { "--quiet", "a" } ).options->quiet );
}

TEST( CommandLine, KnowsTheNamedTraceLevels ) {
   EXPECT_EQ( parse( { "--trace", "none", "a" } ).options->run.traceLevels, 0U );
   EXPECT_EQ( parse( { "--trace", "all", "a" } ).options->run.traceLevels, 0xFFFFFFFFU );
}

TEST( CommandLine, NamesWhatIsWrongAndWhatWasWantedInOneLine ) {
   EXPECT_EQ( parse( {} ).error, "SCENARIO is required; see --help" );
   EXPECT_EQ( parse( { "--output", "xml", "a" } ).error,
              "--output: 'xml'; wanted: jsonl or text; see --help" );
   EXPECT_EQ( parse( { "--color", "pink", "a" } ).error,
              "--color: 'pink'; wanted: always, auto or never; see --help" );
   EXPECT_EQ( parse( { "--clock", "fast", "a" } ).error,
              "--clock: 'fast'; wanted: real or virtual; see --help" );
   EXPECT_EQ( parse( { "--trace", "4-2", "a" } ).error,
              "--trace: '4-2'; wanted: none, all, or a list of levels such as 0,2-4; see --help" );
   EXPECT_EQ( parse( { "-", "-" } ).error,
              "SCENARIO: '-' twice; wanted: standard input only once; see --help" );
   EXPECT_EQ( parse( { "--bogus\n", "a" } ).error,
              "The following argument was not expected: --bogus\\x0a; see --help" );
   EXPECT_THAT( parse( { "a", "--trace" } ).error, HasSubstr( "--trace" ) );
}

TEST( CommandLine, AnswersHelpAndVersion ) {
   EXPECT_EQ( parse( { "--version" } ).text, "interlock-replay " INTERLOCK_VERSION "\n" );
   const std::string help = parse( { "--help" } ).text;
   for ( const char * word : { "--output", "--trace", "--ring", "--trace-file", "--clock",
                               "SCENARIO", "Exit status" } ) {
      EXPECT_THAT( help, HasSubstr( word ) );
   }
}

} // namespace
