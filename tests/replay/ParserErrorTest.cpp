// Every error of a scenario's text, word for word.

#include "replay/EntityChanges.h"
#include "replay/Grammar.h"
#include "replay/Parser.h"
#include "replay/ScenarioError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace {

std::string errorOf( std::string_view text ) {
   try {
      Replay::parseScenario( text );
   } catch ( const Replay::ScenarioError & error ) {
      return std::to_string( error.line() ) + ": " + error.what();
   }
   return "no error";
}

struct Wrong {
   const char * line;
   const char * message;
};

void expectErrors( std::initializer_list< Wrong > all ) {
   for ( const Wrong & wrong : all ) {
      EXPECT_EQ( errorOf( wrong.line ), "1: " + std::string( wrong.message ) ) << wrong.line;
   }
}

TEST( ParserError, NamesAnUnknownStatementAndTheKnownOnes ) {
   expectErrors( {
      { "lga PortChannel10",
        "'lga' is no statement; wanted: lag, member, acl, mlag, link, response, switchport, "
        "vlan-xlate, "
        "vlan-ready, output, request, start, stop, at, wait, peer, "
        "restart, switch, wire, responder, expect or no" },
      { "LAG PortChannel10",
        "'LAG' is no statement; wanted: lag, member, acl, mlag, link, response, switchport, "
        "vlan-xlate, "
        "vlan-ready, output, request, start, stop, at, wait, peer, "
        "restart, switch, wire, responder, expect or no" },
      { "no lga",
        "'lga' is no statement; wanted: lag, member, acl, mlag, response, switchport, vlan-xlate, "
        "vlan-ready, output, request or peer" },
   } );
}

TEST( ParserError, NamesAWordThatDoesNotGoWithItsFirst ) {
   expectErrors( {
      { "mlag status 3",
        "'status' does not go with 'mlag'; wanted: state, peer-link, intf or peer-interlock" },
      { "mlag",
        "a word is missing after 'mlag'; wanted: state, peer-link, intf or peer-interlock" },
      { "no mlag", "a word is missing after 'no mlag'; wanted: peer-link or intf" },
      { "no mlag state 3", "'state' does not go with 'no mlag'; wanted: peer-link or intf" },
      { "no mlag peer-interlock on",
        "'peer-interlock' does not go with 'no mlag'; wanted: peer-link or intf" },
      { "peer mirror 1", "'mirror' does not go with 'peer'; wanted: echo" },
      { "no peer", "a word is missing after 'no peer'; wanted: echo" },
      { "expect admitted a b", "'admitted' does not go with 'expect'; wanted: egress-acl, "
                               "vlan-xlate, joined, held, request, "
                               "trace or no" },
      { "expect", "a word is missing after 'expect'; wanted: egress-acl, vlan-xlate, joined, held, "
                  "request, trace "
                  "or no" },
      { "expect no joined a b",
        "'joined' does not go with 'expect no'; wanted: egress-acl, vlan-xlate, request or trace" },
      { "expect no",
        "a word is missing after 'expect no'; wanted: egress-acl, vlan-xlate, request or trace" },
   } );
}

TEST( ParserError, RefusesNoInFrontOfWhatGivesNothing ) {
   const std::string wanted =
      " cannot be taken back by 'no'; wanted: lag, member, acl, mlag, response, "
      "switchport, vlan-xlate, vlan-ready, output, request or peer";
   for ( const std::string head : { "link", "start", "stop", "at", "wait", "expect" } ) {
      EXPECT_EQ( errorOf( "no " + head + " x 1" ), "1: '" + head + "'" + wanted );
   }
   EXPECT_EQ( errorOf( "no" ),
              "1: a statement is missing after 'no'; wanted: lag, member, acl, mlag, response, "
              "switchport, vlan-xlate, vlan-ready, output, request or peer" );
   EXPECT_EQ( errorOf( "no no lag x" ),
              "1: 'no' is no statement; wanted: lag, member, acl, mlag, response, switchport, "
              "vlan-xlate, vlan-ready, output, request or peer" );
}

