// An explanation as one JSON object: what the text says, with names for programs beside the words.

#include "replay/JsonLine.h"
#include "replay/Numbers.h"
#include "replay/explain/Explanation.h"

#include <string>
#include <string_view>
#include <vector>

namespace Explain {

namespace {

using Replay::JsonText;

std::optional< double > secondsOf( std::optional< Vex::Seconds > time ) {
   return time ? std::optional( Replay::roundedToMicroseconds( *time ) ) : std::nullopt;
}

template < class Value >
void member( JsonText & json, std::string_view key, const Value & value ) {
   json.key( key );
   json.value( value );
}

void write( JsonText & json, const Looked & one );
void write( JsonText & json, const Span & span );
void write( JsonText & json, const AtGate & at );

template < class Element >
auto listOf( const std::vector< Element > & elements ) {
   return [ &elements ]( JsonText & json ) {
      json.beginList();
      for ( const Element & element : elements ) {
         write( json, element );
      }
      json.endList();
   };
}

void write( JsonText & json, const Looked & one ) {
   json.beginObject();
   member( json, "check", std::string_view( one.check ) );
   member( json, "saw", std::string_view( one.saw ) );
   member( json, "passed", one.passed );
   member( json, "decisive", one.decisive );
   json.endObject();
}

void write( JsonText & json, const Span & span ) {
   json.beginObject();
   member( json, "since", secondsOf( span.since ) );
   member( json, "admitted", admits( span.reason ) );
   member( json, "reason", nameOf( span.reason ) );
   json.endObject();
}

void write( JsonText & json, const AtGate & at ) {
   using Name = std::optional< std::string_view >;
   const auto & decision = at.decision;
   json.beginObject();
   member( json, "interlock", nameOf( at.gate ) );
   member( json, "kind", decision ? Name( nameOf( decision->decider ) ) : Name() );
   member( json, "admitted", at.admitted );
   member( json, "since", secondsOf( at.since ) );
   member( json, "or_earlier", at.orEarlier );
   member( json, "decided", decision ? secondsOf( decision->time ) : std::optional< double >() );
   member( json, "outdated_since", secondsOf( at.outdatedSince ) );
   member( json, "reason", decision ? Name( nameOf( decision->reason ) ) : Name() );
   member( json, "because", std::string_view( at.because ) );
   member( json, "checks", listOf( at.looked ) );
   member( json, "exchange", std::string_view( at.exchange ) );
   member( json, "time_out", secondsOf( at.deadline ) );
   member( json, "looks_again", at.again );
   member( json, "before", listOf( at.before ) );
   member( json, "before_that", std::uint64_t{ at.beforeThat } );
   json.endObject();
}

} // namespace

void showAsJson( const Explanation & explanation, Replay::Writer & writer ) {
   const Asked & asked = explanation.asked;
   Replay::JsonLine line( writer, "explanation", asked.at );
   if ( !asked.switchName.empty() ) {
      line.add( "switch", asked.switchName );
   }
   line.add( "member", std::string_view( asked.pair.member ) )
      .add( "lag", std::string_view( asked.pair.lag ) )
      .add( "admitted", explanation.admitted )
      .add( "is_member", explanation.isMember )
      .add( "gates", listOf( explanation.gates ) )
      .add( "remarks", explanation.remarks )
      .end();
}

} // namespace Explain
