#include "interlock-model/Hardware/Lag/Config.h"

#include "platform/Vex/NullArgumentError.h"

#include <utility>

namespace Hardware::Lag {

const Vex::Type & Config::staticFwkType() noexcept {
   static constexpr Vex::Type type{ "Hardware::Lag::Config" };
   return type;
}

const Vex::Type & Config::fwkType() const noexcept {
   return staticFwkType();
}

void Config::initialMemberIs( Vex::Ptr< InitialMember > entity ) {
   if ( !entity ) {
      throw Vex::NullArgumentError( "initialMemberIs" );
   }
   const Nodo::IntfId lag = entity->key();
   if ( initialMember_.put( lag, std::move( entity ) ) ) {
      notify( Attribute::initialMember, lag );
   }
}

void Config::initialMemberDel( Nodo::IntfId lag ) {
   // The entity goes when its watchers have heard of it.
   if ( const auto removed = initialMember_.take( lag ) ) {
      notify( Attribute::initialMember, lag );
   }
}

} // namespace Hardware::Lag
