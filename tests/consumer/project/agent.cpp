// An agent as a user of the library writes it: one header, two libraries, nothing of the insides.

#include "Velo/VeloIntfInterlock.h"
#include "platform/Vex/NullArgumentError.h"

#include <iostream>

namespace {

using Interface::Interlock::IntfFeature;
using Interface::Interlock::IntfFeatureStatus;
using Nodo::IntfId;

class Consumer final : public Vex::ConstNotifiee< IntfFeatureStatus > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Consumer" };
      return type;
   }
   void onAttribute( Attribute /* intf */, const IntfFeature & feature ) override {
      std::cout << ( notifier()->intfHas( feature ) ? "admit " : "hold " ) << feature << '\n';
   }
};

} // namespace

int main() {
   const IntfId lag( "PortChannel10" );
   const IntfId port( "Ethernet1" );

   const auto aclStatus = Vex::make< IntfFeatureStatus >();
   const auto lagConfig = Vex::make< Hardware::Lag::Config >();
   const auto members = Vex::make< Hardware::Lag::InitialMember >( lag );
   members->memberIs( port, Hardware::Lag::PortProgType() );
   lagConfig->initialMemberIs( members );

   const auto peerLink = Vex::make< Interface::EthIntfStatus >( IntfId( "Port-Channel1000" ) );
   peerLink->linkStatusIs( Interface::LinkStatus::up );
   const auto mlagStatus = Vex::make< Mlag::Status >();
   mlagStatus->peerLinkIs( peerLink );
   mlagStatus->intfStatusIs( lag, { "", Mlag::IntfState::active, Mlag::IntfState::active } );

   const auto output = Vex::make< IntfFeatureStatus >();
   const auto consumer = Vex::make< Consumer >();
   consumer->notifierIs( output );

   std::cout << "start\n";
   auto interlock =
      Velo::mlagEgressAclIntfInterlockSmFactory( aclStatus, lagConfig, mlagStatus, output );
   std::cout << "MLAG becomes primary\n";
   mlagStatus->mlagStateIs( Mlag::State::primary );
   std::cout << "the ACL is installed\n";
   aclStatus->intfIs( { port, lag } );
   std::cout << "the port leaves\n";
   members->memberDel( port );
   std::cout << "stop\n";
   interlock.release();
   members->memberIs( port, Hardware::Lag::PortProgType() );
   std::cout << "watched by " << members->notifiees() << '\n';

   try { // the library throws, the agent catches
      lagConfig->initialMemberIs( nullptr );
   } catch ( const Vex::NullArgumentError & error ) {
      std::cout << error.what() << '\n';
   }

   const auto ofItsOwn = [] { return Vex::make< IntfFeatureStatus >(); };
   const Vex::Ptr< InterlockModel::StateMachine > all[] = {
      Velo::mlagEgressAclIntfInterlockControllerSmFactory(
         aclStatus, lagConfig, mlagStatus, Vex::make< Mlag::AclInstallResponse >(),
         Vex::make< Mlag::AclInstallRequest >(), Vex::make< Kel::TaskScheduler >(), ofItsOwn() ),
      Velo::mlagEgressAclIntfInterlockSmFactory( aclStatus, lagConfig, mlagStatus, ofItsOwn() ),
      Velo::deprecatedMlagEgressAclIntfInterlockSmFactory( aclStatus, lagConfig, mlagStatus,
                                                           ofItsOwn() ),
      Velo::vlanXlateIntfInterlockSmFactory( aclStatus, lagConfig, Vex::make< Bridging::Config >(),
                                             ofItsOwn() ) };
   for ( const auto & each : all ) {
      std::cout << each->fwkType().name << '\n';
   }
}
