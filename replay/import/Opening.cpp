#include "replay/import/Opening.h"

#include "replay/Text.h"
#include "replay/pair/Side.h"

#include <algorithm>

namespace Import {

namespace {

constexpr std::size_t commentColumn = 42; // of a comment behind a statement
constexpr std::size_t longestLine = 100;
constexpr std::string_view answerDelay = "0.02";

bool hasUnseen( std::string_view name ) noexcept {
   while ( !name.empty() ) {
      const std::size_t length = Replay::firstCharacter( name ).length;
      if ( Replay::isUnseen( name.substr( 0, length ) ) ) {
         return true;
      }
      name.remove_prefix( length );
   }
   return false;
}

// A word of a statement.
std::string word( Nodo::IntfId intf ) {
   const std::string & name = intf.stringValue();
   const bool quoted = name.find_first_of( " \t#" ) != std::string::npos || hasUnseen( name );
   return quoted ? '"' + name + '"' : name;
}

class Text {
 public:
   void statement( const std::string & text, std::string_view comment = {} ) {
      out_ += text;
      if ( !comment.empty() ) {
         const std::size_t width = Replay::columns( text );
         out_.append( width < commentColumn ? commentColumn - width : 1, ' ' );
         out_ += "# ";
         out_ += comment;
      }
      out_ += '\n';
   }
   void comment( std::string_view text ) {
      out_ += "# ";
      Replay::appendPrintable( out_, text );
      out_ += '\n';
   }
   void gap() { out_ += '\n'; }
   std::string take() { return std::move( out_ ); }

