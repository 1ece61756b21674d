#pragma once

// What a program shows, line by line.

#include <algorithm>
#include <string_view>

namespace TestSupport {

/// Takes the first line off a text that is not empty; with its end, if it has one.
inline std::string_view takeLine( std::string_view & text ) {
   const std::string_view line =
      text.substr( 0, std::min( text.find( '\n' ), text.size() - 1 ) + 1 );
   text.remove_prefix( line.size() );
   return line;
}

/// Each line of `some` is one of `all`, in the same order: nothing else, and nothing halved.
inline bool areLinesOf( std::string_view some, std::string_view all ) {
   while ( !some.empty() ) {
      const std::string_view wanted = takeLine( some );
      do {
         if ( all.empty() ) {
            return false;
         }
      } while ( takeLine( all ) != wanted );
   }
   return true;
}

} // namespace TestSupport
