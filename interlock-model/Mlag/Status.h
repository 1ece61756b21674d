#pragma once

// What the MLAG agent publishes: the MLAG state, the peer link, the status of each MLAG interface,
// and which of the two egress-ACL interlocks is wanted.
//
// Ownership, threading and re-entrancy: platform/Vex/Entity.h, platform/Vex/KeyedCollection.h.
// Notifications of attributes without a key carry the empty identifier.

#include "interlock-model/Interface/EthIntfStatus.h"
#include "interlock-model/Mlag/IntfStatus.h"
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

namespace Mlag {

/// Primary and secondary are the two states in which MLAG counts as active. Other numbers may be
/// published, too.
enum class State : std::uint8_t {
   disabled = 0,
   inactive = 1,
   connecting = 2,
   primary = 3,
   secondary = 4
};

constexpr bool isActive( State state ) noexcept {
   return state == State::primary || state == State::secondary;
}

enum class StatusAttribute : std::uint8_t { mlagState, peerLink, intfStatus, peerInterlock };

class VEX_EXPORT Status final : public Vex::Entity< StatusAttribute, Nodo::IntfId > {
 public:
   using PeerLink = Vex::Ptr< const Interface::EthIntfStatus >;
   using IntfStatuses = Vex::KeyMap< Nodo::IntfId, IntfStatus >;

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   State mlagState() const noexcept { return mlagState_; }
   /// Notifies `mlagState` unless it is the same.
   void mlagStateIs( State state );

   /// Null: there is no peer link.
   const PeerLink & peerLink() const noexcept { return peerLink_; }
   /// Notifies `peerLink` unless it is the same entity.
   void peerLinkIs( PeerLink peerLink );

   const IntfStatuses & intfStatus() const noexcept { return intfStatus_; }
   bool intfStatusHas( Nodo::IntfId intf ) const noexcept { return intfStatus_.has( intf ); }
   /// A default-constructed status for an interface without entry; valid until the next change, or
   /// the end of a pass over them.
   const IntfStatus & intfStatus( Nodo::IntfId intf ) const noexcept {
      const IntfStatus * const status = intfStatus_.find( intf );
      return status != nullptr ? *status : unknown_;
   }
   /// Inserts or overwrites; notifies `intfStatus` with the interface unless an equal entry is
   /// there.
   void intfStatusIs( Nodo::IntfId intf, IntfStatus status );
   /// Removes the entry; notifies `intfStatus` with the interface unless it had none.
   void intfStatusDel( Nodo::IntfId intf );

   /// True: the peer-coordinated egress-ACL interlock is wanted; false: the basic one.
   bool peerInterlock() const noexcept { return peerInterlock_; }
   /// Notifies `peerInterlock` unless it is the same.
   void peerInterlockIs( bool peerInterlock );

 private:
   ~Status() override = default;

   State mlagState_ = State::disabled;
   bool peerInterlock_ = false;
   PeerLink peerLink_;
   IntfStatuses intfStatus_;
   const IntfStatus unknown_{}; // of every interface without entry
};

} // namespace Mlag

template <>
struct Vex::EnumNames< Mlag::State > {
   static constexpr std::string_view type = "Mlag::State";
   static constexpr std::array entries{ EnumEntry{ 0, "disabled" }, EnumEntry{ 1, "inactive" },
                                        EnumEntry{ 2, "connecting" }, EnumEntry{ 3, "primary" },
                                        EnumEntry{ 4, "secondary" } };
};

template <>
struct Vex::EnumNames< Mlag::StatusAttribute > {
   static constexpr std::string_view type = "Mlag::Status::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "mlagState" }, EnumEntry{ 1, "peerLink" },
                                        EnumEntry{ 2, "intfStatus" },
                                        EnumEntry{ 3, "peerInterlock" } };
};
