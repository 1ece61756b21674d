#include "replay/trace/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using TraceTool::OutputKind;

TraceTool::CommandLine parse( std::vector< const char * > arguments ) {
   arguments.insert( arguments.begin(), "interlock-trace" );
   return TraceTool::parseCommandLine( static_cast< int >( arguments.size() ), arguments.data() );
}

TEST( TraceCommandLine, HasItsDefaults ) {
   const auto options = parse( { "file" } ).options;
   ASSERT_TRUE( options );
   EXPECT_EQ( options->file, "file" );
   EXPECT_EQ( options->output, OutputKind::text );
   EXPECT_FALSE( options->filter.levels );
   EXPECT_THAT( options->filter.functions, IsEmpty() );
   EXPECT_THAT( options->filter.intfs, IsEmpty() );
   EXPECT_FALSE( options->filter.since );
   EXPECT_FALSE( options->filter.until );
   EXPECT_FALSE( options->last );
   EXPECT_FALSE( options->follow );
}

TEST( TraceCommandLine, TakesEveryOption ) {
   const auto options =
      parse( { "--output", "jsonl", "--level=0,2-4", "--function", "f", "--intf", "Ethernet1",
               "--since", ".5", "--until", "12.25", "--last", "7", "--follow", "file" } )
         .options;
   ASSERT_TRUE( options );
   EXPECT_EQ( options->output, OutputKind::jsonLines );
   EXPECT_EQ( options->filter.levels, 0b11101U );
   EXPECT_THAT( options->filter.functions, ElementsAre( "f" ) );
   EXPECT_THAT( options->filter.intfs, ElementsAre( "Ethernet1" ) );
   EXPECT_EQ( options->filter.since, Vex::Seconds( 0.5 ) );
   EXPECT_EQ( options->filter.until, Vex::Seconds( 12.25 ) );
   EXPECT_EQ( options->last, 7U );
   EXPECT_TRUE( options->follow );
   EXPECT_EQ( options->file, "file" );
}

TEST( TraceCommandLine, ARepeatedNameIsOneMore ) {
   const auto options =
      parse( { "--intf", "A", "--function", "f", "file", "--intf", "", "--function", "g" } )
         .options;
   ASSERT_TRUE( options );
   EXPECT_THAT( options->filter.intfs, ElementsAre( "A", "" ) );
   EXPECT_THAT( options->filter.functions, ElementsAre( "f", "g" ) );
}

TEST( TraceCommandLine, WordsTooManyAreToldInTheirOrder ) {
   EXPECT_EQ( parse( { "explian", "E1", "P1", "f" } ).error,
              "The following arguments were not expected: E1 P1 f; see --help" );
   EXPECT_EQ( parse( { "f", "--bogus\n" } ).error,
              "The following argument was not expected: --bogus\\x0a; see --help" );
}

TEST( TraceCommandLine, JsonlIsShortForItsOutput ) {
   EXPECT_EQ( parse( { "--jsonl", "file" } ).options->output, OutputKind::jsonLines );
}

TEST( TraceCommandLine, NamesWhatIsWrongAndWhatWasWantedInOneLine ) {
   EXPECT_EQ( parse( {} ).error, "FILE is required; see --help" );
   EXPECT_EQ( parse( { "--output", "xml", "a" } ).error,
              "--output: 'xml'; wanted: jsonl or text; see --help" );
   EXPECT_EQ( parse( { "--color", "1", "f" } ).error,
              "--color: '1'; wanted: always, auto or never; see --help" );
   EXPECT_EQ( parse( { "--level", "", "a" } ).error,
              "--level: ''; wanted: none, all, or a list of levels such as 0,2-4; see --help" );
   EXPECT_EQ( parse( { "--since", "-1", "a" } ).error,
              "--since: '-1'; wanted: seconds such as 12.5; see --help" );
   EXPECT_EQ( parse( { "--until", "12:30", "a" } ).error,
              "--until: '12:30'; wanted: seconds such as 12.5; see --help" );
   EXPECT_EQ( parse( { "--last", "4294967296", "a" } ).error,
              "--last: '4294967296'; wanted: a number from 0 to 4294967295; see --help" );
   EXPECT_THAT( parse( { "a", "b\n" } ).error, HasSubstr( "b\\x0a; see --help" ) );
   EXPECT_THAT( parse( { "a", "--intf" } ).error, HasSubstr( "--intf" ) );
}

TEST( TraceCommandLine, AnswersHelpAndVersion ) {
   EXPECT_EQ( parse( { "--version" } ).text, "interlock-trace " INTERLOCK_VERSION "\n" );
   const std::string help = parse( { "--help" } ).text;
   for ( const char * word : { "--output", "--jsonl", "--level", "--function", "--intf", "--since",
                               "--until", "--last", "--follow", "FILE", "Exit status" } ) {
      EXPECT_THAT( help, HasSubstr( word ) );
   }
}

} // namespace
