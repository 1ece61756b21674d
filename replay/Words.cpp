#include "replay/Words.h"

#include "replay/Interlocks.h"
#include "replay/Numbers.h"
#include "replay/ScenarioError.h"
#include "replay/Text.h"

#include <limits>
#include <vector>

namespace Replay {

namespace {

constexpr std::uint32_t lastVlan = 4094;

[[noreturn]] void throwNo( std::string_view word,
                           std::string_view what,
                           const std::string & wanted ) {
   throw StatementError( inQuotes( word ) + " is no " + std::string( what ) +
                         "; wanted: " + wanted );
}

} // namespace

std::string alternatives( std::span< const std::string_view > words ) {
   std::string text;
   for ( std::size_t at = 0; at < words.size(); ++at ) {
      if ( at > 0 ) {
         text += at + 1 == words.size() ? " or " : ", ";
      }
      text += words[ at ];
   }
   return text;
}

bool Words::takeIf( std::string_view keyword ) noexcept {
   const bool is = more() && words_[ at_ ].text == keyword;
   at_ += is ? 1 : 0;
   return is;
}

void Words::end() const {
   if ( more() ) {
      throw StatementError( inQuotes( words_[ at_ ].text ) +
                            " is one word too many; wanted: " + std::string( usage_ ) );
   }
}

std::string_view Words::word( std::string_view what ) {
   if ( !more() ) {
      throw StatementError( std::string( what ) + " is missing after " +
                            inQuotes( words_.back().text ) + "; wanted: " + std::string( usage_ ) );
   }
   return words_[ at_++ ].text;
}

Nodo::IntfId Words::intf( std::string_view what ) {
   const std::string_view name = word( what );
   if ( name.empty() ) {
      throwNo( name, what, "a name that is not empty" );
   }
   return Nodo::IntfId( std::string( name ) );
}

Nodo::IntfId Words::intfOrNone( std::string_view what ) {
   return Nodo::IntfId( std::string( word( what ) ) );
}

std::uint32_t Words::number( std::string_view what, std::uint32_t least, std::uint32_t most ) {
   const std::string_view digits = word( what );
   const auto value = parseNumber( digits, least, most );
   if ( !value ) {
      throwNo( digits, what,
               "a number from " + std::to_string( least ) + " to " + std::to_string( most ) );
   }
   return *value;
}

std::uint8_t Words::byte( std::string_view what ) {
   return static_cast< std::uint8_t >(
      number( what, 0, std::numeric_limits< std::uint8_t >::max() ) );
}

Token Words::token() {
   return number( "TOKEN", 0, std::numeric_limits< Token >::max() );
}

std::uint32_t Words::seed() {
   return number( "N", 0, std::numeric_limits< std::uint32_t >::max() );
}

Bridging::VlanId Words::vlan( std::string_view what ) {
   return Bridging::VlanId( static_cast< std::uint16_t >( number( what, 1, lastVlan ) ) );
}

Vex::Seconds Words::seconds( std::string_view what ) {
   const std::string_view digits = word( what );
   const auto value = parseSeconds( digits );
   if ( !value ) {
      throwNo( digits, what, "decimal seconds without sign or exponent, such as 0.1" );
   }
   return *value;
}

Interlock Words::interlock() {
   const std::string_view name = word( "INTERLOCK" );
   for ( const Interlock candidate : interlocks ) {
      if ( nameOf( candidate ) == name ) {
         return candidate;
      }
   }
   throwNo( name, "interlock", "egress-acl or vlan-xlate" );
}

const Machine * Words::machine( std::span< const std::string_view > known ) {
   const std::string_view name = word( "INTERLOCK" );
   std::vector< std::string_view > names;
   for ( const Machine & candidate : machines() ) {
      if ( candidate.name == name ) {
         return &candidate;
      }
      names.push_back( candidate.name );
   }
   throwNo( name, "interlock",
            alternatives( known.empty() ? std::span< const std::string_view >( names ) : known ) );
}

Direction Words::direction() {
   const std::string_view name = word( "DIRECTION" );
   if ( name == "ingress" ) {
      return Direction::ingress;
   }
   if ( name == "egress" ) {
      return Direction::egress;
   }
   throwNo( name, "direction", "ingress or egress" );
}

bool Words::onOrOff() {
   const std::string_view flag = word( "on or off" );
   if ( flag != "on" && flag != "off" ) {
      throwNo( flag, "flag", "on or off" );
   }
   return flag == "on";
}

Peering::Side Words::side() {
   const std::string_view name = word( "left or right" );
   for ( const Peering::Side candidate : Peering::sides ) {
      if ( nameOf( candidate ) == name ) {
         return candidate;
      }
   }
   throwNo( name, "switch", "left or right" );
}

WireFault Words::faults( WireFaultKind kind ) {
   constexpr std::uint32_t all = 100;
   if ( !more() || !next().ends_with( '%' ) ) {
      return { kind, number( "N", 0, std::numeric_limits< std::uint32_t >::max() ), false, {} };
   }
   const std::string_view written = word( "N%" );
   const auto percent = parseNumber( written.substr( 0, written.size() - 1 ), 0, all );
   if ( !percent ) {
      throwNo( written, "N%", "0% to 100%" );
   }
   return { kind, *percent, true, {} };
}

Pair Words::pair() {
   const Nodo::IntfId member = intf( "MEMBER" );
   return { member, intf( "LAG" ) };
}

} // namespace Replay
