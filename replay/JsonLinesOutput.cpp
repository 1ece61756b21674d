#include "replay/JsonLinesOutput.h"

#include "platform/Vex/Clock.h"
#include "replay/JsonLine.h"
#include "replay/JsonText.h"
#include "replay/Numbers.h"

#include <array>
#include <ranges>
#include <string_view>
#include <vector>

namespace Replay {

namespace {

// What follows is written while it is looked at; nothing of it is kept.

auto listOf( const std::vector< Pair > & pairs ) {
   return pairs | std::views::transform( []( const Pair & pair ) {
             return std::array< std::string_view, 2 >{ pair.member.stringValue(),
                                                       pair.lag.stringValue() };
          } );
}

auto requestsOf( const SwitchOutcome & outcome ) {
   return [ &outcome ]( JsonText & json ) {
      json.beginObject();
      for ( const auto & [ lag, token ] : outcome.requests ) {
         json.key( lag.stringValue() );
         json.value( token );
      }
      json.endObject();
   };
}

// Readers know the keys in this order, and those of the only switch in that of end() below.
auto standingOf( const SwitchOutcome & outcome ) {
   return [ &outcome ]( JsonText & json ) {
      json.beginObject();
      json.key( "egress-acl" );
      json.value( listOf( outcome.egressAcl ) );
      json.key( "requests" );
      json.value( requestsOf( outcome ) );
      json.key( "vlan-xlate" );
      json.value( listOf( outcome.vlanXlate ) );
      json.endObject();
   };
}

class JsonLinesOutput final : public Output {
 public:
   using Output::Output;

   std::uint32_t levelsAlwaysShown() const noexcept override { return 0; }

   void begin( std::string_view /* file */ ) override {}

   void statement( std::size_t line, std::string_view text ) override {
      object( "statement" ).add( "line", line ).add( "text", text ).end();
   }
   void sent( const Peering::Message & message, std::span< const Vex::Seconds > delays ) override {
      const auto arrival = []( Vex::Seconds delay ) {
         return roundedToMicroseconds( Vex::now() + delay );
      };
      event( "wire" )
         .add( "content", message.content == Peering::Content::request ? "request" : "response" )
         .add( "lag", message.lag.stringValue() )
         .add( "token", message.token )
         .add( "arrives", delays | std::views::transform( arrival ) )
         .end();
   }
   void verdict( Interlock interlock, const Pair & pair, bool admitted ) override {
      event( "verdict" )
         .add( "interlock", nameOf( interlock ) )
         .add( "member", pair.member.stringValue() )
         .add( "lag", pair.lag.stringValue() )
         .add( "admitted", admitted )
         .end();
   }
   void request( Nodo::IntfId lag, std::optional< Token > token ) override {
      event( "request" ).add( "lag", lag.stringValue() ).add( "token", token ).end();
   }
   void response( Nodo::IntfId lag, std::optional< Token > token ) override {
      event( "response" ).add( "lag", lag.stringValue() ).add( "token", token ).end();
   }
   void trace( const Vex::TraceRecord & record ) override {
      object( "trace" )
         .add( "source", record.source )
         .add( "line", record.line )
         .add( "function", record.function )
         .add( "level", record.level )
         .add( "message", record.message )
         .end();
   }
   void expectation( std::size_t line, const Finding & finding ) override {
      object( "expect" ).add( "line", line ).add( "ok", finding.ok ).end();
   }
   void ring( std::span< const Jotter::Record > records ) override {
      for ( const Jotter::Record & record : records ) {
         JsonLine( writer(), "jotter", record.time )
            .add( "source", record.descriptor->source )
            .add( "line", record.descriptor->line )
            .add( "message", record.message() )
            .add( "args", record.arguments )
            .end();
      }
   }
   void end( const Outcome & outcome ) override {
      JsonLine end( writer(), "end", Vex::now() );
      for ( const SwitchOutcome & one : outcome.switches ) {
         if ( !one.name.empty() ) {
            end.add( one.name, standingOf( one ) );
            continue;
         }
         end.add( "egress-acl", listOf( one.egressAcl ) );
         end.add( "vlan-xlate", listOf( one.vlanXlate ) );
         end.add( "requests", requestsOf( one ) );
      }
      end.add( "failed", outcome.failedLines.size() ).end();
   }

 private:
   // Of one switch of a pair, or of the only one.
   JsonLine event( std::string_view kind ) { return { writer(), kind, Vex::now(), switchName() }; }
   JsonLine object( std::string_view kind ) { return { writer(), kind, Vex::now() }; }
};

} // namespace

std::unique_ptr< Output > jsonLinesOutput( Writer & writer ) {
   return std::make_unique< JsonLinesOutput >( writer );
}

} // namespace Replay
