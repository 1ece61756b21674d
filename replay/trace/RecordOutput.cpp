#include "replay/trace/RecordOutput.h"

#include "replay/Numbers.h"
#include "replay/RingText.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

namespace TraceTool {

namespace {

using Json = nlohmann::ordered_json;

// An argument that is no number after all (an infinite time is none to JSON) stays a text.
template < class Number >
Json numberOr( const Vex::String & text ) {
   Number value{};
   const char * const end = text.data() + text.size();
   const auto [ last, error ] = std::from_chars( text.data(), end, value );
   if ( error != std::errc() || last != end || !std::isfinite( static_cast< double >( value ) ) ) {
      return text;
   }
   return value;
}

Json toJson( const Jotter::Piece & piece, const Vex::String & argument ) {
   switch ( piece.kind ) {
   case Jotter::PieceKind::literal:
      return { { "literal", piece.literal } };
   case Jotter::PieceKind::text:
      return { { "text", argument } };
   case Jotter::PieceKind::boolean:
      return { { "boolean", argument == "true" } };
   case Jotter::PieceKind::number:
      return { { "number", numberOr< std::uint64_t >( argument ) } };
   case Jotter::PieceKind::time:
      return { { "time", numberOr< double >( argument ) } };
   }
   return {};
}

Json pieces( const Jotter::Record & record ) {
   Json list = Json::array();
   std::size_t next = 0;
   for ( const Jotter::Piece & piece : record.descriptor->pieces ) {
      const bool literal = piece.kind == Jotter::PieceKind::literal;
      list.push_back( toJson( piece, literal ? Vex::String() : record.arguments.at( next++ ) ) );
   }
   return list;
}

Json toJson( const Jotter::Record & record ) {
   const Jotter::Descriptor & site = *record.descriptor;
   const bool known = Replay::callSiteKnown( record );
   return { { "kind", "jotter" },
            { "t", Replay::roundedToMicroseconds( record.time ) },
            { "sequence", record.sequence },
            { "level", known ? Json( site.level ) : Json() },
            { "source", known ? Json( site.source ) : Json() },
            { "line", known ? Json( site.line ) : Json() },
            { "function", known ? Json( site.function ) : Json() },
            { "message", record.message() },
            { "args", record.arguments },
            { "pieces", pieces( record ) } };
}

} // namespace

void show( const Jotter::Record & record, OutputKind kind, Replay::Writer & writer ) {
   switch ( kind ) {
   case OutputKind::text:
      writer.buffer() += Replay::ringLine( record );
      break;
   case OutputKind::jsonLines:
      writer.buffer() += toJson( record ).dump( -1, ' ', false, Json::error_handler_t::replace );
      break;
   }
   writer.buffer() += '\n';
   writer.flushIfFull();
}

} // namespace TraceTool
