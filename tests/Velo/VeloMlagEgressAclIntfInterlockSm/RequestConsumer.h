#pragma once

// Whoever carries the install requests to the peer, in a test.

#include "interlock-model/Mlag/AclInstallRequest.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Type.h"

#include <functional>
#include <utility>

namespace Velo {

/// Does at each change of a request what the test says.
class RequestConsumer final : public Vex::ConstNotifiee< Mlag::AclInstallRequest > {
 public:
   explicit RequestConsumer( std::function< void() > script ) : script_( std::move( script ) ) {}

   static Vex::Ptr< RequestConsumer > of( const Vex::Ptr< Mlag::AclInstallRequest > & requests,
                                          std::function< void() > script ) {
      auto consumer = Vex::make< RequestConsumer >( std::move( script ) );
      consumer->notifierIs( requests );
      return consumer;
   }

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "RequestConsumer" };
      return type;
   }
   void onAttribute( Attribute /* installRequest */, const Nodo::IntfId & /* lag */ ) override {
      script_();
   }

 private:
   std::function< void() > script_;
};

} // namespace Velo
