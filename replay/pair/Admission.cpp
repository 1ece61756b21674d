#include "replay/pair/Admission.h"

#include "interlock-model/Hardware/Lag/InitialMember.h"

#include <array>

namespace Replay::Peering {

bool hasEveryAcl( const Interface::Interlock::IntfFeatureStatus & acl,
                  const Hardware::Lag::Config & config,
                  Nodo::IntfId lag ) {
   const auto members = config.initialMember( lag );
   if ( !members ) {
      return true;
   }
   bool every = true;
   for ( const Nodo::IntfId member : members->member().keys() ) {
      every = every && acl.intfHas( { member, lag } );
   }
   return every;
}

std::optional< OpenCause > openCause( const Standing & standing ) noexcept {
   if ( !standing.admitted || standing.aclsInPlace() ) {
      return std::nullopt;
   }
   if ( !standing.agentRuns ) {
      return OpenCause::agentDown;
   }
   if ( !standing.decided ) {
      return OpenCause::notDecided;
   }
   if ( standing.peerMode && standing.failed ) {
      return *standing.failed == FailCause::timeOut ? OpenCause::timeOut
                                                    : OpenCause::answerWithdrawn;
   }
   if ( !standing.ownAcl ) {
      return OpenCause::notNeeded;
   }
   return standing.peerMode ? OpenCause::newsUnderWay : OpenCause::basicMode;
}

std::optional< HeldCause > heldCause( const Standing & standing ) noexcept {
   if ( standing.admitted || !standing.aclsInPlace() ) {
      return std::nullopt;
   }
   if ( !standing.agentRuns ) {
      return HeldCause::agentDown;
   }
   return standing.decided ? HeldCause::asking : HeldCause::notDecided;
}

std::string_view nameOf( OpenCause cause ) noexcept {
   static constexpr std::array< std::string_view, openCauses > names{
      "time-out",
      "answer withdrawn",
      "local ACL not needed",
      "basic mode asks no peer",
      "withdrawal under way or lost",
      "agent down",
      "not looked at since",
   };
   return names[ static_cast< std::size_t >( cause ) ];
}

std::string_view nameOf( HeldCause cause ) noexcept {
   static constexpr std::array< std::string_view, heldCauses > names{
      "answer under way",
      "agent down",
      "not looked at since",
   };
   return names[ static_cast< std::size_t >( cause ) ];
}

} // namespace Replay::Peering
