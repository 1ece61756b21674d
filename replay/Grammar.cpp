#include "replay/Grammar.h"

#include "replay/ScenarioError.h"
#include "replay/Text.h"
#include "replay/Words.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace Replay {

namespace {

// One kind of statement: its first word or two, and how it is written and read, as it is and taken
// back. Of `expect`, taken back is what `expect no` asks for.
struct Form {
   std::string_view head;
   std::string_view second; // empty: the head is enough
   std::string_view usage;
   Statement ( *parse )( Words & words );
   std::string_view usageOfNo; // empty: cannot be taken back
   Statement ( *parseNo )( Words & words );
};

constexpr std::string_view expect = "expect";
constexpr std::string_view start = "start";

// Of each form, the lambda that reads it, and the one that reads it taken back. Braced
// initializers are evaluated from left to right, so that they take the words in order.
constexpr std::array forms{
   Form{ "lag", "", "lag LAG [MEMBER...]",
         []( Words & words ) -> Statement {
            Lag lag{ words.intf( "LAG" ), {} };
            while ( words.more() ) {
               lag.members.push_back( words.intf( "MEMBER" ) );
            }
            return lag;
         },
         "no lag LAG", []( Words & words ) -> Statement { return NoLag{ words.intf( "LAG" ) }; } },
   Form{ "member", "", "member LAG MEMBER [TYPE]",
         []( Words & words ) -> Statement {
            return Member{ words.intf( "LAG" ), words.intf( "MEMBER" ),
                           Hardware::Lag::PortProgType( words.more() ? words.byte( "TYPE" )
                                                                     : std::uint8_t{ 0 } ) };
         },
         "no member LAG MEMBER",
         []( Words & words ) -> Statement {
            return Member{ words.intf( "LAG" ), words.intf( "MEMBER" ), {} };
         } },
   Form{ "acl", "", "acl MEMBER LAG",
         []( Words & words ) -> Statement {
            return InputEntry{ Interlock::egressAcl, words.pair(), true };
         },
         "no acl MEMBER LAG",
         []( Words & words ) -> Statement {
            return InputEntry{ Interlock::egressAcl, words.pair(), false };
         } },
   Form{ "mlag", "state", "mlag state N",
         []( Words & words ) -> Statement { return MlagState{ Mlag::State( words.byte( "N" ) ) }; },
         "", nullptr },
   Form{ "mlag", "peer-link", "mlag peer-link INTF",
         []( Words & words ) -> Statement { return MlagPeerLink{ words.intfOrNone( "INTF" ) }; },
         "no mlag peer-link", []( Words & /* words */ ) -> Statement { return MlagPeerLink{}; } },
   Form{ "mlag", "intf", "mlag intf LAG LOCAL PEER [TEXT]",
         []( Words & words ) -> Statement {
            const Nodo::IntfId lag = words.intf( "LAG" );
            const auto local = Mlag::IntfState( words.byte( "LOCAL" ) );
            const auto peer = Mlag::IntfState( words.byte( "PEER" ) );
            const std::string_view text = words.more() ? words.word( "TEXT" ) : "";
            return MlagIntf{ lag, Mlag::IntfStatus{ std::string( text ), local, peer } };
         },
         "no mlag intf LAG",
         []( Words & words ) -> Statement { return MlagIntf{ words.intf( "LAG" ), {} }; } },
   Form{ "mlag", "peer-interlock", "mlag peer-interlock on|off",
         []( Words & words ) -> Statement { return MlagPeerInterlock{ words.onOrOff() }; }, "",
         nullptr },
   Form{ "link", "", "link INTF N",
         []( Words & words ) -> Statement {
            return Link{ words.intfOrNone( "INTF" ), Interface::LinkStatus( words.byte( "N" ) ) };
         },
         "", nullptr },
   Form{
      "response", "", "response LAG TOKEN",
      []( Words & words ) -> Statement { return Response{ words.intf( "LAG" ), words.token() }; },
      "no response LAG",
      []( Words & words ) -> Statement { return Response{ words.intf( "LAG" ), {} }; } },
   Form{ "switchport", "", "switchport INTF",
         []( Words & words ) -> Statement { return Switchport{ words.intf( "INTF" ), true }; },
         "no switchport INTF",
         []( Words & words ) -> Statement { return Switchport{ words.intf( "INTF" ), false }; } },
   Form{ "vlan-xlate", "", "vlan-xlate INTF ingress|egress VLAN NEW-VLAN",
         []( Words & words ) -> Statement {
            return VlanXlate{ words.intf( "INTF" ), words.direction(), words.vlan( "VLAN" ),
                              words.vlan( "NEW-VLAN" ) };
         },
         "no vlan-xlate INTF ingress|egress VLAN",
         []( Words & words ) -> Statement {
            return VlanXlate{ words.intf( "INTF" ), words.direction(), words.vlan( "VLAN" ), {} };
         } },
   Form{ "vlan-ready", "", "vlan-ready MEMBER LAG",
         []( Words & words ) -> Statement {
            return InputEntry{ Interlock::vlanXlate, words.pair(), true };
         },
         "no vlan-ready MEMBER LAG",
         []( Words & words ) -> Statement {
            return InputEntry{ Interlock::vlanXlate, words.pair(), false };
         } },
   Form{ "output", "", "output egress-acl|vlan-xlate MEMBER LAG",
         []( Words & words ) -> Statement {
            return OutputEntry{ words.interlock(), words.pair(), true };
         },
         "no output egress-acl|vlan-xlate MEMBER LAG",
         []( Words & words ) -> Statement {
            return OutputEntry{ words.interlock(), words.pair(), false };
         } },
   Form{ "request", "", "request LAG TOKEN",
         []( Words & words ) -> Statement { return Request{ words.intf( "LAG" ), words.token() }; },
         "no request LAG",
         []( Words & words ) -> Statement { return Request{ words.intf( "LAG" ), {} }; } },
   Form{ start, "", "start controller|basic|deprecated|vlan-xlate",
         []( Words & words ) -> Statement { return Start{ words.machine() }; }, "", nullptr },
   Form{ "stop", "", "stop egress-acl|vlan-xlate",
         []( Words & words ) -> Statement { return Stop{ words.interlock() }; }, "", nullptr },
   Form{ "at", "", "at T", []( Words & words ) -> Statement { return At{ words.seconds( "T" ) }; },
         "", nullptr },
   Form{ "wait", "", "wait D",
         []( Words & words ) -> Statement { return Wait{ words.seconds( "D" ) }; }, "", nullptr },
   Form{ "peer", "echo", "peer echo D",
         []( Words & words ) -> Statement { return PeerEcho{ words.seconds( "D" ) }; },
         "no peer echo", []( Words & /* words */ ) -> Statement { return PeerEcho{}; } },
   Form{ "restart", "", "restart egress-acl|vlan-xlate",
         []( Words & words ) -> Statement { return Restart{ words.interlock() }; }, "", nullptr },
   Form{ "switch", "", "switch left|right",
         []( Words & words ) -> Statement { return ForSwitch{ words.side() }; }, "", nullptr },
   Form{ "wire", "on", "wire on", []( Words & /* words */ ) -> Statement { return WireOn{ true }; },
         "", nullptr },
   Form{ "wire", "off", "wire off",
         []( Words & /* words */ ) -> Statement { return WireOn{ false }; }, "", nullptr },
   Form{ "wire", "delay", "wire delay D",
         []( Words & words ) -> Statement { return WireDelay{ words.seconds( "D" ) }; }, "",
         nullptr },
   Form{ "wire", "lose", "wire lose N|N%",
         []( Words & words ) -> Statement { return words.faults( WireFaultKind::lose ); }, "",
         nullptr },
   Form{ "wire", "repeat", "wire repeat N|N% D",
         []( Words & words ) -> Statement {
            WireFault fault = words.faults( WireFaultKind::repeat );
            fault.span = words.seconds( "D" );
            return fault;
         },
         "", nullptr },
   Form{ "wire", "hold", "wire hold N|N% D",
         []( Words & words ) -> Statement {
            WireFault fault = words.faults( WireFaultKind::hold );
            fault.span = words.seconds( "D" );
            return fault;
         },
         "", nullptr },
   Form{ "wire", "seed", "wire seed N",
         []( Words & words ) -> Statement { return WireSeed{ words.seed() }; }, "", nullptr },
   Form{ "responder", "", "responder on|off",
         []( Words & words ) -> Statement { return ResponderOn{ words.onOrOff() }; }, "", nullptr },
   Form{ expect, "egress-acl", "expect egress-acl MEMBER LAG",
         []( Words & words ) -> Statement {
            return ExpectOutput{ Interlock::egressAcl, words.pair(), true };
         },
         "expect no egress-acl MEMBER LAG",
         []( Words & words ) -> Statement {
            return ExpectOutput{ Interlock::egressAcl, words.pair(), false };
         } },
   Form{ expect, "vlan-xlate", "expect vlan-xlate MEMBER LAG",
         []( Words & words ) -> Statement {
            return ExpectOutput{ Interlock::vlanXlate, words.pair(), true };
         },
         "expect no vlan-xlate MEMBER LAG",
         []( Words & words ) -> Statement {
            return ExpectOutput{ Interlock::vlanXlate, words.pair(), false };
         } },
   Form{ expect, "joined", "expect joined MEMBER LAG",
         []( Words & words ) -> Statement { return ExpectJoined{ words.pair(), true }; }, "",
         nullptr },
   Form{ expect, "held", "expect held MEMBER LAG",
         []( Words & words ) -> Statement { return ExpectJoined{ words.pair(), false }; }, "",
         nullptr },
   Form{ expect, "request", "expect request LAG TOKEN",
         []( Words & words ) -> Statement {
            return ExpectRequest{ words.intf( "LAG" ), words.token() };
         },
         "expect no request LAG",
         []( Words & words ) -> Statement { return ExpectRequest{ words.intf( "LAG" ), {} }; } },
   Form{ expect, "trace", "expect trace TEXT",
         []( Words & words ) -> Statement {
            return ExpectTrace{ std::string( words.word( "TEXT" ) ), true };
         },
         "expect no trace TEXT",
         []( Words & words ) -> Statement {
            return ExpectTrace{ std::string( words.word( "TEXT" ) ), false };
         } },
};

// What an agent reads in the place of the one above: its errors name what agents run.
constexpr std::array< std::string_view, 2 > machinesOfAgents{ "controller", "vlan-xlate" };
constexpr Form startOfAgent{
   start,
   "",
   "start controller|vlan-xlate",
   []( Words & words ) -> Statement { return Start{ words.machine( machinesOfAgents ) }; },
   "",
   nullptr };

bool canBe( const Form & form, bool taken ) noexcept {
   return !taken || form.parseNo != nullptr;
}

// Nothing of a story: all that is left changes entities, but for `start`.
bool isForAgents( std::string_view head ) noexcept {
   constexpr std::array< std::string_view, 9 > played{
      "stop", "at", "wait", "peer", "restart", "switch", "wire", "responder", expect };
   return std::ranges::find( played, head ) == played.end();
}

// What may stand as first word, of a statement or after `no`.
std::string heads( bool afterNo, Listener listener ) {
   std::vector< std::string_view > words;
   for ( const Form & form : forms ) {
      const bool expected = afterNo && form.head == expect;
      const bool listed = !words.empty() && words.back() == form.head;
      const bool taken = listener == Listener::story || isForAgents( form.head );
      if ( canBe( form, afterNo ) && taken && !expected && !listed ) {
         words.push_back( form.head );
      }
   }
   if ( !afterNo ) {
      words.emplace_back( "no" );
   }
   return alternatives( words );
}

// What may follow a head.
std::string seconds( std::string_view head, bool afterNo ) {
   std::vector< std::string_view > words;
   for ( const Form & form : forms ) {
      if ( form.head == head && canBe( form, afterNo ) ) {
         words.push_back( form.second );
      }
   }
   if ( head == expect && !afterNo ) {
      words.emplace_back( "no" );
   }
   return alternatives( words );
}

[[noreturn]] void throwNotAfter( std::string_view head, bool no, const Words & words ) {
   std::string before( head );
   if ( no ) {
      before = head == expect ? before + " no" : "no " + before;
   }
   const std::string wrong = words.more()
                                ? inQuotes( words.next() ) + " does not go with '" + before + "'"
                                : "a word is missing after '" + before + "'";
   throw StatementError( wrong + "; wanted: " + seconds( head, no ) );
}

const Form & findForm( Words & words, std::string_view head, bool no, Listener listener ) {
   if ( head == start && listener == Listener::agent ) {
      return startOfAgent;
   }
   const auto * const first = std::ranges::find( forms, head, &Form::head );
   if ( first->second.empty() ) {
      return *first;
   }
   const auto * const form = std::find_if( first, forms.end(), [ & ]( const Form & candidate ) {
      return candidate.head == head && canBe( candidate, no ) && words.takeIf( candidate.second );
   } );
   if ( form == forms.end() ) {
      throwNotAfter( head, no, words );
   }
   return *form;
}

} // namespace

