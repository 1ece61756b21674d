#include "tests/packaging/LoadedAgent.h"

#include "Velo/VeloIntfInterlock.h"
#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/FlightRecorder.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Nodo/InternedName.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Trace.h"

#include <string>

namespace {

using Interface::Interlock::IntfFeature;
using Interface::Interlock::IntfFeatureStatus;
using Nodo::IntfId;

class Verdicts final : public Vex::ConstNotifiee< IntfFeatureStatus > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Verdicts" };
      return type;
   }
   void onAttribute( Attribute /* intf */, const IntfFeature & feature ) override {
      text += notifier()->intfHas( feature ) ? '+' : '-';
   }

   std::string text;
};

// MLAG is primary, so that the member is held until its ACL is there.
const char * play() {
   static std::string played;
   const IntfId lag( "PortChannel10" );
   const IntfId port( "Ethernet1" );
   const auto acl = Vex::make< IntfFeatureStatus >();
   const auto config = Vex::make< Hardware::Lag::Config >();
   const auto members = Vex::make< Hardware::Lag::InitialMember >( lag );
   config->initialMemberIs( members );
   const auto peerLink = Vex::make< Interface::EthIntfStatus >( IntfId( "Port-Channel1000" ) );
   peerLink->linkStatusIs( Interface::LinkStatus::up );
   const auto mlag = Vex::make< Mlag::Status >();
   mlag->peerLinkIs( peerLink );
   mlag->mlagStateIs( Mlag::State::primary );
   mlag->intfStatusIs( lag, { "", Mlag::IntfState::active, Mlag::IntfState::active } );
   const auto output = Vex::make< IntfFeatureStatus >();
   const auto verdicts = Vex::make< Verdicts >();
   verdicts->notifierIs( output );

   const auto interlock = Velo::mlagEgressAclIntfInterlockSmFactory( acl, config, mlag, output );
   members->memberIs( port, Hardware::Lag::PortProgType() );
   acl->intfIs( { port, lag } );
   acl->intfDel( { port, lag } );
   played = verdicts->text;
   return played.c_str();
}

const char * recordInto( const char * path ) {
   static std::string reason;
   reason = Jotter::defaultTraceFileInto( path, Jotter::TraceFile::fewestBytes );
   return reason.c_str();
}

constexpr LoadedAgent agent{
   .intern = []( const char * name ) { return IntfId( name ).value(); },
   .nameOf = []( std::uint64_t handle ) { return Nodo::internedName( handle ).text.c_str(); },
   .play = play,
   .recorded = [] { return Jotter::defaultTraceFile()->written(); },
   .recordInto = recordInto,
   .levelMask = []( const char * handle ) { return Vex::traceHandle( handle ).levelMask(); },
   .becomeThreadSafe = [] { Vex::pointerModeIs( Vex::PointerMode::threadSafe ); },
   .isThreadSafe = [] { return Vex::pointerMode() == Vex::PointerMode::threadSafe; } };

} // namespace

extern "C" VEX_EXPORT const LoadedAgent * loadedAgent() {
   return &agent;
}
