#include "replay/TraceCapture.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Replay {

namespace {

constexpr std::array< std::string_view, 2 > handles{ "VeloMlagEgressAclIntfInterlockSm",
                                                     "VeloVlanXlateIntfInterlockSm" };

} // namespace

TraceCapture::TraceCapture( Output & output, std::uint32_t shownLevels, Keep keep )
    : output_( output ), shownLevels_( shownLevels ), keep_( keep ), scope_( *this ) {
   for ( const std::string_view name : handles ) {
      Vex::TraceHandle & handle = Vex::traceHandle( name );
      masks_.push_back( { handle, handle.levelMask() } );
   }
   const std::uint32_t mask =
      keep == Keep::messages ? std::numeric_limits< std::uint32_t >::max() : shownLevels;
   for ( const Mask & changed : masks_ ) { // what is thrown before leaves the masks as they were
      changed.handle.levelMaskIs( mask );
   }
}

TraceCapture::~TraceCapture() {
   for ( const Mask & mask : masks_ ) {
      mask.handle.levelMaskIs( mask.before );
   }
}

void TraceCapture::write( const Vex::TraceRecord & record ) {
   if ( ( shownLevels_ >> record.level & 1U ) != 0 ) {
      output_.trace( record );
   }
   if ( keep_ == Keep::messages ) {
      messages_.emplace_back( record.message );
   }
}

bool TraceCapture::contains( std::string_view text ) const noexcept {
   return std::ranges::any_of( messages_, [ text ]( const std::string & message ) {
      return message.find( text ) != std::string::npos;
   } );
}

} // namespace Replay
