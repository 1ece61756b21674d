#pragma once

// Deadlines by interface, in the order in which they were set, and the earliest of them.
//
// Order, passes and errors are those of a keyed collection (platform/Vex/KeyedCollection.h).
// Ownership: a value; nothing is borrowed. Threading: one thread.
// Layout: the moments lie side by side, apart from the interfaces, because the search for the
// earliest is linear: when a peer answers thousands of requests in the order asked, each answer
// searches. What is searched once is kept until the one found goes.

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Seconds.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Kel {

class VEX_EXPORT Deadlines {
 public:
   /// An interface and its deadline.
   struct Entry {
      Nodo::IntfId key;
      Vex::Seconds value;
   };

   std::size_t size() const noexcept { return places_.size(); }
   bool empty() const noexcept { return places_.empty(); }
   bool has( Nodo::IntfId intf ) const noexcept { return places_.has( intf ); }
   /// The interface's deadline, or null; valid until the next mutation.
   const Vex::Seconds * find( Nodo::IntfId intf ) const noexcept {
      const std::uint32_t * const place = places_.find( intf );
      return place != nullptr ? &due_[ *place ] : nullptr;
   }

   /// Inserts or overwrites; false when it is the deadline already.
   bool put( Nodo::IntfId intf, Vex::Seconds deadline );
   /// False when there is none.
   bool erase( Nodo::IntfId intf );

   /// One pass over the interfaces.
   auto keys() const noexcept { return places_.keys(); }
   /// A copy of all, for whoever inspects.
   std::vector< Entry > entries() const;

   /// The earliest deadline, of equal ones the first; the empty identifier and infinity where
   /// none is finite.
   Entry earliest() const noexcept;

 private:
   static constexpr std::uint32_t none = std::numeric_limits< std::uint32_t >::max();

   void search() const noexcept;
   void closeHoles() noexcept;

   Vex::KeyMap< Nodo::IntfId, std::uint32_t > places_;
   // By place. A hole is due at infinity, which is never the earliest.
   std::vector< Vex::Seconds > due_;
   std::vector< Nodo::IntfId > intfs_;
   mutable std::uint32_t first_ = 0; // before it, all are due at infinity
   mutable std::uint32_t earliest_ = none; // its place; meaningless unless searched
   mutable bool searched_ = true;
};

} // namespace Kel
