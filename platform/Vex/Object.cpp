#include "platform/Vex/Object.h"

#include "platform/Vex/Assert.h"
#include "platform/Vex/EventClock.h"

namespace Vex {

namespace Detail {
bool threadSafePointers = false; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)
} // namespace Detail

namespace {
std::atomic< bool > anyObjectBorn{ false };
} // namespace

void pointerModeIs( PointerMode mode ) {
   VEX_ASSERT( !anyObjectBorn.load() );
   Detail::threadSafePointers = mode == PointerMode::threadSafe;
   Detail::eventClock.notifications =
      Detail::threadSafePointers ? Detail::Notifications::notCounted : Detail::Notifications::none;
}

Object::Object() noexcept {
   if ( !anyObjectBorn.load( std::memory_order_relaxed ) ) {
      anyObjectBorn.store( true, std::memory_order_relaxed );
   }
}

Object::~Object() {
   // A reference that outlives its object would dangle.
   VEX_ASSERT( referenceCount() == 1 );
}

void Object::destroy() const noexcept {
   // The last owner may have had a read-only view.
   auto * const self =
      const_cast< Object * >( this ); // NOLINT(cppcoreguidelines-pro-type-const-cast)
   // One reference of our own: what is taken and dropped on the way down does not come to zero
   // again, and what is kept postpones the end to the drop of that reference.
   count_.store( 1, std::memory_order_relaxed );
   self->lastReferenceGone();
   if ( count_.fetch_sub( 1, std::memory_order_acq_rel ) == 1 ) {
      count_.store( 1, std::memory_order_relaxed );
      delete self;
   }
}

} // namespace Vex
