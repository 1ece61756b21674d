// The link state of one LAG: every state by every event, with all that an event sets off.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/LinkStateTable.h"
#include "platform/Vex/Enum.h"
#include "tests/support/Names.h"
#include "tests/support/PeerWorld.h"
#include "tests/support/TraceRecorder.h"

#include <cstddef>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace Velo {
namespace {

using Mlag::IntfState;
using TestSupport::intf;
using TestSupport::PeerSm;
using TestSupport::requestOf;
using TestSupport::startPeer;
using TestSupport::stateOf;
using TestSupport::timersOf;
using TestSupport::TraceRecorder;
using TestSupport::World;
using String = Vex::String;

const String handle = "VeloMlagEgressAclIntfInterlockSm";
constexpr std::uint32_t aboveEntry = TraceRecorder::allLevels & ~1U; // not the entry of handlers

// A LAG of which the interlock has not heard yet: the test brings it into a state by hand at 0.5
// seconds, and lets one event happen at 0.55.
struct LinkStateOfALag : testing::Test {
   World world;
   Vex::Ptr< PeerSm > sm;
   const Nodo::IntfId lag = intf( "PortChannel10" );
   String traced;

   LinkStateOfALag() {
      world.lagGone( "PortChannel10" ).mlagIntf( "PortChannel10", IntfState::inactive );
      sm = startPeer( world );
      sm->linkStateDelAll();
   }

