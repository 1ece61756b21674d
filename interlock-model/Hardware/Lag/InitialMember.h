#pragma once

// The ports that are to join one LAG. A port is an active member of the LAG exactly when it is a
// key of `member`; how it is to be programmed plays no part in that.
//
// Ownership, threading and re-entrancy: platform/Vex/Entity.h, platform/Vex/KeyedCollection.h.

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Type.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Hardware::Lag {

/// How a port is to be programmed; opaque here, any number is valid.
enum class PortProgType : std::uint8_t {};

enum class InitialMemberAttribute : std::uint8_t { member };

class VEX_EXPORT InitialMember final : public Vex::Entity< InitialMemberAttribute, Nodo::IntfId > {
 public:
   using Members = Vex::KeyMap< Nodo::IntfId, PortProgType >;

   explicit InitialMember( Nodo::IntfId lag ) noexcept : key_( lag ) {}

   static const Vex::Type & staticFwkType() noexcept;
   const Vex::Type & fwkType() const noexcept override;

   /// The LAG.
   Nodo::IntfId key() const noexcept { return key_; }

   const Members & member() const noexcept { return member_; }
   bool memberHas( Nodo::IntfId port ) const noexcept { return member_.has( port ); }
   std::size_t members() const noexcept { return member_.size(); }

   /// Inserts the port or changes its type; notifies `member` with it unless it has that type.
   void memberIs( Nodo::IntfId port, PortProgType type );
   /// Removes the port; notifies `member` with it unless it was absent.
   void memberDel( Nodo::IntfId port );

 private:
   ~InitialMember() override = default;

   Nodo::IntfId key_;
   Members member_;
};

} // namespace Hardware::Lag

template <>
struct Vex::EnumNames< Hardware::Lag::InitialMemberAttribute > {
   static constexpr std::string_view type = "Hardware::Lag::InitialMember::Attribute";
   static constexpr std::array entries{ EnumEntry{ 0, "member" } };
};
