#pragma once

// Reference-counted objects: entities, reactors, state machines, schedulers.
//
// Ownership: an object is born with a count of one, which its creator adopts (Vex::make), so that a
// temporary reference taken inside a constructor cannot destroy it. It is destroyed by whoever
// drops the last reference, inside that call.
// Threading: counts are plain in the plain pointer mode (one thread owns every object) and atomic
// in the thread-safe mode. The mode is one for the process and chosen before the first object.
// Re-entrancy: in the destructor of an object references to it may be taken and dropped again; none
// may outlive it.

#include "platform/Vex/Export.h"
#include "platform/Vex/Type.h"

#include <atomic>
#include <cstdint>

namespace Vex {

enum class PointerMode : std::uint8_t { plain, threadSafe };

namespace Detail {
// Read on every count, so it is no function; written once, before the first object.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
VEX_EXPORT extern bool threadSafePointers;
} // namespace Detail

inline PointerMode pointerMode() noexcept {
   return Detail::threadSafePointers ? PointerMode::threadSafe : PointerMode::plain;
}

/// Chooses how references are counted. Asserts that no object has been created yet.
VEX_EXPORT void pointerModeIs( PointerMode mode );

class VEX_EXPORT Object {
 public:
   Object( const Object & ) = delete;
   Object & operator=( const Object & ) = delete;
   Object( Object && ) = delete;
   Object & operator=( Object && ) = delete;

   /// The class of this object in the data model.
   virtual const Type & fwkType() const noexcept = 0;

   // References are counted by Vex::Ptr; nobody else has a reason to call these two.
   void referenceAdd() const noexcept {
      if ( Detail::threadSafePointers ) {
         count_.fetch_add( 1, std::memory_order_relaxed );
      } else {
         count_.store( count_.load( std::memory_order_relaxed ) + 1, std::memory_order_relaxed );
      }
   }
   void referenceDrop() const noexcept {
      if ( Detail::threadSafePointers ) {
         if ( count_.fetch_sub( 1, std::memory_order_acq_rel ) == 1 ) {
            destroy();
         }
      } else {
         const std::uint32_t left = count_.load( std::memory_order_relaxed ) - 1;
         count_.store( left, std::memory_order_relaxed );
         if ( left == 0 ) {
            destroy();
         }
      }
   }

   std::uint32_t referenceCount() const noexcept {
      return count_.load( std::memory_order_relaxed );
   }

 protected:
   Object() noexcept;
   virtual ~Object();

   /// Called when the last reference has gone, while the object is still whole: virtual calls reach
   /// the most derived class. The destructor follows, unless a reference taken in here is kept:
   /// then the object lives on, and this is called again when that one goes.
   virtual void lastReferenceGone() noexcept {}

 private:
   void destroy() const noexcept;

   mutable std::atomic< std::uint32_t > count_{ 1 };
};

} // namespace Vex