   /// Without telling the interlock.
   void quietly( const std::function< void() > & change ) {
      sm->hasNotificationActiveIs( false );
      change();
      sm->hasNotificationActiveIs( true );
   }
   void active( std::uint32_t request, std::optional< std::uint32_t > response ) {
      quietly( [ & ] {
         world.lag( "PortChannel10", { "Ethernet1" } );
         world.request->installRequestIs( lag, request );
         if ( response ) {
            world.answer( "PortChannel10", *response );
         }
      } );
   }
   void from( const String & state ) {
      static const std::map< String, LinkState > states{
         { "linkDown", LinkState::linkDown },
         { "linkRequesting", LinkState::linkRequesting },
         { "linkUp", LinkState::linkUp },
         { "linkFail", LinkState::linkFail } };
      world.clock.jumpTo( Vex::Seconds( 0.5 ) );
      if ( state != "none" ) {
         sm->linkStateIs( lag, states.at( state ) );
      }
      world.clock.jumpTo( Vex::Seconds( 0.55 ) );
   }
   void happens( const String & event ) {
      TraceRecorder trace( handle, aboveEntry );
      if ( event == "inactive" ) {
         sm->updateLinkState( lag );
      } else if ( event == "matched" ) {
         active( 7, 7 );
         sm->updateLinkState( lag );
      } else if ( event == "not matched" ) {
         active( 7, 6 );
         sm->updateLinkState( lag );
      } else if ( event == "time-out" ) {
         active( 7, 6 );
         sm->timerIs( lag, Vex::Seconds( 0.55 ) ); // also where no state would have set one
         sm->activeLag() == lag ? void() : sm->resetTimer();
         world.clock.jumpTo( Vex::Seconds( 0.7 ) );
         world.scheduler->runDue();
      } else if ( event == "response not matching" ) {
         active( 7, 6 );
         sm->handlePeerResponse( lag );
      } else if ( event == "response matching" ) {
         active( 7, 7 );
         sm->handlePeerResponse( lag );
      } else if ( event == "deleted" ) {
         sm->linkStateDel( lag );
      } else {
         ASSERT_EQ( event, "all deleted" );
         sm->linkStateDelAll();
      }
      traced = trace.take();
   }
};

struct Row {
   String from;
   String event;
   String to;
   String timers;
   String traced; // above the level of handler entries
};

void PrintTo( const Row & row, std::ostream * out ) {
   *out << row.from << ", " << row.event;
}

struct EveryPair : LinkStateOfALag, testing::WithParamInterface< Row > {};

TEST_P( EveryPair, LeadsWhereTheTableSays ) {
   from( GetParam().from );
   happens( GetParam().event );
   EXPECT_EQ( stateOf( *sm ), GetParam().to );
   EXPECT_EQ( timersOf( *sm ), GetParam().timers );
   EXPECT_EQ( traced, GetParam().traced );
   const bool asked = world.hwLagConfig->initialMember( lag ) != nullptr;
   EXPECT_EQ( requestOf( world ), asked ? "7" : "none" ) << "a link state never changes a request";
   EXPECT_EQ( sm->linkState( lag ), sm->linkState().get( lag ) );
}

String transition( const String & from, const String & to ) {
   return "3 updateLinkState: Transitioning link state from " + from + " to " + to + "\n";
}

const String no = "|"; // nothing has a deadline, the task is not armed
const String stopping = "3 handleLinkState: Stopping timeout for lag PortChannel10\n";
const String starting =
   "3 handleLinkState: Starting timeout for lag PortChannel10 at time 0.550000\n";
const String lostInUpdate = "4 updateLinkState: Syslog: Lag PortChannel10 is linkUp, but has not "
                            "gotten a response from the peer yet\n";
const String lostInResponse = "4 handlePeerResponse: Syslog: Lag PortChannel10 is linkUp, but has "
                              "not gotten a response from the peer yet\n";
const String timeout = "4 handleTimeout: Syslog: Timeout has occurred on lag PortChannel10\n";
const String asked = "PortChannel10 0.600000 | PortChannel10 0.600000";
const String askedNow = "PortChannel10 0.650000 | PortChannel10 0.650000";
const String active = "3 lagMemberActive: lagMemberActive member is active\n";
const String admitted = active + "3 handleMember: acl criteria satisfied (or linkFail), allowing "
                                 "member to join the lag\n";
// A time-out of a LAG that nobody waits for drops nothing and arms nothing.
const String ranOut = "PortChannel10 0.550000 | PortChannel10";

INSTANTIATE_TEST_SUITE_P(
   LinkState,
   EveryPair,
   testing::Values(
      Row{ "none", "inactive", "linkDown", no, transition( "linkDown", "linkDown" ) + stopping },
      Row{ "none", "matched", "linkUp", no, transition( "linkDown", "linkUp" ) + stopping },
      Row{ "none", "not matched", "linkRequesting", askedNow,
           transition( "linkDown", "linkRequesting" ) + starting },
      Row{ "none", "time-out", "none", ranOut, "" },
      Row{ "none", "response not matching", "none", no, "" },
      Row{ "none", "response matching", "linkUp", no,
           transition( "linkDown", "linkUp" ) + stopping + admitted },
      Row{ "none", "deleted", "none", no, "" },
      Row{ "none", "all deleted", "none", no, "" },

      Row{ "linkDown", "inactive", "linkDown", no, transition( "linkDown", "linkDown" ) },
      Row{ "linkDown", "matched", "linkUp", no, transition( "linkDown", "linkUp" ) + stopping },
      Row{ "linkDown", "not matched", "linkRequesting", askedNow,
           transition( "linkDown", "linkRequesting" ) + starting },
      Row{ "linkDown", "time-out", "linkDown", ranOut, "" },
      Row{ "linkDown", "response not matching", "linkDown", no, "" },
      Row{ "linkDown", "response matching", "linkUp", no,
           transition( "linkDown", "linkUp" ) + stopping + admitted },
      Row{ "linkDown", "deleted", "none", no, stopping },
      Row{ "linkDown", "all deleted", "none", no, stopping },

      Row{ "linkRequesting", "inactive", "linkDown", no,
           transition( "linkRequesting", "linkDown" ) + stopping },
      Row{ "linkRequesting", "matched", "linkUp", no,
           transition( "linkRequesting", "linkUp" ) + stopping },
      Row{ "linkRequesting", "not matched", "linkRequesting", asked,
           transition( "linkRequesting", "linkRequesting" ) },
      Row{ "linkRequesting", "time-out", "linkFail", no, stopping + timeout + admitted },
      Row{ "linkRequesting", "response not matching", "linkRequesting", asked, "" },
      Row{ "linkRequesting", "response matching", "linkUp", no,
           transition( "linkRequesting", "linkUp" ) + stopping + admitted },
      Row{ "linkRequesting", "deleted", "none", no, stopping },
      Row{ "linkRequesting", "all deleted", "none", no, stopping },

      Row{ "linkUp", "inactive", "linkDown", no, transition( "linkUp", "linkDown" ) + stopping },
      Row{ "linkUp", "matched", "linkUp", no, transition( "linkUp", "linkUp" ) },
      Row{ "linkUp", "not matched", "linkFail", no, lostInUpdate + stopping },
      Row{ "linkUp", "time-out", "linkFail", no, stopping + timeout + admitted },
      Row{ "linkUp", "response not matching", "linkFail", no,
           stopping + lostInResponse + admitted },
      Row{ "linkUp", "response matching", "linkUp", no,
           transition( "linkUp", "linkUp" ) + admitted },
      Row{ "linkUp", "deleted", "none", no, stopping },
      Row{ "linkUp", "all deleted", "none", no, stopping },

      Row{ "linkFail", "inactive", "linkDown", no,
           transition( "linkFail", "linkDown" ) + stopping },
      Row{ "linkFail", "matched", "linkUp", no, transition( "linkFail", "linkUp" ) + stopping },
      Row{ "linkFail", "not matched", "linkFail", no, "" },
      // Nothing is stored, so nothing stops the deadline that the test set; the end of the run does
      // not lose it.
      Row{ "linkFail", "time-out", "linkFail", "PortChannel10 0.550000 | PortChannel10 0.700000",
           timeout + admitted },
      Row{ "linkFail", "response not matching", "linkFail", no, "" },
      Row{ "linkFail", "response matching", "linkUp", no,
           transition( "linkFail", "linkUp" ) + stopping + admitted },
      Row{ "linkFail", "deleted", "none", no, stopping },
      Row{ "linkFail", "all deleted", "none", no, stopping } ) );

TEST( LinkStateTable, IsThisOne ) {
   //                         inactive   matched    notMatched        timeout    responseLost
   const std::map< std::string, std::vector< std::string > > wanted{
      { "linkDown", { "linkDown", "linkUp", "linkRequesting", "-", "-" } },
      { "linkRequesting", { "linkDown", "linkUp", "linkRequesting", "linkFail", "-" } },
      { "linkUp", { "linkDown", "linkUp", "linkFail", "linkFail", "linkFail" } },
      { "linkFail", { "linkDown", "linkUp", "-", "linkFail", "-" } } };
   std::map< std::string, std::vector< std::string > > found;
   for ( const auto from : { LinkState::linkDown, LinkState::linkRequesting, LinkState::linkUp,
                             LinkState::linkFail } ) {
      for ( const auto event : { LinkEvent::inactive, LinkEvent::matched, LinkEvent::notMatched,
                                 LinkEvent::timeout, LinkEvent::responseLost } ) {
         const auto next = nextLinkState( from, event );
         found[ TestSupport::text( from ) ].push_back( next ? TestSupport::text( *next ) : "-" );
      }
   }
   EXPECT_EQ( found, wanted );
}

// The transition table of docs/interlocks/peer.md: by state and event the next state, or "–".
std::map< String, std::map< String, String > > tableOfTheDocument() {
   const auto cellsOf = []( const String & line ) {
      std::vector< String > cells;
      std::istringstream in( line.substr( 1 ) );
      for ( String cell; std::getline( in, cell, '|' ); ) {
         const auto first = cell.find_first_not_of( " `" );
         cells.push_back( cell.substr( first, cell.find_last_not_of( " `" ) + 1 - first ) );
      }
      return cells;
   };
   std::ifstream document( INTERLOCK_DOCUMENTS "/interlocks/peer.md" );
   std::map< String, std::map< String, String > > table;
   std::vector< String > events;
   for ( String line; std::getline( document, line ); ) {
      if ( line.starts_with( "| from |" ) ) {
         events = cellsOf( line );
      } else if ( !line.starts_with( "|" ) ) {
         events.clear();
      } else if ( !events.empty() && !line.starts_with( "|-" ) ) {
         const auto cells = cellsOf( line );
         for ( std::size_t n = 1; n < events.size(); ++n ) {
            table[ cells.front() ][ events[ n ] ] = cells.at( n );
         }
      }
   }
   return table;
}

// Where an event of the document leads a LAG in a world of its own.
String after( const String & from, const String & event ) {
   struct ALag : LinkStateOfALag {
      void TestBody() override {}
   } lag;
   lag.from( from );
   lag.happens( event == "response lost" ? "response not matching" : event );
   return stateOf( *lag.sm );
}

TEST( LinkStateTable, IsWhatTheDocumentShows ) {
   const auto table = tableOfTheDocument();
   ASSERT_EQ( table.size(), 4U );
   for ( const auto & [ from, row ] : table ) {
      ASSERT_EQ( row.size(), Velo::linkEvents ) << from;
      for ( const auto & [ event, to ] : row ) {
         EXPECT_EQ( after( from, event ), to == "–" ? from : to ) << from << ", " << event;
      }
   }
   for ( const auto & [ event, to ] : table.at( "linkDown" ) ) {
      EXPECT_EQ( after( "none", event ), to == "–" ? "none" : to ) << "no entry, " << event;
   }
}

TEST( LinkStateEnum, HasTheNumbersThatReadersOfTheRingKnow ) {
   EXPECT_EQ( static_cast< int >( LinkState::linkDown ), 0 );
   EXPECT_EQ( static_cast< int >( LinkState::linkRequesting ), 1 );
   EXPECT_EQ( static_cast< int >( LinkState::linkUp ), 2 );
   EXPECT_EQ( static_cast< int >( LinkState::linkFail ), 3 );
   EXPECT_EQ( sizeof( LinkState ), 1U );
   EXPECT_EQ( LinkState(), LinkState::linkDown );
}

TEST_F( LinkStateOfALag, WithInitialMembersButNoneInThemIsDown ) {
   quietly( [ & ] { world.lag( "PortChannel10", {} ); } );
   from( "linkUp" );
   happens( "inactive" );
   EXPECT_EQ( stateOf( *sm ), "linkDown" );
}

TEST_F( LinkStateOfALag, ARequestOfZeroIsNoneEvenIfTheResponseIsZeroToo ) {
   active( 0, 0 );
   from( "linkRequesting" );
   sm->updateLinkState( lag );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
   sm->linkStateDel( lag );
   sm->updateLinkState( lag );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
}

TEST_F( LinkStateOfALag, AMissingResponseDoesNotMatchAMissingRequest ) {
   quietly( [ & ] { world.lag( "PortChannel10", { "Ethernet1" } ); } );
   sm->updateLinkState( lag );
   EXPECT_EQ( stateOf( *sm ), "linkRequesting" );
}

TEST_F( LinkStateOfALag, StoringTheStateThatIsThereRunsNoHandler ) {
   from( "linkUp" );
   TraceRecorder trace( handle );
   sm->linkStateIs( lag, LinkState::linkUp );
   EXPECT_EQ( trace.take(), "" );
}

TEST_F( LinkStateOfALag, StoringDownWhereThereIsNoEntryIsAChange ) {
   TraceRecorder trace( handle );
   sm->linkStateIs( lag, LinkState::linkDown );
   EXPECT_EQ( stateOf( *sm ), "linkDown" );
   EXPECT_EQ( trace.take(),
              "0 handleLinkState: MlagEgressAclIntfPeerInterlockSm::handleLinkState lag : "
              "PortChannel10\n" +
                 stopping );
}

TEST_F( LinkStateOfALag, RequestingAgainWithADeadlineKeepsIt ) {
   from( "linkRequesting" );
   TraceRecorder trace( handle, aboveEntry );
   sm->handleLinkState( lag );
   EXPECT_EQ( timersOf( *sm ), asked );
   EXPECT_EQ( trace.take(), "" );
}

TEST_F( LinkStateOfALag, DeletingAllRunsTheHandlerOncePerLagInOrder ) {
   sm->linkStateIs( intf( "PortChannel20" ), LinkState::linkRequesting );
   sm->linkStateIs( intf( "PortChannel10" ), LinkState::linkFail );
   TraceRecorder trace( handle, aboveEntry );
   sm->linkStateDelAll();
   EXPECT_EQ( trace.take(), "3 handleLinkState: Stopping timeout for lag PortChannel20\n"
                            "3 handleLinkState: Stopping timeout for lag PortChannel10\n" );
   EXPECT_TRUE( sm->linkState().empty() );
   EXPECT_EQ( timersOf( *sm ), "|" );
}

TEST( LinkStateDeathTest, AnUpdateForALagThatMlagDoesNotListIsAProgrammingError ) {
   World world;
   const auto sm = startPeer( world );
   EXPECT_DEATH( sm->updateLinkState( intf( "PortChannel99" ) ),
                 "MlagEgressAclIntfPeerInterlockSmLinkState.cpp:[0-9]+: assertion failed: "
                 "mlagStatus\\(\\)->intfStatusHas\\( lag \\)\n" );
}

// Records that were written long ago carry the numbers.
static_assert( static_cast< int >( LinkState::linkDown ) == 0 );
static_assert( static_cast< int >( LinkState::linkRequesting ) == 1 );
static_assert( static_cast< int >( LinkState::linkUp ) == 2 );
static_assert( static_cast< int >( LinkState::linkFail ) == 3 );

TEST( LinkStates, AreKnownToTheFrameworkByNameAndNumber ) {
   const Vex::EnumType * const type =
      Vex::enumType( "Velo::MlagEgressAclIntfPeerInterlockSm::LinkState" );
   ASSERT_NE( type, nullptr );
   const std::vector< String > names{ "linkDown", "linkRequesting", "linkUp", "linkFail" };
   ASSERT_EQ( type->entries.size(), names.size() );
   for ( std::size_t n = 0; n < names.size(); ++n ) {
      EXPECT_EQ( type->entries[ n ].value, static_cast< std::int64_t >( n ) );
      EXPECT_EQ( type->entries[ n ].name, names[ n ] );
   }
}

} // namespace
} // namespace Velo
