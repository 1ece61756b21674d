#include "replay/Interlocks.h"

#include "Velo/VeloIntfInterlock.h"
#include "replay/Entities.h"
#include "replay/ScenarioError.h"

#include <string>

namespace Replay {

namespace {

using StateMachine = Vex::Ptr< InterlockModel::StateMachine >;

StateMachine basic( const Entities & e ) {
   return Velo::mlagEgressAclIntfInterlockSmFactory( e.aclInput, e.hwLagConfig, e.mlagStatus,
                                                     e.egressAclOutput );
}

StateMachine controller( const Entities & e ) {
   return Velo::mlagEgressAclIntfInterlockControllerSmFactory(
      e.aclInput, e.hwLagConfig, e.mlagStatus, e.aclResponseFromPeer, e.aclRequestToPeer,
      e.scheduler, e.egressAclOutput );
}

StateMachine deprecated( const Entities & e ) {
   return Velo::deprecatedMlagEgressAclIntfInterlockSmFactory( e.aclInput, e.hwLagConfig,
                                                               e.mlagStatus, e.egressAclOutput );
}

StateMachine vlanXlate( const Entities & e ) {
   return Velo::vlanXlateIntfInterlockSmFactory( e.vlanInput, e.hwLagConfig, e.bridgingConfig,
                                                 e.vlanOutput );
}

constexpr std::array table{
   Machine{ "controller", Interlock::egressAcl, controller },
   Machine{ "basic", Interlock::egressAcl, basic },
   Machine{ "deprecated", Interlock::egressAcl, deprecated },
   Machine{ "vlan-xlate", Interlock::vlanXlate, vlanXlate },
};

// The words of `start` that belong to this interlock.
std::string machineNames( Interlock interlock ) {
   std::string names;
   for ( const Machine & machine : table ) {
      if ( machine.interlock == interlock ) {
         names += names.empty() ? "" : "|";
         names += machine.name;
      }
   }
   return names;
}

} // namespace

std::string_view nameOf( Interlock interlock ) noexcept {
   switch ( interlock ) {
   case Interlock::egressAcl:
      return "egress-acl";
   case Interlock::vlanXlate:
      return "vlan-xlate";
   }
   return {};
}

std::span< const Machine > machines() noexcept {
   return table;
}

void Interlocks::start( const Machine & machine, const Entities & entities ) {
   const std::string interlock( nameOf( machine.interlock ) );
   auto & running = running_[ static_cast< std::size_t >( machine.interlock ) ];
   if ( running ) {
      throw StatementError( "'" + std::string( machine.name ) + "' cannot start: the " + interlock +
                            " interlock runs already; wanted: 'stop " + interlock + "' before" );
   }
   running = machine.factory( entities );
   started_[ static_cast< std::size_t >( machine.interlock ) ] = &machine;
}

void Interlocks::stop( Interlock interlock ) {
   auto & running = running_[ static_cast< std::size_t >( interlock ) ];
   if ( !running ) {
      throw StatementError( "'" + std::string( nameOf( interlock ) ) +
                            "' does not run; wanted: 'start " + machineNames( interlock ) +
                            "' before" );
   }
   running.release();
}

void Interlocks::restart( Interlock interlock, const Entities & entities ) {
   stop( interlock );
   start( *started_[ static_cast< std::size_t >( interlock ) ], entities );
}

} // namespace Replay
