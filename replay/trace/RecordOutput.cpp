#include "replay/trace/RecordOutput.h"

#include "replay/JsonLine.h"
#include "replay/JsonText.h"
#include "replay/RingText.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace TraceTool {

namespace {

using Replay::JsonText;

// An argument that is no number after all (an infinite time is none to JSON) stays a text.
template < class Number >
void writeNumberOrText( JsonText & json, const Vex::String & text ) {
   Number value{};
   const char * const end = text.data() + text.size();
   const auto [ last, error ] = std::from_chars( text.data(), end, value );
   if ( error != std::errc() || last != end || !std::isfinite( static_cast< double >( value ) ) ) {
      json.value( text );
   } else {
      json.value( value );
   }
}

// A piece: a literal, or the argument that stands in its place.
void writePiece( JsonText & json, Jotter::PieceKind kind, const Vex::String & text ) {
   json.beginObject();
   switch ( kind ) {
   case Jotter::PieceKind::literal:
      json.key( "literal" );
      json.value( text );
      break;
   case Jotter::PieceKind::text:
      json.key( "text" );
      json.value( text );
      break;
   case Jotter::PieceKind::boolean:
      json.key( "boolean" );
      json.value( text == "true" );
      break;
   case Jotter::PieceKind::number:
      json.key( "number" );
      writeNumberOrText< std::uint64_t >( json, text );
      break;
   case Jotter::PieceKind::time:
      json.key( "time" );
      writeNumberOrText< double >( json, text );
      break;
   }
   json.endObject();
}

auto piecesOf( const Jotter::Record & record ) {
   return [ &record ]( JsonText & json ) {
      json.beginList();
      std::size_t next = 0;
      for ( const Jotter::Piece & piece : record.descriptor->pieces ) {
         const bool literal = piece.kind == Jotter::PieceKind::literal;
         writePiece( json, piece.kind, literal ? piece.literal : record.arguments.at( next++ ) );
      }
      json.endList();
   };
}

void showObject( const Jotter::Record & record, Replay::Writer & writer ) {
   const Jotter::Descriptor & site = *record.descriptor;
   const bool known = Replay::callSiteKnown( record );
   const auto ifKnown = [ known ]( const auto & value ) {
      return known ? std::optional( value ) : std::nullopt;
   };
   Replay::JsonLine( writer, "jotter", record.time )
      .add( "sequence", record.sequence )
      .add( "level", ifKnown( site.level ) )
      .add( "source", ifKnown( std::string_view( site.source ) ) )
      .add( "line", ifKnown( site.line ) )
      .add( "function", ifKnown( std::string_view( site.function ) ) )
      .add( "message", record.message() )
      .add( "args", record.arguments )
      .add( "pieces", piecesOf( record ) )
      .end();
}

} // namespace

void show( const Jotter::Record & record, OutputKind kind, bool colours, Replay::Writer & writer ) {
   switch ( kind ) {
   case OutputKind::text: {
      const Replay::Line line = Replay::ringLine( record );
      writer.buffer() += ( colours ? line.coloured() : line.text ) + '\n';
      writer.flushIfFull();
      break;
   }
   case OutputKind::jsonLines:
      showObject( record, writer );
      break;
   }
}

} // namespace TraceTool
