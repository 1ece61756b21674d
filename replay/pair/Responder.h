#pragma once

// The part of a switch that answers what its MLAG peer asks: a request is answered, with its own
// token, as soon as and as long as this switch has its egress ACL in place for every member of the
// LAG. A LAG without members has nothing to install, and is answered at once. A request that is
// withdrawn, or an ACL that goes, takes the answer back.
//
// Ownership: holds the entities that it watches; borrows whatever `answer` needs, which outlives
// it. It is no part of the agent that runs the interlocks, and goes on when that stops.

#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Ptr.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace Replay::Peering {

class Responder {
 public:
   /// Is called with each change of an answer; nothing: it is taken back.
   using Answer = std::function< void( Nodo::IntfId lag, std::optional< std::uint32_t > token ) >;

   Responder( Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > acl,
              Vex::Ptr< const Hardware::Lag::Config > config,
              Answer answer );
   Responder( const Responder & ) = delete;
   Responder & operator=( const Responder & ) = delete;
   Responder( Responder && ) = delete;
   Responder & operator=( Responder && ) = delete;
   ~Responder();

   /// The peer's request has arrived; nothing: it is withdrawn.
   void requestIs( Nodo::IntfId lag, std::optional< std::uint32_t > token );

   /// Each member of the LAG has its egress ACL here.
   bool isReady( Nodo::IntfId lag ) const;

   /// False: silent from now on; what was answered stands. True: answers what has changed
   /// meanwhile.
   void onIs( bool on );

 private:
   class AclWatcher;
   class ConfigWatcher;
   class MemberWatcher;

   void follow( Nodo::IntfId lag );
   void decide( Nodo::IntfId lag );

   Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > acl_;
   Vex::Ptr< const Hardware::Lag::Config > config_;
   Answer answer_;
   bool on_ = true;
   Vex::KeyMap< Nodo::IntfId, std::uint32_t > requests_; // as the peer has them
   Vex::KeyMap< Nodo::IntfId, std::uint32_t > answers_; // as they were given
   // Go first: they call this object.
   Vex::Ptr< AclWatcher > aclWatcher_;
   Vex::Ptr< ConfigWatcher > configWatcher_;
   Vex::KeyMap< Nodo::IntfId, Vex::Ptr< MemberWatcher > > memberWatchers_;
};

} // namespace Replay::Peering
