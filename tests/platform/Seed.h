#pragma once

// The seeds of random tests: fixed, so that a run can be repeated, unless INTERLOCK_SEED names
// another one. A failing test prints the seed that plays it again:
//
//    std::mt19937_64 random( seed( 1 ) );
//    SCOPED_TRACE( seedNote( 1 ) );

#include <cstdint>
#include <cstdlib>
#include <string>

inline std::uint64_t seed( std::uint64_t usual ) {
   const char * const wanted = std::getenv( "INTERLOCK_SEED" );
   return wanted != nullptr ? std::strtoull( wanted, nullptr, 10 ) : usual;
}

inline std::string seedNote( std::uint64_t usual ) {
   return "play it again with INTERLOCK_SEED=" + std::to_string( seed( usual ) );
}
