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

void appendMessage( std::string & line, std::string_view message ) {
   const std::size_t end = columns( line ) + messageWidth;
   appendPrintable( line, message );
   padTo( line, end );
   if ( columns( line ) != end ) { // too long for its column: two blanks behind it
      line += ' ';
   }
}

std::string ringLine( const Jotter::Record & record ) {
   std::string line = timeText( record.time );
   const std::string sequence = std::to_string( record.sequence );
   line.append( sequence.size() < sequenceWidth ? sequenceWidth - sequence.size() : 1, ' ' );
   line += sequence;
   padTo( line, messageColumn );
   appendMessage( line, record.message() );
   if ( callSiteKnown( record ) ) {
      appendPrintable( line, record.descriptor->source );
      line += ':' + std::to_string( record.descriptor->line ) + ' ';
      appendPrintable( line, record.descriptor->function );
      line += ' ' + std::to_string( record.descriptor->level );
   }
   line.erase( line.find_last_not_of( ' ' ) + 1 );
   return line;
}

bool callSiteKnown( const Jotter::Record & record ) noexcept {
   return !record.descriptor->source.empty() || record.descriptor->line != 0;
}

} // namespace Replay
