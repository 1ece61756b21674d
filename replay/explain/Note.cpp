#include "replay/explain/Note.h"

#include <optional>
#include <string_view>
#include <utility>

namespace Explain {

namespace {

// The message with {} in the place of each argument.
std::string patternOf( const Jotter::Descriptor & descriptor ) {
   std::string pattern;
   for ( const Jotter::Piece & piece : descriptor.pieces ) {
      if ( piece.kind == Jotter::PieceKind::literal ) {
         pattern += piece.literal;
      } else {
         pattern += "{}";
      }
   }
   return pattern;
}

// A file may say anything.
bool hasThese( const Meaning & meaning, const std::vector< Vex::String > & arguments ) {
   std::size_t wanted = 0;
   for ( std::size_t at = meaning.message.find( "{}" ); at != std::string_view::npos;
         at = meaning.message.find( "{}", at + 2 ) ) {
      ++wanted;
   }
   return arguments.size() == wanted;
}

} // namespace

Note noteOf( const Jotter::Record & record ) {
   const Jotter::Descriptor & site = *record.descriptor;
   Note note{ record.time, record.sequence, nullptr, {}, {} };
   if ( const auto gate = gateOfSource( site.source ) ) {
      note.meaning = meaningOf( *gate, site.function, patternOf( site ) );
   }
   if ( note.meaning != nullptr && hasThese( *note.meaning, record.arguments ) ) {
      note.arguments = record.arguments;
   } else {
      note.meaning = nullptr;
      note.asWritten = ( site.function.empty() ? "" : site.function + ": " ) + record.message();
   }
   return note;
}

Note noteOf( const Vex::TraceRecord & record, Vex::Seconds time ) {
   Note note{ time, 0, nullptr, {}, {} };
   if ( const auto gate = gateOfSource( record.source ) ) {
      Read read = readMessage( *gate, record.function, record.message );
      note.meaning = read.meaning;
      note.arguments = std::move( read.arguments );
   }
   if ( note.meaning == nullptr ) {
      note.asWritten = std::string( record.function ) + ": " + std::string( record.message );
   }
   return note;
}

} // namespace Explain
