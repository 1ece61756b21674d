#pragma once

// The memory of this process under the eyes of a test: how often it was asked for, and that it runs
// out when the test wants it to.

#include <cstdint>

namespace Memory {

/// How often memory has been asked for since the process began.
std::uint64_t requests() noexcept;

/// How many pieces of memory are held now.
std::uint64_t held() noexcept;

/// The next `granted` requests succeed and all later ones fail, for as long as this lives.
class RunsOut {
 public:
   explicit RunsOut( std::uint64_t granted ) noexcept;
   RunsOut( const RunsOut & ) = delete;
   RunsOut & operator=( const RunsOut & ) = delete;
   RunsOut( RunsOut && ) = delete;
   RunsOut & operator=( RunsOut && ) = delete;
   ~RunsOut();
};

/// Calls `action` with memory that runs out after 0, 1, 2, ... requests, until it gets through;
/// `check` looks at what each failed attempt has left behind. Returns how many failed.
template < class Failure, class Action, class Check >
int attemptsUntilSuccess( Action action, Check check ) {
   for ( std::uint64_t granted = 0;; ++granted ) {
      try {
         const RunsOut memory( granted );
         action();
         return static_cast< int >( granted );
      } catch ( const Failure & ) {
         check();
      }
   }
}

} // namespace Memory
