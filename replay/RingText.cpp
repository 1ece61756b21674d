#include "replay/RingText.h"

#include "replay/Numbers.h"
#include "replay/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace Replay {

namespace {

constexpr std::size_t sequenceWidth = 5; // right-aligned; a longer one has a blank in front of it
constexpr std::size_t messageColumn = 19;
constexpr std::size_t messageWidth = 48; // before its origin

constexpr unsigned entryLevel = 0; // which function was entered
constexpr unsigned failureLevel = 4; // what an operator must see

void padTo( std::string & line, std::size_t column ) {
   const std::size_t used = columns( line );
   line.append( used < column ? column - used : 1, ' ' );
}

} // namespace

std::string timeText( Vex::Seconds time ) {
   std::array< char, 400 > text{};
   const int size =
      std::snprintf( text.data(), text.size(), "%12.6f", roundedToMicroseconds( time ) );
   std::string result( text.data(), static_cast< std::size_t >( size ) );
   if ( result.ends_with( "000" ) ) {
      result.replace( result.size() - 3, 3, "   " );
   }
   return result;
}

void appendTrace( Line & line, std::string_view message, const std::optional< Origin > & origin ) {
   std::string & text = line.text;
   const std::size_t begin = text.size();
   const std::size_t end = columns( text ) + messageWidth;
   appendPrintable( text, message );
   if ( origin && origin->level == failureLevel ) {
      line.toneFrom( begin, Tone::bad );
   } else if ( origin && origin->level == entryLevel ) {
      line.toneFrom( begin, Tone::aside );
   }
   padTo( text, end );
   if ( columns( text ) != end ) { // too long for its column: two blanks behind it
      text += ' ';
   }
   if ( origin ) {
      const std::size_t originBegin = text.size();
      appendPrintable( text, origin->source );
      text += ':' + std::to_string( origin->line ) + ' ';
      appendPrintable( text, origin->function );
      text += ' ' + std::to_string( origin->level );
      line.toneFrom( originBegin, Tone::aside );
   }
}

Line ringLine( const Jotter::Record & record ) {
   Line line;
   line.append( Tone::time, timeText( record.time ) );
   const std::string sequence = std::to_string( record.sequence );
   line.text.append( sequence.size() < sequenceWidth ? sequenceWidth - sequence.size() : 1, ' ' );
   line.append( Tone::aside, sequence );
   padTo( line.text, messageColumn );
   const Jotter::Descriptor & site = *record.descriptor;
   appendTrace( line, record.message(),
                callSiteKnown( record )
                   ? std::optional( Origin{ site.source, site.line, site.function, site.level } )
                   : std::nullopt );
   line.text.erase( line.text.find_last_not_of( ' ' ) + 1 );
   return line;
}

bool callSiteKnown( const Jotter::Record & record ) noexcept {
   return !record.descriptor->source.empty() || record.descriptor->line != 0;
}

} // namespace Replay
