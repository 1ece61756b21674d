#include "replay/Progress.h"

#include "replay/Terminal.h"
#include "replay/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace Replay {

namespace {

constexpr Vex::Seconds patience{ 2 }; // of who waits without a word
constexpr Vex::Seconds pace{ 0.1 }; // from one line to the next

void write( int terminal, std::string_view text ) noexcept {
   // Nothing depends on it.
   [[maybe_unused]] const ssize_t written = ::write( terminal, text.data(), text.size() );
}

std::string_view firstColumns( std::string_view text, std::size_t count ) noexcept {
   std::size_t end = 0;
   for ( ; end < text.size() && count > 0; --count ) {
      end += firstCharacter( text.substr( end ) ).length;
   }
   return text.substr( 0, end );
}

} // namespace

ProgressLine::ProgressLine( int terminal, RealTime realTime )
    : terminal_( terminal ), realTime_( std::move( realTime ) ), due_( realTime_() + patience ) {}

bool ProgressLine::isDue() {
   const Vex::Seconds now = realTime_();
   if ( now <= due_ ) {
      return false;
   }
   due_ = now + pace;
   return true;
}

void ProgressLine::show( std::string_view text ) {
   const std::size_t room = columnsOf( terminal_ ) - 1; // a full line may go on in the next one
   std::string line = "\r";
   line += firstColumns( text, room );
   line += "\x1b[K";
   write( terminal_, line );
   shown_ = true;
}

void ProgressLine::wipe() noexcept {
   if ( shown_ ) {
      write( terminal_, "\r\x1b[K" );
      shown_ = false;
   }
}

Progress::Progress( ProgressLine & line, std::string_view scenario, std::size_t statements )
    : line_( line ), all_( statements ) {
   appendPrintable( scenario_, scenario );
}

void Progress::statementsDone( std::size_t count ) {
   done_ = count;
   goesOn();
}

void Progress::goesOn() {
   if ( !line_.isDue() ) {
      return;
   }
   std::array< char, 400 > time{};
   std::snprintf( time.data(), time.size(), "%.3f", Vex::now().value() );
   line_.show( std::to_string( done_ ) + " of " + std::to_string( all_ ) + " statements, at " +
               time.data() + " s: " + scenario_ );
}

void WatchedHostClock::advanceTo( Kel::TaskScheduler & scheduler, Vex::Seconds target ) {
   for ( auto due = scheduler.nextDue(); due && *due <= target; due = scheduler.nextDue() ) {
      goTo( scheduler, *due );
   }
   goTo( scheduler, target );
}

// Nothing is due before.
void WatchedHostClock::goTo( Kel::TaskScheduler & scheduler, Vex::Seconds moment ) {
   while ( clock().now() + step_ < moment ) {
      clock_.advanceTo( scheduler, clock().now() + step_ );
      progress_.goesOn();
   }
   clock_.advanceTo( scheduler, std::max( clock().now(), moment ) ); // a past deadline runs now
   progress_.goesOn();
}

} // namespace Replay
