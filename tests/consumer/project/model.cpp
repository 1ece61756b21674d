// A program that shares the entities with an agent and runs no interlock.

#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"

#include <iostream>

int main() {
   const auto status = Vex::make< Interface::Interlock::IntfFeatureStatus >();
   status->intfIs( { Nodo::IntfId( "Ethernet1" ), Nodo::IntfId( "PortChannel10" ) } );
   for ( const auto & feature : status->intf().keys() ) {
      std::cout << feature << '\n';
   }
}
