#pragma once

// The hardware LAG configuration: each LAG's InitialMember. A LAG without one is no LAG, or one
// that is not active.
//
// Ownership, threading and re-entrancy: platform/Vex/Entity.h, platform/Vex/KeyedCollection.h. The
// configuration holds its InitialMembers; whoever has a read-only view of it gets read-only views
// of them.

#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/Type.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Hardware::Lag {

enum class ConfigAttribute : std::uint8_t { initialMember };

class VEX_EXPORT Config final : public Vex::Entity< ConfigAttribute, Nodo::IntfId > {
 public:
   using InitialMembers = Vex::KeyMap< Nodo::IntfId, Vex::Ptr< InitialMember > >;

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   const InitialMembers & initialMember() const noexcept { return initialMember_; }
   /// The LAG's InitialMember, or null.
   Vex::Ptr< const InitialMember > initialMember( Nodo::IntfId lag ) const {
      return initialMember_.get( lag );
   }
   Vex::Ptr< InitialMember > initialMember( Nodo::IntfId lag ) { return initialMember_.get( lag ); }
   /// The same for a look in passing; valid until the next change of the configuration.
   const InitialMember * initialMemberFind( Nodo::IntfId lag ) const noexcept {
      const auto * const found = initialMember_.find( lag );
      return found != nullptr ? found->get() : nullptr;
   }

   /// Puts `entity` under its own LAG, in place of what was there; notifies `initialMember` with
   /// the LAG unless it was this very entity. A null argument is the null-argument error.
   void initialMemberIs( Vex::Ptr< InitialMember > entity );
   /// Removes the LAG's InitialMember; notifies `initialMember` with the LAG unless it had none.
   void initialMemberDel( Nodo::IntfId lag );

 private:
   ~Config() override = default;

   InitialMembers initialMember_;
};

} // namespace Hardware::Lag

template <>
struct Vex::EnumNames< Hardware::Lag::ConfigAttribute > {
   static constexpr std::string_view type = "Hardware::Lag::Config::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "initialMember" } };
};