TEST( ParserError, NamesWhatIsMissing ) {
   expectErrors( {
      { "lag", "LAG is missing after 'lag'; wanted: lag LAG [MEMBER...]" },
      { "no lag", "LAG is missing after 'lag'; wanted: no lag LAG" },
      { "member P", "MEMBER is missing after 'P'; wanted: member LAG MEMBER [TYPE]" },
      { "no member P", "MEMBER is missing after 'P'; wanted: no member LAG MEMBER" },
      { "acl E", "LAG is missing after 'E'; wanted: acl MEMBER LAG" },
      { "no acl E", "LAG is missing after 'E'; wanted: no acl MEMBER LAG" },
      { "mlag state", "N is missing after 'state'; wanted: mlag state N" },
      { "mlag peer-link", "INTF is missing after 'peer-link'; wanted: mlag peer-link INTF" },
      { "link E", "N is missing after 'E'; wanted: link INTF N" },
      { "mlag intf P 1", "PEER is missing after '1'; wanted: mlag intf LAG LOCAL PEER [TEXT]" },
      { "no mlag intf", "LAG is missing after 'intf'; wanted: no mlag intf LAG" },
      { "mlag peer-interlock",
        "on or off is missing after 'peer-interlock'; wanted: mlag peer-interlock on|off" },
      { "response P", "TOKEN is missing after 'P'; wanted: response LAG TOKEN" },
      { "no response", "LAG is missing after 'response'; wanted: no response LAG" },
      { "switchport", "INTF is missing after 'switchport'; wanted: switchport INTF" },
      { "no switchport", "INTF is missing after 'switchport'; wanted: no switchport INTF" },
      { "vlan-xlate P ingress 1",
        "NEW-VLAN is missing after '1'; wanted: vlan-xlate INTF ingress|egress VLAN NEW-VLAN" },
      { "no vlan-xlate P",
        "DIRECTION is missing after 'P'; wanted: no vlan-xlate INTF ingress|egress VLAN" },
      { "vlan-ready", "MEMBER is missing after 'vlan-ready'; wanted: vlan-ready MEMBER LAG" },
      { "output",
        "INTERLOCK is missing after 'output'; wanted: output egress-acl|vlan-xlate MEMBER LAG" },
      { "request P", "TOKEN is missing after 'P'; wanted: request LAG TOKEN" },
      { "no request", "LAG is missing after 'request'; wanted: no request LAG" },
      { "start", "INTERLOCK is missing after 'start'; wanted: start "
                 "controller|basic|deprecated|vlan-xlate" },
      { "stop", "INTERLOCK is missing after 'stop'; wanted: stop egress-acl|vlan-xlate" },
      { "at", "T is missing after 'at'; wanted: at T" },
      { "wait", "D is missing after 'wait'; wanted: wait D" },
      { "peer echo", "D is missing after 'echo'; wanted: peer echo D" },
      { "expect egress-acl E", "LAG is missing after 'E'; wanted: expect egress-acl MEMBER LAG" },
      { "expect no vlan-xlate",
        "MEMBER is missing after 'vlan-xlate'; wanted: expect no vlan-xlate MEMBER LAG" },
      { "expect joined", "MEMBER is missing after 'joined'; wanted: expect joined MEMBER LAG" },
      { "expect held E", "LAG is missing after 'E'; wanted: expect held MEMBER LAG" },
      { "expect request P", "TOKEN is missing after 'P'; wanted: expect request LAG TOKEN" },
      { "expect trace", "TEXT is missing after 'trace'; wanted: expect trace TEXT" },
      { "expect no trace", "TEXT is missing after 'trace'; wanted: expect no trace TEXT" },
   } );
}

TEST( ParserError, NamesTheFirstWordTooMany ) {
   expectErrors( {
      { "no lag P x", "'x' is one word too many; wanted: no lag LAG" },
      { "member P E 1 x", "'x' is one word too many; wanted: member LAG MEMBER [TYPE]" },
      { "no member P E 1", "'1' is one word too many; wanted: no member LAG MEMBER" },
      { "acl E P x y", "'x' is one word too many; wanted: acl MEMBER LAG" },
      { "no mlag peer-link E", "'E' is one word too many; wanted: no mlag peer-link" },
      { "mlag intf P 1 2 to the",
        "'the' is one word too many; wanted: mlag intf LAG LOCAL PEER [TEXT]" },
      { "no peer echo 1", "'1' is one word too many; wanted: no peer echo" },
      { "no request P 1", "'1' is one word too many; wanted: no request LAG" },
      { "expect no request P 1", "'1' is one word too many; wanted: expect no request LAG" },
      { "expect trace is active", "'active' is one word too many; wanted: expect trace TEXT" },
      { "wait 1 s", "'s' is one word too many; wanted: wait D" },
      { "lag P E \"\"", "'' is no MEMBER; wanted: a name that is not empty" },
   } );
}

