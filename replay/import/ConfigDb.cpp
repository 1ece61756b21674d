#include "replay/import/ConfigDb.h"

#include "replay/Numbers.h"
#include "replay/Text.h"
#include "replay/import/Json.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Import {

using Replay::inQuotes;

namespace {

constexpr std::uint32_t firstVlan = 1;
constexpr std::uint32_t lastVlan = 4094;

[[noreturn]] void fail( std::size_t at, const std::string & what, const std::string & wanted ) {
   throw JsonError( at, what + "; wanted: " + wanted );
}

void wantKind( const JsonValue & value, JsonKind kind, std::string_view of ) {
   if ( value.kind != kind ) {
      fail( value.at, std::string( of ) + " is " + std::string( nameOf( value.kind ) ),
            std::string( nameOf( kind ) ) );
   }
}

const JsonValue * find( const JsonValue & object, std::string_view key ) {
   const auto found = std::ranges::find( object.members, key, &JsonMember::key );
   return found != object.members.end() ? &found->value : nullptr;
}

// Null: there is no such field.
const JsonValue * textField( const JsonMember & entry, std::string_view field ) {
   const JsonValue * const value = find( entry.value, field );
   if ( value != nullptr ) {
      wantKind( *value, JsonKind::string, field );
   }
   return value;
}

// A name as statements can write it.
Nodo::IntfId intf( std::string_view name, std::size_t at ) {
   const bool plain =
      std::ranges::none_of( name, []( char c ) { return c == '"' || Replay::isControl( c ); } );
   if ( name.empty() || !plain ) {
      fail( at, inQuotes( name ) + " is no name of an interface",
            "a name without double quotes and control characters" );
   }
   return Nodo::IntfId( Vex::String( name ) );
}

// A key of two parts, with a bar between them.
struct Parts {
   std::string_view first;
   std::string_view second;
};

Parts partsOf( const JsonMember & entry, std::string_view usage ) {
   const std::string_view key = entry.key;
   const std::size_t bar = key.find( '|' );
   if ( bar == std::string_view::npos || bar == 0 || bar + 1 == key.size() ||
        key.find( '|', bar + 1 ) != std::string_view::npos ) {
      fail( entry.at, inQuotes( key ) + " is no key of this table", std::string( usage ) );
   }
   return { key.substr( 0, bar ), key.substr( bar + 1 ) };
}

std::uint32_t vlan( std::string_view word, std::size_t at ) {
   const auto number = Replay::parseNumber( word, firstVlan, lastVlan );
   if ( !number ) {
      fail( at, inQuotes( word ) + " is no VLAN", "a number from 1 to 4094" );
   }
   return *number;
}

class Tables {
 public:
   explicit Tables( const JsonValue & root ) : root_( root ) {}

   // In this order: what is referred to comes first.
   SwitchConfig read() {
      wantKind( root_, JsonKind::object, "the file" );
      forEach( "PORTCHANNEL", &Tables::portChannel );
      forEach( "PORTCHANNEL_MEMBER", &Tables::member );
      forEach( "MCLAG_DOMAIN", &Tables::domain );
      forEach( "MCLAG_INTERFACE", &Tables::mlagInterface );
      forEach( "VLAN_TRANSLATION", &Tables::translation );
      for ( const JsonMember & table : root_.members ) {
         if ( std::ranges::find( known_, table.key ) == known_.end() ) {
            config_.skipped.push_back(
               { table.key, std::max( table.value.members.size(), table.value.items.size() ) } );
         }
      }
      std::ranges::sort( config_.skipped, {}, &Skipped::table );
      return std::move( config_ );
   }

 private:
   using ReadEntry = void ( Tables::* )( const JsonMember & entry );

   void forEach( std::string_view name, ReadEntry readEntry ) {
      known_.push_back( name );
      const JsonValue * const table = find( root_, name );
      if ( table == nullptr ) {
         return;
      }
      wantKind( *table, JsonKind::object, name );
      for ( const JsonMember & entry : table->members ) {
         wantKind( entry.value, JsonKind::object, inQuotes( entry.key ) );
         ( this->*readEntry )( entry );
      }
   }

   void portChannel( const JsonMember & entry ) {
      const Nodo::IntfId lag = intf( entry.key, entry.at );
      LagConfig & config = config_.lags[ lag ];
      if ( const JsonValue * const status = textField( entry, "admin_status" ) ) {
         if ( status->text != "up" && status->text != "down" ) {
            fail( status->at, "admin_status " + inQuotes( status->text ), "up or down" );
         }
         config.adminUp = status->text == "up";
      }
      if ( const JsonValue * const members = find( entry.value, "members" ) ) {
         wantKind( *members, JsonKind::array, "members" );
         for ( const JsonValue & item : members->items ) {
            wantKind( item, JsonKind::string, "a member" );
            addMember( lag, item.text, item.at );
         }
      }
   }

