#include "tests/simulation/Inspection.h"

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockControllerSm.h"
#include "platform/Vex/Assert.h"
#include "tests/simulation/Names.h"

namespace Simulation {

namespace {

Link linkOf( Velo::LinkState state ) {
   switch ( state ) {
   case Velo::LinkState::linkDown:
      return Link::down;
   case Velo::LinkState::linkRequesting:
      return Link::asking;
   case Velo::LinkState::linkUp:
      return Link::up;
   case Velo::LinkState::linkFail:
      return Link::failed;
   }
   return Link::down;
}

} // namespace

Observed inspect( const Replay::Entities & entities,
                  const Vex::Ptr< InterlockModel::StateMachine > & controller ) {
   Observed seen;
   for ( const auto pair : entities.egressAclOutput->intf().keys() ) {
      seen.admitted.insert( numbersOf( pair ) );
   }
   for ( const auto request : entities.aclRequestToPeer->installRequest().entries() ) {
      seen.requests[ lagNo( request.key ) ] = request.value;
   }
   if ( !controller ) {
      return seen;
   }
   const auto sm = Vex::ptrCast< Velo::MlagEgressAclIntfInterlockControllerSm >( controller );
   VEX_ASSERT( sm );
   seen.basicRuns = static_cast< bool >( sm->basicInterlockSm() );
   seen.peerRuns = static_cast< bool >( sm->peerInterlockSm() );
   if ( !seen.peerRuns ) {
      return seen;
   }
   const auto & peer = sm->peerInterlockSm();
   for ( const auto entry : peer->linkState().entries() ) {
      seen.links[ lagNo( entry.key ) ] = linkOf( entry.value );
   }
   for ( const auto entry : peer->timer().entries() ) {
      seen.deadlines[ lagNo( entry.key ) ] = entry.value.value();
   }
   if ( peer->activeLag() != Nodo::IntfId() ) {
      seen.armedFor = lagNo( peer->activeLag() );
   }
   seen.armedDue = peer->task()->due().value();
   return seen;
}

} // namespace Simulation