void throwPlayed( std::span< const Word > line ) {
   std::string text;
   appendWords( text, line );
   throw StatementError( inQuotes( text ) +
                         " belongs to a story that is played; wanted: what the other agents of a "
                         "switch publish, or 'start'" );
}

Statement parseStatement( std::span< const Word > line, Listener listener ) {
   Words words( line );
   bool no = words.takeIf( "no" );
   if ( no && !words.more() ) {
      throw StatementError( "a statement is missing after 'no'; wanted: " +
                            heads( true, listener ) );
   }
   const std::string_view head = words.word( "a statement" );
   if ( std::ranges::find( forms, head, &Form::head ) == forms.end() ) {
      throw StatementError( inQuotes( head ) +
                            " is no statement; wanted: " + heads( no, listener ) );
   }
   if ( listener == Listener::agent && !isForAgents( head ) ) {
      throwPlayed( line );
   }
   const bool canFollowNo =
      head != expect && std::ranges::any_of( forms, [ & ]( const Form & form ) {
         return form.head == head && form.parseNo != nullptr;
      } );
   if ( no && !canFollowNo ) {
      throw StatementError( inQuotes( head ) +
                            " cannot be taken back by 'no'; wanted: " + heads( true, listener ) );
   }
   if ( head == expect ) {
      no = words.takeIf( "no" );
   }
   const Form & form = findForm( words, head, no, listener );
   words.usageIs( no ? form.usageOfNo : form.usage );
   Statement statement = ( no ? form.parseNo : form.parse )( words );
   words.end();
   return statement;
}

} // namespace Replay
