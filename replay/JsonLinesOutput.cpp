#include "replay/JsonLinesOutput.h"

#include "platform/Vex/Clock.h"
#include "replay/Numbers.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace Replay {

namespace {

using Json = nlohmann::json;

// One object, written key by key and ended by its destructor.
class Object {
 public:
   Object( Writer & writer,
           std::string_view kind,
           Vex::Seconds time,
           std::string_view switchName = {} )
       : writer_( writer ) {
      writer_.buffer() += R"({"kind":")";
      writer_.buffer() += kind;
      writer_.buffer() += '"';
      add( "t", roundedToMicroseconds( time ) );
      if ( !switchName.empty() ) {
         add( "switch", switchName );
      }
   }
   Object( const Object & ) = delete;
   Object & operator=( const Object & ) = delete;
   Object( Object && ) = delete;
   Object & operator=( Object && ) = delete;
   ~Object() {
      writer_.buffer() += closing; // for which add() has left room
      writer_.flushIfFull();
   }

   Object & add( std::string_view key, const Json & value ) {
      std::string & out = writer_.buffer();
      const std::string text = value.dump( -1, ' ', false, Json::error_handler_t::replace );
      out.reserve( out.size() + 4 + key.size() + text.size() + closing.size() );
      out += R"(,")";
      out += key;
      out += R"(":)";
      out += text;
      return *this;
   }
   Object & add( std::string_view key, Nodo::IntfId intf ) {
      return add( key, Json( intf.stringValue() ) );
   }

 private:
   static constexpr std::string_view closing = "}\n";

   Writer & writer_;
};

Json toJson( std::optional< Token > token ) {
   return token ? Json( *token ) : Json();
}

Json toJson( const std::vector< Pair > & pairs ) {
   Json list = Json::array();
   for ( const Pair & pair : pairs ) {
      list.push_back( Json::array( { pair.member.stringValue(), pair.lag.stringValue() } ) );
   }
   return list;
}

// In the order in which they are written.
std::vector< std::pair< std::string, Json > > standingOf( const SwitchOutcome & outcome ) {
   Json requests = Json::object();
   for ( const auto & [ lag, token ] : outcome.requests ) {
      requests[ lag.stringValue() ] = token;
   }
   return { { "egress-acl", toJson( outcome.egressAcl ) },
            { "vlan-xlate", toJson( outcome.vlanXlate ) },
            { "requests", requests } };
}

class JsonLinesOutput final : public Output {
 public:
   using Output::Output;

   std::uint32_t levelsAlwaysShown() const noexcept override { return 0; }

   void begin( std::string_view /* file */ ) override {}

   void statement( std::size_t line, std::string_view text ) override {
      object( "statement" ).add( "line", line ).add( "text", text );
   }
   void sent( const Peering::Message & message, std::span< const Vex::Seconds > delays ) override {
      Json arrivals = Json::array();
      for ( const Vex::Seconds delay : delays ) {
         arrivals.push_back( roundedToMicroseconds( Vex::now() + delay ) );
      }
      event( "wire" )
         .add( "content", message.content == Peering::Content::request ? "request" : "response" )
         .add( "lag", message.lag )
         .add( "token", toJson( message.token ) )
         .add( "arrives", arrivals );
   }
   void verdict( Interlock interlock, const Pair & pair, bool admitted ) override {
      event( "verdict" )
         .add( "interlock", nameOf( interlock ) )
         .add( "member", pair.member )
         .add( "lag", pair.lag )
         .add( "admitted", admitted );
   }
   void request( Nodo::IntfId lag, std::optional< Token > token ) override {
      event( "request" ).add( "lag", lag ).add( "token", toJson( token ) );
   }
   void response( Nodo::IntfId lag, std::optional< Token > token ) override {
      event( "response" ).add( "lag", lag ).add( "token", toJson( token ) );
   }
   void trace( const Vex::TraceRecord & record ) override {
      object( "trace" )
         .add( "source", record.source )
         .add( "line", record.line )
         .add( "function", record.function )
         .add( "level", record.level )
         .add( "message", record.message );
   }
   void expectation( std::size_t line, const Finding & finding ) override {
      object( "expect" ).add( "line", line ).add( "ok", finding.ok );
   }
   void ring( std::span< const Jotter::Record > records ) override {
      for ( const Jotter::Record & record : records ) {
         Object( writer(), "jotter", record.time )
            .add( "source", record.descriptor->source )
            .add( "line", record.descriptor->line )
            .add( "message", record.message() )
            .add( "args", record.arguments );
      }
   }
   void end( const Outcome & outcome ) override {
      Object end = object( "end" );
      for ( const SwitchOutcome & one : outcome.switches ) {
         const auto standing = standingOf( one );
         if ( !one.name.empty() ) {
            end.add( one.name, Json( Json::object_t( standing.begin(), standing.end() ) ) );
            continue;
         }
         for ( const auto & [ key, value ] : standing ) {
            end.add( key, value );
         }
      }
      end.add( "failed", outcome.failedLines.size() );
   }

 private:
   // Of one switch of a pair, or of the only one.
   Object event( std::string_view kind ) { return { writer(), kind, Vex::now(), switchName() }; }
   Object object( std::string_view kind ) { return { writer(), kind, Vex::now() }; }
};

} // namespace

std::unique_ptr< Output > jsonLinesOutput( Writer & writer ) {
   return std::make_unique< JsonLinesOutput >( writer );
}

} // namespace Replay