TEST( ParserError, NamesANumberOutOfItsRange ) {
   expectErrors( {
      { "mlag state 256", "'256' is no N; wanted: a number from 0 to 255" },
      { "mlag state -1", "'-1' is no N; wanted: a number from 0 to 255" },
      { "member P E 256", "'256' is no TYPE; wanted: a number from 0 to 255" },
      { "link E up", "'up' is no N; wanted: a number from 0 to 255" },
      { "mlag intf P 1 256", "'256' is no PEER; wanted: a number from 0 to 255" },
      { "request P 4294967296", "'4294967296' is no TOKEN; wanted: a number from 0 to 4294967295" },
      { "response P \"\"", "'' is no TOKEN; wanted: a number from 0 to 4294967295" },
      { "vlan-xlate P ingress 0 1", "'0' is no VLAN; wanted: a number from 1 to 4094" },
      { "vlan-xlate P ingress 1 4095", "'4095' is no NEW-VLAN; wanted: a number from 1 to 4094" },
      { "at 1e3", "'1e3' is no T; wanted: decimal seconds without sign or exponent, such as 0.1" },
      { "wait -1", "'-1' is no D; wanted: decimal seconds without sign or exponent, such as 0.1" },
      { "peer echo inf",
        "'inf' is no D; wanted: decimal seconds without sign or exponent, such as 0.1" },
   } );
}

TEST( ParserError, NamesAChoiceThatThereIsNot ) {
   expectErrors( {
      { "mlag peer-interlock yes", "'yes' is no flag; wanted: on or off" },
      { "vlan-xlate P both 1 2", "'both' is no direction; wanted: ingress or egress" },
      { "output acl E P", "'acl' is no interlock; wanted: egress-acl or vlan-xlate" },
      { "stop basic", "'basic' is no interlock; wanted: egress-acl or vlan-xlate" },
      { "start egress-acl",
        "'egress-acl' is no interlock; wanted: controller, basic, deprecated or vlan-xlate" },
   } );
}

TEST( ParserError, RefusesAnEmptyNameWhereOneIsWanted ) {
   expectErrors( {
      { "lag \"\"", "'' is no LAG; wanted: a name that is not empty" },
      { "member P \"\"", "'' is no MEMBER; wanted: a name that is not empty" },
      { "acl E \"\"", "'' is no LAG; wanted: a name that is not empty" },
      { "mlag intf \"\" 1 2", "'' is no LAG; wanted: a name that is not empty" },
      { "switchport \"\"", "'' is no INTF; wanted: a name that is not empty" },
      { "\"\"", "'' is no statement; wanted: lag, member, acl, mlag, link, response, switchport, "
                "vlan-xlate, "
                "vlan-ready, output, request, start, stop, at, wait, peer, "
                "restart, switch, wire, responder, expect or no" },
   } );
}

TEST( ParserError, IsThatOfTheFirstLineThatIsWrong ) {
   EXPECT_EQ( errorOf( "wait 1\n\n# x\r\nwait x\nwait y\n" ).substr( 0, 6 ), "4: 'x'" );
}

TEST( ParserError, NamesLineAndColumnOfACharacterThatIsNotSeen ) {
   EXPECT_EQ( errorOf( "wait 1\nlag P\u00A0\n" ),
              "2: '\\xc2\\xa0' in column 6 is a character that is not seen; wanted: text, or the "
              "word in quotes" );
}

TEST( ParserError, AByteOrderMarkIsTakenAtTheVeryBeginningAlone ) {
   EXPECT_EQ( errorOf( "\uFEFFwait 1\n" ), "no error" );
   const std::string refused = "'\\xef\\xbb\\xbf' in column 1 is a character that is not seen; "
                               "wanted: text, or the word in quotes";
   EXPECT_EQ( errorOf( "\uFEFF\uFEFFwait 1\n" ), "1: " + refused );
   EXPECT_EQ( errorOf( "wait 1\n\uFEFFwait 1\n" ), "2: " + refused );
}

TEST( ParserError, NamesTheLineOfAnErrorInTheWords ) {
   EXPECT_EQ( errorOf( "wait 1\nlag \"P" ),
              "2: '\"P' has no closing quote; wanted: a second \" in the same line" );
}

TEST( ParserError, ShowsNoMoreThanTheBeginningOfAWordOfAMegabyte ) {
   const std::string error = errorOf( std::string( 1'000'000, 'x' ) );
   EXPECT_TRUE( error.starts_with( "1: '" + std::string( 48, 'x' ) + "…' is no statement" ) )
      << error.substr( 0, 200 );
   EXPECT_LT( error.size(), 300U );
}

