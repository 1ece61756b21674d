#pragma once

// A set of (member, LAG) pairs. As an input of an interlock: the pairs for which the hardware layer
// reports the feature programmed. As its output: the members that may join their LAG now; absence
// holds a member out.
//
// Ownership, threading and re-entrancy: platform/Vex/Entity.h, platform/Vex/KeyedCollection.h.

#include "interlock-model/Interface/Interlock/IntfFeature.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Type.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Interface::Interlock {

enum class IntfFeatureStatusAttribute : std::uint8_t { intf };

class VEX_EXPORT IntfFeatureStatus final
    : public Vex::Entity< IntfFeatureStatusAttribute, IntfFeature > {
 public:
   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   const Vex::KeySet< IntfFeature > & intf() const noexcept { return intf_; }
   bool intfHas( const IntfFeature & feature ) const noexcept { return intf_.has( feature ); }

   /// Inserts the entry; notifies `intf` with it unless it was there.
   void intfIs( IntfFeature feature );
   /// Removes the entry; notifies `intf` with it unless it was absent.
   void intfDel( IntfFeature feature );

 private:
   ~IntfFeatureStatus() override = default;

   Vex::KeySet< IntfFeature > intf_;
};

} // namespace Interface::Interlock

template <>
struct Vex::EnumNames< Interface::Interlock::IntfFeatureStatusAttribute > {
   static constexpr std::string_view type = "Interface::Interlock::IntfFeatureStatus::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "intf" } };
};
