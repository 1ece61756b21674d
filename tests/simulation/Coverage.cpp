#include "tests/simulation/Coverage.h"

#include <algorithm>
#include <cstdio>

namespace Simulation {

namespace {

bool canHappen( Link link, LinkHappening happening ) noexcept {
   return happening != LinkHappening::timeOut || link == Link::asking;
}

std::string line( std::string_view name, std::uint64_t count ) {
   std::array< char, 96 > text{};
   std::snprintf( text.data(), text.size(), "   %-34.*s %12llu%s\n",
                  static_cast< int >( name.size() ), name.data(),
                  static_cast< unsigned long long >( count ), count == 0 ? "   NEVER" : "" );
   return text.data();
}

} // namespace

std::string_view nameOf( Fault fault ) noexcept {
   switch ( fault ) {
   case Fault::messageLost:
      return "message lost";
   case Fault::messageRepeated:
      return "message repeated";
   case Fault::messageHeldUp:
      return "message held up";
   case Fault::messageOvertaken:
      return "message overtaken";
   case Fault::messageBeyondTimeOut:
      return "message later than the time-out";
   case Fault::answerToRevokedRequest:
      return "answer to a revoked request";
   case Fault::answerFromEarlierLife:
      return "answer from an earlier life";
   case Fault::answerTakenBack:
      return "answer taken back";
   case Fault::aclHeardInsideAnswer:
      return "ACL changed inside an answer";
   case Fault::agentKilled:
      return "agent killed";
   case Fault::agentStarted:
      return "agent started again";
   case Fault::portIn:
      return "port joins";
   case Fault::portOut:
      return "port leaves";
   case Fault::lagWithdrawn:
      return "LAG withdrawn";
   case Fault::lagEmptyThenFilled:
      return "LAG put empty";
   case Fault::lagPutWithMembers:
      return "LAG put with members";
   case Fault::lagReplaced:
      return "LAG replaced";
   case Fault::aclInstalled:
      return "ACL installed";
   case Fault::aclLost:
      return "ACL lost";
   case Fault::peerLinkDown:
      return "peer link down";
   case Fault::peerLinkReplaced:
      return "peer link replaced";
   case Fault::peerLinkGone:
      return "peer link gone";
   case Fault::mlagStateInactive:
      return "MLAG inactive";
   case Fault::mlagIntfGone:
      return "LAG no MLAG interface any more";
   case Fault::mlagIntfPeerInactive:
      return "LAG inactive on the peer";
   case Fault::modeToPeer:
      return "mode to peer interlock";
   case Fault::modeToBasic:
      return "mode to basic interlock";
   case Fault::modeFlipWhileAsking:
      return "mode flips while requests are out";
   case Fault::counterNearItsEnd:
      return "counter near 2^32";
   case Fault::tokenZero:
      return "request with token 0";
   case Fault::tokenUsedAgain:
      return "token of a revoked request again";
   case Fault::oldAnswerFitsNewRequest:
      return "old answer fits a new request";
   }
   return {};
}

std::string_view nameOf( LinkHappening happening ) noexcept {
   switch ( happening ) {
   case LinkHappening::inactive:
      return "inactive";
   case LinkHappening::matched:
      return "matched";
   case LinkHappening::notMatched:
      return "not matched";
   case LinkHappening::timeOut:
      return "time-out";
   case LinkHappening::answerLost:
      return "answer lost";
   }
   return {};
}

std::string_view nameOf( Link link ) noexcept {
   switch ( link ) {
   case Link::down:
      return "linkDown";
   case Link::asking:
      return "linkRequesting";
   case Link::up:
      return "linkUp";
   case Link::failed:
      return "linkFail";
   }
   return {};
}

std::string Coverage::report() const {
   std::string text = "faults\n";
   for ( std::size_t at = 0; at < faultKinds; ++at ) {
      text += line( nameOf( static_cast< Fault >( at ) ), faults_[ at ] );
   }
   text += "link state, event\n";
   for ( std::size_t link = 0; link < linkKinds; ++link ) {
      for ( std::size_t at = 0; at < linkHappenings; ++at ) {
         const auto from = static_cast< Link >( link );
         const auto happening = static_cast< LinkHappening >( at );
         const std::string name =
            std::string( nameOf( from ) ) + ", " + std::string( nameOf( happening ) );
         text += canHappen( from, happening ) ? line( name, pairs_[ link ][ at ] )
                                              : "   " + name + ": must not happen, and did not\n";
      }
   }
   return text;
}

bool Coverage::complete() const noexcept {
   bool complete = std::ranges::find( faults_, 0U ) == faults_.end();
   for ( std::size_t link = 0; link < linkKinds; ++link ) {
      for ( std::size_t at = 0; at < linkHappenings; ++at ) {
         complete = complete && ( pairs_[ link ][ at ] > 0 ||
                                  !canHappen( static_cast< Link >( link ),
                                              static_cast< LinkHappening >( at ) ) );
      }
   }
   return complete;
}

} // namespace Simulation