TEST( ParserError, ShowsControlCharactersEscaped ) {
   EXPECT_EQ( errorOf( "mlag state \"\x1b[2J\"" ),
              "1: '\\x1b[2J' is no N; wanted: a number from 0 to 255" );
}

// ---- An agent that is told by statements --------------------------------------------------------

Replay::Statement forAgent( std::string_view line ) {
   std::vector< Replay::Word > words;
   Replay::splitWords( line, words );
   return Replay::parseStatement( words, Replay::Listener::agent );
}

std::string agentsErrorOf( std::string_view line ) {
   try {
      forAgent( line );
   } catch ( const Replay::StatementError & error ) {
      return error.what();
   }
   return "no error";
}

// Whether an agent can do it: it changes entities, or starts an interlock.
template < class Of >
constexpr bool isForAgents = Replay::EntityChange< Of > || std::is_same_v< Of, Replay::Start >;

TEST( AgentStatement, TakesWhatChangesEntitiesAndStartAndNothingElse ) {
   for ( const char * line : { "lag P E",
                               "no lag P",
                               "member P E",
                               "no member P E",
                               "acl E P",
                               "no acl E P",
                               "mlag state 3",
                               "mlag peer-link E",
                               "mlag intf P 1 2",
                               "no mlag intf P",
                               "mlag peer-interlock on",
                               "link E 2",
                               "response P 1",
                               "no response P",
                               "switchport E",
                               "vlan-xlate E ingress 1 2",
                               "no vlan-xlate E egress 1",
                               "vlan-ready E P",
                               "output egress-acl E P",
                               "no output vlan-xlate E P",
                               "request P 1",
                               "no request P",
                               "start controller",
                               "start basic",
                               "stop egress-acl",
                               "at 1",
                               "wait 1",
                               "peer echo 1",
                               "no peer echo",
                               "restart vlan-xlate",
                               "switch left",
                               "wire on",
                               "wire delay 1",
                               "wire lose 1",
                               "wire repeat 1 1",
                               "wire hold 1% 1",
                               "wire seed 1",
                               "responder on",
                               "expect egress-acl E P",
                               "expect joined E P",
                               "expect request P 1",
                               "expect no trace x" } ) {
      std::vector< Replay::Word > words;
      Replay::splitWords( line, words );
      const bool wanted = std::visit(
         []( const auto & of ) { return isForAgents< std::remove_cvref_t< decltype( of ) > >; },
         Replay::parseStatement( words ) );
      const std::string refused = "'" + std::string( line ) +
                                  "' belongs to a story that is played; wanted: what the other "
                                  "agents of a switch publish, or 'start'";
      EXPECT_EQ( agentsErrorOf( line ), wanted ? "no error" : refused );
   }
}

TEST( AgentStatement, ErrorsNameOnlyWhatAnAgentTakes ) {
   EXPECT_EQ( agentsErrorOf( "lga P" ),
              "'lga' is no statement; wanted: lag, member, acl, mlag, link, response, switchport, "
              "vlan-xlate, vlan-ready, output, request, start or no" );
   const std::string takenBack = "; wanted: lag, member, acl, mlag, response, switchport, "
                                 "vlan-xlate, vlan-ready, output or request";
   EXPECT_EQ( agentsErrorOf( "no lga" ), "'lga' is no statement" + takenBack );
   EXPECT_EQ( agentsErrorOf( "no" ), "a statement is missing after 'no'" + takenBack );
   EXPECT_EQ( agentsErrorOf( "no link" ), "'link' cannot be taken back by 'no'" + takenBack );
   EXPECT_EQ( agentsErrorOf( "start egress-acl" ),
              "'egress-acl' is no interlock; wanted: controller or vlan-xlate" );
   EXPECT_EQ( agentsErrorOf( "start" ),
              "INTERLOCK is missing after 'start'; wanted: start controller|vlan-xlate" );
}

TEST( AgentStatement, WhatIsWrongInAStatementOfAStoryIsNotLookedAt ) {
   for ( const std::string line : { "expect", "wait x", "no wait", "peer mirror", "wire" } ) {
      EXPECT_THAT( agentsErrorOf( line ),
                   ::testing::StartsWith( "'" + line + "' belongs to a story that is played; " ) );
   }
}

} // namespace
