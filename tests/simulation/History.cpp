#include "tests/simulation/History.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace Simulation {

using Replay::Peering::Side;

namespace {

std::string decimal( double seconds ) {
   std::array< char, 64 > text{};
   const auto end =
      std::to_chars( text.data(), text.data() + text.size(), seconds, std::chars_format::fixed );
   return { text.data(), end.ptr };
}

} // namespace

void History::add( double time, Side side, std::string statement ) {
   enter( { time, side, true, std::move( statement ) } );
}

void History::note( double time, Side side, std::string_view what ) {
   enter( { time, side, false, std::string( what ) } );
}

void History::enter( Entry entry ) {
   const std::string line =
      decimal( entry.time ) + std::string( nameOf( entry.side ) ) + entry.text;
   for ( const char c : line ) {
      digest_ = ( digest_ ^ static_cast< unsigned char >( c ) ) * 0x100000001B3ULL;
   }
   entries_.push_back( std::move( entry ) );
}

std::string History::last( std::size_t count ) const {
   std::string text;
   for ( std::size_t at = entries_.size() - std::min( count, entries_.size() );
         at < entries_.size(); ++at ) {
      const Entry & entry = entries_[ at ];
      text += "   " + decimal( entry.time ) + " " + std::string( nameOf( entry.side ) ) + ": " +
              entry.text + "\n";
   }
   return text;
}

std::string History::scenario() const {
   std::string text = "wire off\n";
   double time = 0;
   Side side = Side::left;
   bool first = true;
   for ( const Entry & entry : entries_ ) {
      if ( entry.time > time ) {
         time = entry.time;
         text += "at " + decimal( time ) + "\n";
      }
      if ( !entry.statement ) {
         text += "# " + std::string( nameOf( entry.side ) ) + ": " + entry.text + "\n";
         continue;
      }
      if ( std::exchange( first, false ) || entry.side != side ) {
         side = entry.side;
         text += "switch " + std::string( nameOf( side ) ) + "\n";
      }
      text += entry.text + "\n";
   }
   return text;
}

} // namespace Simulation
