#include "replay/trace/Filter.h"

#include "platform/Jotter/RecordEncoding.h"
#include "replay/Numbers.h"
#include "replay/RingText.h"

#include <algorithm>
#include <string_view>

namespace TraceTool {

namespace {

constexpr unsigned maskBits = 32;

bool levelMatches( std::uint32_t levels, unsigned level ) noexcept {
   return level < maskBits && ( levels >> level & 1U ) != 0;
}

// A record holds the front of a name that is too long for it.
bool isArgument( std::string_view argument, const std::string & name ) {
   const std::size_t kept = Jotter::keptLength( name );
   return kept == name.size() ? argument == name : argument == name.substr( 0, kept ) + "…";
}

bool timeMatches( const Filter & filter, Vex::Seconds time ) noexcept {
   const Vex::Seconds shown( Replay::roundedToMicroseconds( time ) );
   return ( !filter.since || shown >= *filter.since ) &&
          ( !filter.until || shown <= *filter.until );
}

} // namespace

bool namesIntf( const Jotter::Record & record, const std::string & intf ) {
   std::size_t next = 0;
   for ( const Jotter::Piece & piece : record.descriptor->pieces ) {
      if ( piece.kind == Jotter::PieceKind::literal ) {
         continue;
      }
      const Vex::String & argument = record.arguments.at( next++ );
      if ( piece.kind == Jotter::PieceKind::text && isArgument( argument, intf ) ) {
         return true;
      }
   }
   return false;
}

bool matches( const Filter & filter, const Jotter::Record & record ) {
   const bool known = Replay::callSiteKnown( record );
   const Jotter::Descriptor & site = *record.descriptor;
   return timeMatches( filter, record.time ) &&
          ( !filter.levels || ( known && levelMatches( *filter.levels, site.level ) ) ) &&
          ( filter.functions.empty() ||
            ( known &&
              std::ranges::find( filter.functions, site.function ) != filter.functions.end() ) ) &&
          ( filter.intfs.empty() ||
            std::ranges::any_of( filter.intfs, [ &record ]( const std::string & intf ) {
               return namesIntf( record, intf );
            } ) );
}

} // namespace TraceTool
