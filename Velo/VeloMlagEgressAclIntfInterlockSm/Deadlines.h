#pragma once

// The deadline of each requesting LAG, in the order in which they were set, and the earliest.
//
// Order, passes and errors are those of a keyed collection (platform/Vex/KeyedCollection.h).
// Layout: the moments lie side by side, apart from the LAGs, because the search for the earliest is
// linear: with thousands of LAGs that the peer answers in the order asked, each answer searches.
// What is searched once is kept until the one found goes.

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/KeyedCollection.h"
#include "platform/Vex/Seconds.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Velo {

class Deadlines {
 public:
   struct Entry {
      Nodo::IntfId key;
      Vex::Seconds value;
   };

   std::size_t size() const noexcept { return places_.size(); }
   bool empty() const noexcept { return places_.empty(); }
   bool has( Nodo::IntfId lag ) const noexcept { return places_.has( lag ); }
   /// The LAG's deadline, or null; valid until the next mutation.
   const Vex::Seconds * find( Nodo::IntfId lag ) const noexcept {
      const std::uint32_t * const place = places_.find( lag );
      return place != nullptr ? &due_[ *place ] : nullptr;
   }

   /// Inserts or overwrites; false when it is the LAG's deadline already.
   bool put( Nodo::IntfId lag, Vex::Seconds deadline );
   /// False when there is none.
   bool erase( Nodo::IntfId lag );

   /// One pass over the LAGs.
   auto keys() const noexcept { return places_.keys(); }
   /// A copy of all, for whoever inspects.
   std::vector< Entry > entries() const;

   /// The earliest deadline, of equal ones the first; the empty identifier and infinity where no
   /// LAG has a finite one.
   Entry earliest() const noexcept;

 private:
   static constexpr std::uint32_t none = std::numeric_limits< std::uint32_t >::max();

   void search() const noexcept;
   void closeHoles() noexcept;

   Vex::KeyMap< Nodo::IntfId, std::uint32_t > places_;
   // By place. A hole is due at infinity, which is never the earliest.
   std::vector< Vex::Seconds > due_;
   std::vector< Nodo::IntfId > lags_;
   mutable std::uint32_t first_ = 0; // before it, all are due at infinity
   mutable std::uint32_t earliest_ = none; // its place; meaningless unless searched
   mutable bool searched_ = true;
};

} // namespace Velo
