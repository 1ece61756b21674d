#pragma once

// All interlocks on one set of entities, each with its own output, and beside each its model. Bytes
// decide what happens; after each event every interlock is to be as its model says.

#include "Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedMlagEgressAclIntfInterlockSm.h"
#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfInterlockSm.h"
#include "Velo/VeloVlanXlateIntfInterlockSm/VlanXlateIntfInterlockSm.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/BasicModel.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/DeprecatedModel.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerRun.h"
#include "tests/Velo/VeloVlanXlateIntfInterlockSm/VlanXlateModel.h"
#include "tests/fuzz/FuzzTarget.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Fuzz {

class EventRun : private Velo::PeerRun {
 public:
   EventRun();

   /// Starts interlocks: a bit for each, and one for the controller's mode.
   void begin( std::uint8_t running );
   /// Makes one event, and says what it was.
   std::string event( Bytes & bytes );
   /// What differs from the models; empty when all is well.
   std::string difference() const;

 private:
   using IntfFeatureStatus = Interface::Interlock::IntfFeatureStatus;
   using Output = Vex::Ptr< IntfFeatureStatus >;
   using Pair = std::pair< std::string, std::string >; // member, LAG
   using Id = std::size_t; // of a set of members, a link or a switching configuration
   enum class Owner { controller, basic, deprecated, vlanXlate };
   struct Port {
      std::size_t lag;
      std::size_t member;
   };

   static Port port( Bytes & bytes );
   static Pair pairOf( Port port );
   static Interface::Interlock::IntfFeature featureOf( Port port );

   // LAGs, in EventRunLags.cpp.
   std::string newSet( Bytes & bytes );
   std::string setGone( Bytes & bytes );
   std::string memberOfLag( Bytes & bytes );
   std::string memberOfAnySet( Bytes & bytes );
   std::string memberOf( Id set, std::size_t member, std::optional< unsigned > type );
   std::string acl( Bytes & bytes );

   // MLAG and the peer.
   std::string mlagIntf( Bytes & bytes );
   std::string mlagState( Bytes & bytes );
   std::string peerLink( Bytes & bytes );
   std::string linkStatus( Bytes & bytes );
   std::string answer( Bytes & bytes );
   std::string timePasses( Bytes & bytes );
   std::string mode( Bytes & bytes );
   bool mlagActive() const;

   // VLAN translation.
   std::string switchport( Bytes & bytes );
   std::string mapping( Bytes & bytes );
   std::string vlanReady( Bytes & bytes );

   // The interlocks themselves.
   void startBasic();
   void startDeprecated();
   void startVlan();
   std::string startOrStop( Bytes & bytes );
   std::string startOrStopController( Bytes & bytes );
   std::string somebodyWrites( Bytes & bytes );
   std::string marks( Bytes & bytes );

   std::string differenceOfOutputs() const;

   Output vlanInput_ = Vex::make< IntfFeatureStatus >();
   Output basicOutput_ = Vex::make< IntfFeatureStatus >();
   Output deprecatedOutput_ = Vex::make< IntfFeatureStatus >();
   Output vlanOutput_ = Vex::make< IntfFeatureStatus >();
   Vex::Ptr< Velo::MlagEgressAclIntfInterlockSm > basic_;
   Vex::Ptr< Velo::DeprecatedMlagEgressAclIntfInterlockSm > deprecated_;
   Vex::Ptr< Velo::VlanXlateIntfInterlockSm > vlan_;
   Velo::BasicModel basicModel_;
   Velo::Model::Deprecated deprecatedModel_;
   Velo::Model::VlanXlate vlanModel_;

   // All that there ever were, by the numbers that the models know them by.
   std::vector< Vex::Ptr< Hardware::Lag::InitialMember > > sets_;
   std::vector< std::size_t > lagOfSet_;
   std::vector< Vex::Ptr< Interface::EthIntfStatus > > links_;
   std::vector< Vex::Ptr< Bridging::SwitchIntfConfig > > configs_;
};

} // namespace Fuzz