   void member( const JsonMember & entry ) {
      const Parts parts = partsOf( entry, "\"PORTCHANNEL|PORT\"" );
      const Nodo::IntfId lag = intf( parts.first, entry.at );
      wantLag( lag, entry.at );
      addMember( lag, parts.second, entry.at );
   }

   void domain( const JsonMember & entry ) {
      if ( config_.domain ) {
         fail( entry.at, "a second MCLAG_DOMAIN " + inQuotes( entry.key ), "only one" );
      }
      MlagDomain domain{ entry.key, {}, {}, {} };
      if ( const JsonValue * const ip = textField( entry, "source_ip" ) ) {
         domain.sourceIp = ip->text;
      }
      if ( const JsonValue * const ip = textField( entry, "peer_ip" ) ) {
         domain.peerIp = ip->text;
      }
      if ( const JsonValue * const link = textField( entry, "peer_link" ) ) {
         domain.peerLink = intf( link->text, link->at );
      }
      config_.domain = std::move( domain );
   }

   void mlagInterface( const JsonMember & entry ) {
      const Parts parts = partsOf( entry, "\"DOMAIN|PORTCHANNEL\"" );
      if ( !config_.domain || config_.domain->name != parts.first ) {
         fail( entry.at, "there is no MCLAG_DOMAIN " + inQuotes( parts.first ),
               config_.domain ? inQuotes( config_.domain->name ) : "an entry in MCLAG_DOMAIN" );
      }
      const Nodo::IntfId lag = intf( parts.second, entry.at );
      wantLag( lag, entry.at );
      const JsonValue * const type = textField( entry, "if_type" );
      if ( type != nullptr && type->text != "PortChannel" ) {
         fail( type->at, "if_type " + inQuotes( type->text ), "PortChannel" );
      }
      config_.mlagInterfaces.insert( lag );
   }

   void translation( const JsonMember & entry ) {
      const Parts parts = partsOf( entry, "\"INTERFACE|VLAN\"" );
      const std::uint32_t outside = vlan( parts.second, entry.at );
      const JsonValue * const newVlan = textField( entry, "new_vlan" );
      if ( newVlan == nullptr ) {
         fail( entry.value.at, inQuotes( entry.key ) + " has no new_vlan",
               "\"new_vlan\": \"VLAN\"" );
      }
      const std::uint32_t inside = vlan( newVlan->text, newVlan->at );
      const JsonValue * const direction = textField( entry, "direction" );
      const std::string way = direction != nullptr ? direction->text : "both";
      if ( way != "ingress" && way != "egress" && way != "both" ) {
         fail( direction->at, "direction " + inQuotes( way ), "ingress, egress or both" );
      }
      const auto map = [ & ]( Mappings & mappings, std::uint32_t from, std::uint32_t to,
                              const char * where ) {
         if ( !mappings.emplace( from, to ).second ) {
            fail( entry.at,
                  "VLAN " + std::to_string( from ) + " of " + inQuotes( parts.first ) +
                     " is translated on " + where + " already",
                  "each VLAN once" );
         }
      };
      Translation & of = config_.translations[ intf( parts.first, entry.at ) ];
      if ( way != "egress" ) {
         map( of.ingress, outside, inside, "ingress" );
      }
      if ( way != "ingress" ) { // what leaves is translated back
         map( of.egress, inside, outside, "egress" );
      }
   }

   void addMember( Nodo::IntfId lag, std::string_view name, std::size_t at ) {
      const Nodo::IntfId port = intf( name, at );
      const auto [ found, isNew ] = lagOf_.emplace( port, lag );
      if ( !isNew && found->second != lag ) {
         fail( at,
               inQuotes( name ) + " is a member of " + inQuotes( found->second.stringValue() ) +
                  " already",
               "a port in one LAG" );
      }
      config_.lags[ lag ].members.insert( port );
   }

   void wantLag( Nodo::IntfId lag, std::size_t at ) const {
      if ( !config_.lags.contains( lag ) ) {
         fail( at, inQuotes( lag.stringValue() ) + " is not in PORTCHANNEL",
               "an entry for it there" );
      }
   }

   const JsonValue & root_;
   std::vector< std::string_view > known_;
   std::map< Nodo::IntfId, Nodo::IntfId > lagOf_; // of each port
   SwitchConfig config_;
};

} // namespace

SwitchConfig parseConfigDb( std::string_view text ) {
   const JsonValue root = parseJson( text );
   return Tables( root ).read();
}

} // namespace Import
