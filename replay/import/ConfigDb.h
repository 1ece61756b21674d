#pragma once

// What a switch's config_db.json says of LAGs, their members, MLAG and VLAN translation: the tables
// PORTCHANNEL, PORTCHANNEL_MEMBER, MCLAG_DOMAIN, MCLAG_INTERFACE and VLAN_TRANSLATION. Every other
// table is passed over, and counted.

#include "platform/Nodo/IntfId.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace Import {

struct LagConfig {
   bool adminUp = true;
   std::set< Nodo::IntfId > members;
};

struct MlagDomain {
   std::string name;
   std::string sourceIp; // empty: not given
   std::string peerIp;
   std::optional< Nodo::IntfId > peerLink;
};

/// The mappings of one interface, of one direction: from VLAN to VLAN.
using Mappings = std::map< std::uint32_t, std::uint32_t >;

struct Translation {
   Mappings ingress;
   Mappings egress;
};

struct Skipped {
   std::string table;
   std::size_t entries = 0;
};

/// All lists in natural order of the names.
struct SwitchConfig {
   std::map< Nodo::IntfId, LagConfig > lags;
   std::optional< MlagDomain > domain;
   std::set< Nodo::IntfId > mlagInterfaces;
   std::map< Nodo::IntfId, Translation > translations;
   std::vector< Skipped > skipped;
};

/// A JsonError with its place when the text is no JSON, or does not say what these tables say.
SwitchConfig parseConfigDb( std::string_view text );

} // namespace Import
