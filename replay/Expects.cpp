#include "replay/Expects.h"

#include <string>

namespace Replay {

namespace {

// The verdict, with its explanation where it is needed.
template < class Explain >
Finding finding( bool ok, Explain explain ) {
   return { ok, ok ? std::string() : explain() };
}

std::string text( const Pair & pair ) {
   return pair.member.stringValue() + " -> " + pair.lag.stringValue();
}

std::string whyHeld( const Pair & pair, const Switch & device ) {
   std::string why;
   if ( !device.isMember( pair ) ) {
      why = pair.member.stringValue() + " is no member of " + pair.lag.stringValue();
   }
   for ( const Interlock interlock : interlocks ) {
      if ( device.isHeldBy( interlock, pair ) ) {
         why += why.empty() ? "" : ", and ";
         why += "the " + std::string( nameOf( interlock ) ) + " interlock holds it";
      }
   }
   return why;
}

} // namespace

Finding find( const ExpectOutput & expect, const Switch & device ) {
   const bool present = device.entities().output( expect.interlock )->intfHas( expect.pair );
   return finding( present == expect.present, [ & ] {
      return text( expect.pair ) + " is " + ( present ? "" : "not " ) + "in the output";
   } );
}

Finding find( const ExpectJoined & expect, const Switch & device ) {
   const bool joined = device.isJoined( expect.pair );
   return finding( joined == expect.joined, [ & ] {
      return joined ? text( expect.pair ) + " is joined" : whyHeld( expect.pair, device );
   } );
}

Finding find( const ExpectRequest & expect, const Switch & device ) {
   const Token * const found =
      device.entities().aclRequestToPeer->installRequest().find( expect.lag );
   const bool ok = expect.token ? found != nullptr && *found == *expect.token : found == nullptr;
   return finding( ok, [ & ] {
      return found != nullptr ? "token " + std::to_string( *found ) : std::string( "no request" );
   } );
}

Finding find( const ExpectTrace & expect, const TraceCapture & traces ) {
   const bool present = traces.contains( expect.text );
   return finding( present == expect.present, [ & ] {
      return present ? std::string( "such a message" )
                     : "no such message among " + std::to_string( traces.kept() );
   } );
}

} // namespace Replay