 private:
   std::string out_;
};

void skipped( Text & text, const SwitchConfig & config ) {
   if ( config.skipped.empty() ) {
      return;
   }
   std::string line = "skipped: " + std::to_string( config.skipped.size() ) +
                      ( config.skipped.size() == 1 ? " other table" : " other tables" );
   std::string separator = ": ";
   for ( const Skipped & table : config.skipped ) {
      std::string entry;
      Replay::appendPrintable( entry, table.table );
      entry += " (" + std::to_string( table.entries ) + ")";
      line += separator;
      separator = ", ";
      if ( Replay::columns( line ) + Replay::columns( entry ) > longestLine ) {
         text.comment( line.substr( 0, line.find_last_not_of( ' ' ) + 1 ) );
         line = "  ";
      }
      line += entry;
   }
   text.comment( line );
}

// The two states are chosen: a LAG that is up on both sides is active on both.
void mlagInterface( Text & text,
                    Nodo::IntfId lag,
                    const SwitchConfig & config,
                    const SwitchConfig * peer ) {
   const bool here = config.lags.at( lag ).adminUp;
   const bool isThere = peer == nullptr || peer->mlagInterfaces.contains( lag );
   const bool there = isThere && ( peer == nullptr || peer->lags.at( lag ).adminUp );
   std::string_view why = "active here and on the peer";
   if ( !here ) {
      why = "not active here: admin_status is down";
   } else if ( !isThere ) {
      why = "not active on the peer, whose MCLAG_INTERFACE does not have it";
   } else if ( !there ) {
      why = "not active on the peer: admin_status is down there";
   }
   text.statement( "mlag intf " + word( lag ) + ( here ? " 2" : " 1" ) + ( there ? " 2" : " 1" ),
                   why );
}

// `peer`: what the other switch is configured as, or null.
void mlag( Text & text, const SwitchConfig & config, const SwitchConfig * peer, bool isFirst ) {
   if ( !config.domain ) {
      text.comment( "No MCLAG_DOMAIN: nothing needs an egress ACL, each member may join at once." );
      return;
   }
   const MlagDomain & domain = *config.domain;
   text.statement( isFirst ? "mlag state 3" : "mlag state 4", "MLAG is active" );
   if ( domain.peerLink ) {
      const std::string link = word( *domain.peerLink );
      text.statement( "link " + link + " 2", "the peer link is up" );
      text.statement( "mlag peer-link " + link );
   } else {
      text.comment(
         "MCLAG_DOMAIN has no peer_link: without one, no ACL is needed but by the peer's "
         "interlock." );
   }
   text.statement( "mlag peer-interlock on", "off: the local ACL alone decides" );
   for ( const Nodo::IntfId lag : config.mlagInterfaces ) {
      mlagInterface( text, lag, config, peer );
   }
}

void lags( Text & text, const SwitchConfig & config ) {
   for ( const auto & [ name, lag ] : config.lags ) {
      std::string statement = "lag " + word( name );
      if ( !lag.adminUp ) {
         text.statement( statement, "admin_status is down: no member is to join" );
         continue;
      }
      for ( const Nodo::IntfId member : lag.members ) {
         statement += " " + word( member );
      }
      text.statement( statement );
   }
}

void translations( Text & text, const SwitchConfig & config ) {
   for ( const auto & [ intf, translation ] : config.translations ) {
      text.statement( "switchport " + word( intf ) );
      const auto write = [ & ]( std::string_view direction, const Mappings & mappings ) {
         for ( const auto & [ from, to ] : mappings ) {
            text.statement( "vlan-xlate " + word( intf ) + " " + std::string( direction ) + " " +
                            std::to_string( from ) + " " + std::to_string( to ) );
         }
      };
      write( "ingress", translation.ingress );
      write( "egress", translation.egress );
   }
}

void start( Text & text, const SwitchConfig & config ) {
   text.statement( "start controller", "basic: the local ACL alone decides" );
   if ( !config.translations.empty() ) {
      text.statement( "start vlan-xlate" );
   }
}

// What comes next, to be taken out of the comment.
void examples( Text & text, const SwitchConfig & config ) {
   std::vector< std::string > lines;
   for ( const auto & [ name, lag ] : config.lags ) {
      if ( !lag.adminUp ) {
         continue;
      }
      for ( const Nodo::IntfId member : lag.members ) {
         const std::string pair = word( member ) + " " + word( name );
         if ( config.mlagInterfaces.contains( name ) ) {
            lines.push_back( "acl " + pair );
         }
         if ( config.translations.contains( name ) ) {
            lines.push_back( "vlan-ready " + pair );
         }
      }
   }
   for ( const std::string & line : lines ) {
      text.comment( line );
   }
}

void addresses( Text & text, const SwitchConfig & left, const SwitchConfig & right ) {
   if ( !left.domain || !right.domain ) {
      return;
   }
   const auto look = [ & ]( const MlagDomain & one, const MlagDomain & other, std::string_view file,
                            std::string_view otherFile ) {
      if ( one.peerIp != other.sourceIp ) {
         text.comment( "Do they belong together? peer_ip of the " + std::string( file ) + " is '" +
                       one.peerIp + "', source_ip of the " + std::string( otherFile ) + " is '" +
                       other.sourceIp + "'." );
      }
   };
   look( *left.domain, *right.domain, "left", "right" );
   look( *right.domain, *left.domain, "right", "left" );
}

void setUp( Text & text, const SwitchConfig & config, const SwitchConfig * peer, bool isFirst ) {
   mlag( text, config, peer, isFirst );
   translations( text, config );
   lags( text, config );
}

void single( Text & text, const Named & one ) {
   text.comment( "The opening of a scenario, made from " + std::string( one.file ) );
   skipped( text, one.config );
   text.gap();
   setUp( text, one.config, nullptr, true );
   text.gap();
   if ( one.config.domain ) {
      text.statement( "peer echo " + std::string( answerDelay ),
                      "a peer that answers each request after 20 ms" );
   }
   start( text, one.config );
   text.gap();
   text.comment( "The story goes on here. What the hardware reports, as it gets ready:" );
   text.statement( "at 1" );
   examples( text, one.config );
}

void pair( Text & text, std::span< const Named > switches ) {
   using Replay::Peering::indexOf;
   using Replay::Peering::nameOf;
   using Replay::Peering::otherThan;
   using Replay::Peering::Side;
   text.comment( "The opening of a scenario of two switches, made from" );
   for ( const Side side : Replay::Peering::sides ) {
      const Named & one = switches[ indexOf( side ) ];
      text.comment( "   " + std::string( nameOf( side ) ) + ": " + std::string( one.file ) );
      skipped( text, one.config );
   }
   addresses( text, switches[ 0 ].config, switches[ 1 ].config );
   text.gap();
   text.statement( "wire delay 0.01", "what a message takes from switch to switch" );
   for ( const Side side : Replay::Peering::sides ) {
      const SwitchConfig & config = switches[ indexOf( side ) ].config;
      text.gap();
      text.statement( "switch " + std::string( nameOf( side ) ) );
      setUp( text, config, &switches[ indexOf( otherThan( side ) ) ].config, side == Side::left );
      start( text, config );
   }
   text.gap();
   text.comment( "The story goes on here. What the hardware reports, as it gets ready:" );
   text.statement( "at 1" );
   for ( const Side side : Replay::Peering::sides ) {
      text.statement( "switch " + std::string( nameOf( side ) ) );
      examples( text, switches[ indexOf( side ) ].config );
   }
}

} // namespace

std::string opening( std::span< const Named > switches ) {
   Text text;
   if ( switches.size() == 1 ) {
      single( text, switches.front() );
   } else {
      pair( text, switches );
   }
   return text.take();
}

} // namespace Import
