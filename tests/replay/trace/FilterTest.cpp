// Which records the options of interlock-trace choose.

#include "tests/replay/trace/TraceTool.h"

#include <gmock/gmock.h>

namespace {

using TestSupport::Agent;

class FilterTraceTest : public ::testing::Test {
 protected:
   void SetUp() override {
      const auto at = [ this ]( double time ) { agent.clock().jumpTo( Vex::Seconds( time ) ); };
      at( 1 );
      agent.member( "Ethernet1", "PortChannel10" ); // 1
      at( 2 );
      agent.member( "Ethernet10", "PortChannel1" ); // 2
      at( 2.5000004 );
      agent.lag( "PortChannel10", true, 1, Vex::Seconds( 0 ) ); // 3
      at( 3 );
      agent.timeout(); // 4
      at( 4 );
      agent.lag( "", false, 10, Vex::Seconds( 1 ) ); // 5
      agent.save( file );
   }

   // The sequence numbers of what these options choose.
   std::string chosen( std::vector< std::string > options ) const {
      options.push_back( file );
      const TestSupport::Shown shown = TestSupport::run( options );
      return TestSupport::sequences( shown.out );
   }

   TestSupport::TemporaryFolder folder;
   std::string file = folder / "trace";
   Agent agent;
};

TEST_F( FilterTraceTest, WithoutOptionsEverythingIsShown ) {
   EXPECT_EQ( chosen( {} ), "1 2 3 4 5" );
}

TEST_F( FilterTraceTest, LevelsAreAListOrANamedSet ) {
   EXPECT_EQ( chosen( { "--level", "0" } ), "1 2" );
   EXPECT_EQ( chosen( { "--level", "3-4" } ), "3 4 5" );
   EXPECT_EQ( chosen( { "--level=0,4" } ), "1 2 4" );
   EXPECT_EQ( chosen( { "--level", "all" } ), "1 2 3 4 5" );
   EXPECT_EQ( chosen( { "--level", "none" } ), "" );
   EXPECT_EQ( chosen( { "--level", "5" } ), "" );
}

TEST_F( FilterTraceTest, AFunctionIsItsWholeName ) {
   EXPECT_EQ( chosen( { "--function", "handleLag" } ), "3 5" );
   EXPECT_EQ( chosen( { "--function", "handle" } ), "" );
   EXPECT_EQ( chosen( { "--function", "handleLag", "--function", "handleTimeout" } ), "3 4 5" );
}

TEST_F( FilterTraceTest, AnInterfaceIsItsWholeNameInAnyArgument ) {
   EXPECT_EQ( chosen( { "--intf", "Ethernet1" } ), "1" );
   EXPECT_EQ( chosen( { "--intf", "PortChannel10" } ), "1 3" );
   EXPECT_EQ( chosen( { "--intf", "PortChannel1" } ), "2" );
   EXPECT_EQ( chosen( { "--intf", "Ethernet1", "--intf", "Ethernet10" } ), "1 2" );
   EXPECT_EQ( chosen( { "--intf", "Ethernet" } ), "" );
}

TEST_F( FilterTraceTest, TheEmptyNameIsAnInterfaceLikeAnyOther ) {
   EXPECT_EQ( chosen( { "--intf", "" } ), "5" );
}

TEST_F( FilterTraceTest, AnInterfaceIsNeitherANumberNorALiteral ) {
   EXPECT_EQ( chosen( { "--intf", "10" } ), "" );
   EXPECT_EQ( chosen( { "--intf", "true" } ), "" );
   EXPECT_EQ( chosen( { "--intf", "timeout" } ), "" );
}

TEST_F( FilterTraceTest, ANameThatWasCutInItsRecordIsFound ) {
   const Vex::String front( 1'100, 'x' );
   agent.member( front + "1", "P" );
   agent.member( Vex::String( 1'100, 'y' ), "P" );
   agent.save( file );
   EXPECT_EQ( chosen( { "--intf", front + "1" } ), "6" );
   EXPECT_EQ( chosen( { "--intf", Vex::String( 1'024, 'x' ) } ), "" );
}

TEST_F( FilterTraceTest, BothEndsOfTheTimeBelongToIt ) {
   EXPECT_EQ( chosen( { "--since", "2" } ), "2 3 4 5" );
   EXPECT_EQ( chosen( { "--until", "3" } ), "1 2 3 4" );
   EXPECT_EQ( chosen( { "--since", "2", "--until", "3" } ), "2 3 4" );
   EXPECT_EQ( chosen( { "--since", "4.000001" } ), "" );
}

TEST_F( FilterTraceTest, ATimeIsTakenAsItIsShown ) {
   EXPECT_EQ( chosen( { "--since", "2.5", "--until", "2.5" } ), "3" );
}

TEST_F( FilterTraceTest, EveryConditionMustHold ) {
   EXPECT_EQ( chosen( { "--level", "3", "--intf", "PortChannel10" } ), "3" );
   EXPECT_EQ( chosen( { "--intf", "PortChannel10", "--function", "handleMember" } ), "1" );
   EXPECT_EQ( chosen( { "--level", "3-4", "--since", "3", "--function", "handleLag" } ), "5" );
   EXPECT_EQ( chosen( { "--level", "4", "--intf", "PortChannel10" } ), "" );
}

TEST_F( FilterTraceTest, TheLastAreCountedAmongThoseThatAreChosen ) {
   EXPECT_EQ( chosen( { "--last", "2" } ), "4 5" );
   EXPECT_EQ( chosen( { "--last", "1", "--level", "0" } ), "2" );
   EXPECT_EQ( chosen( { "--last", "9" } ), "1 2 3 4 5" );
   EXPECT_EQ( chosen( { "--last", "0" } ), "" );
}

TEST_F( FilterTraceTest, AnUnknownCallSitePassesOnlyConditionsAboutTime ) {
   agent.ring().write( 99 );
   agent.save( file );
   EXPECT_EQ( chosen( { "--since", "4" } ), "5 6" );
   EXPECT_EQ( chosen( { "--level", "all" } ), "1 2 3 4 5" );
   EXPECT_EQ( chosen( { "--function", "" } ), "" );
   EXPECT_EQ( chosen( { "--intf", "" } ), "5" );
}

// ---- Names that no record has -------------------------------------------------------------------

TEST_F( FilterTraceTest, AnInterfaceThatNoRecordNamesIsToldAndIsNoDamage ) {
   const TestSupport::Shown shown = TestSupport::run( { "--intf", "nosuch", file } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.out, "" );
   EXPECT_EQ( shown.err, "interlock-trace: " + file + ": no record names 'nosuch'\n" );
}

TEST_F( FilterTraceTest, OfSeveralInterfacesEachThatNoRecordNamesIsToldBehindTheRecords ) {
   EXPECT_EQ(
      TestSupport::run( { "--intf=Ethernet", "--intf=Ethernet1", "--intf=no\n", file } ).err,
      "interlock-trace: " + file + ": no record names 'Ethernet'\ninterlock-trace: " + file +
         ": no record names 'no\\x0a'\n" );
   const std::string both =
      TestSupport::runIntoOne( { "--intf=Ethernet", "--intf=Ethernet1", file } );
   EXPECT_THAT( both, ::testing::EndsWith( ": no record names 'Ethernet'\n" ) );
   EXPECT_EQ( TestSupport::sequences( both ).substr( 0, 1 ), "1" );
}

TEST_F( FilterTraceTest, AnInterfaceOfWhichOtherOptionsChooseNothingIsNamedNevertheless ) {
   const TestSupport::Shown shown =
      TestSupport::run( { "--intf", "Ethernet1", "--level", "4", "--last", "1", file } );
   EXPECT_EQ( shown.out, "" );
   EXPECT_EQ( shown.err, "" );
}

TEST_F( FilterTraceTest, OfAFileThatIsFollowedARecordMayStillComeThatNamesIt ) {
   Agent live( file + ".live" );
   live.timeout();
   const TestSupport::Shown shown =
      TestSupport::run( { "--follow", "--intf", "Ethernet9", file + ".live" },
                        { [ &live ] { live.member( "Ethernet9", "PortChannel10" ); } } );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( TestSupport::sequences( shown.out ), "2" );
   EXPECT_EQ( shown.err,
              "interlock-trace: " + file + ".live: no record names 'Ethernet9' so far\n" );
}

} // namespace
