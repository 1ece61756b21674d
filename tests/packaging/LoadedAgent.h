#pragma once

// What the module LoadedAgent.cpp gives to whoever loads it: an agent of a few lines, once for each
// copy of the libraries that it is loaded with. Nothing but plain C crosses, because the types of
// one copy mean nothing to another.

#include <cstdint>

struct LoadedAgent {
   /// The handle of this interface name.
   std::uint64_t ( *intern )( const char * name );
   /// The name behind a handle.
   const char * ( *nameOf )( std::uint64_t handle );
   /// Runs an interlock through one member's life; the verdicts, as "+-".
   const char * ( *play )();
   /// How many records the default trace file has seen.
   std::uint64_t ( *recorded )();
   /// Lets them go into a file; why not, or an empty text.
   const char * ( *recordInto )( const char * path );
   /// The level mask of a trace handle.
   std::uint32_t ( *levelMask )( const char * handle );
   /// Chooses the thread-safe pointer mode; to be said before anything is played.
   void ( *becomeThreadSafe )();
   bool ( *isThreadSafe )();
};

/// The one symbol of the module.
inline constexpr const char * loadedAgentSymbol = "loadedAgent";
using LoadedAgentFunction = const LoadedAgent * (*)();
