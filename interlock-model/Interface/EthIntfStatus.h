#pragma once

// The status of one Ethernet interface, as the peer link's is watched.
//
// Ownership, threading and re-entrancy: platform/Vex/Entity.h.

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/Type.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Interface {

/// Up is the one state in which a link counts as active. Other numbers may be published, too.
enum class LinkStatus : std::uint8_t { unknown = 0, down = 1, up = 2 };

enum class EthIntfStatusAttribute : std::uint8_t { linkStatus };

class VEX_EXPORT EthIntfStatus final : public Vex::Entity< EthIntfStatusAttribute > {
 public:
   explicit EthIntfStatus( Nodo::IntfId intfId ) noexcept : intfId_( intfId ) {}

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   /// The empty identifier: no real interface.
   Nodo::IntfId intfId() const noexcept { return intfId_; }

   LinkStatus linkStatus() const noexcept { return linkStatus_; }
   /// Notifies `linkStatus` unless it is the same.
   void linkStatusIs( LinkStatus status );

 private:
   ~EthIntfStatus() override = default;

   Nodo::IntfId intfId_;
   LinkStatus linkStatus_ = LinkStatus::unknown;
};

} // namespace Interface

template <>
struct Vex::EnumNames< Interface::LinkStatus > {
   static constexpr std::string_view type = "Interface::LinkStatus";
   static constexpr std::array entries{ EnumEntry{ 0, "unknown" }, EnumEntry{ 1, "down" },
                                        EnumEntry{ 2, "up" } };
};

template <>
struct Vex::EnumNames< Interface::EthIntfStatusAttribute > {
   static constexpr std::string_view type = "Interface::EthIntfStatus::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "linkStatus" } };
};
