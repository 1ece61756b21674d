#include "replay/Lexer.h"

#include "replay/ScenarioError.h"
#include "replay/Text.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace Replay {

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view endOfPlainWord = " \t#\"";

void checkCharacters( std::string_view line ) {
   if ( const std::size_t at = firstMalformed( line ); at != std::string_view::npos ) {
      throw StatementError( inQuotes( line.substr( at, 1 ) ) +
                            " is a byte that is no UTF-8; wanted: UTF-8 text" );
   }
   if ( line.find( '\r' ) != std::string_view::npos ) {
      throw StatementError(
         "'\\x0d' is a carriage return inside a line; wanted: lines that end with "
         "a line feed" );
   }
}

// What a reader takes for the word at `at`: up to the next blank.
std::string_view apparentWord( std::string_view line, std::size_t at ) {
   return line.substr( at, line.find_first_of( blanks, at ) - at );
}

// It would be another word than the one that a reader takes it for.
void checkSeen( std::string_view line, std::size_t at, std::size_t end ) {
   while ( at < end ) {
      const std::string_view character =
         line.substr( at, firstCharacter( line.substr( at ) ).length );
      if ( isUnseen( character ) ) {
         throw StatementError( "'" + asBytes( character ) + "' in column " +
                               std::to_string( 1 + columns( line.substr( 0, at ) ) ) +
                               " is a character that is not seen; wanted: text, or the word in "
                               "quotes" );
      }
      at += character.size();
   }
}

std::string_view quotedWord( std::string_view line, std::size_t at ) {
   const std::size_t close = line.find( '"', at + 1 );
   if ( close == std::string_view::npos ) {
      throw StatementError( inQuotes( line.substr( at ) ) +
                            " has no closing quote; wanted: a second \" in the same line" );
   }
   const std::size_t next = close + 1;
   if ( next < line.size() && line[ next ] != '#' &&
        blanks.find( line[ next ] ) == std::string_view::npos ) {
      const std::string_view rest = apparentWord( line, next );
      checkSeen( line, next, next + rest.size() );
      throw StatementError(
         inQuotes( line.substr( at, next + rest.size() - at ) ) +
         " goes on after its closing quote; wanted: quotes around the whole word" );
   }
   return line.substr( at + 1, close - at - 1 );
}

std::string_view plainWord( std::string_view line, std::size_t at ) {
   const std::size_t end = std::min( line.find_first_of( endOfPlainWord, at ), line.size() );
   checkSeen( line, at, end );
   if ( end < line.size() && line[ end ] == '"' ) {
      throw StatementError( inQuotes( apparentWord( line, at ) ) +
                            " has a quote in its middle; wanted: quotes around the whole word" );
   }
   const std::string_view word = line.substr( at, end - at );
   if ( std::ranges::any_of( word, isControl ) ) {
      throw StatementError( inQuotes( word ) +
                            " has a control character; wanted: text, or the word in quotes" );
   }
   return word;
}

} // namespace

void splitWords( std::string_view line, std::vector< Word > & words ) {
   words.clear();
   checkCharacters( line );
   std::size_t at = line.find_first_not_of( blanks );
   while ( at < line.size() && line[ at ] != '#' ) {
      const bool isQuoted = line[ at ] == '"';
      const std::string_view text = isQuoted ? quotedWord( line, at ) : plainWord( line, at );
      words.push_back( { text, isQuoted } );
      at = line.find_first_not_of( blanks, at + text.size() + ( isQuoted ? 2 : 0 ) );
   }
}

void appendWords( std::string & out, std::span< const Word > words ) {
   const std::size_t begin = out.size();
   for ( const Word & word : words ) {
      if ( out.size() > begin ) {
         out += ' ';
      }
      if ( word.quoted ) {
         out += '"';
      }
      out += word.text;
      if ( word.quoted ) {
         out += '"';
      }
   }
}

} // namespace Replay
