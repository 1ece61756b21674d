#pragma once

// How far a long run is, on one line of a terminal that is overwritten in place, and wiped before
// anything else is written there. What takes no longer than two seconds shows none.

#include "platform/Vex/Seconds.h"
#include "replay/HostClock.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace Replay {

/// The line. Real time comes from its owner; it begins to count when this is made.
class ProgressLine {
 public:
   using RealTime = std::function< Vex::Seconds() >;

   ProgressLine( int terminal, RealTime realTime );
   ProgressLine( const ProgressLine & ) = delete;
   ProgressLine & operator=( const ProgressLine & ) = delete;
   ProgressLine( ProgressLine && ) = delete;
   ProgressLine & operator=( ProgressLine && ) = delete;
   ~ProgressLine() { wipe(); }

   /// True now and then, once the first seconds are over: show() is to be called.
   bool isDue();
   /// As much of it as the line holds.
   void show( std::string_view text );
   void wipe() noexcept;

 private:
   int terminal_;
   RealTime realTime_;
   Vex::Seconds due_;
   bool shown_ = false;
};

/// Of one scenario. Borrows the line, which is wiped when this goes.
class Progress {
 public:
   Progress( ProgressLine & line, std::string_view scenario, std::size_t statements );
   Progress( const Progress & ) = delete;
   Progress & operator=( const Progress & ) = delete;
   Progress( Progress && ) = delete;
   Progress & operator=( Progress && ) = delete;
   ~Progress() { line_.wipe(); }

   /// So many statements are done.
   void statementsDone( std::size_t count );
   /// Something has happened, or has been waited for; read on the framework's clock.
   void goesOn();

 private:
   ProgressLine & line_;
   std::string scenario_;
   std::size_t done_ = 0;
   std::size_t all_;
};

/// A clock that tells how it goes on. Borrows both.
class WatchedHostClock final : public HostClock {
 public:
   /// `step`: the longest time without a word.
   WatchedHostClock( HostClock & clock, Progress & progress, Vex::Seconds step ) noexcept
       : clock_( clock ), progress_( progress ), step_( step ) {}

   const Vex::Clock & clock() const noexcept override { return clock_.clock(); }
   void advanceTo( Kel::TaskScheduler & scheduler, Vex::Seconds target ) override;

 private:
   void goTo( Kel::TaskScheduler & scheduler, Vex::Seconds moment );

   HostClock & clock_;
   Progress & progress_;
   Vex::Seconds step_;
};

} // namespace Replay
