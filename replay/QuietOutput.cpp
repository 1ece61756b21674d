#include "replay/QuietOutput.h"

namespace Replay {

void QuietOutput::begin( std::string_view file ) {
   file_ = file;
   begun_ = false;
}

void QuietOutput::statement( std::size_t /* line */, std::string_view text ) {
   statement_ = text;
}

void QuietOutput::expectation( std::size_t line, const Finding & finding ) {
   if ( finding.ok ) {
      return;
   }
   if ( !begun_ ) {
      shown_.begin( file_ );
      begun_ = true;
   }
   shown_.statement( line, statement_ );
   shown_.expectation( line, finding );
}

} // namespace Replay
